// Colour conversions over one row, in the arithmetic that decides the last bit of each pixel.
#pragma once

#include <cstdint>

namespace tiff {

// Swaps the first and third byte of every whole 3-byte pixel, in place: RGB to a DIB's BGR and back. One or
// two bytes at the end stay.
void SwapRedAndBlue(uint8_t* row, uint32_t bytes);

// The same while copying to another row; both may also be the same row.
void CopySwapped(uint8_t* target, const uint8_t* source, uint32_t bytes);

// 16-bit samples in the processor's order to bytes, by a right shift.
void ReduceSamples(uint8_t* target, const uint8_t* samples, uint32_t bytes, uint32_t shift);

// Whole pixels only: C, M, Y, K to B, G, R and Y, Cb, Cr to B, G, R.
void ConvertCmyk(uint8_t* target, const uint8_t* source, uint32_t pixels);
void ConvertYCbCr(uint8_t* target, const uint8_t* source, uint32_t pixels);

// Bytes to 16-bit samples in the processor's order, shifted left; inverted first when `invert` is set.
void WidenSamples(uint8_t* target, const uint8_t* source, uint32_t samples, uint32_t shift, bool invert);

// Whole pixels only: B, G, R to C, M, Y, K and to Y, Cb, Cr.
void ConvertToCmyk(uint8_t* target, const uint8_t* source, uint32_t pixels);
void ConvertToYCbCr(uint8_t* target, const uint8_t* source, uint32_t pixels);

} // namespace tiff
