// Every row runs untouched first. Its answer and its files are what each later run is held against.
#include "sweeps/scene.h"

#include "support/tiff_dump.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

namespace sweeps {

namespace {

constexpr unsigned FILE_CALLS = Open | Read | Write | Seek | Move;
constexpr unsigned CHANGES = Write | Delete | Move;
constexpr unsigned MOST_CALLS = 5000;

// What is made to fail, and the codes that say so. A block that is there can be locked.
struct Group {
    const char* name;
    unsigned kinds;
    std::vector<uint32_t> codes;
};

const Group groups[] = {
    {"allocation", Allocation, {1}}, {"file call", FILE_CALLS, {2, 6}}, {"deletion", Delete, {6}},
    {"GDI call", Draw, {1}},         {"library", Library, {22, 28}},    {"lock", Lock, {1, 3, 6, 34}},
};

bool IsTiff(const Bytes& bytes)
{
    return bytes.size() >= 8 && (bytes[0] == 'I' || bytes[0] == 'M') && bytes[0] == bytes[1];
}

using PageTexts = std::vector<std::string>;

PageTexts PagesIn(const Bytes& bytes)
{
    return IsTiff(bytes) ? PagesOf(bytes) : PageTexts();
}

bool Has(const PageTexts& pages, const std::string& page)
{
    return std::find(pages.begin(), pages.end(), page) != pages.end();
}

// Pages of the old or the new file alone; every one that both have.
bool LiesBetween(const Bytes& was, const Bytes& will, const Bytes& is)
{
    const PageTexts old = PagesIn(was), planned = PagesIn(will), now = PagesIn(is);
    return now.size() >= std::min(old.size(), planned.size()) &&
           now.size() <= std::max(old.size(), planned.size()) + 1 &&
           std::all_of(now.begin(), now.end(),
                       [&](const std::string& page) { return Has(old, page) || Has(planned, page); }) &&
           std::all_of(old.begin(), old.end(),
                       [&](const std::string& page) { return !Has(planned, page) || Has(now, page); });
}

bool LiesSomewhere(const Files& files, const Bytes& content)
{
    return std::any_of(files.begin(), files.end(), [&](const auto& file) { return file.second == content; });
}

PageTexts AllPages(const Files& files, const std::vector<const Files*>& whole, const Files& inPlace)
{
    PageTexts all;
    for (const auto& [name, content] : files)
        if (inPlace.contains(name) || std::any_of(whole.begin(), whole.end(), [&](const Files* known) {
                return LiesSomewhere(*known, content);
            })) {
            const PageTexts pages = PagesIn(content);
            all.insert(all.end(), pages.begin(), pages.end());
        }
    return all;
}

const Bytes* Find(const Files& files, const std::string& name)
{
    const auto found = files.find(name);
    return found == files.end() ? nullptr : &found->second;
}

struct Run {
    Outcome outcome{};
    Files before{}, after{};
    bool refused = false;
};

// What of the new names and temporary files may stay: `unfinished` allows all of it, as nobody could delete
// it.
bool MayStay(const Row& row, const Files& model, const Files& now, const std::string& name, const Bytes& is)
{
    const Bytes* will = Find(model, name);
    const bool planned = will && (*will == is || ((row.leaves & InPlace) && LiesBetween({}, *will, is)));
    const bool kept = (row.leaves & Strands) && (is.empty() || name.ends_with("~~~"));
    const bool stranded = std::any_of(model.begin(), model.end(), [&](const auto& file) {
        return file.second == is && !now.contains(file.first);
    });
    return planned || kept || stranded;
}

// Empty when each file is the old one or the new one, or lies complete under another name.
std::string WrongFiles(const Row& row, const Files& model, const Run& run, bool unfinished, bool killed)
{
    std::string wrong;
    const bool vanishes = (row.leaves & Vanishes) && !killed;
    for (const auto& [name, was] : run.before) {
        const Bytes *will = Find(model, name), *is = Find(run.after, name);
        if (!is && will && !vanishes && !LiesSomewhere(run.after, *will) &&
            !(unfinished && LiesSomewhere(run.after, was)))
            wrong += name + " is gone\n";
        const bool whole = !is || *is == was || (will && *is == *will);
        const bool grown = is && (row.leaves & Grows) && Part(*is, 0, was.size()) == was;
        if (!whole && !grown && !((row.leaves & InPlace) && LiesBetween(was, will ? *will : was, *is)))
            wrong += name + " is neither old nor new\n";
    }
    for (const auto& [name, is] : run.after)
        if (!unfinished && !run.before.contains(name) && !MayStay(row, model, run.after, name, is))
            wrong += name + " is left behind\n";
    const PageTexts planned = AllPages(model, {&model}, {}),
                    now = AllPages(run.after, {&run.before, &model}, run.before);
    for (const std::string& page : AllPages(run.before, {&run.before}, {}))
        if (!vanishes && Has(planned, page) && !Has(now, page))
            wrong += "a page is lost:\n" + page;
    return wrong;
}

Run RunOnce(const Row& row, unsigned n = 0, unsigned kinds = 0, unsigned laterKinds = 0, bool torn = false)
{
    const Held before = Live();
    Run run;
    {
        Scene scene(row.files);
        scene.n = n;
        scene.kinds = kinds;
        scene.laterKinds = laterKinds;
        scene.torn = torn;
        run.outcome = row.run(scene);
        run.refused = StopFailing();
        run.before = scene.before;
        run.after = scene.Snapshot();
    }
    Held after = Live();
    if ((row.leaves & KeepsLibrary) && kinds == Library)
        after.handles = before.handles;
    // Who can lock no block any more cannot find what it holds.
    if (laterKinds == Lock)
        after.blocks = before.blocks;
    EXPECT_TRUE(before == after) << "held: " << after.blocks - before.blocks << " blocks, "
                                 << after.locks - before.locks << " locks, " << after.handles - before.handles
                                 << " handles, " << after.objects - before.objects << " objects or faults";
    return run;
}

Files WithoutTemporary(Files files)
{
    std::erase_if(files, [](const auto& file) { return file.first.starts_with("TMP"); });
    return files;
}

// The numbers of pages, where their tags do not count.
std::vector<size_t> PageCounts(const Files& files)
{
    std::vector<size_t> counts;
    for (const auto& [name, content] : files)
        counts.push_back(PagesIn(content).size());
    return counts;
}

bool IsWrongSuccess(const Row& row, const Run& model, const Run& run, unsigned kinds)
{
    if (!run.outcome.done || ((row.leaves & Partial) && run.outcome.error != 0))
        return false;
    const Bytes &answer = run.outcome.value, &whole = model.outcome.value;
    if (answer != whole && !((row.leaves & Fewer) && answer == Part(whole, 0, answer.size())))
        return true;
    if (row.leaves & LacksTags)
        return PageCounts(run.after) != PageCounts(model.after);
    // What could not be deleted stays.
    return kinds == Delete ? WithoutTemporary(run.after) != WithoutTemporary(model.after)
                           : run.after != model.after;
}

void Judge(const Row& row, const Run& model, const Run& run, const Group& group, bool fromThenOn,
           Points& points)
{
    if (IsWrongSuccess(row, model, run, group.kinds)) {
        ++points.falseSuccesses;
        ADD_FAILURE() << "success, but "
                      << (run.outcome.value != model.outcome.value ? "another answer" : "other files");
    } else if (!run.outcome.done) {
        const uint32_t error = run.outcome.error;
        const auto lists = [&](const std::vector<uint32_t>& list) {
            return std::find(list.begin(), list.end(), error) != list.end();
        };
        EXPECT_TRUE((row.leaves & Silent) || lists(group.codes) || lists(row.codes)) << "code " << error;
        EXPECT_EQ(WrongFiles(row, model.after, run, fromThenOn || group.kinds == Delete, false), "");
    }
}

} // namespace

Points Sweep(const Row& row)
{
    Points points;
    SCOPED_TRACE(std::string(row.exported) + ", " + row.detail);
    const Run model = RunOnce(row);
    EXPECT_TRUE(model.outcome.done) << "code " << model.outcome.error;
    const auto walk = [&](unsigned kinds, unsigned laterKinds, bool torn, auto judge) {
        const auto failures = [] {
            return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
        };
        bool refused = false;
        for (unsigned n = 1; n <= MOST_CALLS; ++n) {
            const int before = failures();
            const Run run = RunOnce(row, n, kinds, laterKinds, torn);
            if (!run.refused)
                break;
            judge(run);
            refused = true;
            if (failures() != before)
                ADD_FAILURE() << "refused: call " << n << ", " << RefusedCall();
        }
        return refused;
    };
    for (const Group& group : groups)
        for (const bool fromThenOn : {false, true}) {
            SCOPED_TRACE(std::string(group.name) + (fromThenOn ? ", and all later ones" : ""));
            const bool any = walk(group.kinds, fromThenOn ? group.kinds : 0, false, [&](const Run& run) {
                ++points.failing;
                Judge(row, model, run, group, fromThenOn, points);
            });
            if (!any)
                break;
        }
    for (const bool torn : {false, true})
        if (model.before != model.after) {
            SCOPED_TRACE(torn ? "killed in a write" : "killed");
            walk(torn ? unsigned{Write} : CHANGES, CHANGES | Open, torn, [&](const Run& run) {
                ++points.killed;
                EXPECT_EQ(WrongFiles(row, model.after, run, true, true), "");
            });
        }
    return points;
}

} // namespace sweeps
