// Any bytes as an image file: every decoder is reached through the content sniffing that opening
// a file uses, and every page is decoded. Nothing may crash, hang or ask for gigabytes.
#include "imageio/ImageFile.h"

#include <cstddef>
#include <cstdint>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    auto source = tintorra::ImageSource::open(std::span(data, size));
    if (!source) {
        return 0;
    }
    const std::size_t pages = source.value().pageCount();
    for (std::size_t page = 0; page < pages && page < 8; ++page) {
        (void)source.value().decodePage(page);
    }
    return 0;
}
