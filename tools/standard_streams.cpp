#include "standard_streams.h"

#include "commands.h"
#include "unfinished.h"

#include <cstdio>
#include <memory>

#include <fcntl.h>
#include <io.h>

namespace tifftool {

namespace {

using OpenedFile = std::unique_ptr<FILE, int (*)(FILE*)>;

std::string spooled;

bool CopyAll(FILE* from, FILE* to)
{
    char part[65536];
    while (const size_t got = fread(part, 1, sizeof part, from)) {
        if (fwrite(part, 1, got, to) != got) {
            return false;
        }
    }
    return !ferror(from) && fflush(to) == 0;
}

} // namespace

std::string SpoolStandardInput()
{
    if (!spooled.empty()) {
        ReportSentence("the standard input", "can be read once only");
        return "";
    }
    const std::string path = MakeUnfinishedFile(TemporaryFolder());
    const OpenedFile file(path.empty() ? nullptr : fopen(path.c_str(), "wb"), fclose);
    _setmode(_fileno(stdin), _O_BINARY);
    if (!file || !CopyAll(stdin, file.get())) {
        ReportSentence("the standard input", "cannot be read into the temporary folder");
        return "";
    }
    spooled = path;
    return path;
}

void EndLinesPlainly()
{
    fflush(stdout);
    _setmode(_fileno(stdout), _O_BINARY);
}

bool CopyToStandardOutput(const std::string& path)
{
    const OpenedFile file(fopen(path.c_str(), "rb"), fclose);
    EndLinesPlainly();
    return file && CopyAll(file.get(), stdout);
}

std::string ShownName(const std::string& text)
{
    const size_t at = spooled.empty() ? std::string::npos : text.find(spooled);
    return at == std::string::npos ? text
                                   : text.substr(0, at) + "standard input" + text.substr(at + spooled.size());
}

} // namespace tifftool
