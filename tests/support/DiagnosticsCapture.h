#pragma once

#include "common/Diagnostics.h"

#include <mutex>
#include <string>

namespace tintorra::test {

// Collects the core's diagnostic texts between the two calls, from every thread, the way the
// test framework captures a stream.
namespace detail {
struct CapturedDiagnostics {
    std::mutex mutex;
    std::string text;
};
inline CapturedDiagnostics& capturedDiagnosticsStore()
{
    static CapturedDiagnostics store;
    return store;
}
} // namespace detail

inline void captureDiagnostics()
{
    auto& store = detail::capturedDiagnosticsStore();
    {
        const std::lock_guard lock(store.mutex);
        store.text.clear();
    }
    setDiagnosticsSink([&store](std::string_view text) {
        const std::lock_guard lock(store.mutex);
        store.text += text;
    });
}

inline std::string capturedDiagnostics()
{
    setDiagnosticsSink(nullptr);
    auto& store = detail::capturedDiagnosticsStore();
    const std::lock_guard lock(store.mutex);
    return std::move(store.text);
}

} // namespace tintorra::test
