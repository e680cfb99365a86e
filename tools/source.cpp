#include "source.h"

#include "chain.h"
#include "describe.h"
#include "diagnosis.h"

namespace tifftool {

namespace {

constexpr uint32_t BROKEN_CHAIN = 6;

bool IsEmptyFile(const WIN32_FILE_ATTRIBUTE_DATA& facts)
{
    return facts.nFileSizeHigh == 0 && facts.nFileSizeLow == 0 &&
           !(facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
}

} // namespace

// Only a chain with the largest number of pages can be one with a loop.
Source::Source(const char* sourcePath)
    : path(sourcePath), file(OpenTiffFile(sourcePath, T_READ)), openError(TiffError()),
      pages(file.handle ? NumberOfTiffImages(file.handle, TIFF_ALL_PAGES) : 0)
{
    if (file.handle && openError == BROKEN_CHAIN) {
        chainFault = "the chain of pages is broken after page " + std::to_string(pages);
    }
    if (pages < TIFF_MAX_PAGES) {
        return;
    }
    RawFile raw(path);
    Chain chain = WalkChain(raw);
    if (chain.comesBackTo != 0) {
        directories = std::move(chain.directories);
        pages = static_cast<uint32_t>(directories.size());
        chainFault = "the chain of pages comes back to page " + std::to_string(chain.comesBackTo) +
                     " after page " + std::to_string(pages);
        openError = BROKEN_CHAIN;
    }
}

int ReportOpenFailure(const std::string& path, uint32_t code)
{
    const std::string why = WhyNotTiff(path);
    return why.empty() ? ReportError(path, code)
                       : ReportSentence(path, why + " (error " + std::to_string(code) + ")");
}

bool HasPages(const Source& source)
{
    if (!source.file.handle) {
        ReportOpenFailure(source.path, source.openError);
    } else if (source.pages == 0) {
        ReportSentence(source.path, "has no pages");
    }
    return source.pages != 0;
}

bool IsWhole(const Source& source)
{
    return HasPages(source) && ReportChain(source) == ALL_FINE;
}

bool HasPage(const Source& source, uint32_t page)
{
    if (page <= source.pages) {
        return true;
    }
    ReportSentence(source.path,
                   "has no page " + std::to_string(page) + ", only " + Counted(source.pages, "page"));
    return false;
}

bool SelectPages(const Source& source, const PageSelection& selection, std::vector<uint32_t>& pages)
{
    const uint32_t missing = ListPages(selection, source.pages, pages);
    return missing == 0 || HasPage(source, missing);
}

bool IsWholeWith(const Source& source, uint32_t page)
{
    return IsWhole(source) && HasPage(source, page);
}

int ReportChain(const Source& source)
{
    if (source.openError == 0) {
        return ALL_FINE;
    }
    return source.chainFault.empty()
               ? ReportError(source.path, source.openError)
               : ReportSentence(source.path,
                                source.chainFault + " (error " + std::to_string(source.openError) + ")");
}

bool CanBeAddedTo(const std::string& path)
{
    WIN32_FILE_ATTRIBUTE_DATA facts = {};
    if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &facts) || IsEmptyFile(facts)) {
        return true;
    }
    const Source source(path.c_str());
    if (!source.file.handle) {
        return ReportOpenFailure(path, source.openError) == ALL_FINE;
    }
    return ReportChain(source) == ALL_FINE;
}

bool IsMotorola(const Source& source)
{
    TiffFileInformation facts{};
    return GetTiffFileInfo(source.file.handle, &facts) && facts.byteOrder == TIFF_MOTOROLA;
}

uint32_t DirectoryOf(Source& source, uint32_t page)
{
    if (source.directories.empty()) {
        RawFile raw(source.path);
        source.directories = WalkChain(raw).directories;
    }
    return page < source.directories.size() ? source.directories[page] : 0;
}

std::string PageName(const std::string& path, uint32_t page)
{
    return path + ", page " + std::to_string(page);
}

std::string Counted(uint64_t count, const char* noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

} // namespace tifftool
