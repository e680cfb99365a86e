// A TIFF file as text, by a walker of its own, to compare files with what a person wrote down:
//
//     II
//     directory 28, link 0
//     256 SHORT 1: 8
//     273 LONG 2 @11: 8 10
//
// Behind it come complaints: odd directories, unsorted tags, values or strips that overlap
// something else or lie outside the file.
#pragma once

#include "support/bytes.h"

std::string DumpTiff(const Bytes& file);

// The pages of a file as texts that do not depend on positions: offsets are replaced by the bytes they lead
// to.
std::vector<std::string> PagesOf(const Bytes& file);

// Only the complaints of DumpTiff.
std::string Complaints(const Bytes& file);
