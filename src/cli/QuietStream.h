#pragma once

#include <cstdio>
#include <unistd.h>

namespace tintorra::cli {

// Sends one of the standard streams nowhere while it lives. The engine's workers announce
// themselves on standard output and the gamut builder reports progress on standard error; the
// tool's own output (JSON, CSV, one-line errors) must stay clean of both.
class QuietStream {
public:
    explicit QuietStream(int fd) : fd_(fd)
    {
        std::fflush(fd_ == STDOUT_FILENO ? stdout : stderr);
        saved_ = dup(fd_);
        std::FILE* sink = std::fopen("/dev/null", "w");
        if (saved_ >= 0 && sink != nullptr) {
            dup2(fileno(sink), fd_);
        }
        if (sink != nullptr) {
            std::fclose(sink);
        }
    }
    ~QuietStream()
    {
        std::fflush(fd_ == STDOUT_FILENO ? stdout : stderr);
        if (saved_ >= 0) {
            dup2(saved_, fd_);
            close(saved_);
        }
    }
    QuietStream(const QuietStream&) = delete;
    QuietStream& operator=(const QuietStream&) = delete;

private:
    int fd_;
    int saved_ = -1;
};

} // namespace tintorra::cli
