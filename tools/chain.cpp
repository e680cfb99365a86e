#include "chain.h"

#include "tiff/files.h"

#include <algorithm>
#include <unordered_map>

namespace tifftool {

namespace {

constexpr uint32_t ENTRY_BYTES = 12;
constexpr size_t WINDOW_BYTES = 2048; // most directories and their values

bool Seek(RawFile& raw, uint64_t position)
{
    return raw.file && _fseeki64(raw.file.get(), static_cast<int64_t>(position), SEEK_SET) == 0;
}

size_t Read(RawFile& raw, uint64_t position, std::span<uint8_t> bytes)
{
    return Seek(raw, position) ? fread(bytes.data(), 1, bytes.size(), raw.file.get()) : 0;
}

uint32_t Number(const RawFile& raw, const uint8_t* bytes, uint32_t count)
{
    uint32_t number = 0;
    for (uint32_t index = 0; index < count; ++index) {
        number = number << 8 | bytes[raw.motorola ? index : count - 1 - index];
    }
    return number;
}

bool ReadNumber(RawFile& raw, uint64_t position, uint32_t count, uint32_t& number)
{
    const std::vector<uint8_t> bytes = ReadBytes(raw, position, count);
    if (bytes.size() != count) {
        return false;
    }
    number = Number(raw, bytes.data(), count);
    return true;
}

} // namespace

RawFile::RawFile(const std::string& path, const char* mode)
    : file(fopen(path.c_str(), mode), [](FILE* opened) { return fclose(opened); }), motorola(false)
{
    if (file) {
        setvbuf(file.get(), nullptr, _IONBF, 0);
    }
    const std::vector<uint8_t> order = ReadBytes(*this, 0, 1);
    motorola = !order.empty() && order[0] == 'M';
}

std::vector<uint8_t> ReadBytes(RawFile& raw, uint64_t position, size_t count)
{
    std::vector<uint8_t> bytes(count);
    if (count > WINDOW_BYTES) {
        bytes.resize(Read(raw, position, bytes));
        return bytes;
    }
    if (position < raw.windowAt || position + count > raw.windowAt + raw.window.size()) {
        raw.window.resize(WINDOW_BYTES);
        raw.windowAt = position;
        raw.window.resize(Read(raw, position, raw.window));
    }
    const auto at = static_cast<size_t>(position - raw.windowAt);
    bytes.resize(std::min(count, raw.window.size() - at));
    std::copy_n(raw.window.begin() + static_cast<ptrdiff_t>(at), bytes.size(), bytes.begin());
    return bytes;
}

Chain WalkChain(RawFile& raw)
{
    Chain chain;
    std::unordered_map<uint32_t, uint32_t> pageAt;
    uint32_t directory = 0, entries = 0;
    bool readable = ReadNumber(raw, 4, 4, directory);
    while (readable && directory != 0 && chain.directories.size() < TIFF_MAX_PAGES) {
        const auto page = static_cast<uint32_t>(chain.directories.size() + 1);
        if (const auto [known, isNew] = pageAt.emplace(directory, page); !isNew) {
            chain.comesBackTo = known->second;
            break;
        }
        chain.directories.push_back(directory);
        readable = ReadNumber(raw, directory, 2, entries) &&
                   ReadNumber(raw, uint64_t{directory} + 2 + uint64_t{ENTRY_BYTES} * entries, 4, directory);
    }
    return chain;
}

bool FindEntry(RawFile& raw, uint32_t directory, uint32_t tag, TagEntry& entry)
{
    uint32_t entries = 0;
    if (!ReadNumber(raw, directory, 2, entries)) {
        return false;
    }
    const std::vector<uint8_t> bytes = ReadBytes(raw, uint64_t{directory} + 2, size_t{ENTRY_BYTES} * entries);
    for (size_t at = 0; at + ENTRY_BYTES <= bytes.size(); at += ENTRY_BYTES) {
        if (Number(raw, &bytes[at], 2) == tag) {
            entry.position = uint64_t{directory} + 2 + at;
            entry.type = Number(raw, &bytes[at + 2], 2);
            entry.count = Number(raw, &bytes[at + 4], 4);
            entry.valuesAt = Number(raw, &bytes[at + 8], 4);
            return true;
        }
    }
    return false;
}

bool WriteBytes(RawFile& raw, uint64_t position, std::span<const uint8_t> bytes)
{
    raw.window.clear();
    return Seek(raw, position) && fwrite(bytes.data(), 1, bytes.size(), raw.file.get()) == bytes.size() &&
           fflush(raw.file.get()) == 0;
}

bool WriteNumbers(RawFile& raw, uint64_t position, std::span<const uint32_t> numbers)
{
    std::vector<uint8_t> bytes;
    for (const uint32_t number : numbers) {
        for (uint32_t index = 0; index < 4; ++index) {
            bytes.push_back(static_cast<uint8_t>(number >> 8 * (raw.motorola ? 3 - index : index)));
        }
    }
    return WriteBytes(raw, position, bytes);
}

bool WriteCount(RawFile& raw, const TagEntry& entry, uint32_t count)
{
    return WriteNumbers(raw, entry.position + 4, {&count, 1});
}

} // namespace tifftool
