// The document's file layer: which pages of a TIFF become source and masks, the program's own
// multi-page TIFF as other readers see it, the save types and the errors.

#include "ImageTestSupport.h"
#include "imageio/DocumentFile.h"
#include "imageio/ImageTypes.h"
#include "support/DiagnosticsCapture.h"

#include <gtest/gtest.h>
#include <tiffio.h>

#include <cstdlib>
#include <ctime>

namespace tintorra {
namespace {

using test::fixtureBytes;

// The parameter string tiffset wrote into the fixtures.
std::string fixtureParameters()
{
    std::string text = "tolm";
    while (text.size() < 4 + 446)
        text += "0123456789abcdef";
    return text.substr(0, 4 + 446);
}

std::vector<std::uint32_t> samplesOf(const KVBitmapPtr& bitmap)
{
    return bitmap ? test::allSamples(*bitmap) : std::vector<std::uint32_t>{};
}

// ---- reading ----

struct OwnFileCase {
    const char* file;
    // Images returned: 1 source, 2 with the exclusion mask, 3 with the inclusion mask too.
    std::size_t images;
    bool isOwnFile;
};

void PrintTo(const OwnFileCase& c, std::ostream* out)
{
    *out << c.file;
}

const OwnFileCase kOwnFileCases[] = {
    {"own-4pages.tif", 3, true},
    {"own-3pages.tif", 2, true},
    {"own-2pages.tif", 1, true},
    // Page 2 cannot be decoded: the list ends there, and page 3 is not read either.
    {"own-broken-mask.tif", 1, true},
    // Artist not beginning with "tolm", Software differing in case, a single page, and an
    // ordinary multi-page TIFF: page 0 alone, no parameters.
    {"own-wrong-artist.tif", 1, false},
    {"own-wrong-software.tif", 1, false},
    {"own-1page.tif", 1, false},
    {"multipage.tif", 1, false},
};

class OwnFileTest : public ::testing::TestWithParam<OwnFileCase> {};

TEST_P(OwnFileTest, PagesBecomeSourceAndMasks)
{
    const OwnFileCase& c = GetParam();
    const std::vector<std::uint8_t> bytes = fixtureBytes(c.file);
    const DocumentImageReps reps = imageRepsWithData(bytes, kTypeTIFF);
    ASSERT_EQ(reps.imageReps.size(), c.images);
    const std::vector<std::uint32_t> picture = test::rawReference("ref-rgb8.raw", 8);
    if (c.isOwnFile) {
        // Page 1 (the unshifted picture), not page 0 (its negative, the shifted result).
        EXPECT_EQ(samplesOf(reps.imageReps[0]), picture);
        EXPECT_EQ(reps.artistTag, fixtureParameters());
        EXPECT_EQ(reps.fileType, std::string(TintorraTIFFType));
    } else {
        std::vector<std::uint32_t> negative = picture;
        for (std::uint32_t& v : negative)
            v = 255 - v;
        const bool pageZero =
            samplesOf(reps.imageReps[0]) == picture || samplesOf(reps.imageReps[0]) == negative;
        EXPECT_TRUE(pageZero);
        if (std::string(c.file) != "multipage.tif") {
            EXPECT_EQ(samplesOf(reps.imageReps[0]), negative);
        }
        EXPECT_FALSE(reps.artistTag.has_value());
        EXPECT_FALSE(reps.fileType.has_value());
    }
    if (c.images >= 2) {
        ASSERT_TRUE(reps.imageReps[1]);
        EXPECT_EQ(reps.imageReps[1]->colorSpace().model(), KVColorSpaceModel::gray);
    }
    if (c.images == 3) {
        // The inclusion mask is the exclusion mask's negative.
        const std::vector<std::uint32_t> exclusion = samplesOf(reps.imageReps[1]);
        const std::vector<std::uint32_t> inclusion = samplesOf(reps.imageReps[2]);
        ASSERT_EQ(exclusion.size(), inclusion.size());
        for (std::size_t i = 0; i < exclusion.size(); ++i)
            ASSERT_EQ(inclusion[i], 255 - exclusion[i]);
    }
}

INSTANTIATE_TEST_SUITE_P(Fixtures, OwnFileTest, ::testing::ValuesIn(kOwnFileCases),
                         [](const ::testing::TestParamInfo<OwnFileCase>& info) {
                             std::string name = info.param.file;
                             for (char& ch : name)
                                 if (!std::isalnum(static_cast<unsigned char>(ch)))
                                     ch = '_';
                             return name;
                         });

TEST(DocumentReading, TypeDecidesTheTiffRulesContentDecidesTheDecoder)
{
    const std::vector<std::uint8_t> own = fixtureBytes("own-4pages.tif");
    // Read as a plain image type, the program's own file gives its first page only.
    const DocumentImageReps asImage = imageRepsWithData(own, kTypePNG);
    ASSERT_EQ(asImage.imageReps.size(), 1u);
    EXPECT_FALSE(asImage.artistTag.has_value());
    // The program's own type conforms to TIFF.
    EXPECT_EQ(imageRepsWithData(own, TintorraTIFFType).imageReps.size(), 3u);
    // A PNG handed over as TIFF still decodes by its content.
    const DocumentImageReps png = imageRepsWithData(fixtureBytes("rgb8.png"), kTypeTIFF);
    ASSERT_EQ(png.imageReps.size(), 1u);
    EXPECT_EQ(samplesOf(png.imageReps[0]), test::rawReference("ref-rgb8.raw", 8));
}

TEST(DocumentReading, StringFromTagReadsPageZero)
{
    const std::vector<std::uint8_t> bytes = fixtureBytes("own-2pages.tif");
    IOResult<ImageSource> source = ImageSource::open(bytes);
    ASSERT_TRUE(source.ok());
    EXPECT_EQ(stringFromTag(TIFFTAG_SOFTWARE, &source.value()), "Tintorra by velmora");
    EXPECT_EQ(stringFromTag(TIFFTAG_ARTIST, &source.value()), fixtureParameters());
    EXPECT_FALSE(stringFromTag(TIFFTAG_COPYRIGHT, &source.value()).has_value());
    EXPECT_FALSE(stringFromTag(TIFFTAG_SOFTWARE, nullptr).has_value());
}

struct RefusalCase {
    const char* file;
    std::string_view type;
};

TEST(DocumentReading, GreyAndCmykImagesAreRefusedWithCode256)
{
    const RefusalCase cases[] = {
        {"grey8.png", kTypePNG},      {"grey.jpg", kTypeJPEG},    {"cmyk.jpg", kTypeJPEG},
        {"grey16.tif", kTypeTIFF},    {"bilevel.tif", kTypeTIFF}, {"cmyk8.tif", kTypeTIFF},
        {"grey8.jp2", kTypeJPEG2000},
    };
    for (const RefusalCase& c : cases) {
        KVError error;
        const std::optional<DocumentImageReps> reps =
            readFromData(fixtureBytes(c.file), c.type, &error);
        EXPECT_FALSE(reps.has_value()) << c.file;
        EXPECT_EQ(error.domain, "com.velmora.Tintorra.ErrorDomain") << c.file;
        EXPECT_EQ(error.code, 256) << c.file;
        EXPECT_EQ(error.localizedDescription,
                  "The image file could not be opened. Tintorra only supports RGB images at this "
                  "time.")
            << c.file;
        EXPECT_EQ(error.localizedRecoverySuggestion,
                  "Please convert the image to RGB or choose a different image.")
            << c.file;
    }
    // Without an error to fill, the refusal is the same.
    EXPECT_FALSE(readFromData(fixtureBytes("grey8.png"), kTypePNG, nullptr).has_value());
}

TEST(DocumentReading, RgbImagesOpen)
{
    for (const RefusalCase& c :
         {RefusalCase{"rgb16.png", kTypePNG}, RefusalCase{"rgb.jpg", kTypeJPEG},
          RefusalCase{"palette.tif", kTypeTIFF}, RefusalCase{"rgb8.jp2", kTypeJPEG2000},
          RefusalCase{"own-4pages.tif", TintorraTIFFType}}) {
        KVError error;
        const std::optional<DocumentImageReps> reps =
            readFromData(fixtureBytes(c.file), c.type, &error);
        ASSERT_TRUE(reps.has_value()) << c.file;
        EXPECT_TRUE(reps->imageReps.front()->isRGB()) << c.file;
        EXPECT_EQ(error, KVError{}) << c.file;
    }
}

TEST(DocumentReading, DataWithoutAnImageLogsAndLeavesTheErrorAlone)
{
    const std::vector<std::uint8_t> garbage = {'n', 'o', 't', ' ', 'a', 'n', ' ', 'i', 'm', 'a'};
    KVError error;
    test::captureDiagnostics();
    const std::optional<DocumentImageReps> reps = readFromData(garbage, kTypePNG, &error);
    const std::string log = test::capturedDiagnostics();
    EXPECT_FALSE(reps.has_value());
    EXPECT_EQ(error, KVError{});
    EXPECT_EQ(log, "Couldn't get bitmap image from image data\n");
    // The reason is there for callers that show it.
    EXPECT_FALSE(imageRepsWithData(garbage, kTypePNG).failureReason.empty());
}

TEST(DocumentReading, DroppedImagesHaveTheirOwnRefusalText)
{
    const KVError error = notRGBImageUseError();
    EXPECT_EQ(error.domain, TintorraErrorDomain);
    EXPECT_EQ(error.code, 256);
    EXPECT_EQ(error.localizedDescription,
              "The image cannot be used. Tintorra only supports RGB images at this time.");
    EXPECT_EQ(error.localizedRecoverySuggestion,
              "Please convert the image to RGB or choose a different image.");
}

TEST(DocumentReading, IsTintorraTiff)
{
    EXPECT_TRUE(isTintorraTIFF(TintorraTIFFType, std::nullopt));
    EXPECT_TRUE(isTintorraTIFF(kTypePNG, std::string("tolm00")));
    // Any parameter text counts; an empty one does not.
    EXPECT_TRUE(isTintorraTIFF(kTypeTIFF, std::string("x")));
    EXPECT_FALSE(isTintorraTIFF(kTypeTIFF, std::string()));
    EXPECT_FALSE(isTintorraTIFF(kTypeTIFF, std::nullopt));
}

// ---- writing ----

class DocumentWriting : public ::testing::Test {
protected:
    void SetUp() override
    {
        const char* zone = std::getenv("TZ");
        savedZone_ = zone ? std::optional<std::string>(zone) : std::nullopt;
        setenv("TZ", "UTC", 1);
        tzset();
        images_.outputImageRep = test::makeTestBitmap(
            {"rgb16", 16, 3, false, false, 0, KVColorSpaceModel::rgb}, 21, 13,
            test::systemProfile("/usr/share/color/icc/compatibleWithAdobeRGB1998.icc"));
        images_.inputImageRep =
            test::makeTestBitmap({"rgba8", 8, 4, true, false, kBitmapFormatAlphaNonpremultiplied,
                                  KVColorSpaceModel::rgb},
                                 21, 13);
        images_.exclusionMaskRep = KVBitmap::deviceWhite8Rep(21, 13);
        images_.inclusionMaskRep = KVBitmap::deviceWhite8Rep(21, 13);
        for (int y = 0; y < 13; ++y)
            for (int x = 0; x < 21; ++x) {
                test::setSampleAt(*images_.exclusionMaskRep, x, y, 0, (x * 12) % 256);
                test::setSampleAt(*images_.inclusionMaskRep, x, y, 0, (y * 19) % 256);
            }
        images_.hueShiftParameters = fixtureParameters();
    }
    void TearDown() override
    {
        if (savedZone_)
            setenv("TZ", savedZone_->c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }

    DocumentImages images_;
    std::optional<std::string> savedZone_;
};

// 1700000000 seconds after the epoch are 22:13:20 on 14 November 2023, UTC.
constexpr std::time_t kSaveTime = 1700000000;

TEST_F(DocumentWriting, ExifDateIsLocalTime)
{
    EXPECT_EQ(exifDateTimeString(kSaveTime), "2023:11:14 22:13:20");
    setenv("TZ", "JST-9", 1);
    tzset();
    EXPECT_EQ(exifDateTimeString(kSaveTime), "2023:11:15 07:13:20");
}

TEST_F(DocumentWriting, LibtiffReadsPagesPropertiesAndExif)
{
    const std::optional<std::vector<std::uint8_t>> data =
        multiPageTIFFRepresentationWithMetadata(images_, kSaveTime);
    ASSERT_TRUE(data.has_value());
    test::TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "document.tiff";
    test::writeBytes(path, *data);

    TIFF* tiff = TIFFOpen(path.c_str(), "r");
    ASSERT_NE(tiff, nullptr);
    EXPECT_EQ(TIFFNumberOfDirectories(tiff), 4);
    const char* software = nullptr;
    const char* artist = nullptr;
    ASSERT_EQ(TIFFGetField(tiff, TIFFTAG_SOFTWARE, &software), 1);
    ASSERT_EQ(TIFFGetField(tiff, TIFFTAG_ARTIST, &artist), 1);
    EXPECT_STREQ(software, "Tintorra by velmora");
    EXPECT_EQ(std::string(artist), fixtureParameters());
    std::uint32_t iccSize = 0;
    void* icc = nullptr;
    EXPECT_EQ(TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &iccSize, &icc), 1);
    EXPECT_EQ(iccSize, images_.outputImageRep->colorSpace().iccProfile().size());
    toff_t exifOffset = 0;
    ASSERT_EQ(TIFFGetField(tiff, TIFFTAG_EXIFIFD, &exifOffset), 1);
    const std::uint16_t expectedBits[4] = {16, 8, 8, 8};
    const std::uint16_t expectedSamples[4] = {3, 4, 1, 1};
    for (tdir_t page = 0; page < 4; ++page) {
        ASSERT_TRUE(TIFFSetDirectory(tiff, page));
        std::uint16_t compression = 0;
        std::uint16_t bits = 0;
        std::uint16_t samples = 0;
        TIFFGetField(tiff, TIFFTAG_COMPRESSION, &compression);
        TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
        TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
        EXPECT_EQ(compression, COMPRESSION_LZW) << page;
        EXPECT_EQ(bits, expectedBits[page]) << page;
        EXPECT_EQ(samples, expectedSamples[page]) << page;
        if (page > 0) {
            EXPECT_EQ(TIFFGetField(tiff, TIFFTAG_SOFTWARE, &software), 0) << page;
            EXPECT_EQ(TIFFGetField(tiff, TIFFTAG_ARTIST, &artist), 0) << page;
        }
    }
    ASSERT_TRUE(TIFFReadEXIFDirectory(tiff, exifOffset));
    const char* digitized = nullptr;
    ASSERT_EQ(TIFFGetField(tiff, EXIFTAG_DATETIMEDIGITIZED, &digitized), 1);
    EXPECT_STREQ(digitized, "2023:11:14 22:13:20");
    TIFFClose(tiff);
}

TEST_F(DocumentWriting, ItReopensWithSourceMasksAndParameters)
{
    const std::optional<std::vector<std::uint8_t>> data =
        multiPageTIFFRepresentationWithMetadata(images_, kSaveTime);
    ASSERT_TRUE(data.has_value());
    const DocumentImageReps reps = imageRepsWithData(*data, TintorraTIFFType);
    ASSERT_EQ(reps.imageReps.size(), 3u);
    EXPECT_EQ(samplesOf(reps.imageReps[0]), samplesOf(images_.inputImageRep));
    EXPECT_EQ(samplesOf(reps.imageReps[1]), samplesOf(images_.exclusionMaskRep));
    EXPECT_EQ(samplesOf(reps.imageReps[2]), samplesOf(images_.inclusionMaskRep));
    EXPECT_EQ(reps.artistTag, fixtureParameters());
    EXPECT_EQ(reps.fileType, std::string(TintorraTIFFType));
    // What other programs show is page 0, the shifted image.
    IOResult<KVBitmapPtr> shown = decodeImage(*data);
    ASSERT_TRUE(shown.ok());
    EXPECT_EQ(samplesOf(shown.value()), samplesOf(images_.outputImageRep));
}

TEST_F(DocumentWriting, MasksArePagesOnlyInOrder)
{
    struct Case {
        bool exclusion;
        bool inclusion;
        int pages;
    };
    // An inclusion mask without an exclusion mask is not saved.
    for (const Case c :
         {Case{true, true, 4}, Case{true, false, 3}, Case{false, true, 2}, Case{false, false, 2}}) {
        DocumentImages images = images_;
        if (!c.exclusion)
            images.exclusionMaskRep.reset();
        if (!c.inclusion)
            images.inclusionMaskRep.reset();
        const std::optional<std::vector<std::uint8_t>> data =
            multiPageTIFFRepresentationWithMetadata(images, kSaveTime);
        ASSERT_TRUE(data.has_value());
        IOResult<ImageSource> source = ImageSource::open(*data);
        ASSERT_TRUE(source.ok());
        EXPECT_EQ(source.value().pageCount(), static_cast<std::size_t>(c.pages))
            << c.exclusion << c.inclusion;
    }
}

TEST_F(DocumentWriting, NoDataWithoutOutputOrInput)
{
    DocumentImages noOutput = images_;
    noOutput.outputImageRep.reset();
    DocumentImages noInput = images_;
    noInput.inputImageRep.reset();
    EXPECT_FALSE(multiPageTIFFRepresentationWithMetadata(noOutput, kSaveTime).has_value());
    EXPECT_FALSE(multiPageTIFFRepresentationWithMetadata(noInput, kSaveTime).has_value());
}

TEST_F(DocumentWriting, DataForEachType)
{
    struct Case {
        std::string_view type;
        std::optional<ImageFormat> format;
        std::size_t pages;
    };
    const Case cases[] = {
        {TintorraTIFFType, ImageFormat::tiff, 4},
        {kTypeTIFF, ImageFormat::tiff, 1},
        {kTypePNG, ImageFormat::png, 1},
        {kTypeJPEG, ImageFormat::jpeg, 1},
        {kTypeJPEG2000, ImageFormat::jpeg2000, 1},
        {kTypeBMP, std::nullopt, 0},
        {kTypeGIF, std::nullopt, 0},
        {"public.plain-text", std::nullopt, 0},
    };
    for (const Case& c : cases) {
        const std::optional<std::vector<std::uint8_t>> data = dataForUTI(c.type, images_);
        ASSERT_EQ(data.has_value(), c.format.has_value()) << c.type;
        if (!data)
            continue;
        IOResult<ImageSource> source = ImageSource::open(*data);
        ASSERT_TRUE(source.ok()) << c.type;
        EXPECT_EQ(source.value().format(), *c.format) << c.type;
        EXPECT_EQ(source.value().pageCount(), c.pages) << c.type;
        // The plain formats carry the shifted image alone.
        if (c.type != TintorraTIFFType) {
            EXPECT_FALSE(source.value().stringProperty(TIFFTAG_ARTIST).has_value()) << c.type;
        }
    }
}

TEST_F(DocumentWriting, SavingInATypeWithoutEncoderFailsWithCode512)
{
    KVError error;
    EXPECT_FALSE(dataOfType(kTypeGIF, &images_, &error).has_value());
    EXPECT_EQ(error.domain, "com.velmora.Tintorra.ErrorDomain");
    EXPECT_EQ(error.code, 512);
    EXPECT_EQ(error.localizedDescription, "The image cannot be saved in the specified format.");
    EXPECT_EQ(error.localizedRecoverySuggestion, "Please save the image in a different format.");
    // Without a window there is nothing to save, and no error either.
    KVError untouched;
    EXPECT_FALSE(dataOfType(kTypePNG, nullptr, &untouched).has_value());
    EXPECT_EQ(untouched, KVError{});
    EXPECT_TRUE(dataOfType(kTypePNG, &images_, &untouched).has_value());
}

TEST_F(DocumentWriting, SaveDocumentWritesAtomicallyAndNeverOverTheSource)
{
    test::TemporaryFolder folder;
    const std::filesystem::path source = folder.path() / "photo.png";
    test::writeBytes(source, {1, 2, 3});
    const std::filesystem::path target = folder.path() / "photo (hue-shifted).tiff";
    KVError error;
    ASSERT_TRUE(saveDocument(target, TintorraTIFFType, images_, {source}, &error))
        << error.localizedDescription << " " << error.localizedRecoverySuggestion;
    EXPECT_EQ(folder.entries(),
              (std::vector<std::string>{"photo (hue-shifted).tiff", "photo.png"}));
    IOResult<std::vector<std::uint8_t>> written = readWholeFile(target);
    ASSERT_TRUE(written.ok());
    EXPECT_EQ(imageRepsWithData(written.value(), TintorraTIFFType).imageReps.size(), 3u);

    // Saving over the source image is refused; it keeps its bytes and nothing else appears.
    EXPECT_FALSE(saveDocument(source, kTypePNG, images_, {source}, &error));
    EXPECT_EQ(error.code, 512);
    EXPECT_FALSE(error.localizedRecoverySuggestion.empty());
    IOResult<std::vector<std::uint8_t>> kept = readWholeFile(source);
    ASSERT_TRUE(kept.ok());
    EXPECT_EQ(kept.value(), (std::vector<std::uint8_t>{1, 2, 3}));
    EXPECT_EQ(folder.entries(),
              (std::vector<std::string>{"photo (hue-shifted).tiff", "photo.png"}));
}

// ---- types and tags ----

TEST(DocumentTypes, UTIForTag)
{
    const std::pair<long, std::optional<std::string>> cases[] = {
        {0, "public.tiff"}, {1, "public.png"},  {2, "public.jpeg"}, {3, "public.jpeg-2000"},
        {4, std::nullopt},  {-1, std::nullopt}, {99, std::nullopt},
    };
    for (const auto& [tag, type] : cases)
        EXPECT_EQ(UTIForTag(tag), type) << tag;
}

TEST(DocumentTypes, ExtensionForUTI)
{
    const std::pair<std::string_view, std::optional<std::string>> cases[] = {
        {kTypeTIFF, "tiff"},      {TintorraTIFFType, "tiff"}, {kTypePNG, "png"},
        {kTypeJPEG, "jpeg"},      {kTypeJPEG2000, "jp2"},     {kTypeBMP, std::nullopt},
        {kTypeGIF, std::nullopt}, {kTypeImage, std::nullopt}, {"", std::nullopt},
    };
    for (const auto& [type, extension] : cases)
        EXPECT_EQ(extensionForUTI(type), extension) << type;
}

TEST(DocumentTypes, OwnTypesAndConformance)
{
    EXPECT_EQ(TintorraTIFFType, "com.velmora.tintorra.tiff");
    EXPECT_EQ(TintorraNativeImageType, "com.velmora.tintorra.native-image");
    EXPECT_TRUE(typeConformsTo(TintorraTIFFType, kTypeTIFF));
    EXPECT_TRUE(typeConformsTo(TintorraTIFFType, kTypeImage));
    EXPECT_FALSE(typeConformsTo(kTypeTIFF, TintorraTIFFType));
    EXPECT_TRUE(typeConformsTo(kTypeJPEG2000, kTypeImage));
    EXPECT_FALSE(typeConformsTo(kTypePNG, kTypeTIFF));
    EXPECT_EQ(typeForExtension(".JPG"), std::string(kTypeJPEG));
    EXPECT_EQ(typeForExtension("tif"), std::string(kTypeTIFF));
    EXPECT_EQ(typeForExtension("j2k"), std::string(kTypeJPEG2000));
    EXPECT_FALSE(typeForExtension("txt").has_value());
}

} // namespace
} // namespace tintorra
