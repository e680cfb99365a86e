#include "support/tiff_dump.h"

#include <algorithm>
#include <map>
#include <set>
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
        for (int page = 0; directory != 0 && page < 20000; ++page) {
            pages.emplace_back();
            directory = Directory(directory);
        }
        Overlaps();
    }
    std::string Text() const
    {
        return text.str() + complaints.str();
    }
    std::string Complaints() const
    {
        return complaints.str();
    }
    const std::vector<std::string>& Pages() const
    {
        return pages;
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
        uint64_t last = 0;
        references.clear();
        for (uint64_t index = 0; index < std::min<uint64_t>(count, file.size()); ++index) {
            const uint64_t tag = Number(at + 2 + index * 12, 2);
            if (index > 0 && tag <= last)
                complaints << tag << " comes after " << last << '\n';
            last = tag;
            Entry(at + 2 + index * 12);
        }
        Data();
        SubDirectories();
        return link;
    }

    // Each follows its tag in braces, with the rest of its chain.
    void SubDirectories()
    {
        const auto outer = references;
        for (const uint64_t tag : directoryTags)
            if (const auto found = outer.find(tag); found != outer.end())
                for (uint64_t directory : found->second)
                    for (pages.back() += std::to_string(tag) + " {\n"; depth < 10 && ++visits < 100;
                         pages.back() += "}\n") {
                        ++depth;
                        directory = Directory(directory);
                        --depth;
                        if (directory == 0 || tag != 330) {
                            pages.back() += "}\n";
                            break;
                        }
                    }
    }

    void Entry(uint64_t at)
    {
        static constexpr const char* names[] = {"0",         "BYTE",  "ASCII",     "SHORT",  "LONG",
                                                "RATIONAL",  "SBYTE", "UNDEFINED", "SSHORT", "SLONG",
                                                "SRATIONAL", "FLOAT", "DOUBLE",    "IFD"};
        const uint64_t tag = Number(at, 2), type = Number(at + 2, 2), count = Number(at + 4, 4);
        static constexpr unsigned partSizes[] = {1, 1, 1, 2, 4, 4, 1, 1, 2, 4, 4, 4, 4, 4};
        const unsigned partBytes = type < std::size(partSizes) ? partSizes[type] : 1;
        const uint64_t parts = type == 5 || type == 10 || type == 12 ? count * 2 : count;
        const uint64_t bytes = parts * partBytes;
        text << tag << ' ' << (type < std::size(names) ? names[type] : "?") << ' ' << count;
        uint64_t value = at + 8;
        if (bytes > 4) {
            value = Number(at + 8, 4);
            text << " @" << value;
            Claim(value, bytes, "values of " + std::to_string(tag));
        }
        std::ostringstream numbers;
        numbers << ':';
        for (uint64_t index = 0; index < std::min<uint64_t>(parts, 16); ++index)
            numbers << ' ' << Number(value + index * partBytes, partBytes);
        numbers << '\n';
        text << numbers.str();
        if (tag == 273 || tag == 324 || (tag >= 519 && tag <= 521) || tag == 513 ||
            directoryTags.contains(tag))
            pages.back() += std::to_string(tag) + '\n';
        else
            pages.back() += std::to_string(tag) + ' ' + std::to_string(type) + ' ' + std::to_string(count) +
                            numbers.str();
        for (uint64_t index = 0; index < std::min<uint64_t>(count, file.size()); ++index)
            references[tag].push_back(Number(value + index * partBytes, partBytes));
    }

    uint64_t TableBytes(uint64_t at) const
    {
        uint64_t bytes = 16;
        for (uint64_t length = 0; length < 16; ++length)
            bytes += Number(at + length, 1);
        return bytes;
    }

    // The data that the offsets of a page lead to.
    void Data()
    {
        static constexpr uint64_t lengthTags[][2] = {{273, 279}, {324, 325}, {513, 514}};
        for (const auto& [offsets, lengths] : lengthTags)
            for (size_t index = 0; index < references[offsets].size(); ++index)
                if (index < references[lengths].size())
                    Data(offsets, references[offsets][index], references[lengths][index]);
        for (const uint64_t table : {519, 520, 521})
            for (const uint64_t offset : references[table])
                Data(table, offset, table == 519 ? 64 : TableBytes(offset));
    }

    void Data(uint64_t tag, uint64_t offset, uint64_t bytes)
    {
        Claim(offset, bytes, (tag == 273 ? "strip at " : "data at ") + std::to_string(offset));
        static constexpr char digits[] = "0123456789ABCDEF";
        pages.back() += "data " + std::to_string(tag) + ": ";
        for (uint64_t at = offset; at < std::min<uint64_t>(offset + bytes, file.size()); ++at)
            pages.back() += {digits[file[at] >> 4], digits[file[at] & 15]};
        pages.back() += '\n';
    }

    void Overlaps()
    {
        std::stable_sort(parts.begin(), parts.end(),
                         [](const Part& left, const Part& right) { return left.start < right.start; });
        for (size_t index = 1; index < parts.size(); ++index)
            if (parts[index].start < parts[index - 1].end)
                complaints << parts[index].name << " overlaps " << parts[index - 1].name << '\n';
    }

    static inline const std::set<uint64_t> directoryTags = {330, 34665, 34853, 40965};

    const Bytes& file;
    const bool motorola;
    int depth = 0, visits = 0; // faulty files could nest without end
    std::ostringstream text, complaints;
    std::vector<Part> parts;
    std::map<uint64_t, std::vector<uint64_t>> references;
    std::vector<std::string> pages;
};

} // namespace

std::string DumpTiff(const Bytes& file)
{
    return Dump(file).Text();
}

std::vector<std::string> PagesOf(const Bytes& file)
{
    return Dump(file).Pages();
}

std::string Complaints(const Bytes& file)
{
    return Dump(file).Complaints();
}
