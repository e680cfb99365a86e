// The exported names are those of the public headers, no more and no fewer.
#include "support/bytes.h"

#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace {

const std::string SOURCE = TIFF_SOURCE_DIR "/";

std::string Text(const std::string& path)
{
    const Bytes bytes = ReadFileBytes(SOURCE + path);
    return std::string(bytes.begin(), bytes.end());
}

std::set<std::string> DefinedNames()
{
    std::set<std::string> names;
    std::istringstream lines(Text("exports/tiff.def"));
    std::string word;
    for (std::string line; std::getline(lines, line);)
        if (std::istringstream(line) >> word && word[0] != ';' && word != "LIBRARY" && word != "EXPORTS")
            names.insert(word);
    return names;
}

std::string WithoutCommentsAndDirectives(std::string text)
{
    for (size_t at; (at = text.find("/*")) != std::string::npos;)
        text.erase(at, text.find("*/", at) + 2 - at);
    for (size_t at; (at = text.find("\n#")) != std::string::npos;)
        text.erase(at, text.find('\n', at + 1) - at);
    return text;
}

// The word before the first parenthesis of every declaration.
std::set<std::string> DeclaredNames()
{
    std::set<std::string> names;
    std::istringstream headers(Text("include/tiff/tiff.h"));
    for (std::string line; std::getline(headers, line);) {
        if (line.rfind("#include \"", 0) != 0)
            continue;
        const std::string name = line.substr(10, line.rfind('"') - 10);
        std::istringstream statements(WithoutCommentsAndDirectives(Text("include/" + name)));
        for (std::string statement; std::getline(statements, statement, ';');) {
            const size_t open = statement.find('(');
            if (statement.find(") TIFF_NOEXCEPT") == std::string::npos)
                continue;
            const size_t start = statement.find_last_of(" *\n", open) + 1;
            names.insert(statement.substr(start, open - start));
        }
    }
    return names;
}

} // namespace

TEST(Exports, DefinitionAndHeadersAgree)
{
    const auto defined = DefinedNames();
    EXPECT_GE(defined.size(), 43u);
    EXPECT_EQ(defined, DeclaredNames());
}
