/* Puts raw fax code of any scheme into an archive as it is, and tells how well it was received:
 * raw_fax CODE ARCHIVE.tif
 */
#include "tiff/tiff.h"

#include <stdio.h>
#include <stdlib.h>

static size_t ReadAll(const char* path, unsigned char** bytes)
{
    FILE* file = fopen(path, "rb");
    size_t size = 0;
    *bytes = NULL;
    if (file && fseek(file, 0, SEEK_END) == 0) {
        const long length = ftell(file);
        rewind(file);
        *bytes = length > 0 ? malloc((size_t)length) : NULL;
        size = *bytes ? fread(*bytes, 1, (size_t)length, file) : 0;
    }
    if (file)
        fclose(file);
    return size;
}

static int Explain(void)
{
    char text[64], detail[512];
    TiffErrorString(text, (int32_t)TiffError());
    TiffErrorDetail(detail, sizeof detail);
    fprintf(stderr, "%s %s\n", text, detail);
    return 1;
}

int main(int argc, char** argv)
{
    unsigned char* bytes = NULL;
    TiffRawFax fax = {0}; /* nothing is known */
    TiffDecodeQuality quality = {0};
    HGLOBAL picture;
    size_t size = argc == 3 ? ReadAll(argv[1], &bytes) : 0;
    if (!AppendRawFaxToTiff(argc == 3 ? argv[2] : NULL, bytes, (uint32_t)size, &fax))
        return Explain();
    printf("%u x %u, %u rows damaged\n", (unsigned)fax.width, (unsigned)fax.rows, (unsigned)fax.badRows);
    free(bytes);

    size = ReadAll(argv[2], &bytes); /* as it may have come by mail */
    picture = LoadTiffFromMemory(bytes, (uint32_t)size, 0);
    if (!picture)
        return Explain();
    GetTiffDecodeQuality(&quality);
    printf("%u of %u rows decoded\n", (unsigned)quality.decodedRows, (unsigned)quality.rows);
    GlobalFree(picture);
    free(bytes);
    return 0;
}
