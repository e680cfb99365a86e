// The facts behind a failure: path, page, tag and system error. The step that knows one notes it, with the
// status that it is about. Facts are kept for one failure: another status or a new piece of work drops them,
// so they never describe a failure that they do not belong to. Nothing here allocates.
#pragma once

#include "core/thread_state.h"
#include "core/vocabulary.h"

namespace tiff {

// At the beginning of a piece of work.
void ForgetFacts();

// These keep what a deeper step has said already.
void NotePath(Status status, const char* path);
void NotePage(Status status, HGLOBAL file, uint32_t page);
void NoteTag(Status status, uint32_t tag);
void NoteFile(Status status, HGLOBAL file);

// Error 10, which is about the tag.
[[nodiscard]] Status MissingTag(uint32_t tag);

// A call of the system that failed just now; the path may be null.
void NoteSystemError(Status status, const char* path);

// The failure goes on under another status.
Status ReportedAs(Status known, Status reported);

// Keeps the facts of a failure from what cleans up after it.
class KeptFacts {
public:
    KeptFacts() : kept(ThreadState().facts)
    {
    }
    KeptFacts(const KeptFacts&) = delete;
    KeptFacts& operator=(const KeptFacts&) = delete;
    ~KeptFacts()
    {
        ThreadState().facts = kept;
    }

private:
    const ErrorFacts kept;
};

// An exported function sets the last error. Facts of another status go; so do those of a failure that was
// reported before.
void SealFacts(Status status);

} // namespace tiff
