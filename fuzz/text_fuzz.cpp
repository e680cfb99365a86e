// Lays any text out on any page. Pieces are drawn inside the page from top to bottom, pages come one after
// the other, and no more bytes are drawn than the text has.
#include "compose/text_layout.h"
#include "core/handles.h"
#include "scaffold.h"

#include <sys/mman.h>

using namespace fuzz;

namespace {

struct Drawn {
    const tiff::TextGeometry* page;
    uint8_t widths;
    uint32_t failingCall, calls = 0, delivered = 0;
    bool open = true; // a page that can be drawn on
    size_t bytes = 0;
    int32_t y = 0;
};

void Measure(void* record, std::span<const char> text, int32_t* widths)
{
    Demand(text.size() <= tiff::MOST_MEASURED);
    const uint8_t factor = static_cast<const Drawn*>(record)->widths;
    for (const char letter : text)
        *widths++ = static_cast<uint8_t>(letter) % 16 * factor;
}

void Draw(void* record, int32_t x, int32_t y, std::span<const char> text)
{
    auto& drawn = *static_cast<Drawn*>(record);
    Demand(drawn.open && x >= drawn.page->left && y >= drawn.y);
    drawn.y = y;
    drawn.bytes += text.size();
}

tiff::Status Step(Drawn& drawn)
{
    return ++drawn.calls == drawn.failingCall ? TIFF_TEXT_NO_PAGE : TIFF_TEXT_DONE;
}

tiff::Status Deliver(void* record)
{
    auto& drawn = *static_cast<Drawn*>(record);
    Demand(drawn.open);
    drawn.open = false;
    const tiff::Status status = Step(drawn);
    drawn.delivered += status == TIFF_TEXT_DONE;
    return status;
}

tiff::Status Begin(void* record)
{
    auto& drawn = *static_cast<Drawn*>(record);
    Demand(!drawn.open);
    drawn.open = true;
    drawn.y = 0;
    return Step(drawn);
}

TiffTextPageSettings SettingsOf(Choices& choices)
{
    TiffTextPageSettings settings{};
    settings.pageWidth = choices.Number(2);
    settings.pageHeight = choices.Number(2);
    settings.leftMargin = choices.Byte();
    settings.topMargin = choices.Byte();
    settings.horizontalDpi = choices.Byte();
    settings.verticalDpi = choices.Byte();
    settings.lineSpacing = choices.Byte();
    settings.flags = choices.Byte();
    uint32_t stop = 0;
    for (uint32_t& tab : settings.tabStops)
        tab = stop += choices.Byte();
    return settings;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const Run run(1 << 20);
    static const int descriptor = memfd_create("text", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    Choices choices{{data, size}};
    const TiffTextPageSettings settings = SettingsOf(choices);
    tiff::TextGeometry page;
    if (!tiff::PlanGeometry(settings, page))
        return 0;
    Drawn drawn{&page, choices.Byte(), choices.Byte()};
    const int32_t lineHeight = 1 + choices.Byte();
    const uint32_t start = choices.Number(2), limit = 1 + choices.Below(20);
    const tiff::TextDevice device = {Measure, Draw, Deliver, Begin, &drawn, page.width, lineHeight};
    const Input text = choices.left;
    Demand(ftruncate(descriptor, 0) == 0 &&
           pwrite(descriptor, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
    {
        const tiff::FileHandle file(path.c_str(), GENERIC_READ, OPEN_EXISTING);
        uint32_t pages = 0;
        const tiff::Status status = tiff::LayText(file.Get(), page, device, start, limit, pages);
        Demand(pages == drawn.delivered && pages <= limit && drawn.bytes <= text.size());
        Demand(status != TIFF_TEXT_DONE || pages > 0);
    }
    Drawn onePage{&page, drawn.widths, 0};
    tiff::TextDevice once = device;
    once.record = &onePage;
    const tiff::Status status =
        tiff::LayTextOnPage({reinterpret_cast<const char*>(text.data()), text.size()}, page, once);
    Demand(onePage.bytes <= text.size() && (status != TIFF_TEXT_DONE || onePage.delivered <= 1));
    return 0;
}
