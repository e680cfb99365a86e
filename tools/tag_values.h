/* Values of tags, from the command line to the bytes of a file. */
#ifndef TOOLS_TAG_VALUES_H
#define TOOLS_TAG_VALUES_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tifftool {

enum class ValueKind { Whole, Signed, Real, Text, Fraction, SignedFraction };

struct FieldType {
    const char* name;
    uint32_t code;
    ValueKind kind;
    bool takenAsBytes; // the library counts and writes these as bytes, without swapping
};

// Null for an unknown name.
const FieldType* FindFieldType(const char* name);

// The names of all types.
std::string FieldTypeNames();

// Bytes of one value; 1 for unknown types.
size_t ElementBytes(uint32_t type);

// Swaps values from the processor's byte order to the other, or back.
void ReverseElements(uint32_t type, std::span<uint8_t> bytes);

// Appends the values in the processor's order. Returns an empty text, or the fault of a value.
std::string ParseValues(const FieldType& type, std::span<const char* const> texts,
                        std::vector<uint8_t>& bytes);

} // namespace tifftool

#endif
