// Takes any bytes for a file with an image segment, and for one with fields around it. What is found lies
// inside the file; the picture is decoded, and the tool takes its code.
#include "codecs/ccitt/mmr_records.h"
#include "core/stream.h"
#include "scaffold.h"
#include "tools/wrapped_picture.h"

#include <sys/mman.h>

namespace {

using fuzz::Demand, fuzz::Input;
using ReadHeader = int32_t (*)(HANDLE file, TiffIocaDescription* description);

intptr_t IgnoreLine(void*, uint32_t, void*)
{
    return 0;
}

// A file in memory, so that a run costs no disk.
class InputFile {
public:
    explicit InputFile(Input input) : descriptor(memfd_create("input", 0))
    {
        Demand(write(descriptor, input.data(), input.size()) == static_cast<ssize_t>(input.size()));
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile()
    {
        close(descriptor);
    }
    HANDLE Open() const
    {
        const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
        return CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    }

private:
    int descriptor;
};

void ReadFrom(const InputFile& file, Input input, ReadHeader read)
{
    const auto before = standin::Live().handles;
    const HANDLE handle = file.Open();
    TiffIocaDescription description;
    const bool found = read(handle, &description);
    if (standin::Live().handles == before) {
        Demand(!found); // closed: no segment begins
        return;
    }
    const auto stream = static_cast<TiffStream>(reinterpret_cast<intptr_t>(handle));
    const uint32_t position = mTell(stream);
    Demand(position <= input.size());
    if (found && description.dataOffset) {
        Demand(position == description.dataOffset + tiff::RECORD_HEADER_BYTES);
        Demand(std::ranges::equal(input.subspan(description.dataOffset, 2), tiff::RECORD_MARK));
        DecodeMMRImage(stream, description.dataOffset, description.width,
                       std::min<uint32_t>(description.height, 200), 0, 1, TIFF_INTEL, nullptr, IgnoreLine);
    }
    mClose(stream);
}

void TakeCode(const InputFile& file, Input input, tifftool::Wrapping wrapping)
{
    const HANDLE handle = file.Open();
    tifftool::PictureCode code{};
    const std::string why = tifftool::ReadCode(handle, wrapping, code);
    Demand(!why.empty() || code.bytes.size() < input.size());
    Demand(CloseHandle(handle));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const fuzz::Run run(64u << 20);
    const Input input(data, size);
    const InputFile file(input);
    ReadFrom(file, input, ReadIOCAHeader);
    ReadFrom(file, input, ReadMODCAHeader);
    TakeCode(file, input, tifftool::Wrapping::Segment);
    TakeCode(file, input, tifftool::Wrapping::Document);
    return 0;
}
