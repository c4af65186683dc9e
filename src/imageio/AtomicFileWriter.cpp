#include "imageio/AtomicFileWriter.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tintorra {

namespace {

std::string systemMessage(int error)
{
    return std::generic_category().message(error);
}

// Closes the descriptor and removes the temporary file unless the rename has happened.
class TemporaryFile {
public:
    TemporaryFile() = default;
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile()
    {
        if (fd_ >= 0)
            ::close(fd_);
        if (!path_.empty())
            ::unlink(path_.c_str());
    }

    // Creates a new file next to `target` with a name nobody else uses.
    bool create(const std::filesystem::path& target, int& error)
    {
        std::random_device entropy;
        std::mt19937_64 random(entropy());
        const std::filesystem::path folder = target.parent_path();
        for (int attempt = 0; attempt < 100; ++attempt) {
            char suffix[24];
            std::snprintf(suffix, sizeof suffix, ".%016llx.tmp",
                          static_cast<unsigned long long>(random()));
            std::string name(".");
            name.append(target.filename().string()).append(suffix);
            const std::filesystem::path candidate = folder / name;
            const int fd = ::open(candidate.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            if (fd >= 0) {
                fd_ = fd;
                path_ = candidate.string();
                return true;
            }
            if (errno != EEXIST) {
                error = errno;
                return false;
            }
        }
        error = EEXIST;
        return false;
    }

    bool writeAll(std::span<const std::uint8_t> data, int& error)
    {
        std::size_t written = 0;
        while (written < data.size()) {
            const ssize_t n = ::write(fd_, data.data() + written, data.size() - written);
            if (n < 0) {
                if (errno == EINTR)
                    continue;
                error = errno;
                return false;
            }
            written += static_cast<std::size_t>(n);
        }
        return true;
    }

    bool finish(int& error)
    {
        if (::fsync(fd_) != 0) {
            error = errno;
            return false;
        }
        const int fd = fd_;
        fd_ = -1;
        if (::close(fd) != 0) {
            error = errno;
            return false;
        }
        return true;
    }

    int fd() const { return fd_; }
    const std::string& path() const { return path_; }
    void released() { path_.clear(); }

private:
    int fd_ = -1;
    std::string path_;
};

bool isSameFile(const std::filesystem::path& a, const std::filesystem::path& b)
{
    std::error_code error;
    return std::filesystem::equivalent(a, b, error) && !error;
}

} // namespace

IOStatus writeFileAtomically(const std::filesystem::path& path, std::span<const std::uint8_t> data,
                             const std::vector<std::filesystem::path>& protectedFiles)
{
    const std::string name = path.string();
    if (path.filename().empty())
        return ioError("Cannot write “" + name + "”: it names no file.");

    struct stat existing {};
    const bool exists = ::stat(path.c_str(), &existing) == 0;
    if (exists && S_ISDIR(existing.st_mode))
        return ioError("Cannot write “" + name + "”: it is a folder.");
    if (exists) {
        for (const std::filesystem::path& input : protectedFiles) {
            if (isSameFile(path, input))
                return ioError("Cannot write “" + name + "”: it is an input and is never " +
                               "overwritten.");
        }
    }

    // A rename over a symbolic link would replace the link, not the file it points to: write
    // next to the real file instead.
    std::filesystem::path target = path;
    struct stat link {};
    if (::lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode)) {
        std::error_code linkError;
        target = std::filesystem::weakly_canonical(path, linkError);
        if (linkError)
            return ioError("Cannot write “" + name + "”: " + linkError.message() + ".");
    }

    TemporaryFile temporary;
    int error = 0;
    if (!temporary.create(target, error))
        return ioError("Cannot write “" + name + "”: " + systemMessage(error) + ".");
    if (exists)
        ::fchmod(temporary.fd(), existing.st_mode & 07777);
    if (!temporary.writeAll(data, error) || !temporary.finish(error))
        return ioError("Cannot write “" + name + "”: " + systemMessage(error) + ".");
    if (::rename(temporary.path().c_str(), target.c_str()) != 0)
        return ioError("Cannot write “" + name + "”: " + systemMessage(errno) + ".");
    temporary.released();
    return ioSuccess();
}

} // namespace tintorra
