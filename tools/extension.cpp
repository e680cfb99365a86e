#include "extension.h"

#include "commands.h"
#include "whole_file.h"

#include <algorithm>
#include <string_view>

namespace tifftool {

namespace {

// Kinds of files; a kind's extensions stand together.
constexpr std::string_view kinds[] = {".tif .tiff",          ".bmp .dib",  ".png",
                                      ".pbm .pgm .ppm .pnm", ".jpg .jpeg", ".pdf",
                                      ".cal .ras",           ".gif",       ".txt"};

std::string_view KindOf(const std::string& extension)
{
    for (const std::string_view kind : kinds) {
        const size_t at = kind.find(extension);
        if (at != std::string_view::npos &&
            (at + extension.size() == kind.size() || kind[at + extension.size()] == ' ')) {
            return kind;
        }
    }
    return "";
}

} // namespace

std::string ExtensionOf(const std::string& path)
{
    const std::string name = path.substr(FolderOf(path).size());
    const size_t dot = name.rfind('.');
    std::string extension = dot == std::string::npos || dot == 0 ? "" : name.substr(dot);
    std::ranges::transform(extension, extension.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
    });
    return extension;
}

bool SuitsContent(const std::string& path, const char* extension)
{
    const std::string own = ExtensionOf(path);
    const std::string_view kind = own.size() < 2 ? std::string_view() : KindOf(own);
    if (kind.empty() || kind == KindOf(extension)) {
        return true;
    }
    ReportSentence(path, "would have the name of another kind of file; what is in it ends in " +
                             std::string(extension));
    return false;
}

} // namespace tifftool
