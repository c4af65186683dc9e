#include "cli/TiffPageTags.h"

#include "cli/CliFailure.h"

#include <tiffio.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace tintorra::cli {

namespace {

// A file of its own in the temporary folder, removed when done: libtiff rewrites a directory in
// place only in a file.
class TemporaryFile {
public:
    TemporaryFile()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "tintorra-XXXXXX").string();
        const int descriptor = mkstemp(pattern.data());
        if (descriptor < 0) {
            failProcessing("cannot create a temporary file to write the document's source page "
                           "tags; check that the temporary folder is writable");
        }
        close(descriptor);
        path_ = pattern;
    }
    ~TemporaryFile() { std::remove(path_.c_str()); }
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

} // namespace

std::vector<std::uint8_t> withTextTagsOnPage(const std::vector<std::uint8_t>& tiff,
                                             std::size_t page, const std::vector<TiffTextTag>& tags)
{
    if (tags.empty()) {
        return tiff;
    }
    const TemporaryFile file;
    std::ofstream(file.path(), std::ios::binary)
        .write(reinterpret_cast<const char*>(tiff.data()),
               static_cast<std::streamsize>(tiff.size()));
    TIFFSetWarningHandler(nullptr);
    TIFF* handle = TIFFOpen(file.path().c_str(), "r+");
    bool done = handle != nullptr && TIFFSetDirectory(handle, static_cast<tdir_t>(page)) == 1;
    for (const auto& [tag, text] : tags) {
        done = done && TIFFSetField(handle, static_cast<ttag_t>(tag), text.c_str()) == 1;
    }
    done = done && TIFFRewriteDirectory(handle) == 1;
    if (handle != nullptr) {
        TIFFClose(handle);
    }
    if (!done) {
        failProcessing("the photographer's tags cannot be written to the document's source page; "
                       "write an image format instead of a document");
    }
    std::ifstream in(file.path(), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

} // namespace tintorra::cli
