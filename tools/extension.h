/* Names whose extensions say what is in the file. */
#ifndef TOOLS_EXTENSION_H
#define TOOLS_EXTENSION_H

#include <string>

namespace tifftool {

// False, with a message, when a name has the extension of another kind of file than `extension`, such as
// ".pdf". Extensions that nobody knows, none, and "-" are taken.
bool SuitsContent(const std::string& path, const char* extension);

// The extension in small letters, with its dot; empty for none.
std::string ExtensionOf(const std::string& path);

} // namespace tifftool

#endif
