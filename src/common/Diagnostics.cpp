#include "common/Diagnostics.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>

namespace tintorra {

namespace {

std::mutex& sinkMutex()
{
    static std::mutex mutex;
    return mutex;
}

DiagnosticsSink& installedSink()
{
    static DiagnosticsSink sink;
    return sink;
}

} // namespace

void setDiagnosticsSink(DiagnosticsSink sink)
{
    const std::lock_guard lock(sinkMutex());
    installedSink() = std::move(sink);
}

void diagnostic(const char* format, ...)
{
    const std::lock_guard lock(sinkMutex());
    if (!installedSink()) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list measuring;
    va_copy(measuring, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measuring);
    va_end(measuring);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    if (length > 0) {
        std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    }
    va_end(arguments);
    installedSink()(text);
}

} // namespace tintorra
