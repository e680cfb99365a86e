// A file opened by its name with one page's tags loaded, for a scope. Closing it leaves the last
// error alone.
#pragma once

#include "core/tag_block.h"
#include "tiff/directory.h"
#include "tiff/files.h"

namespace tiff {

inline bool IsYCbCr(const PageTags& tags)
{
    return tags.Value(tag::PhotometricInterpretation, 0) == photometric::YCbCr &&
           tags.Value(tag::SamplesPerPixel, 1) == 3;
}

// Lines of shared chroma cannot be converted pixel by pixel. JPEG has ways of its own.
inline bool SharesChroma(const PageTags& tags)
{
    return tags.Value(tag::PhotometricInterpretation, 0) == photometric::YCbCr &&
           tags.Value(tag::Compression, compression::Stored) != compression::Jpeg &&
           (tags.Value(tag::YCbCrSubSampling, 1, 0) != 1 || tags.Value(tag::YCbCrSubSampling, 1, 1) != 1);
}

class LoadedPage {
public:
    LoadedPage(const char* path, uint32_t page)
        : file(OpenTiffFile(path, T_READ)), loaded(file && GetTiffImage(file, page))
    {
    }
    LoadedPage(const LoadedPage&) = delete;
    LoadedPage& operator=(const LoadedPage&) = delete;
    ~LoadedPage()
    {
        if (file)
            CloseTiffFile(file);
    }

    explicit operator bool() const
    {
        return loaded;
    }
    HGLOBAL File() const
    {
        return file;
    }

private:
    HGLOBAL file;
    bool loaded;
};

} // namespace tiff
