/* Texts that are drawn are in the system's code page; the tool's arguments and output are in the process's,
 * which its manifest makes UTF-8. */
#ifndef TOOLS_SYSTEM_TEXT_H
#define TOOLS_SYSTEM_TEXT_H

#include <string>

namespace tifftool {

// False when a character has no place in the system's code page: the text is unchanged then.
bool ToSystem(std::string& text);
// Bytes that are not UTF-8 stay. A byte order mark goes.
bool Utf8ToSystem(std::string& text);
std::string FromSystem(const std::string& text);

// The same for an argument, with a message.
bool TakeText(const char* argument, std::string& text);

} // namespace tifftool

#endif
