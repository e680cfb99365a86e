// A TIFF on disk or in memory that a handle writes to, gone at the end of the scope, and its tags.
#pragma once

#include "support/bytes.h"
#include "tiff/tiff.h"

#include <utility>

class Target {
public:
    explicit Target(bool onDisk = false, const Bytes& content = {}, uint32_t mode = T_APPEND);
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;
    ~Target();
    Bytes Written() const;

private:
    const bool onDisk;
    TempFile disk;

public:
    const HGLOBAL file;
};

// A page with these tags, whose values are LONGs; its number.
uint32_t DefinePage(HGLOBAL file, std::initializer_list<std::pair<uint32_t, uint32_t>> tags);

// How many there are.
uint32_t LoadPages(HGLOBAL file);

// Of a loaded page: the first value, the bytes of all. A missing tag has none.
uint32_t TagNumber(HGLOBAL file, uint32_t page, uint32_t tag);
Bytes TagValues(HGLOBAL file, uint32_t page, uint32_t tag, uint32_t* type = nullptr,
                uint32_t* count = nullptr);
