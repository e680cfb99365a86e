#include "progress.h"

#include <cstdio>
#include <string>

namespace tifftool {

int32_t DrawProgress(uint32_t total, uint32_t done, uint64_t)
{
    static constexpr uint32_t LONG_WORK = 20, WIDTH = 40;
    if (total < LONG_WORK) {
        return 1;
    }
    // Drawing takes longer than most steps: only what shows is drawn.
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
    return 1;
}

} // namespace tifftool
