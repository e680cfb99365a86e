#include "core/error_detail.h"

#include "core/global_block.h"
#include "core/records.h"
#include "tiff/errors.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tiff {

namespace {

constexpr struct {
    uint32_t code;
    const char* words;
} systemErrors[] = {
    {ERROR_FILE_NOT_FOUND, "not found"},
    {ERROR_PATH_NOT_FOUND, "folder not found"},
    {ERROR_ACCESS_DENIED, "access denied"},
    {ERROR_SHARING_VIOLATION, "in use by another program"},
    {ERROR_LOCK_VIOLATION, "locked by another program"},
    {ERROR_DISK_FULL, "disk full"},
    {ERROR_ALREADY_EXISTS, "already exists"},
};

ErrorFacts& FactsOf(Status status)
{
    ErrorFacts& facts = ThreadState().facts;
    if (facts.sealed || facts.status != status)
        ForgetFacts();
    facts.status = status;
    return facts;
}

// A text that grows in the buffer of a caller, and goes on being measured when that is full.
struct Line {
    char* buffer;
    uint32_t size, length = 0;

    void Add(const char* text)
    {
        for (; *text; ++text, ++length)
            if (length + 1 < size)
                buffer[length] = static_cast<unsigned char>(*text) < ' ' ? '?' : *text;
    }
    void AddNumber(const char* name, uint32_t number)
    {
        char digits[16];
        std::snprintf(digits, sizeof(digits), "%u", number);
        AddFact(name);
        Add(digits);
    }
    void AddFact(const char* name)
    {
        Add(length ? ", " : "");
        Add(name);
    }
};

void AddSystemError(Line& line, uint32_t code)
{
    line.AddNumber("system error ", code);
    const auto* known = std::ranges::find(systemErrors, code, [](const auto& row) { return row.code; });
    if (known == std::end(systemErrors))
        return;
    line.Add(" (");
    line.Add(known->words);
    line.Add(")");
}

} // namespace

void ForgetFacts()
{
    ErrorFacts& facts = ThreadState().facts;
    facts.status = facts.systemError = 0;
    facts.sealed = facts.hasPage = facts.hasTag = false;
    facts.path[0] = 0;
}

void NotePath(Status status, const char* path)
{
    ErrorFacts& facts = FactsOf(status);
    if (path && !facts.path[0])
        std::snprintf(facts.path, sizeof(facts.path), "%s", path);
}

void NotePage(Status status, HGLOBAL file, uint32_t page)
{
    if (status == error::None)
        return;
    ErrorFacts& facts = FactsOf(status);
    if (!facts.hasPage)
        facts.page = page;
    facts.hasPage = true;
    NoteFile(status, file);
}

void NoteFile(Status status, HGLOBAL file)
{
    const Locked<TiffFileRecord> record(file);
    if (record)
        NotePath(status, record->path);
}

void NoteTag(Status status, uint32_t tag)
{
    ErrorFacts& facts = FactsOf(status);
    if (!facts.hasTag)
        facts.tag = tag;
    facts.hasTag = true;
}

Status MissingTag(uint32_t tag)
{
    NoteTag(error::TagsMissing, tag);
    return error::TagsMissing;
}

void NoteSystemError(Status status, const char* path)
{
    const DWORD code = GetLastError();
    ErrorFacts& facts = FactsOf(status);
    if (facts.systemError != 0)
        return;
    facts.systemError = code;
    NotePath(status, path);
}

Status ReportedAs(Status known, Status reported)
{
    ErrorFacts& facts = ThreadState().facts;
    if (!facts.sealed && facts.status == known)
        facts.status = reported;
    return reported;
}

void SealFacts(Status status)
{
    ErrorFacts& facts = ThreadState().facts;
    if (facts.sealed || facts.status != status)
        ForgetFacts();
    facts.sealed = true;
}

} // namespace tiff

using namespace tiff;

extern "C" uint32_t TiffErrorDetail(char* buffer, uint32_t size) noexcept
{
    const ErrorFacts& facts = ThreadState().facts;
    Line line{buffer, buffer ? size : 0};
    const bool speaks = facts.status != error::None && facts.status == ThreadState().lastError;
    if (speaks && facts.path[0])
        line.AddFact(facts.path);
    if (speaks && facts.hasPage)
        line.AddNumber("page index ", facts.page);
    if (speaks && facts.hasTag)
        line.AddNumber("tag ", facts.tag);
    if (speaks && facts.systemError)
        AddSystemError(line, facts.systemError);
    if (buffer && size > 0)
        buffer[std::min(line.length, size - 1)] = 0;
    return line.length + 1;
}
