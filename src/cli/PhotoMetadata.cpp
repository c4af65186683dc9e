#include "cli/PhotoMetadata.h"

#include "cli/CliFailure.h"
#include "cli/OutputFormats.h"
#include "cli/TiffPageTags.h"
#include "controls/ParameterEncoding.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <zlib.h>

// Exiv2 0.27 hands out std::auto_ptr, which C++17 deprecates; its use is confined to this file.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <exiv2/exiv2.hpp>

namespace tintorra::cli {

struct PhotoMetadata::Data {
    Exiv2::ExifData exif;
    Exiv2::XmpData xmp;
    Exiv2::IptcData iptc;
};

namespace {

// Tags that describe how the input's samples were stored, not the photograph: the encoder
// writes its own.
constexpr std::array<std::string_view, 27> kStructureTags{"ImageWidth",
                                                          "ImageLength",
                                                          "BitsPerSample",
                                                          "Compression",
                                                          "PhotometricInterpretation",
                                                          "StripOffsets",
                                                          "SamplesPerPixel",
                                                          "RowsPerStrip",
                                                          "StripByteCounts",
                                                          "PlanarConfiguration",
                                                          "TileWidth",
                                                          "TileLength",
                                                          "TileOffsets",
                                                          "TileByteCounts",
                                                          "SampleFormat",
                                                          "ExtraSamples",
                                                          "InterColorProfile",
                                                          "NewSubfileType",
                                                          "SubfileType",
                                                          "Predictor",
                                                          "JPEGInterchangeFormat",
                                                          "JPEGInterchangeFormatLength",
                                                          "YCbCrSubSampling",
                                                          "YCbCrCoefficients",
                                                          "SubIFDs",
                                                          "XMLPacket",
                                                          "IPTCNAA"};

bool isStructureTag(const Exiv2::Exifdatum& datum)
{
    if (datum.groupName() == "Thumbnail" || datum.groupName().rfind("SubImage", 0) == 0) {
        return true;
    }
    return datum.groupName() == "Image" && std::find(kStructureTags.begin(), kStructureTags.end(),
                                                     datum.tagName()) != kStructureTags.end();
}

// A document's page 0 keeps its own Artist (the parameter string) and Software (which marks it
// as a document); the photographer's are on the source page.
bool isDocumentTag(const Exiv2::Exifdatum& datum)
{
    return datum.key() == "Exif.Image.Artist" || datum.key() == "Exif.Image.Software";
}

bool carriesParameters(const Exiv2::Exifdatum& datum)
{
    return datum.key() == "Exif.Image.Artist" &&
           datum.toString().rfind(std::string(kHueShiftParameterPrefix), 0) == 0;
}

std::uint32_t bigEndian(const std::uint8_t* bytes)
{
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
           std::uint32_t{bytes[2]} << 8 | bytes[3];
}

// PNG holds EXIF in an eXIf chunk before the image data; Exiv2 0.27 writes it as text instead.
std::vector<std::uint8_t> withExifChunk(std::vector<std::uint8_t> png, const Exiv2::Blob& exif)
{
    std::size_t at = 8;
    while (at + 8 <= png.size() &&
           std::string_view(reinterpret_cast<const char*>(png.data() + at + 4), 4) != "IDAT") {
        at += 12 + bigEndian(png.data() + at);
    }
    if (at + 8 > png.size()) {
        failProcessing("the PNG encoder's output has no image data to put the EXIF before");
    }
    std::vector<std::uint8_t> chunk(4);
    const auto length = static_cast<std::uint32_t>(exif.size());
    for (int i = 0; i < 4; ++i) {
        chunk[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(length >> (24 - 8 * i));
    }
    const std::string type = "eXIf";
    chunk.insert(chunk.end(), type.begin(), type.end());
    chunk.insert(chunk.end(), exif.begin(), exif.end());
    const auto crc =
        static_cast<std::uint32_t>(crc32(0, chunk.data() + 4, static_cast<uInt>(chunk.size() - 4)));
    for (int i = 0; i < 4; ++i) {
        chunk.push_back(static_cast<std::uint8_t>(crc >> (24 - 8 * i)));
    }
    png.insert(png.begin() + static_cast<std::ptrdiff_t>(at), chunk.begin(), chunk.end());
    return png;
}

// The photographer's own text tags, for a document's source page.
std::vector<TiffTextTag> sourcePageTags(const Exiv2::ExifData& exif)
{
    constexpr std::array<std::pair<const char*, int>, 6> kTags{
        {{"Exif.Image.Artist", 315},
         {"Exif.Image.Copyright", 33432},
         {"Exif.Image.Make", 271},
         {"Exif.Image.Model", 272},
         {"Exif.Image.ImageDescription", 270},
         {"Exif.Image.DateTime", 306}}};
    std::vector<TiffTextTag> tags;
    for (const auto& [key, number] : kTags) {
        const auto found = exif.findKey(Exiv2::ExifKey(key));
        if (found != exif.end()) {
            tags.emplace_back(number, found->toString());
        }
    }
    return tags;
}

} // namespace

PhotoMetadata::PhotoMetadata() : data_(std::make_unique<Data>()) {}
PhotoMetadata::~PhotoMetadata() = default;
PhotoMetadata::PhotoMetadata(PhotoMetadata&&) noexcept = default;
PhotoMetadata& PhotoMetadata::operator=(PhotoMetadata&&) noexcept = default;

PhotoMetadata PhotoMetadata::read(std::span<const std::uint8_t> file)
{
    PhotoMetadata metadata;
    try {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(file.data(), file.size());
        image->readMetadata();
        const Exiv2::ExifData& exif = image->exifData();
        bool document = false;
        for (const Exiv2::Exifdatum& datum : exif) {
            // A document's parameters describe that document's shift, not the photograph.
            document = document || carriesParameters(datum);
            if (!isStructureTag(datum) && !carriesParameters(datum)) {
                metadata.data_->exif.add(datum);
            }
        }
        // The photographer's Artist is on a document's source page, which the library reads as
        // the page after the first.
        const auto artist = exif.findKey(Exiv2::ExifKey("Exif.Thumbnail.Artist"));
        if (document && artist != exif.end()) {
            metadata.data_->exif["Exif.Image.Artist"] = artist->value();
        }
        metadata.data_->xmp = image->xmpData();
        metadata.data_->iptc = image->iptcData();
    } catch (const Exiv2::AnyError&) {
        return PhotoMetadata();
    }
    return metadata;
}

bool PhotoMetadata::empty() const
{
    return data_->exif.empty() && data_->xmp.empty() && data_->iptc.empty();
}

std::vector<std::uint8_t> PhotoMetadata::addTo(std::vector<std::uint8_t> encoded,
                                               const OutputFormat& format) const
{
    if (empty()) {
        return encoded;
    }
    const bool document = isDocumentFormat(format);
    const bool png = format.extension == "png";
    try {
        Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(encoded.data(), encoded.size());
        image->readMetadata();
        Exiv2::ExifData exif = image->exifData();
        for (const Exiv2::Exifdatum& datum : data_->exif) {
            // The order of compressed components means something in a JPEG file only.
            const bool jpegOnly = datum.key() == "Exif.Photo.ComponentsConfiguration" &&
                                  format.extension != "jpeg" && format.extension != "jpg";
            if (!(document && isDocumentTag(datum)) && !jpegOnly) {
                exif[datum.key()] = datum.value();
            }
        }
        image->setXmpData(data_->xmp);
        image->setIptcData(data_->iptc);
        if (!png) {
            image->setExifData(exif);
        }
        image->writeMetadata();
        Exiv2::BasicIo& io = image->io();
        io.open();
        const Exiv2::DataBuf written = io.read(static_cast<long>(io.size()));
        io.close();
        std::vector<std::uint8_t> result(written.pData_, written.pData_ + written.size_);
        if (document) {
            result = withTextTagsOnPage(result, 1, sourcePageTags(data_->exif));
        }
        if (png && !exif.empty()) {
            Exiv2::Blob blob;
            Exiv2::ExifParser::encode(blob, Exiv2::littleEndian, exif);
            result = withExifChunk(std::move(result), blob);
        }
        return result;
    } catch (const Exiv2::AnyError& error) {
        failProcessing(std::string("the input's metadata cannot be written into the output (") +
                       error.what() + "); report the file that caused it");
    }
}

} // namespace tintorra::cli

#pragma GCC diagnostic pop
