// Every call of every operation fails, and every operation that changes files is killed at each change.
#include "sweeps/scene.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace sweeps {

namespace {

const std::vector<Row>& AllRows()
{
    static const std::vector<Row> rows = [] {
        std::vector<Row> all = PureRows();
        const std::vector<Row> desktop = DesktopRows();
        all.insert(all.end(), desktop.begin(), desktop.end());
        return all;
    }();
    return rows;
}

Points total;

class PrintTotal : public testing::Environment {
    void TearDown() override
    {
        if (total.failing != 0)
            std::printf("sweeps: %u rows, %u failing points, %u kill points, %u false successes\n",
                        static_cast<unsigned>(AllRows().size()), total.failing, total.killed,
                        total.falseSuccesses);
    }
};

const auto* const printing = testing::AddGlobalTestEnvironment(new PrintTotal);

} // namespace

class AnOperation : public testing::TestWithParam<size_t> {};

TEST_P(AnOperation, SurvivesTheFailureOfEveryCall)
{
    ProvideSiblings();
    const Points points = Sweep(AllRows()[GetParam()]);
    total.failing += points.failing;
    total.killed += points.killed;
    total.falseSuccesses += points.falseSuccesses;
}

INSTANTIATE_TEST_SUITE_P(Sweeps, AnOperation, testing::Range<size_t>(0, AllRows().size()),
                         [](const auto& info) {
                             const std::string names = AllRows()[info.param].exported;
                             return std::to_string(info.param) + "_" + names.substr(0, names.find(' '));
                         });

} // namespace sweeps
