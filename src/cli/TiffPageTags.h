#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tintorra::cli {

// A TIFF text tag (Artist 315, Copyright 33432, ...) and its value.
using TiffTextTag = std::pair<int, std::string>;

// The TIFF file with the text tags set on one of its pages, every other page and tag as it was.
// The metadata library writes page 0 only; a document's source page is page 1. Throws a
// processing CliFailure when the file cannot be rewritten.
std::vector<std::uint8_t> withTextTagsOnPage(const std::vector<std::uint8_t>& tiff,
                                             std::size_t page,
                                             const std::vector<TiffTextTag>& tags);

} // namespace tintorra::cli
