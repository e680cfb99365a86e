#include "timing.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int ROUNDS = 9;
constexpr double MILLISECONDS_A_ROUND = 40;

double Milliseconds()
{
    LARGE_INTEGER now, frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart) * 1000 / static_cast<double>(frequency.QuadPart);
}

double TimeRound(void (*run)(const std::string&), const std::string& path)
{
    const double start = Milliseconds();
    double end;
    int runs = 0;
    do {
        run(path);
        ++runs;
        end = Milliseconds();
    } while (end - start < MILLISECONDS_A_ROUND);
    return (end - start) / runs;
}

} // namespace

[[noreturn]] void Fail(const char* what, const std::string& path)
{
    std::fprintf(stderr, "%s: %s failed\n", path.c_str(), what);
    std::exit(1);
}

void TimeJobs(Job (&jobs)[2], const std::string& path, const std::string& name)
{
    for (int round = 0; round < ROUNDS; ++round)
        for (Job& job : jobs)
            job.times.push_back(TimeRound(job.run, path));
    for (Job& job : jobs) {
        std::sort(job.times.begin(), job.times.end());
        std::printf(",\n{\"run_name\": \"%s/%s\", \"cpu_time\": %.6f, \"time_unit\": \"ms\"}", name.c_str(),
                    job.who, job.times[ROUNDS / 2]);
    }
}
