/* Text in JSON, written from the outside to the inside. */
#ifndef TOOLS_JSON_H
#define TOOLS_JSON_H

#include <cstdint>
#include <string>

namespace tifftool {

struct Json {
    std::string text;

    Json& Open(char bracket); // '{' or '['
    Json& Close(char bracket);
    Json& Key(const char* name);
    Json& Text(const std::string& value); // bytes that are not UTF-8 become the characters of the same codes
    Json& Number(int64_t value);
    Json& Real(double value); // null for what is no number
    Json& Truth(bool value);

private:
    void Separate();
};

// Prints it, as a line of its own.
void Print(const Json& json);

} // namespace tifftool

#endif
