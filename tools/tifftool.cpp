/* tifftool: describes, converts and edits TIFF files through the public interface of the library
 * alone. This file has the command table and the messages that all commands share.
 */
#include "arguments.h"
#include "commands.h"
#include "describe.h"
#include "progress.h"
#include "standard_streams.h"
#include "unfinished.h"

#include <cstdio>
#include <cstring>
#include <io.h>
#include <new>
#include <vector>

namespace tifftool {

namespace {

const Command* const commands[] = {
    &appendRawCommand,  &blankCommand,   &calsCommand,     &catCommand,     &checkCommand,  &compareCommand,
    &completionCommand, &convertCommand, &copyCommand,     &cropCommand,    &cutCommand,    &deleteCommand,
    &dumpCommand,       &faxCommand,     &fromjpegCommand, &fromRawCommand, &infoCommand,   &insertCommand,
    &iocaCommand,       &manualCommand,  &modcaCommand,    &noteCommand,    &numberCommand, &overlayCommand,
    &pasteCommand,      &renderCommand,  &reorderCommand,  &repairCommand,  &rotateCommand, &scaleCommand,
    &splitCommand,      &stampCommand,   &tagCommand,      &textCommand,    &toPdfCommand,  &tojpegCommand,
};

void PrintHelp()
{
    printf("Usage: tifftool COMMAND [ARGUMENT...]\n\nCommands:\n");
    for (const Command* command : commands) {
        printf("  %-10s %s\n", command->name, command->summary);
    }
    printf("\n"
           "Files: IN.tif:1,3-5,last selects pages wherever pages are read; names may have * and ?; - is\n"
           "the standard input or output.\n"
           "\n"
           "tifftool COMMAND --help  explains one command\n"
           "tifftool --version       shows the version of the library\n"
           "\n"
           "Exit codes: 0 all fine; 1 a file or page failed, or is not whole; 2 wrong usage.\n");
}

int PrintCommandHelp(const Command& command)
{
    printf("Usage: tifftool %s %s\n\n%s\n\n%s\nExample: %s\n", command.name, command.arguments,
           command.summary, command.details, command.example);
    return ALL_FINE;
}

int PrintVersion()
{
    char version[64] = {};
    GetTiffVersion(version, sizeof version);
    printf("%s\n", version);
    return ALL_FINE;
}

// Checks only the arguments before "--", so that a file may have any name.
bool AsksForHelp(Arguments arguments)
{
    for (const char* argument : arguments) {
        if (strcmp(argument, "--") == 0) {
            return false;
        }
        if (strcmp(argument, "--help") == 0 || strcmp(argument, "-h") == 0) {
            return true;
        }
    }
    return false;
}

int Run(Arguments arguments)
{
    if (arguments.empty()) {
        fprintf(stderr, "tifftool: no command given; tifftool --help lists them\n");
        return WRONG_USAGE;
    }
    const char* const name = arguments[0];
    if (strcmp(name, "--help") == 0 || strcmp(name, "-h") == 0) {
        PrintHelp();
        return ALL_FINE;
    }
    if (strcmp(name, "--version") == 0) {
        return PrintVersion();
    }
    for (const Command* command : commands) {
        if (strcmp(name, command->name) == 0) {
            const Arguments rest = arguments.subspan(1);
            return AsksForHelp(rest) ? PrintCommandHelp(*command) : command->run(rest);
        }
    }
    fprintf(stderr, "tifftool: unknown command \"%s\"; tifftool --help lists them\n", name);
    return WRONG_USAGE;
}

} // namespace

std::span<const Command* const> Commands()
{
    return commands;
}

int UsageError(const Command& command, const std::string& what)
{
    fprintf(stderr, "tifftool: %s: %s; see tifftool %s --help\n", command.name, what.c_str(), command.name);
    return WRONG_USAGE;
}

int ReportSentence(const std::string& where, const std::string& sentence)
{
    EndProgress();
    // Both streams may go to one place, where the order must hold.
    fflush(stdout);
    fprintf(stderr, "tifftool: %s: %s\n", ShownName(where).c_str(), sentence.c_str());
    return FAILED;
}

int DryRun(const std::string& sentence)
{
    printf("would %s\n", sentence.c_str());
    return ALL_FINE;
}

int ReportError(const std::string& where, uint32_t code)
{
    return ReportSentence(where, DescribeError(code));
}

} // namespace tifftool

// What was printed may still be in the buffer. A reader that has left a pipe wants no message.
static int FlushOutput(int result)
{
    if (fflush(stdout) == 0 && !ferror(stdout)) {
        return result;
    }
    const auto output = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stdout)));
    if (result == tifftool::ALL_FINE && GetFileType(output) != FILE_TYPE_PIPE) {
        tifftool::ReportSentence("the standard output", "cannot be written");
    }
    return result == tifftool::ALL_FINE ? int{tifftool::FAILED} : result;
}

// File names may have characters that only the wide command line has.
int wmain(int count, wchar_t** wide)
{
    std::vector<std::string> texts;
    const std::span all(wide, static_cast<size_t>(count));
    if (!tifftool::ReadArguments(all.subspan(all.empty() ? 0 : 1), texts)) {
        return tifftool::WRONG_USAGE;
    }
    std::vector<char*> arguments;
    for (std::string& text : texts) {
        arguments.push_back(text.data());
    }
    tifftool::WatchForInterruption();
    int result = tifftool::FAILED;
    try {
        result = tifftool::Run(arguments);
    } catch (const std::bad_alloc&) {
        tifftool::ReportSentence("the command", "needs more memory than there is");
    }
    tifftool::EndProgress();
    tifftool::DeleteUnfinished();
    tifftool::RestoreNames();
    return FlushOutput(result);
}
