#pragma once

// The row worker's vectorised stages for 16-bit images: plain numbers and pointers in, plain
// arrays out. This header is included by files compiled for AVX2, so it holds data and
// declarations only: an inline function defined here could be compiled with AVX2 instructions
// there and then be the copy the linker keeps for ordinary code.
//
// Every stage computes exactly what the row worker's scalar steps compute, operation for
// operation (no fused multiply-adds), with the same SLEEF functions the batched scalar steps use
// on such processors; what is rare or too irregular for lanes goes through the callbacks, which
// run the scalar code. The stored samples come from the encoding table's thresholds; only the
// guesses that lead there, and the tests that rule pixels out early, are approximate, with
// bounds on their errors.

#include <cstddef>
#include <cstdint>

namespace tintorra::rowKernel {

// Where the 16-bit samples of a pixel lie, relative to the start of its row.
struct SampleLayout {
    std::int64_t bytesPerPixel;
    std::uint64_t redOffset;
    std::uint64_t greenOffset;
    std::uint64_t blueOffset;
    std::uint64_t alphaOffset;
    bool hasAlpha;
    bool premultiplied;
};

// A row's candidates: the pixels whose weight is computed (not transparent, over Luv with a hue
// that may lie on the selected arc), with their linear straight-alpha colours. Arrays hold at
// least the stretch's width plus four.
struct Candidates {
    std::uint32_t* x;
    double* r;
    double* g;
    double* b;
    double* alpha;
};

// Scratch for the reading stage: the columns of the pixels to be read exactly and their samples,
// one array per channel. Arrays hold at least the stretch's width plus four.
struct RowWords {
    std::uint32_t* open;
    std::uint32_t* red;
    std::uint32_t* green;
    std::uint32_t* blue;
    std::uint32_t* alpha;
};

// For pixels whose samples fill them without gaps (three or four 16-bit samples to a pixel, in
// any order): byte shuffles that interleave the samples of four pixels, packed as
// words (r0..r3, g0..g3) and (b0..b3, a0..a3), into their 4 x bytesPerPixel bytes.
// shuffles[32 half + 16 source + i] gives byte i of half `half` (bytes 0..15, 16..) from the
// first (source 0) or second word register, 0x80 where it comes from the other.
struct PixelShuffles {
    std::uint8_t bytes[64];
};

// For the same pixels: byte shuffles that spread the samples of four pixels into one register of
// four 32-bit words per channel (red, green, blue, alpha). bytes[32 c + i] gives byte i of
// channel c's register from the pixels' first 16 bytes, bytes[32 c + 16 + i] from the 16 bytes
// at lastOffset; 0x80 for a zero or a byte from the other.
struct PixelUnshuffles {
    std::uint8_t bytes[128];
    std::int64_t lastOffset;
};

struct ReadConstants {
    SampleLayout layout;
    // Null unless the samples fill the pixels.
    const PixelUnshuffles* unshuffles;
    // The linear value of every 16-bit sample.
    const double* decode;
    // Over Luv with a selected arc short of the whole circle: the hue filter's linear forms in
    // r, g, b and its arc (see LuvHueFilter).
    bool luvFilter;
    double filterU[3];
    double filterV[3];
    double centreCos;
    double centreSin;
    double cosHalfWidth;
    double cosSquared;
    // LuvHueFilter's test of whole boxes, so that pixels far off the arc are ruled out before
    // any exact value is looked up. A box is a run of 256 samples per channel (a high byte h);
    // boxBounds[2 (256 c + h) + f] is at least the largest w_f[c] x linear value over the run h
    // of channel c, for the two forms f. A form rules a box out when the sum of its channels'
    // bounds, in single precision, is below -boxFloors[f].
    bool boxTest;
    bool bothForms;
    const float* boxBounds;
    float boxFloors[2];
    // A pixel the lookup cannot read (premultiplied and not opaque): reads it as the pixel layer
    // does into rgba and says whether it is a candidate.
    bool (*readPixel)(const void* context, std::int64_t x, std::int64_t y, double* rgba);
    const void* context;
};

// The selected candidates, packed: which candidate, its selection and everything the painting
// and writing need. Arrays hold at least the candidate count plus four (the selection uses them
// as scratch for every candidate first).
struct SelectedColors {
    std::uint32_t* candidate;
    std::uint32_t* x;
    double* weight;
    double* zone;
    double* saturation;
    // The unshifted LCh colour.
    double* L;
    double* C;
    double* h;
    double* alpha;
    // 2 x h in degrees, wrapped into [0, 720); the shift's scratch once it has read them.
    double* halfDegrees;
    // The unshifted linear colour (when SelectConstants::keepUnshifted).
    double* r;
    double* g;
    double* b;
    // The painted linear colour inside 0..1 (alpha in `paintedAlpha`).
    double* paintedR;
    double* paintedG;
    double* paintedB;
    double* paintedAlpha;
    // The samples it is stored with, r, g, b, alpha.
    std::uint32_t* samples[4];
};

struct SelectConstants {
    // 0 over Luv, 1 over Lab.
    bool lab;
    // Whether the selected colours' unshifted linear colours are kept: the painted coverage
    // mixes them in.
    bool keepUnshifted;
    double M[9];
    double hueLowerFalloff;
    double hueLower;
    double hueUpper;
    double hueUpperFalloff;
    double lightLowerFalloff;
    double lightLower;
    double lightUpper;
    double lightUpperFalloff;
    double satLowerFalloff;
    double satLower;
    double satUpper;
    double satUpperFalloff;
    // The chroma of the gamut's most chromatic colour per half degree of hue, every fourth
    // double (the records' second member); null without a gamut.
    const double* maxChromas;
    // The shift's gamut table (PaintConstants::chromas), whose entries for the selected colours
    // are fetched into the cache here, well before the shift reads them; null without a gamut.
    const double* chromaPairs;
    // A hue more than four periods from the chain, brought into it as the scalar code does.
    double (*bringHueIntoChain)(const void* context, double hue, bool raise);
    const void* context;
};

// The gamut's chroma table with rows paired (see PairedChromaTable.h).
struct ChromaTable {
    const double* pairs;
};

struct PaintConstants {
    bool lab;
    double MI[9];
    double imageGamma;
    double targetHue;
    double targetSat;
    double saturationGain;
    double targetBri;
    double curveGain;
    double curve[11];
    // No brightness change and the identity curve: the lightness stays, and no power is taken.
    bool keepsLightness;
    // pairs null without a gamut.
    ChromaTable chromas;
    // A partially selected colour: the blend from the unshifted LCh colour `from` (L, C, h,
    // alpha) to `shifted`, written back into `shifted`.
    void (*blend)(const void* context, const double* from, int zone, double weight,
                  double* shifted);
    const void* context;
};

// The 16-bit encoding of linear values in 0..1 (see SampleEncodeTable).
struct Encoding {
    // thresholds[k]: the smallest linear value stored as k or more, for k = 0 .. 65536.
    const double* thresholds;
    // SampleGuessCells' members; cells null where the table has none.
    const double* cells;
    std::uint64_t firstKey;
    unsigned shift;
    // The sample of one value, for a table without cells.
    std::uint32_t (*encode)(const void* context, double linear);
    const void* context;
};

struct WriteConstants {
    SampleLayout layout;
    Encoding encoding;
    // Null unless the samples fill the pixels.
    const PixelShuffles* shuffles;
    // The row's painted coverage, or null when nothing is painted.
    const std::uint8_t* coverage;
    // A colour to be premultiplied by an alpha other than 1: written as the pixel layer does.
    void (*writePixel)(const void* context, std::int64_t x, std::int64_t y, const double* rgba);
    const void* context;
};

namespace avx2 {

// The candidates among the `count` pixels from column `first` of row y (which starts at `row`),
// in order of x; returns their count. `words` has room for `count` plus four.
std::size_t readCandidates(const ReadConstants& constants, const std::uint8_t* row,
                           std::size_t first, std::size_t count, std::int64_t y,
                           const RowWords& words, const Candidates& out);

// The weight of each of `count` candidates into `weights` (room for four more), the selected
// ones (weight above 0) packed into `selected`. Returns their count.
std::size_t selectCandidates(const SelectConstants& constants, const Candidates& in,
                             std::size_t count, double* weights, const SelectedColors& selected);

// As selectCandidates, for candidates whose LCh colours are already in `selected`'s L, C and h
// at the candidates' own places; `in` gives their columns, alpha and, where they are kept,
// linear colours.
std::size_t selectLchCandidates(const SelectConstants& constants, const Candidates& in,
                                std::size_t count, double* weights, const SelectedColors& selected);

// The shifted colours of `count` selected candidates (the record shows the shifted image), as
// linear colours into the painted arrays.
void paintShifted(const PaintConstants& constants, const SelectedColors& selected,
                  std::size_t count);

// The painted colours mixed with the unshifted ones by the coverage and stored into the row.
void writePainted(const WriteConstants& constants, const SelectedColors& selected,
                  std::size_t count, std::uint8_t* row, std::int64_t y);

// The 16-bit sample the pixel writers store for each of `count` linear values; for tests of the
// encoding on its own.
void encodeSamples(const Encoding& encoding, const double* linear, std::size_t count,
                   std::uint32_t* samples);

// The gamut lookups on their own, for tests: chromaForHue and maxChromaForHue's chroma.
void chromasForHues(const ChromaTable& table, const double* hue, const double* lightness,
                    std::size_t count, double* out);
void maxChromasForHues(const double* maxChromas, const double* hue, std::size_t count, double* out);

} // namespace avx2

} // namespace tintorra::rowKernel
