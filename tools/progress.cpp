#include "progress.h"

#include "tiff/base.h"

#include "unfinished.h"

#include <cstdio>

namespace tifftool {

namespace {

// Another program gets the messages alone. The null device passes for a terminal, but has no console's mode.
bool IsTerminal()
{
    static const bool terminal = [] {
        DWORD mode = 0;
        return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
    }();
    return terminal;
}

bool lineIsOpen = false; // the current line of the standard error holds a bar or a clock

struct Clock {
    HANDLE workIsDone;
    std::string what;
};

DWORD WINAPI ShowClock(void* parameter)
{
    static constexpr DWORD SECOND = 1000;
    const auto& clock = *static_cast<const Clock*>(parameter);
    for (unsigned seconds = 1; WaitForSingleObject(clock.workIsDone, SECOND) == WAIT_TIMEOUT; ++seconds) {
        fprintf(stderr, "\r%s, %u s", clock.what.c_str(), seconds);
        fflush(stderr);
        lineIsOpen = true;
    }
    return 0;
}

} // namespace

int32_t DrawProgress(uint32_t total, uint32_t done, uint64_t)
{
    static constexpr uint32_t LONG_WORK = 20, WIDTH = 40;
    if (IsInterrupted()) {
        return 0;
    }
    if (total < LONG_WORK || !IsTerminal()) {
        return 1;
    }
    // Drawing takes longer than most steps, so only visible changes are drawn.
    const auto filled = [&](uint32_t steps) {
        return static_cast<uint32_t>(uint64_t{steps} * WIDTH / total);
    };
    if (done != total && done != 1 && filled(done) == filled(done - 1)) {
        return 1;
    }
    const std::string bar(filled(done), '#');
    fprintf(stderr, "\r[%-*s] %u of %u%s", static_cast<int>(WIDTH), bar.c_str(), done, total,
            done == total ? "\n" : "");
    fflush(stderr);
    lineIsOpen = done != total;
    return 1;
}

void EndProgress()
{
    if (lineIsOpen) {
        fputc('\n', stderr);
        lineIsOpen = false;
    }
}

int32_t WithClock(const std::string& what, const std::function<int32_t()>& work)
{
    Clock clock = {CreateEventA(nullptr, TRUE, FALSE, nullptr), what};
    const HANDLE thread =
        clock.workIsDone && IsTerminal() ? CreateThread(nullptr, 0, ShowClock, &clock, 0, nullptr) : nullptr;
    const int32_t result = [&work] {
        const Uninterrupted whole;
        return work();
    }();
    if (thread) {
        SetEvent(clock.workIsDone);
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    }
    if (clock.workIsDone) {
        CloseHandle(clock.workIsDone);
    }
    EndProgress();
    return result;
}

} // namespace tifftool
