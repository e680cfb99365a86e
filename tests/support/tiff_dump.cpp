#include "support/tiff_dump.h"

#include <algorithm>
#include <sstream>

namespace {

struct Part {
    uint64_t start, end;
    std::string name;
};

class Dump {
public:
    explicit Dump(const Bytes& file) : file(file), motorola(!file.empty() && file[0] == 'M')
    {
        text << (motorola ? "MM" : "II") << '\n';
        Claim(0, 8, "header");
        uint64_t directory = Number(4, 4);
        for (int page = 0; directory != 0 && page < 100; ++page)
            directory = Directory(directory);
        Overlaps();
    }
    std::string Text() const
    {
        return text.str() + complaints.str();
    }

private:
    uint64_t Number(uint64_t at, unsigned bytes) const
    {
        uint64_t value = 0;
        for (unsigned index = 0; index < bytes; ++index) {
            const uint64_t from = at + (motorola ? index : bytes - 1 - index);
            value = value << 8 | (from < file.size() ? file[from] : 0);
        }
        return value;
    }

    void Claim(uint64_t start, uint64_t bytes, std::string name)
    {
        if (start + bytes > file.size())
            complaints << name << " lies outside\n";
        if (bytes > 0)
            parts.push_back({start, start + bytes, std::move(name)});
    }

    uint64_t Directory(uint64_t at)
    {
        const std::string name = "directory " + std::to_string(at);
        const uint64_t count = Number(at, 2), link = Number(at + 2 + count * 12, 4);
        text << name << ", link " << link << '\n';
        if (at % 2)
            complaints << name << " is odd\n";
        Claim(at, 2 + count * 12 + 4, name);
        stripOffsets.clear();
        uint64_t last = 0;
        for (uint64_t index = 0; index < count; ++index) {
            const uint64_t tag = Number(at + 2 + index * 12, 2);
            if (index > 0 && tag <= last)
                complaints << tag << " comes after " << last << '\n';
            last = tag;
            Entry(at + 2 + index * 12);
        }
        return link;
    }

    void Entry(uint64_t at)
    {
        static constexpr const char* names[] = {"0",        "BYTE",  "ASCII",     "SHORT",  "LONG",
                                                "RATIONAL", "SBYTE", "UNDEFINED", "SSHORT", "SLONG"};
        const uint64_t tag = Number(at, 2), type = Number(at + 2, 2), count = Number(at + 4, 4);
        const unsigned partBytes = type == 3 ? 2 : type == 4 || type == 5 || type == 9 ? 4 : 1;
        const uint64_t parts = type == 5 ? count * 2 : count, bytes = parts * partBytes;
        text << tag << ' ' << (type < std::size(names) ? names[type] : "?") << ' ' << count;
        uint64_t value = at + 8;
        if (bytes > 4) {
            value = Number(at + 8, 4);
            text << " @" << value;
            Claim(value, bytes, "values of " + std::to_string(tag));
        }
        text << ':';
        for (uint64_t index = 0; index < std::min<uint64_t>(parts, 16); ++index)
            text << ' ' << Number(value + index * partBytes, partBytes);
        text << '\n';
        Strips(tag, value, count, partBytes);
    }

    void Strips(uint64_t tag, uint64_t value, uint64_t count, unsigned bytes)
    {
        for (uint64_t index = 0; index < count && (tag == 273 || tag == 279); ++index) {
            const uint64_t number = Number(value + index * bytes, bytes);
            if (tag == 273)
                stripOffsets.push_back(number);
            else if (index < stripOffsets.size())
                Claim(stripOffsets[index], number, "strip at " + std::to_string(stripOffsets[index]));
        }
    }

    void Overlaps()
    {
        std::stable_sort(parts.begin(), parts.end(),
                         [](const Part& left, const Part& right) { return left.start < right.start; });
        for (size_t index = 1; index < parts.size(); ++index)
            if (parts[index].start < parts[index - 1].end)
                complaints << parts[index].name << " overlaps " << parts[index - 1].name << '\n';
    }

    const Bytes& file;
    const bool motorola;
    std::ostringstream text, complaints;
    std::vector<Part> parts;
    std::vector<uint64_t> stripOffsets;
};

} // namespace

std::string DumpTiff(const Bytes& file)
{
    return Dump(file).Text();
}
