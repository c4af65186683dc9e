#pragma once

#include <cstdint>

namespace tintorra {

// The pixels of one colour lie all over the image; writing them colour by colour would miss the
// cache on nearly every pixel. The writes are therefore sorted into blocks of whole rows (about
// a quarter of the second-level cache each) and applied block by block; a destination that does
// not yet hold the source gets each block's samples just before the block's writes. At most
// about `wavePixels` writes are held at once; more are done in waves of consecutive blocks.
struct TableWriteLimits {
    std::uint64_t blockBytes = 256u << 10;
    std::uint64_t wavePixels = 8u << 20;
};

} // namespace tintorra
