#include "controls/KVSliderBindings.h"

#include <algorithm>

namespace tintorra {

KVKeyDependencyTable reversedKeyDependencies(const KVKeyDependencyTable& table)
{
    KVKeyDependencyTable reversed;
    for (const auto& [key, dependencies] : table) {
        reversed.try_emplace(key);
        for (const std::string& dependency : dependencies) {
            std::vector<std::string>& affected = reversed[dependency];
            if (std::find(affected.begin(), affected.end(), key) == affected.end()) {
                affected.push_back(key);
            }
        }
    }
    return reversed;
}

const std::vector<std::string>& dependentKeys(const KVKeyDependencyTable& table,
                                              std::string_view key)
{
    static const std::vector<std::string> none;
    const auto found = table.find(key);
    return found == table.end() ? none : found->second;
}

void KVSliderBindings::bind(std::string key, Callback push)
{
    pushers_.insert_or_assign(std::move(key), std::move(push));
}

void KVSliderBindings::unbind(std::string_view key)
{
    const auto found = pushers_.find(key);
    if (found != pushers_.end()) {
        pushers_.erase(found);
    }
}

bool KVSliderBindings::isBound(std::string_view key) const
{
    return pushers_.find(key) != pushers_.end();
}

void KVSliderBindings::push(std::string_view key) const
{
    const auto found = pushers_.find(key);
    if (found != pushers_.end() && found->second) {
        // A copy, so that a callback may rebind or unbind its own key while it runs.
        const Callback callback = found->second;
        callback();
    }
}

void KVSliderBindings::propagate(std::string_view key, const KVKeyDependencyTable& table) const
{
    push(key);
    for (const std::string& dependent : dependentKeys(table, key)) {
        push(dependent);
    }
}

void KVSliderBindings::sendAction() const
{
    if (action_) {
        const Callback action = action_;
        action();
    }
}

void KVSliderBindings::requestDisplay() const
{
    if (display_) {
        display_();
    }
}

} // namespace tintorra
