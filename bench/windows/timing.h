// Times jobs of the Windows programs, and writes their results in the form that the report reads.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace timing {

inline constexpr int ROUNDS = 9;
inline constexpr double MILLISECONDS_A_ROUND = 40;

[[noreturn]] inline void Fail(const char* what, const std::string& path)
{
    std::fprintf(stderr, "%s: %s failed\n", path.c_str(), what);
    std::exit(1);
}

inline double Milliseconds()
{
    LARGE_INTEGER now, frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart) * 1000 / static_cast<double>(frequency.QuadPart);
}

inline double TimeRound(const std::function<void()>& run)
{
    const double start = Milliseconds();
    double end;
    int runs = 0;
    do {
        run();
        ++runs;
        end = Milliseconds();
    } while (end - start < MILLISECONDS_A_ROUND);
    return (end - start) / runs;
}

struct Job {
    const char* who;
    std::function<void()> run;
    std::vector<double> times{};
};

// They take turns, so that other load on the machine affects all.
inline void TimeJobs(std::vector<Job> jobs, const std::string& name)
{
    for (int round = 0; round < ROUNDS; ++round)
        for (Job& job : jobs)
            job.times.push_back(TimeRound(job.run));
    for (Job& job : jobs) {
        std::sort(job.times.begin(), job.times.end());
        std::printf(",\n{\"run_name\": \"%s/%s\", \"cpu_time\": %.6f, \"time_unit\": \"ms\"}", name.c_str(),
                    job.who, job.times[ROUNDS / 2]);
    }
}

inline void Begin()
{
    std::printf(
        "{\"benchmarks\": [{\"run_name\": \"wine/none/none/none\", \"cpu_time\": 0, \"time_unit\": \"ms\"}");
}

inline void End()
{
    std::printf("]}\n");
}

} // namespace timing
