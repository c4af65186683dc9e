#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tintorra {

// For each key, the keys whose values it depends on.
using KVKeyDependencyTable = std::map<std::string, std::vector<std::string>, std::less<>>;

// The reverse of a dependency table: for each key, the keys that change with it. Keys keep the
// order in which they appear in the forward table.
KVKeyDependencyTable reversedKeyDependencies(const KVKeyDependencyTable& table);

// The keys listed for `key` in `table`, or none.
const std::vector<std::string>& dependentKeys(const KVKeyDependencyTable& table,
                                              std::string_view key);

// The observer side of a slider: one push callback per bound key (whoever is bound to that key
// reads the slider's current value for it), a display request and the action. Sliders use it to
// tell their widget and their controller what changed without knowing either.
class KVSliderBindings {
public:
    using Callback = std::function<void()>;

    void bind(std::string key, Callback push);
    void unbind(std::string_view key);
    bool isBound(std::string_view key) const;

    // Calls the callback bound to `key`, if any.
    void push(std::string_view key) const;

    // Pushes `key`, then every key that `table` lists for it (one level, no recursion: the
    // tables are symmetric enough that recursion would never end).
    void propagate(std::string_view key, const KVKeyDependencyTable& table) const;

    void setAction(Callback action) { action_ = std::move(action); }
    bool hasAction() const { return static_cast<bool>(action_); }
    void sendAction() const;

    void setDisplayHandler(Callback display) { display_ = std::move(display); }
    void requestDisplay() const;

private:
    std::map<std::string, Callback, std::less<>> pushers_;
    Callback action_;
    Callback display_;
};

} // namespace tintorra
