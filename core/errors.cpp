#include "core/errors.h"

#include "core/desktop.h"
#include "core/error_detail.h"
#include "core/thread_state.h"

#include <array>
#include <cstring>

namespace tiff {

static constexpr std::array<const char*, error::LastCode + 1> texts = {
    "Operation was successful.",
    "Not enough memory.",
    "Not T_READ or T_CREAT in OpenTiffFile().",
    "Image or tag data index is out of range.",
    "Strip index is out of range.",
    "Unexpected end of file in reading data.",
    "General I/O error in reading or writing.",
    "Pathname is longer than MAXPATH.",
    "File has not a valid TIFF format.",
    "Invalid TIFF directory tag.",
    "Indispensable tags are missing.",
    "Image compression type is not known.",
    "Error during compression or decompression.",
    "Such tag is not defined.",
    "Invalid byte order.",
    "Invalid bit order.",
    "Color format is not supported.",
    "Too few color info.",
    "File has not a valid CALS format.",
    "End of Facsimile Block is missing (EOFB).",
    "Unexpected End of Facsimile Block (EOFB).",
    "Image width must be 1728 pixels (Can't save it).",
    "Module KVJPEG DLL is not found.",
    "Can't find a function in module KVJPEG DLL.",
    "Clipboard format is not bitmap.",
    "Could not open clipboard.",
    "Could not receive bitmap from clipboard.",
    "Image is not registered.",
    "KvDlgs.dll does not exist.",
    "Invalid Parameters.",
    "Bad (compressed) Device Independent Bimap.",
    "Not PIW Format",
    "Bits per pixel not supported.",
    "Invalid Image Buffer Address.",
    "Invalid memory pointer or handle.",
    "Can't append an Intel-type TIF to a Motorola-type TIF",
    "Image format does not support width or length > 65535",
    "Unknown error.", // accepted as a code, but never set by the library
};

void StoreLastError(Status status)
{
    ThreadState().lastError = status;
    SealFacts(status);
}

static bool HasText(uint32_t code)
{
    return code <= error::LastCode;
}

} // namespace tiff

using namespace tiff;

extern "C" uint32_t SetTiffError(uint32_t code) noexcept
{
    TiffThreadState& state = ThreadState();
    const uint32_t previous = state.lastError;
    if (HasText(code)) {
        state.lastError = code;
        SealFacts(code);
    }
    return previous;
}

extern "C" uint32_t TiffError(void) noexcept
{
    return ThreadState().lastError;
}

extern "C" char* TiffErrorString(char* buffer, int32_t code) noexcept
{
    uint32_t known = static_cast<uint32_t>(code);
    if (!HasText(known))
        known = TiffError();
    const char* text = texts[HasText(known) ? known : error::LastCode];
    if (buffer)
        std::strcpy(buffer, text);
    else
        ShowErrorBox(text);
    return buffer;
}
