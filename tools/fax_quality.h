/* The received-fax quality that pages carry in their tags 326, 327 and 328. */
#ifndef TOOLS_FAX_QUALITY_H
#define TOOLS_FAX_QUALITY_H

#include "source.h"

namespace tifftool {

// Has the next page saved with the quality of the page that was decoded just now, counted from 0 and still
// loaded, or without one when nothing is known of it. A null source is a picture that was no fax.
void SaveQualityOfLast(const Source* source, uint32_t page);

// "3 rows are damaged, 2 of them in a row"; empty for none.
std::string DescribeDamage(uint32_t badRows, uint32_t longestBadRun);

} // namespace tifftool

#endif
