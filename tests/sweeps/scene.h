// What a swept operation works on: a folder of small files and TIFFs that lie open, new for every run.
#pragma once

#include "support/numbered_pages.h"
#include "sweeps/failing.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace sweeps {

using Files = std::map<std::string, Bytes>;

struct Scene {
    explicit Scene(const std::vector<const char*>& names);
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    ~Scene();

    // A file of the folder. The path is the same in every run.
    const char* At(const std::string& name);
    // A TIFF of the folder, all pages loaded, open until the scene ends.
    HGLOBAL OnDisk(const char* name, uint32_t mode = T_APPEND);
    // The same in memory.
    HGLOBAL InMemory(const char* name, uint32_t mode = T_APPEND);
    HANDLE Stream(const char* name);
    HGLOBAL Dib(const DibPicture& picture);
    // The calls from here on can fail.
    void Arm();
    // The files of the folder, temporary ones, and the TIFFs in memory.
    Files Snapshot() const;

    unsigned n = 0, kinds = 0, laterKinds = 0;
    bool torn = false;
    Files before{}; // when it was armed

private:
    std::map<std::string, std::string> paths;
    std::vector<HGLOBAL> opened, blocks;
    std::vector<HANDLE> streams;
};

// What an operation answered. `error` is the thread's last error, or the operation's own code.
struct Outcome {
    bool done;
    Bytes value;
    uint32_t error;
};

// These end the refusals, take over and free what was handed out, and describe it.
Outcome Answer(int64_t result, int64_t failure = 0);
Outcome Result(bool done, const Bytes& value);
Outcome TakeBlock(HGLOBAL block);
// The pixels that this line routine collected, with the result of the call.
Outcome Rows(int32_t result, const RowCollector& rows);

enum Leaves : unsigned {
    Kept = 0,     // the files are as they were, or as after a success
    InPlace = 1,  // a file in which pages are added or linked where they lie: no page is lost
    Vanishes = 2, // the file may be deleted instead
    Silent = 4,   // a failure sets no code
    Partial = 8,  // a success with a code is a part of the result
    Strands = 16, // a name's reservation stays
    Grows = 32,   // what was written behind the old bytes stays
    KeepsLibrary = 64,
    LacksTags = 128, // pages may come without some of their tags
    Fewer = 256      // the count of pages says that some are missing
};

struct Row {
    const char* exported; // the names, with blanks between
    const char* detail;
    std::vector<const char*> files;
    unsigned leaves = Kept;
    std::vector<uint32_t> codes{}; // beside the usual ones
    std::function<Outcome(Scene&)> run{};
};

struct Adder {
    std::vector<Row>& rows;

    void operator()(Row row, std::function<Outcome(Scene&)> run) const
    {
        row.run = std::move(run);
        rows.push_back(std::move(row));
    }
};

std::vector<Row> PureRows();
std::vector<Row> DesktopRows();

struct Points {
    uint32_t failing = 0, killed = 0, falseSuccesses = 0;
};

// A TIFF handle that was opened; its page count.
Outcome TakeFile(HGLOBAL file);

// Runs a row untouched, then with each of its calls failing: once, and from then on, and as if the process
// had ended there.
Points Sweep(const Row& row);

} // namespace sweeps
