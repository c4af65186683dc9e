#pragma once

#include <functional>

namespace tintorra {

// What a control calls around one press, drag and release, so that every change made in answer
// to it is undone at once. The editor controller installs it; a control without it just edits.
struct KVUndoGrouping {
    std::function<void()> begin;
    std::function<void()> end;

    void beginGroup() const
    {
        if (begin)
            begin();
    }
    void endGroup() const
    {
        if (end)
            end();
    }
};

} // namespace tintorra
