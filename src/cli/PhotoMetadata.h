#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace tintorra::cli {

struct OutputFormat;

// The EXIF, XMP and IPTC metadata of a photograph, carried from the input to every output that
// can hold it. Pixels are written as they are, so the Orientation tag is kept with them.
class PhotoMetadata {
public:
    PhotoMetadata();
    ~PhotoMetadata();
    PhotoMetadata(PhotoMetadata&&) noexcept;
    PhotoMetadata& operator=(PhotoMetadata&&) noexcept;

    // What the file's bytes carry; nothing (and no failure) for a file without metadata or one
    // the metadata library cannot read, since the image itself is what matters.
    static PhotoMetadata read(std::span<const std::uint8_t> file);

    bool empty() const;

    // The encoded output with the metadata added to what the encoder wrote (the ICC profile,
    // resolution and a document's own Artist and Software stay). PNG gets EXIF as an eXIf chunk
    // and XMP as iTXt. Throws a processing CliFailure when the metadata cannot be written.
    std::vector<std::uint8_t> addTo(std::vector<std::uint8_t> encoded,
                                    const OutputFormat& format) const;

private:
    struct Data;
    std::unique_ptr<Data> data_;
};

} // namespace tintorra::cli
