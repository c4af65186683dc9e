#pragma once

#include <string>
#include <utility>
#include <variant>

namespace tintorra {

// Why an image file could not be read or written, in words a user can act on.
struct ImageIOError {
    std::string message;
};

// The value of a reading or writing step, or the reason it failed. Codecs never throw across
// their boundary; they hand back one of these.
template <typename T>
class IOResult {
public:
    IOResult(T value) : content_(std::move(value)) {}
    IOResult(ImageIOError error) : content_(std::move(error)) {}

    bool ok() const { return content_.index() == 0; }
    explicit operator bool() const { return ok(); }

    T& value() { return std::get<0>(content_); }
    const T& value() const { return std::get<0>(content_); }
    T&& take() { return std::get<0>(std::move(content_)); }

    // Empty when the step succeeded.
    const std::string& error() const
    {
        static const std::string none;
        return ok() ? none : std::get<1>(content_).message;
    }

private:
    std::variant<T, ImageIOError> content_;
};

// A step that yields nothing but success or a reason.
struct IOSuccess {};
using IOStatus = IOResult<IOSuccess>;

inline IOStatus ioSuccess()
{
    return IOSuccess{};
}

inline ImageIOError ioError(std::string message)
{
    return ImageIOError{std::move(message)};
}

} // namespace tintorra
