#pragma once

#include <functional>
#include <string_view>

namespace tintorra {

// Where the core's diagnostic texts go ("Building chroma LUT...", allocation failures and the
// like). A library must not write to its host's streams, so the host installs a sink: the
// command-line tool sends them to standard error when asked to, the desktop program to its log.
// Without a sink they are dropped. The sink may be called from any thread, one call at a time.
using DiagnosticsSink = std::function<void(std::string_view text)>;

void setDiagnosticsSink(DiagnosticsSink sink);

// Formats like printf and hands the text to the sink, if one is installed.
[[gnu::format(printf, 1, 2)]] void diagnostic(const char* format, ...);

} // namespace tintorra
