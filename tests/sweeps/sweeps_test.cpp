// Every call of every operation fails, and every operation that changes files is killed at each change.
#include "sweeps/scene.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
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

#ifdef _WIN32

// These take no memory, no file and no drawing of their own, or cannot say that one failed.
const char* const notSwept =
    // what a thread or the caller holds
    "GetMemoryTiffHandle "
    "SetTiffError TiffError TiffErrorString SetTiffDllFileHandle GetTiffVersion IsRequiredTag SetKfactor "
    "GetTiffJpegQuality SetTiffJpegQuality FindCALSRecord mClose GetTiffPathCodePage SetTiffPathCodePage "
    "GetTiffVersionNumber TiffErrorDetail GetTiffDecodeQuality SetTiffFaxQuality "
    // line routines always answer 0; the loaders and savers above run them
    "DllFillCcittLine DllFillMonoTiffLine DllFillTiffLine DllFillTiffLineBitmap24Bit DllFillTiffLineDIB "
    "DllFillTiffLineDIB24Bit DllFlushTiffLine DllFlushTiffLine24 DllFlushTiffLine24DIB DllFlushTiffLineDIB "
    "DllFillCALSLineDIB DllFlushCALSLineDIB FlushCALS180LineToScreen FlushCALS270LineToScreen "
    "FlushCALS90LineToScreen FlushCALSLineToScreen FlushMonoLineToScreen FlushMonoRot18LineToScreen "
    "FlushMonoRot27LineToScreen FlushMonoRotLineToScreen FlushRGB24LineToScreen FlushRGB24Rot18LineToScreen "
    "FlushRGB24Rot27LineToScreen FlushRGB24RotLineToScreen FlushRGBLineToScreen FlushRGBRot18LineToScreen "
    "FlushRGBRot27LineToScreen FlushRGBRotLineToScreen";

std::set<std::string> Words(const std::string& text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

TEST(Sweeps, CoverEveryExport)
{
    std::ifstream list(TIFF_SOURCE_DIR "/exports/tiff.def");
    std::set<std::string> missing, known = Words(notSwept);
    for (const Row& row : AllRows())
        known.merge(Words(row.exported));
    for (std::string line; std::getline(list, line);)
        if (line.starts_with("    ") && line[4] != ';' && known.erase(line.substr(4)) == 0)
            missing.insert(line.substr(4));
    EXPECT_EQ(missing, std::set<std::string>()) << "without a row";
    EXPECT_EQ(known, std::set<std::string>()) << "not exported";
}

#endif

class AnOperation : public testing::TestWithParam<size_t> {};

TEST_P(AnOperation, SurvivesTheFailureOfEveryCall)
{
    ProvideSiblings();
    Live();
    SetTiffError(0); // makes the thread's record
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
