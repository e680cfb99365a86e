/* tifftool manual: the manual page, made of the help texts. */
#include "options.h"
#include "standard_streams.h"

#include <cstdio>

namespace tifftool {

namespace {

// Backslashes, minus signs, and dots and quotes that begin a line mean something to the formatter.
std::string Escaped(const std::string& text)
{
    std::string escaped;
    bool lineBegins = true;
    for (const char character : text) {
        if (lineBegins && (character == '.' || character == '\'')) {
            escaped += "\\&";
        }
        escaped += character == '\\' ? "\\e" : character == '-' ? "\\-" : std::string(1, character);
        lineBegins = character == '\n';
    }
    return escaped;
}

void PrintCommand(const Command& command)
{
    printf(".SS %s\n%s\n.PP\n.nf\n\\fBtifftool %s\\fR %s\n.fi\n.PP\n.nf\n%s\n", Escaped(command.name).c_str(),
           Escaped(command.summary).c_str(), Escaped(command.name).c_str(),
           Escaped(command.arguments).c_str(), Escaped(command.details).c_str());
    printf("Example:\n    %s\n.fi\n", Escaped(command.example).c_str());
}

int RunManual(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {}, {});
    if (!CheckOptions(manualCommand, options, 0, 0)) {
        return WRONG_USAGE;
    }
    EndLinesPlainly();
    char version[64] = {};
    GetTiffVersion(version, sizeof version);
    printf(".TH TIFFTOOL 1 \"\" \"%s\"\n", Escaped(version).c_str());
    printf(".SH NAME\ntifftool \\- fax and document images on the command line\n"
           ".SH SYNOPSIS\n\\fBtifftool\\fR \\fICOMMAND\\fR [\\fIARGUMENT\\fR...]\n"
           ".SH FILES\n"
           "\\fIIN.tif\\fR:1,3\\-5,last selects pages wherever pages are read; 5\\-1 gives them backwards. A "
           "file\n"
           "whose own name ends so is read as a whole. Names may have * and ?. \\- is the standard input or "
           "output.\n"
           ".SH COMMANDS\n");
    for (const Command* command : Commands()) {
        PrintCommand(*command);
    }
    printf(".SH EXIT STATUS\n0 all fine; 1 a file or page failed, or is not whole; 2 wrong usage; 130 "
           "interrupted.\n");
    return ALL_FINE;
}

} // namespace

const Command manualCommand = {
    .name = "manual",
    .arguments = "",
    .summary = "Prints the manual page.",
    .details = "For man, as tifftool.1.\n",
    .example = "tifftool manual > tifftool.1",
    .run = RunManual,
};

} // namespace tifftool
