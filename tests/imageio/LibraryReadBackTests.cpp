// What our encoders write, read back with the libraries' own APIs (libtiff, libpng, libjpeg,
// OpenJPEG, giflib) or, for BMP and the JPEG 2000 boxes, by reading the bytes as the formats lay
// them out, rather than with our own readers.

#include "ImageTestSupport.h"
#include "imageio/ImageFile.h"

#include <gtest/gtest.h>
#include <jpeglib.h>
#include <openjpeg.h>
#include <png.h>
#include <tiffio.h>

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <gif_lib.h>
#include <map>

namespace tintorra {
namespace {

using test::sampleAt;
using test::TestLayout;

constexpr auto rgb = KVColorSpaceModel::rgb;
constexpr unsigned straight = kBitmapFormatAlphaNonpremultiplied;

const char* const kProfilePath = "/usr/share/color/icc/compatibleWithAdobeRGB1998.icc";

std::vector<std::uint8_t> encoded(const KVBitmap& bitmap, ImageFormat format,
                                  EncodeOptions options = {})
{
    IOResult<std::vector<std::uint8_t>> bytes = encodeImage(bitmap, format, options);
    EXPECT_TRUE(bytes.ok()) << bytes.error().message;
    return bytes.ok() ? bytes.value() : std::vector<std::uint8_t>{};
}

std::uint32_t big16(const std::uint8_t* p)
{
    return (std::uint32_t{p[0]} << 8) | p[1];
}

std::uint32_t big32(const std::uint8_t* p)
{
    return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) |
           p[3];
}

std::uint32_t little32(const std::uint8_t* p)
{
    return std::uint32_t{p[0]} | (std::uint32_t{p[1]} << 8) | (std::uint32_t{p[2]} << 16) |
           (std::uint32_t{p[3]} << 24);
}

// ---- TIFF through libtiff ----

struct TiffCase {
    TestLayout layout;
    std::uint16_t photometric;
    std::uint16_t planarConfig;
    // Extra sample type, or 0 for none.
    std::uint16_t extraSample;
};

void PrintTo(const TiffCase& c, std::ostream* out)
{
    *out << c.layout.name;
}

const TiffCase kTiffCases[] = {
    {{"rgb8", 8, 3, false, false, 0, rgb}, PHOTOMETRIC_RGB, PLANARCONFIG_CONTIG, 0},
    {{"rgb16_planar", 16, 3, false, true, 0, rgb}, PHOTOMETRIC_RGB, PLANARCONFIG_SEPARATE, 0},
    {{"rgba8_premultiplied", 8, 4, true, false, 0, rgb},
     PHOTOMETRIC_RGB,
     PLANARCONFIG_CONTIG,
     EXTRASAMPLE_ASSOCALPHA},
    {{"rgba16_straight", 16, 4, true, false, straight, rgb},
     PHOTOMETRIC_RGB,
     PLANARCONFIG_CONTIG,
     EXTRASAMPLE_UNASSALPHA},
    {{"argb8_straight", 8, 4, true, false, straight | kBitmapFormatAlphaFirst, rgb},
     PHOTOMETRIC_RGB,
     PLANARCONFIG_CONTIG,
     EXTRASAMPLE_UNASSALPHA},
    {{"argb16_planar", 16, 4, true, true, kBitmapFormatAlphaFirst, rgb},
     PHOTOMETRIC_RGB,
     PLANARCONFIG_SEPARATE,
     EXTRASAMPLE_ASSOCALPHA},
    {{"grey8", 8, 1, false, false, 0, KVColorSpaceModel::gray},
     PHOTOMETRIC_MINISBLACK,
     PLANARCONFIG_CONTIG,
     0},
    {{"cmyk16", 16, 4, false, false, 0, KVColorSpaceModel::cmyk},
     PHOTOMETRIC_SEPARATED,
     PLANARCONFIG_CONTIG,
     0},
};

class TiffReadBackTest : public ::testing::TestWithParam<TiffCase> {};

TEST_P(TiffReadBackTest, LibtiffReadsTagsProfileAndSamples)
{
    const TiffCase& c = GetParam();
    const std::vector<std::uint8_t> profile =
        c.layout.model == rgb ? test::systemProfile(kProfilePath) : std::vector<std::uint8_t>{};
    KVBitmapPtr source = test::makeTestBitmap(c.layout, 29, 19, profile);
    ASSERT_TRUE(source);
    source->setPixelsPerInch(240.0);
    test::TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "out.tif";
    test::writeBytes(path, encoded(*source, ImageFormat::tiff));

    TIFF* tiff = TIFFOpen(path.c_str(), "r");
    ASSERT_NE(tiff, nullptr);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t bits = 0;
    std::uint16_t samples = 0;
    std::uint16_t photometric = 0;
    std::uint16_t planar = 0;
    std::uint16_t compression = 0;
    std::uint16_t predictor = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric);
    TIFFGetField(tiff, TIFFTAG_PLANARCONFIG, &planar);
    TIFFGetField(tiff, TIFFTAG_COMPRESSION, &compression);
    TIFFGetField(tiff, TIFFTAG_PREDICTOR, &predictor);
    EXPECT_EQ(width, 29u);
    EXPECT_EQ(height, 19u);
    EXPECT_EQ(bits, c.layout.bitsPerSample);
    EXPECT_EQ(samples, c.layout.samplesPerPixel);
    EXPECT_EQ(photometric, c.photometric);
    EXPECT_EQ(planar, c.planarConfig);
    EXPECT_EQ(compression, COMPRESSION_LZW);
    EXPECT_EQ(predictor, PREDICTOR_HORIZONTAL);
    if (c.photometric == PHOTOMETRIC_SEPARATED) {
        std::uint16_t inkSet = 0;
        TIFFGetField(tiff, TIFFTAG_INKSET, &inkSet);
        EXPECT_EQ(inkSet, INKSET_CMYK);
    }
    std::uint16_t extraCount = 0;
    std::uint16_t* extraTypes = nullptr;
    const bool hasExtra = TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &extraCount, &extraTypes) == 1;
    if (c.extraSample != 0) {
        ASSERT_TRUE(hasExtra);
        ASSERT_EQ(extraCount, 1);
        EXPECT_EQ(extraTypes[0], c.extraSample);
    } else {
        EXPECT_TRUE(!hasExtra || extraCount == 0);
    }
    std::uint32_t iccSize = 0;
    void* iccData = nullptr;
    if (profile.empty()) {
        EXPECT_EQ(TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &iccSize, &iccData), 0);
    } else {
        ASSERT_EQ(TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &iccSize, &iccData), 1);
        const auto* bytes = static_cast<const std::uint8_t*>(iccData);
        EXPECT_EQ(std::vector<std::uint8_t>(bytes, bytes + iccSize), profile);
    }
    float xResolution = 0;
    std::uint16_t unit = 0;
    TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &xResolution);
    TIFFGetField(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
    EXPECT_FLOAT_EQ(xResolution, 240.0f);
    EXPECT_EQ(unit, RESUNIT_INCH);

    // Samples, row by row (and plane by plane), as the file holds them: alpha last.
    std::vector<std::uint8_t> row(static_cast<std::size_t>(TIFFScanlineSize(tiff)));
    const int planes = planar == PLANARCONFIG_SEPARATE ? samples : 1;
    const int perPixel = planar == PLANARCONFIG_SEPARATE ? 1 : samples;
    for (int plane = 0; plane < planes; ++plane) {
        for (std::uint32_t y = 0; y < height; ++y) {
            ASSERT_EQ(TIFFReadScanline(tiff, row.data(), y, static_cast<std::uint16_t>(plane)), 1);
            for (std::uint32_t x = 0; x < width; ++x) {
                for (int k = 0; k < perPixel; ++k) {
                    const int channel = planes > 1 ? plane : k;
                    const std::size_t index = static_cast<std::size_t>(x) * perPixel + k;
                    std::uint32_t value = row[index];
                    if (bits == 16) {
                        std::uint16_t v;
                        std::memcpy(&v, &row[2 * index], 2);
                        value = v;
                    }
                    ASSERT_EQ(value, sampleAt(*source, x, y, channel))
                        << x << "," << y << " channel " << channel;
                }
            }
        }
    }
    TIFFClose(tiff);
}

INSTANTIATE_TEST_SUITE_P(Layouts, TiffReadBackTest, ::testing::ValuesIn(kTiffCases),
                         [](const ::testing::TestParamInfo<TiffCase>& info) {
                             return std::string(info.param.layout.name);
                         });

// ---- PNG through libpng ----

struct PngRead {
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    int bitDepth = 0;
    int colourType = 0;
    std::vector<std::uint8_t> profile;
    std::string profileName;
    png_uint_32 xPixelsPerMetre = 0;
    std::vector<std::vector<std::uint8_t>> rows;
};

struct PngMemory {
    const std::vector<std::uint8_t>* bytes;
    std::size_t position;
};

void readPngMemory(png_structp png, png_bytep out, png_size_t length)
{
    auto* memory = static_cast<PngMemory*>(png_get_io_ptr(png));
    if (memory->position + length > memory->bytes->size())
        png_error(png, "read past the end");
    std::memcpy(out, memory->bytes->data() + memory->position, length);
    memory->position += length;
}

// Plain libpng reading, without transformations: 16-bit samples stay big-endian.
bool readPngInfo(png_structp png, png_infop info, PngRead* result)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_read_info(png, info);
    result->width = png_get_image_width(png, info);
    result->height = png_get_image_height(png, info);
    result->bitDepth = png_get_bit_depth(png, info);
    result->colourType = png_get_color_type(png, info);
    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    png_uint_32 length = 0;
    if (png_get_iCCP(png, info, &name, &compression, &profile, &length)) {
        result->profile.assign(profile, profile + length);
        result->profileName = name;
    }
    png_uint_32 y = 0;
    int unit = 0;
    png_get_pHYs(png, info, &result->xPixelsPerMetre, &y, &unit);
    return true;
}

bool readPngRows(png_structp png, png_infop info, std::vector<png_bytep>* rows)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_read_image(png, rows->data());
    png_read_end(png, info);
    return true;
}

PngRead readWithLibpng(const std::vector<std::uint8_t>& bytes)
{
    PngRead result;
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    PngMemory memory{&bytes, 0};
    png_set_read_fn(png, &memory, &readPngMemory);
    EXPECT_TRUE(readPngInfo(png, info, &result));
    const png_size_t rowBytes = png_get_rowbytes(png, info);
    result.rows.assign(result.height, std::vector<std::uint8_t>(rowBytes));
    std::vector<png_bytep> pointers;
    for (auto& row : result.rows)
        pointers.push_back(row.data());
    EXPECT_TRUE(readPngRows(png, info, &pointers));
    png_destroy_read_struct(&png, &info, nullptr);
    return result;
}

TEST(PngReadBack, LibpngReadsSixteenBitsProfileAndStraightAlpha)
{
    const TestLayout layout{"rgba16_premultiplied", 16, 4, true, false, 0, rgb};
    KVBitmapPtr source = test::makeTestBitmap(layout, 31, 17, test::systemProfile(kProfilePath));
    ASSERT_TRUE(source);
    source->setPixelsPerInch(254.0);
    const PngRead png = readWithLibpng(encoded(*source, ImageFormat::png));
    EXPECT_EQ(png.width, 31u);
    EXPECT_EQ(png.height, 17u);
    EXPECT_EQ(png.bitDepth, 16);
    EXPECT_EQ(png.colourType, PNG_COLOR_TYPE_RGB_ALPHA);
    EXPECT_EQ(png.profile, test::systemProfile(kProfilePath));
    EXPECT_EQ(png.profileName, "Device RGB");
    // 254 pixels per inch are 10000 per metre.
    EXPECT_EQ(png.xPixelsPerMetre, 10000u);
    // PNG alpha is straight: colour times alpha gives back the premultiplied source within the
    // rounding of one division.
    for (std::uint32_t y = 0; y < 17; ++y) {
        for (std::uint32_t x = 0; x < 31; ++x) {
            const std::uint8_t* pixel = png.rows[y].data() + 8 * x;
            const std::uint32_t alpha = big16(pixel + 6);
            ASSERT_EQ(alpha, sampleAt(*source, x, y, 3));
            for (int c = 0; c < 3; ++c) {
                const double associated = big16(pixel + 2 * c) * (alpha / 65535.0);
                EXPECT_NEAR(associated, sampleAt(*source, x, y, c), 1.0) << x << "," << y;
            }
        }
    }
}

TEST(PngReadBack, LibpngReadsGreyAndEightBitRgbExactly)
{
    for (const TestLayout& layout :
         {TestLayout{"grey8", 8, 1, false, false, 0, KVColorSpaceModel::gray},
          TestLayout{"rgb8_planar", 8, 3, false, true, 0, rgb}}) {
        const KVBitmapPtr source = test::makeTestBitmap(layout, 13, 11);
        const PngRead png = readWithLibpng(encoded(*source, ImageFormat::png));
        EXPECT_EQ(png.bitDepth, 8) << layout.name;
        EXPECT_EQ(png.colourType,
                  layout.samplesPerPixel == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB);
        EXPECT_TRUE(png.profile.empty());
        for (std::uint32_t y = 0; y < 11; ++y)
            for (std::uint32_t x = 0; x < 13; ++x)
                for (int c = 0; c < layout.samplesPerPixel; ++c)
                    ASSERT_EQ(png.rows[y][x * layout.samplesPerPixel + c],
                              sampleAt(*source, x, y, c))
                        << layout.name;
    }
}

// ---- JPEG through libjpeg ----

struct JpegRead {
    J_COLOR_SPACE space = JCS_UNKNOWN;
    int components = 0;
    bool adobe = false;
    int horizontalSampling = 0;
    std::vector<std::uint8_t> profile;
    int densityUnit = 0;
    int xDensity = 0;
};

JpegRead readWithLibjpeg(const std::vector<std::uint8_t>& bytes)
{
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, bytes.data(), static_cast<unsigned long>(bytes.size()));
    jpeg_save_markers(&info, JPEG_APP0 + 2, 0xFFFF);
    jpeg_read_header(&info, TRUE);
    JpegRead result;
    result.space = info.jpeg_color_space;
    result.components = info.num_components;
    result.adobe = info.saw_Adobe_marker;
    result.horizontalSampling = info.comp_info[0].h_samp_factor;
    result.densityUnit = info.density_unit;
    result.xDensity = info.X_density;
    JOCTET* profile = nullptr;
    unsigned int length = 0;
    if (jpeg_read_icc_profile(&info, &profile, &length)) {
        result.profile.assign(profile, profile + length);
        std::free(profile);
    }
    jpeg_destroy_decompress(&info);
    return result;
}

TEST(JpegReadBack, LibjpegReadsProfileColourSpaceAndSampling)
{
    struct Case {
        TestLayout layout;
        double quality;
        J_COLOR_SPACE space;
        int components;
        bool adobe;
        int horizontalSampling;
    };
    const Case cases[] = {
        {{"rgb16", 16, 3, false, false, 0, rgb}, 0.9, JCS_YCbCr, 3, false, 1},
        {{"rgb8", 8, 3, false, false, 0, rgb}, 0.5, JCS_YCbCr, 3, false, 2},
        {{"rgba8", 8, 4, true, false, straight, rgb}, 1.0, JCS_YCbCr, 3, false, 1},
        {{"grey8", 8, 1, false, false, 0, KVColorSpaceModel::gray},
         0.9,
         JCS_GRAYSCALE,
         1,
         false,
         1},
        {{"cmyk8", 8, 4, false, false, 0, KVColorSpaceModel::cmyk}, 0.9, JCS_CMYK, 4, true, 1},
    };
    for (const Case& c : cases) {
        const std::vector<std::uint8_t> profile =
            c.layout.model == rgb ? test::systemProfile(kProfilePath) : std::vector<std::uint8_t>{};
        KVBitmapPtr source = test::makeTestBitmap(c.layout, 40, 24, profile);
        source->setPixelsPerInch(300.0);
        EncodeOptions options;
        options.quality = c.quality;
        const JpegRead jpeg = readWithLibjpeg(encoded(*source, ImageFormat::jpeg, options));
        EXPECT_EQ(jpeg.space, c.space) << c.layout.name;
        EXPECT_EQ(jpeg.components, c.components) << c.layout.name;
        EXPECT_EQ(jpeg.adobe, c.adobe) << c.layout.name;
        EXPECT_EQ(jpeg.horizontalSampling, c.horizontalSampling) << c.layout.name;
        EXPECT_EQ(jpeg.profile, profile) << c.layout.name;
        // The resolution travels in the JFIF segment, which CMYK files do not have.
        if (c.space != JCS_CMYK) {
            EXPECT_EQ(jpeg.densityUnit, 1) << c.layout.name;
            EXPECT_EQ(jpeg.xDensity, 300) << c.layout.name;
        }
    }
}

// ---- JPEG 2000: the boxes by their layout, the codestream through OpenJPEG ----

std::map<std::string, std::vector<std::uint8_t>> jp2Boxes(const std::vector<std::uint8_t>& bytes)
{
    std::map<std::string, std::vector<std::uint8_t>> boxes;
    std::size_t at = 0;
    while (at + 8 <= bytes.size()) {
        std::uint64_t length = big32(&bytes[at]);
        const std::string type(reinterpret_cast<const char*>(&bytes[at + 4]), 4);
        if (length == 0)
            length = bytes.size() - at;
        if (length < 8 || at + length > bytes.size())
            break;
        std::vector<std::uint8_t> content(bytes.begin() + static_cast<std::ptrdiff_t>(at + 8),
                                          bytes.begin() + static_cast<std::ptrdiff_t>(at + length));
        if (type == "jp2h") {
            for (auto& [inner, innerContent] : jp2Boxes(content))
                boxes["jp2h/" + inner] = innerContent;
        }
        boxes[type] = std::move(content);
        at += length;
    }
    return boxes;
}

TEST(Jpeg2000ReadBack, BoxesCarryProfileAndAlphaAndOpenJpegDecodesLosslessly)
{
    const TestLayout layout{"rgba16_premultiplied", 16, 4, true, false, 0, rgb};
    const std::vector<std::uint8_t> profile = test::systemProfile(kProfilePath);
    const KVBitmapPtr source = test::makeTestBitmap(layout, 45, 21, profile);
    const std::vector<std::uint8_t> bytes = encoded(*source, ImageFormat::jpeg2000);
    ASSERT_GT(bytes.size(), 12u);
    const std::uint8_t signature[12] = {0, 0, 0, 12, 'j', 'P', ' ', ' ', 0x0D, 0x0A, 0x87, 0x0A};
    EXPECT_EQ(std::memcmp(bytes.data(), signature, 12), 0);

    auto boxes = jp2Boxes(bytes);
    ASSERT_TRUE(boxes.count("ftyp"));
    EXPECT_EQ(std::string(boxes["ftyp"].begin(), boxes["ftyp"].begin() + 4), "jp2 ");
    const std::vector<std::uint8_t>& ihdr = boxes["jp2h/ihdr"];
    ASSERT_EQ(ihdr.size(), 14u);
    EXPECT_EQ(big32(&ihdr[0]), 21u);
    EXPECT_EQ(big32(&ihdr[4]), 45u);
    EXPECT_EQ(big16(&ihdr[8]), 4u);
    EXPECT_EQ(ihdr[10], 15); // 16 bits, unsigned
    const std::vector<std::uint8_t>& colr = boxes["jp2h/colr"];
    ASSERT_GT(colr.size(), 3u);
    EXPECT_EQ(colr[0], 2); // a profile, not an enumerated space
    EXPECT_EQ(std::vector<std::uint8_t>(colr.begin() + 3, colr.end()), profile);
    const std::vector<std::uint8_t>& cdef = boxes["jp2h/cdef"];
    ASSERT_EQ(cdef.size(), 2u + 4 * 6);
    EXPECT_EQ(big16(&cdef[2 + 3 * 6 + 2]), 2u); // premultiplied opacity
    ASSERT_TRUE(boxes.count("jp2c"));
    EXPECT_EQ(big16(&boxes["jp2c"][0]), 0xFF4Fu);

    test::TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "out.jp2";
    test::writeBytes(path, bytes);
    opj_codec_t* codec = opj_create_decompress(OPJ_CODEC_JP2);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    ASSERT_TRUE(opj_setup_decoder(codec, &parameters));
    opj_stream_t* stream = opj_stream_create_default_file_stream(path.c_str(), OPJ_TRUE);
    opj_image_t* image = nullptr;
    ASSERT_TRUE(opj_read_header(stream, codec, &image));
    ASSERT_TRUE(opj_decode(codec, stream, image));
    ASSERT_TRUE(opj_end_decompress(codec, stream));
    ASSERT_EQ(image->numcomps, 4u);
    EXPECT_EQ(image->icc_profile_len, profile.size());
    EXPECT_EQ(image->comps[3].alpha, 2);
    for (std::uint32_t c = 0; c < 4; ++c) {
        EXPECT_EQ(image->comps[c].prec, 16u);
        for (std::uint32_t y = 0; y < 21; ++y)
            for (std::uint32_t x = 0; x < 45; ++x)
                ASSERT_EQ(static_cast<std::uint32_t>(image->comps[c].data[y * 45 + x]),
                          sampleAt(*source, x, y, static_cast<int>(c)));
    }
    opj_image_destroy(image);
    opj_stream_destroy(stream);
    opj_destroy_codec(codec);
}

TEST(Jpeg2000ReadBack, BareCodestreamOnRequest)
{
    const KVBitmapPtr source = test::makeTestBitmap({"rgb8", 8, 3, false, false, 0, rgb}, 9, 7);
    EncodeOptions options;
    options.jpeg2000Codestream = true;
    const std::vector<std::uint8_t> bytes = encoded(*source, ImageFormat::jpeg2000, options);
    ASSERT_GT(bytes.size(), 4u);
    EXPECT_EQ(big32(bytes.data()), 0xFF4FFF51u);
    IOResult<KVBitmapPtr> decoded = decodeImage(bytes);
    ASSERT_TRUE(decoded.ok()) << decoded.error().message;
    EXPECT_EQ(test::allSamples(*decoded.value()), test::allSamples(*source));
}

// ---- GIF through giflib ----

TEST(GifReadBack, GiflibReadsPaletteTransparencyAndProfile)
{
    KVBitmapPtr source = KVBitmap::create({12, 10, 8, 4, true, false, straight, 0, 0},
                                          {rgb, "Tagged", test::systemProfile(kProfilePath)});
    ASSERT_TRUE(source);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 12; ++x) {
            test::setSampleAt(*source, x, y, 0, static_cast<std::uint32_t>(x * 20));
            test::setSampleAt(*source, x, y, 1, static_cast<std::uint32_t>(y * 25));
            test::setSampleAt(*source, x, y, 2, 77);
            test::setSampleAt(*source, x, y, 3, x == y ? 0u : 255u);
        }
    test::TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "out.gif";
    test::writeBytes(path, encoded(*source, ImageFormat::gif));

    int error = 0;
    GifFileType* gif = DGifOpenFileName(path.c_str(), &error);
    ASSERT_NE(gif, nullptr);
    ASSERT_EQ(DGifSlurp(gif), GIF_OK);
    EXPECT_EQ(gif->SWidth, 12);
    EXPECT_EQ(gif->SHeight, 10);
    ASSERT_EQ(gif->ImageCount, 1);
    GraphicsControlBlock control;
    ASSERT_EQ(DGifSavedExtensionToGCB(gif, 0, &control), GIF_OK);
    ASSERT_GE(control.TransparentColor, 0);
    const ColorMapObject* map = gif->SColorMap;
    ASSERT_NE(map, nullptr);
    const SavedImage& image = gif->SavedImages[0];
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 12; ++x) {
            const int index = image.RasterBits[y * 12 + x];
            if (x == y) {
                ASSERT_EQ(index, control.TransparentColor);
                continue;
            }
            ASSERT_NE(index, control.TransparentColor);
            EXPECT_EQ(map->Colors[index].Red, sampleAt(*source, x, y, 0));
            EXPECT_EQ(map->Colors[index].Green, sampleAt(*source, x, y, 1));
            EXPECT_EQ(map->Colors[index].Blue, 77);
        }
    // The profile follows an application extension named "ICCRGBG1" "012".
    std::vector<std::uint8_t> profile;
    bool inProfile = false;
    for (int i = 0; i < image.ExtensionBlockCount; ++i) {
        const ExtensionBlock& block = image.ExtensionBlocks[i];
        if (block.Function == APPLICATION_EXT_FUNC_CODE)
            inProfile = block.ByteCount == 11 && std::memcmp(block.Bytes, "ICCRGBG1012", 11) == 0;
        else if (block.Function == CONTINUE_EXT_FUNC_CODE && inProfile)
            profile.insert(profile.end(), block.Bytes, block.Bytes + block.ByteCount);
    }
    EXPECT_EQ(profile, test::systemProfile(kProfilePath));
    DGifCloseFile(gif, &error);
}

// ---- BMP by its layout ----

TEST(BmpReadBack, HeaderProfileAndBottomUpPixels)
{
    const std::vector<std::uint8_t> profile = test::systemProfile(kProfilePath);
    KVBitmapPtr source =
        test::makeTestBitmap({"rgba16_premultiplied", 16, 4, true, false, 0, rgb}, 7, 5, profile);
    const std::vector<std::uint8_t> bytes = encoded(*source, ImageFormat::bmp);
    ASSERT_GT(bytes.size(), 14u + 124u);
    EXPECT_EQ(bytes[0], 'B');
    EXPECT_EQ(bytes[1], 'M');
    EXPECT_EQ(little32(&bytes[2]), bytes.size());
    const std::uint32_t pixels = little32(&bytes[10]);
    const std::uint8_t* header = &bytes[14];
    EXPECT_EQ(little32(header), 124u);
    EXPECT_EQ(little32(header + 4), 7u);
    EXPECT_EQ(little32(header + 8), 5u);               // positive: bottom-up
    EXPECT_EQ(header[14], 32);                         // bits per pixel
    EXPECT_EQ(little32(header + 16), 3u);              // bit fields
    EXPECT_EQ(little32(header + 52), 0xFF000000u);     // alpha mask
    EXPECT_EQ(std::memcmp(header + 56, "DEBM", 4), 0); // 'MBED', little-endian
    const std::uint32_t profileAt = 14 + little32(header + 112);
    const std::uint32_t profileSize = little32(header + 116);
    ASSERT_EQ(profileSize, profile.size());
    ASSERT_LE(profileAt + profileSize, bytes.size());
    EXPECT_EQ(std::vector<std::uint8_t>(bytes.begin() + profileAt,
                                        bytes.begin() + profileAt + profileSize),
              profile);
    // The last row of the file is the top of the image; samples are BGRA, straight alpha, 8 bits.
    for (std::uint32_t y = 0; y < 5; ++y)
        for (std::uint32_t x = 0; x < 7; ++x) {
            const std::uint8_t* p = &bytes[pixels + (4 - y) * 28 + 4 * x];
            const double alpha = sampleAt(*source, x, y, 3) / 65535.0;
            EXPECT_NEAR(p[3], alpha * 255.0, 0.5);
            EXPECT_NEAR(p[2] * alpha, sampleAt(*source, x, y, 0) / 257.0, 1.0);
            EXPECT_NEAR(p[1] * alpha, sampleAt(*source, x, y, 1) / 257.0, 1.0);
            EXPECT_NEAR(p[0] * alpha, sampleAt(*source, x, y, 2) / 257.0, 1.0);
        }
}

} // namespace
} // namespace tintorra
