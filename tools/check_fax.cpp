/* Which pages can go out by fax, and which lie in the file as a board's own saver would have written them. */
#include "check_page.h"

#include <algorithm>

namespace tifftool {

namespace {

constexpr uint32_t GROUP3 = 3, FILL_BITS = 4, PAGE_OF_SEVERAL = 2;
constexpr uint32_t faxWidths[] = {1728, 2048, 2432};

struct BoardForm {
    const char* name;
    bool group3Only;
    uint32_t fillOrder; // 0 for any
    int fillBits;       // of Group 3: 1 wanted, -1 unwanted, 0 either
    bool numbered, inOrder;
};

constexpr BoardForm forms[] = {
    {"gamma", false, 0, -1, false, false}, {"bicom", true, 1, 1, true, false},
    {"nms", true, 1, 1, true, false},      {"dialogic", false, 2, 1, true, false},
    {"cisco", false, 0, 0, false, true},
};

bool IsFaxCode(uint32_t compression)
{
    return compression >= 2 && compression <= 4;
}

// Within the tolerance of fax machines, which call 200 and 204 dots the same.
bool IsNear(uint32_t dots, uint32_t wanted)
{
    return dots * 100 >= wanted * 97 && dots * 100 <= wanted * 103;
}

std::string ReasonAgainst(const BoardForm& form, const PageFacts& facts, bool isNumbered, bool isInOrder)
{
    if (!IsFaxCode(facts.compression) || (form.group3Only && facts.compression != GROUP3)) {
        return DescribeCompression(facts) + (form.group3Only ? " instead of Group 3" : " is no fax code");
    }
    if (form.fillOrder != 0 && facts.fillOrder != form.fillOrder) {
        return "fill order " + std::to_string(facts.fillOrder) + " instead of " +
               std::to_string(form.fillOrder);
    }
    const bool fillBits = (facts.group3Options & FILL_BITS) != 0;
    if (facts.compression == GROUP3 && form.fillBits != 0 && fillBits != (form.fillBits > 0)) {
        return fillBits ? "has fill bits" : "has no fill bits";
    }
    if (form.numbered && (!isNumbered || facts.newSubfileType != PAGE_OF_SEVERAL)) {
        return isNumbered ? "is not marked as a page of several" : "has no page number";
    }
    return form.inOrder && !isInOrder ? "its data come before its directory" : "";
}

std::string ReasonAgainstResolution(HGLOBAL file, uint32_t page, const PageFacts& facts)
{
    uint32_t dpi = 0;
    if (!facts.hasResolution || GetTiffImageDPI(file, page, &dpi) != 0) {
        return "has no resolution";
    }
    const uint32_t across = dpi & 0xFFFF, down = dpi >> 16;
    const bool standard = IsNear(across, 204) &&
                          (IsNear(down, 98) || IsNear(down, 196) || IsNear(down, 391) || IsNear(down, 204));
    return standard ? ""
                    : "has " + std::to_string(across) + " x " + std::to_string(down) +
                          " dots per inch instead of 204 x 98 or 196";
}

std::string ReasonAgainstFax(const PageVerdict& verdict)
{
    const PageFacts& facts = verdict.facts;
    const uint32_t bits = facts.bitsPerSample * facts.samplesPerPixel;
    if (!verdict.isLoaded || !verdict.isWhole) {
        return "it cannot be decoded to its end";
    }
    if (bits != 1) {
        return "it has " + std::to_string(bits) + " bits per pixel, and faxes are black and white";
    }
    if (facts.orientation > 4) {
        return "it is stored turned";
    }
    return std::ranges::find(faxWidths, facts.width) == std::end(faxWidths)
               ? "it is " + std::to_string(facts.width) + " pixels wide, and faxes have 1728, 2048 or 2432"
               : "";
}

} // namespace

FaxVerdict JudgeForFax(HGLOBAL file, uint32_t page, const Directory& directory, const PageVerdict& verdict)
{
    FaxVerdict fax = {ReasonAgainstFax(verdict), {}};
    if (!fax.reason.empty()) {
        return fax;
    }
    uint32_t firstStrip = 0;
    const bool isInOrder =
        GetTiffImageInfo(file, page, tag::StripOffsets, &firstStrip) && firstStrip > directory.offset;
    const bool isNumbered = GetTiffImageInfo(file, page, tag::PageNumber, nullptr) != 0;
    const std::string resolution = ReasonAgainstResolution(file, page, verdict.facts);
    for (const BoardForm& form : forms) {
        const std::string reason = ReasonAgainst(form, verdict.facts, isNumbered, isInOrder);
        fax.boards.push_back({form.name, reason.empty() ? resolution : reason});
    }
    return fax;
}

} // namespace tifftool
