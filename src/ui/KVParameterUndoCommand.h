#pragma once

#include <QUndoCommand>
#include <functional>
#include <utility>

namespace tintorra {

// One change of one parameter: redo applies the new value, undo the old one, each exactly as
// stored. Changes made within one press-drag-release of a control carry the same non-zero group
// and merge, so that the drag undoes in one step to where it began.
template <typename Value>
class KVParameterUndoCommand : public QUndoCommand {
public:
    using Apply = std::function<void(const Value&)>;

    KVParameterUndoCommand(const QString& actionName, int mergeKey, int group, Value oldValue,
                           Value newValue, Apply apply)
        : QUndoCommand(actionName), mergeKey_(mergeKey), group_(group),
          oldValue_(std::move(oldValue)), newValue_(std::move(newValue)), apply_(std::move(apply))
    {}

    void undo() override { apply_(oldValue_); }
    void redo() override { apply_(newValue_); }
    int id() const override { return group_ != 0 ? mergeKey_ : -1; }

    bool mergeWith(const QUndoCommand* other) override
    {
        const auto* same = dynamic_cast<const KVParameterUndoCommand*>(other);
        if (same == nullptr || same->group_ != group_ || same->mergeKey_ != mergeKey_) {
            return false;
        }
        newValue_ = same->newValue_;
        return true;
    }

private:
    int mergeKey_;
    int group_;
    Value oldValue_;
    Value newValue_;
    Apply apply_;
};

} // namespace tintorra
