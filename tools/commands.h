/* Shared by the commands of tifftool: the command table's row, exit codes, error lines and a guard for
 * an open file. A new command is a row in tifftool.cpp and a file of its own.
 */
#ifndef TOOLS_COMMANDS_H
#define TOOLS_COMMANDS_H

#include "tiff/tiff.h"

#include <cstdint>
#include <span>
#include <string>

namespace tifftool {

enum ExitCode : int { ALL_FINE = 0, FAILED = 1, WRONG_USAGE = 2 };

using Arguments = std::span<char* const>;

struct Command {
    const char* name;
    const char* arguments; // as shown in the usage line
    const char* summary;   // one line, for the list of commands
    const char* details;   // the rest of `tifftool COMMAND --help`
    const char* example;   // a whole command line
    int (*run)(Arguments arguments);
};

extern const Command appendRawCommand;
extern const Command blankCommand;
extern const Command calsCommand;
extern const Command catCommand;
extern const Command checkCommand;
extern const Command compareCommand;
extern const Command completionCommand;
extern const Command convertCommand;
extern const Command copyCommand;
extern const Command cropCommand;
extern const Command cutCommand;
extern const Command deleteCommand;
extern const Command dumpCommand;
extern const Command faxCommand;
extern const Command fromjpegCommand;
extern const Command fromRawCommand;
extern const Command infoCommand;
extern const Command insertCommand;
extern const Command iocaCommand;
extern const Command manualCommand;
extern const Command modcaCommand;
extern const Command noteCommand;
extern const Command numberCommand;
extern const Command overlayCommand;
extern const Command pasteCommand;
extern const Command renderCommand;
extern const Command reorderCommand;
extern const Command repairCommand;
extern const Command rotateCommand;
extern const Command scaleCommand;
extern const Command splitCommand;
extern const Command stampCommand;
extern const Command tagCommand;
extern const Command textCommand;
extern const Command toPdfCommand;
extern const Command tojpegCommand;

// Owns an open TIFF file for a scope.
struct OpenFile {
    HGLOBAL handle;

    explicit OpenFile(HGLOBAL opened) : handle(opened)
    {
    }
    ~OpenFile()
    {
        CloseTiffFile(handle);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
};

// Owns a block from the library for a scope, and keeps it locked.
struct OwnedBlock {
    HGLOBAL handle;
    const uint8_t* bytes;
    size_t size;

    explicit OwnedBlock(HGLOBAL block)
        : handle(block), bytes(block ? static_cast<const uint8_t*>(GlobalLock(block)) : nullptr),
          size(bytes ? GlobalSize(block) : 0)
    {
    }
    ~OwnedBlock()
    {
        if (bytes) {
            GlobalUnlock(handle);
        }
        if (handle) {
            GlobalFree(handle);
        }
    }
    OwnedBlock(const OwnedBlock&) = delete;
    OwnedBlock& operator=(const OwnedBlock&) = delete;
};

// All commands, by name.
std::span<const Command* const> Commands();

// Prints "tifftool: command: what" and how to get help; returns WRONG_USAGE.
int UsageError(const Command& command, const std::string& what);

// Prints "tifftool: where: text (error N)" with the library's text; returns FAILED.
int ReportError(const std::string& where, uint32_t code);

// Prints "tifftool: where: sentence"; returns FAILED.
int ReportSentence(const std::string& where, const std::string& sentence);

// Prints what would be done.
int DryRun(const std::string& sentence);

} // namespace tifftool

#endif
