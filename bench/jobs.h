// The groups of timed jobs. A job is named group/what/page/who; the report sets the library's
// time beside those of the same group, what and page.
#pragma once

#include "bench/picture.h"

#include <filesystem>

// Names of the counters that say how much a job worked on.
inline constexpr char BYTES[] = "bytes";
inline constexpr char CHANGES[] = "changes";
inline constexpr char SIZE[] = "size"; // pages, pixels or strips of a growth job

struct BenchFolders {
    std::filesystem::path pages;
    std::filesystem::path scratch; // in memory if the machine has a RAM disk
};

void RegisterCodecJobs(const std::vector<Picture>& pictures);
void RegisterJpegJobs(const std::vector<Picture>& pictures);
void RegisterLineJobs(const std::vector<Picture>& pictures);
void RegisterOpenJobs(const BenchFolders& folders);
void RegisterEditingJobs(const BenchFolders& folders);
void RegisterWrappingJobs(const std::vector<Picture>& pictures, const BenchFolders& folders);
void RegisterResizeJobs(const std::vector<Picture>& pictures);
void RegisterDitherJobs(const std::vector<Picture>& pictures);
void RegisterGrowthJobs(const BenchFolders& folders);

// Peak memory of loads, as lines of a table on standard output.
void PrintMemory(const std::vector<Picture>& pictures);
