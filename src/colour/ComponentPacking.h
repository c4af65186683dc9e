#pragma once

#include "colour/ColorComponents.h"

#include <cstdint>

namespace tintorra {

// Conversions between floating-point components and 8- and 16-bit integer samples, and the small
// range repairs applied before colours are written out.
//
// The integer outputs clamp their input to 0..1 first (NaN counts as 0): a value outside that
// range has no integer to go to, and converting it unclamped would be undefined.

// 8-bit samples / 255 and 16-bit samples / 65535.
ColorComponents componentsFromBytes(std::uint8_t r, std::uint8_t g, std::uint8_t b,
                                    std::uint8_t alpha = 255);
ColorComponents componentsFromWords(std::uint16_t r, std::uint16_t g, std::uint16_t b,
                                    std::uint16_t alpha = 65535);
// A packed 32-bit colour, low byte first: r in bits 0-7, g 8-15, b 16-23, alpha 24-31.
ColorComponents componentsFromBytes(std::uint32_t packed);

// Rounded to the nearest sample: value * 255 (or 65535) + 0.5, truncated. Alpha is written only
// when a destination for it is given.
void bytesFromComponents(ColorComponents rgba, std::uint8_t& r, std::uint8_t& g, std::uint8_t& b,
                         std::uint8_t* alpha = nullptr);
void wordsFromComponents(ColorComponents rgba, std::uint16_t& r, std::uint16_t& g, std::uint16_t& b,
                         std::uint16_t* alpha = nullptr);

// Packs into the low-byte-first layout above. Each component is multiplied by the largest double
// below 256 and truncated, so that every byte value gets an equal share of 0..1 and 1.0 still
// lands on 255.
std::uint32_t packedFromComponents(ColorComponents rgba);

// One component with the same equal-share scheme, using the largest float below 256 or 65536.
std::uint8_t byteFromComponent(double value);
std::uint16_t wordFromComponent(double value);

// All four components limited to 0..1.
ColorComponents clampComponents(ColorComponents rgba);
void clampTriple(double& a, double& b, double& c);

// Repairs the rounding noise of a conversion: a channel outside 0..1 is snapped to the nearest
// multiple of 1/65535 (single precision, halves rounded up); if it is still outside, the colour
// is not noise but genuinely out of range and r, g, b all become 0. Alpha is left alone.
ColorComponents requantiseOutOfRange(ColorComponents rgb);

// Fits r, g, b into 0..1 only when they leave it: shifted by min(smallest, 0) and divided by
// max(largest, 1) - min(smallest, 0).
ColorComponents normaliseToUnitRange(ColorComponents rgb);
// Always stretches r, g, b so that the smallest becomes 0 and the largest 1. A colour whose three
// channels are equal has no range to stretch and becomes black.
ColorComponents normaliseToUnitRangeStretched(ColorComponents rgb);

// Divides r, g, b by alpha when alpha is above 0.
ColorComponents unpremultiply(ColorComponents rgba);

} // namespace tintorra
