#pragma once

#include "common/Error.h"

#include <string>
#include <utility>

namespace tintorra {

// Reading and writing image files hand back the core's one result type; codecs never throw
// across their boundary.
template <typename T>
using IOResult = Result<T>;

// A step that yields nothing but success or a reason.
struct IOSuccess {};
using IOStatus = IOResult<IOSuccess>;

inline IOStatus ioSuccess()
{
    return IOSuccess{};
}

// Why a file could not be read or written, in words a user can act on.
inline Error ioError(std::string message)
{
    return Error{ErrorCode::fileFailure, std::move(message)};
}

} // namespace tintorra
