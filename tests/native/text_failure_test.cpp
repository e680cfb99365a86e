// Every allocation and read of a text page fails once: no page is delivered short, and nothing is left
// behind.
#include "compose/text_layout.h"
#include "core/handles.h"
#include "standin/standin.h"
#include "support/bytes.h"

#include <algorithm>

using namespace tiff;

TEST(TextFailure, IsReportedAndLeavesNothing)
{
    const std::string text(40'000, 'x'); // a line that needs room, in a file of several blocks
    const TempFile source(Bytes(text.begin(), text.end()));
    TextGeometry page{};
    page.width = page.right = 100'000;
    page.height = page.bottom = 100;
    const standin::LeakCheck leaks;
    standin::FailEach(standin::Allocation | standin::Read, [&](unsigned) {
        const FileHandle file(source.Path(), GENERIC_READ, OPEN_EXISTING);
        size_t drawn = 0;
        const TextDevice device = {
            [](void*, std::span<const char> measured, int32_t* widths) {
                std::fill_n(widths, measured.size(), 1);
            },
            [](void* record, int32_t, int32_t, std::span<const char> line) {
                *static_cast<size_t*>(record) += line.size();
            },
            [](void*) { return Status{TIFF_TEXT_DONE}; },
            [](void*) { return Status{TIFF_TEXT_DONE}; },
            &drawn,
            page.width,
            20,
        };
        uint32_t pages = 0;
        const Status status = LayText(file.Get(), page, device, 0, 9, pages);
        EXPECT_EQ(status != TIFF_TEXT_DONE, standin::InjectionFired());
        EXPECT_EQ(drawn, status == TIFF_TEXT_DONE ? text.size() : 0);
        EXPECT_EQ(pages, status == TIFF_TEXT_DONE);
    });
}
