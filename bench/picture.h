// The pictures to code: netpbm files from the page script.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

struct Picture {
    std::string name;
    uint32_t width = 0, height = 0;
    uint32_t bits = 1;         // of a pixel: 1 with 1 for black, 8 grey, 24 red first
    std::vector<uint8_t> rows; // from the top, each beginning on a byte

    size_t RowBytes() const
    {
        return (size_t{width} * bits + 7) / 8;
    }
};

// Ends the program with a message when the file is not one of netpbm's binary forms.
Picture LoadPicture(const std::filesystem::path& path);

std::vector<Picture> LoadPictures(const std::filesystem::path& folder);

// Pixels that differ from the one to their left; a row starts from white. The run coders' work grows with
// this number.
uint64_t ChangingElements(const Picture& picture);

// A packed DIB of the picture: palette, rows from the bottom, padded; blue first.
std::vector<uint8_t> PackDib(const Picture& picture);
