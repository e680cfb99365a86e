#include "choices.h"

#include "tiff/files.h"

#include <cstdlib>
#include <cstring>

namespace tifftool {

uint32_t FindCompression(const char* name)
{
    static constexpr struct {
        const char* name;
        uint32_t selector;
    } compressions[] = {
        {"none", 201}, {"packbits", 202}, {"lzw", 203},   {"lzw-pred", 204},
        {"mh", 205},   {"g3", 206},       {"g3-2d", 207}, {"g4", 208},
    };
    for (const auto& choice : compressions) {
        if (strcmp(choice.name, name) == 0) {
            return choice.selector;
        }
    }
    return 0;
}

uint32_t ParsePage(const char* text)
{
    char* end = nullptr;
    const unsigned long number = strtoul(text, &end, 10);
    const bool good = text[0] >= '0' && text[0] <= '9' && *end == '\0' && number <= TIFF_MAX_PAGES;
    return good ? static_cast<uint32_t>(number) : 0;
}

} // namespace tifftool
