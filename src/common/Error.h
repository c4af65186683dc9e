#pragma once

#include <string>
#include <utility>
#include <variant>

namespace tintorra {

// What kind of failure an error is, for callers that answer kinds differently (a cancelled run
// is not worth a message; a refused file is).
enum class ErrorCode {
    // What a result that holds a value reports as its error.
    none,
    cancelled,
    outOfMemory,
    unsupportedImage,
    invalidRequest,
    fileFailure,
};

// A failure as the user reads it: `message` says what went wrong and what to do about it.
struct Error {
    ErrorCode code = ErrorCode::none;
    std::string message;

    friend bool operator==(const Error&, const Error&) = default;
};

// The value of a step, or the error that stopped it. Nothing in the core throws across its
// boundary; steps that can fail hand back one of these.
template <typename T>
class Result {
public:
    Result(T value) : content_(std::move(value)) {}
    Result(Error error) : content_(std::move(error)) {}

    bool ok() const { return content_.index() == 0; }
    explicit operator bool() const { return ok(); }

    T& value() { return std::get<0>(content_); }
    const T& value() const { return std::get<0>(content_); }
    T&& take() { return std::get<0>(std::move(content_)); }

    // No error (code none, empty message) when the result holds a value.
    const Error& error() const
    {
        static const Error none;
        return ok() ? none : std::get<1>(content_);
    }

private:
    std::variant<T, Error> content_;
};

} // namespace tintorra
