// What the timing programs for Windows share.
#pragma once

#include <string>
#include <vector>

[[noreturn]] void Fail(const char* what, const std::string& path);

struct Job {
    const char* who;
    void (*run)(const std::string&);
    std::vector<double> times;
};

// Prints the median time of each. The two take turns, so that other load on the machine affects both.
void TimeJobs(Job (&jobs)[2], const std::string& path, const std::string& name);

// Text pages beside the same lines drawn by hand. The text is written into the folder.
void TimeText(const std::string& folder);
