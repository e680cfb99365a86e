#include "codecs/decode_quality.h"

#include "codecs/coding_settings.h"
#include "core/errors.h"
#include "tiff/fax_quality.h"

namespace tiff {

void ForgetQuality()
{
    ThreadCoding().quality = {};
}

void NoteQuality(const CodecCall& call, uint32_t firstRow)
{
    ThreadCoding().quality = {
        .isCounted = (call.compression & 0xFFFF) == compression::Group3,
        .rows = Rows(&call) - firstRow,
        .decodedRows = call.row - firstRow,
        .badRows = call.damage.badRows,
        .longestBadRun = call.damage.longestRun,
    };
    if (!ThreadCoding().quality.isCounted)
        ThreadCoding().quality.badRows = ThreadCoding().quality.longestBadRun = 0;
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t GetTiffDecodeQuality(TiffDecodeQuality* quality) noexcept
{
    if (!quality) {
        SetTiffError(error::InvalidParameters);
        return 0;
    }
    *quality = ThreadCoding().quality;
    return 1;
}
