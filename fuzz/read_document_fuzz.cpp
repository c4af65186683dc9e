// Any bytes as a Tintorra document: the multi-page TIFF with its parameter string and masks.
#include "imageio/DocumentFile.h"

#include <cstddef>
#include <cstdint>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    tintorra::KVError error;
    (void)tintorra::readFromData(std::span(data, size), tintorra::kTypeTIFF, &error);
    return 0;
}
