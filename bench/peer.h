// The same jobs with libtiff. Its own header must not be included here: it declares a record `tiff`.
#pragma once

#include "bench/picture.h"

struct Scheme {
    const char* name;
    uint32_t selector; // of the library's savers
    uint16_t compression;
    uint16_t predictor;
    uint32_t group3Options;
    bool bilevel;                      // for bilevel pages only
    uint16_t chroma = 2, quality = 75; // of JPEG: pixels to a sample of chroma in each direction
};

inline constexpr Scheme schemes[] = {
    {"stored", 201, 1, 0, 0, false}, {"PackBits", 202, 32773, 0, 0, false},
    {"LZW", 203, 5, 0, 0, false},    {"LZW differences", 204, 5, 2, 0, false},
    {"MH", 205, 2, 0, 0, true},      {"G3 1-D", 206, 3, 0, 0, true},
    {"G3 2-D", 207, 3, 0, 1, true},  {"G4", 208, 4, 0, 0, true},
    {"JPEG", 209, 7, 0, 0, false},
};

// Its pixels are not those of the picture, and its pages are not decoded line by line.
inline bool IsLossy(const Scheme& scheme)
{
    return scheme.compression == 7;
}

// Whether a scheme can code such a picture.
bool Suits(const Scheme& scheme, const Picture& picture);

// The rows of a strip as the library's savers choose them: about 8 KB, or the whole facsimile page.
uint32_t RowsPerStrip(const Scheme& scheme, const Picture& picture);

// A file that libtiff has open.
struct PeerFile;

PeerFile* CreatePeerFile(const std::string& path);
PeerFile* CreateBytes(std::vector<uint8_t>& bytes);
PeerFile* OpenPeerFile(const std::string& path);
// The bytes stay where they are; libtiff reads them as a mapped file.
PeerFile* OpenBytes(std::vector<uint8_t>& bytes);
void Close(PeerFile* file);

// Writes the picture as the next page.
void PutPage(PeerFile* file, const Picture& picture, const Scheme& scheme, uint32_t rowsPerStrip);
void EndPage(PeerFile* file);

// Decodes the strips of the current page into the target, in order.
void ReadStrips(PeerFile* file, uint8_t* target, size_t bytes);

uint32_t CountPages(PeerFile* file);
// Parses every directory from the first on.
uint32_t ReadDirectories(PeerFile* file);

// Appends pages from the current one on, strips and tags as they are, and goes on to the next.
void CopyPages(PeerFile* source, uint32_t count, PeerFile* target);
void SkipPage(PeerFile* source);

// A TIFF of one page.
std::vector<uint8_t> WriteTiff(const Picture& picture, const Scheme& scheme, uint32_t rowsPerStrip);
