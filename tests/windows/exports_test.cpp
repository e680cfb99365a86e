#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <windows.h>

TEST(Exports, EveryNameResolves)
{
    const HMODULE library = GetModuleHandleA("TIFF.DLL");
    ASSERT_NE(library, nullptr);
    std::ifstream definition(TIFF_SOURCE_DIR "/exports/tiff.def");
    std::string word;
    uint32_t names = 0;
    for (std::string line; std::getline(definition, line);) {
        if (!(std::istringstream(line) >> word) || word[0] == ';' || word == "LIBRARY" || word == "EXPORTS")
            continue;
        EXPECT_NE(GetProcAddress(library, word.c_str()), nullptr) << word;
        ++names;
    }
    EXPECT_GE(names, 43u);
}
