/* "-": the standard input, read into a file as the library reads files, and the standard output. */
#ifndef TOOLS_STANDARD_STREAMS_H
#define TOOLS_STANDARD_STREAMS_H

#include <string>

namespace tifftool {

inline constexpr char STANDARD_STREAM[] = "-";

// Reads all of it into a file of the temporary folder, which goes when the program ends. Empty, with a
// message, when that fails or it was read before.
std::string SpoolStandardInput();

// Copies a file to the standard output, byte for byte; false when that fails.
bool CopyToStandardOutput(const std::string& path);

// Lines end as everywhere but on Windows: for texts that other systems read.
void EndLinesPlainly();

// A text for people: where it has the name of the file above, it says "standard input" instead.
std::string ShownName(const std::string& text);

} // namespace tifftool

#endif
