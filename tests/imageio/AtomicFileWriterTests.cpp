#include "ImageTestSupport.h"
#include "imageio/AtomicFileWriter.h"
#include "imageio/ImageFile.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tintorra {
namespace {

using test::TemporaryFolder;

std::vector<std::uint8_t> contentOf(const std::filesystem::path& path)
{
    IOResult<std::vector<std::uint8_t>> bytes = readWholeFile(path);
    return bytes.ok() ? bytes.value() : std::vector<std::uint8_t>{};
}

const std::vector<std::uint8_t> kOld = {'o', 'l', 'd'};
const std::vector<std::uint8_t> kNew = {'n', 'e', 'w', '!', 0, 255};

TEST(AtomicFileWriter, WritesANewFileAndNothingElse)
{
    TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "a.png";
    ASSERT_TRUE(writeFileAtomically(path, kNew).ok());
    EXPECT_EQ(contentOf(path), kNew);
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"a.png"});
}

TEST(AtomicFileWriter, ReplacesAFileKeepingItsPermissions)
{
    TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "a.tiff";
    test::writeBytes(path, kOld);
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    ASSERT_TRUE(writeFileAtomically(path, kNew).ok());
    EXPECT_EQ(contentOf(path), kNew);
    struct stat info {};
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"a.tiff"});
}

TEST(AtomicFileWriter, WritesThroughASymbolicLink)
{
    TemporaryFolder folder;
    const std::filesystem::path real = folder.path() / "real.png";
    const std::filesystem::path link = folder.path() / "link.png";
    test::writeBytes(real, kOld);
    std::filesystem::create_symlink(real, link);
    ASSERT_TRUE(writeFileAtomically(link, kNew).ok());
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(contentOf(real), kNew);
}

TEST(AtomicFileWriter, NeverOverwritesAnInput)
{
    TemporaryFolder folder;
    const std::filesystem::path input = folder.path() / "photo.jpg";
    test::writeBytes(input, kOld);
    const std::filesystem::path hardLink = folder.path() / "same.jpg";
    const std::filesystem::path softLink = folder.path() / "soft.jpg";
    std::filesystem::create_hard_link(input, hardLink);
    std::filesystem::create_symlink(input, softLink);
    for (const std::filesystem::path& target :
         {input, hardLink, softLink, folder.path() / "." / "photo.jpg"}) {
        const IOStatus written = writeFileAtomically(target, kNew, {input});
        EXPECT_FALSE(written.ok()) << target;
        EXPECT_NE(written.error().message.find("never overwritten"), std::string::npos) << target;
    }
    EXPECT_EQ(contentOf(input), kOld);
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"photo.jpg", "same.jpg", "soft.jpg"}));
}

TEST(AtomicFileWriter, FailuresLeaveNothingBehind)
{
    TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "sub");
    struct Case {
        std::filesystem::path path;
        const char* reason;
    };
    const Case cases[] = {
        {folder.path() / "missing" / "a.png", "No such file or directory"},
        {folder.path() / "sub", "is a folder"},
        {folder.path() / "sub" / "", "names no file"},
    };
    for (const Case& c : cases) {
        const IOStatus written = writeFileAtomically(c.path, kNew);
        EXPECT_FALSE(written.ok()) << c.path;
        EXPECT_NE(written.error().message.find(c.reason), std::string::npos)
            << written.error().message;
    }
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"sub"});
    EXPECT_TRUE(std::filesystem::is_empty(folder.path() / "sub"));
}

TEST(AtomicFileWriter, AnImageThatCannotBeEncodedWritesNothing)
{
    TemporaryFolder folder;
    const std::filesystem::path existing = folder.path() / "keep.png";
    test::writeBytes(existing, kOld);
    const KVBitmapPtr cmyk =
        test::makeTestBitmap({"cmyk8", 8, 4, false, false, 0, KVColorSpaceModel::cmyk}, 8, 8);
    // PNG holds no CMYK; the file that was there stays as it was.
    const IOStatus written = writeImageFile(existing, *cmyk);
    EXPECT_FALSE(written.ok());
    EXPECT_NE(written.error().message.find("PNG"), std::string::npos);
    EXPECT_EQ(contentOf(existing), kOld);
    // An extension that names no format.
    EXPECT_FALSE(writeImageFile(folder.path() / "picture.xyz", *cmyk).ok());
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"keep.png"});
    // The format follows the extension.
    ASSERT_TRUE(writeImageFile(folder.path() / "picture.TIF", *cmyk).ok());
    IOResult<KVBitmapPtr> back = readImageFile(folder.path() / "picture.TIF");
    ASSERT_TRUE(back.ok()) << back.error().message;
    EXPECT_EQ(test::allSamples(*back.value()), test::allSamples(*cmyk));
}

TEST(AtomicFileWriter, ReadingReportsMissingAndUnreadableFiles)
{
    TemporaryFolder folder;
    IOResult<std::vector<std::uint8_t>> missing = readWholeFile(folder.path() / "none.png");
    EXPECT_FALSE(missing.ok());
    EXPECT_NE(missing.error().message.find("none.png"), std::string::npos);
    EXPECT_FALSE(readWholeFile(folder.path()).ok());
    test::writeBytes(folder.path() / "empty.png", {});
    IOResult<KVBitmapPtr> empty = readImageFile(folder.path() / "empty.png");
    EXPECT_FALSE(empty.ok());
    EXPECT_EQ(empty.error().message, "The file is empty.");
}

} // namespace
} // namespace tintorra
