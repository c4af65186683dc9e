#pragma once

#include <string>

namespace tintorra {

inline constexpr const char* kContextualMenuTitle = "Contextual Menu";

// One entry of a slider's contextual menu; the widget turns these into real menu items (all with
// an empty key equivalent).
struct KVContextMenuItem {
    std::string title;
    bool isSeparator = false;

    friend bool operator==(const KVContextMenuItem&, const KVContextMenuItem&) = default;
};

} // namespace tintorra
