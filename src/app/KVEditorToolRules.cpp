#include "app/KVEditorToolRules.h"

namespace tintorra {

KVModifierKeys KVModifierKeys::fromQt(Qt::KeyboardModifiers modifiers, bool spacebar)
{
    KVModifierKeys keys;
    keys.spacebar = spacebar;
    keys.shift = modifiers.testFlag(Qt::ShiftModifier);
    keys.command = modifiers.testFlag(Qt::ControlModifier);
    keys.option = modifiers.testFlag(Qt::AltModifier);
    keys.control = modifiers.testFlag(Qt::MetaModifier);
    return keys;
}

KVEditorCursorKind editorCursorKind(int tool, const KVModifierKeys& keys, bool mouseDown)
{
    using Kind = KVEditorCursorKind;
    if (keys.spacebar) {
        if (keys.none())
            return mouseDown ? Kind::closedHand : Kind::openHand;
        if (keys.onlyCommand())
            return Kind::zoomIn;
        if (keys.onlyCommandOption())
            return Kind::zoomOut;
    }
    switch (tool) {
    case kToolPickSelectionHue:
        if (keys.onlyShift() && !keys.spacebar)
            return Kind::pickerPlus;
        if (keys.onlyOption())
            return Kind::pickerMinus;
        return Kind::picker;
    case kToolAddToSelectionHue:
        return keys.onlyOption() && !keys.spacebar ? Kind::pickerMinus : Kind::pickerPlus;
    case kToolSubtractFromSelectionHue:
        return keys.onlyShift() && !keys.spacebar ? Kind::pickerPlus : Kind::pickerMinus;
    case kToolPickTargetHue:
        return Kind::picker;
    case kToolMaskBrush:
        if (!keys.spacebar && (keys.none() || keys.onlyShift() || keys.onlyOption()))
            return Kind::brush;
        return Kind::arrow;
    default:
        return Kind::arrow;
    }
}

KVEditorClickAction editorClickAction(int tool, const KVModifierKeys& keys)
{
    using Action = KVEditorClickAction;
    if (keys.spacebar) {
        if (keys.onlyCommand())
            return Action::zoomIn;
        if (keys.onlyCommandOption())
            return Action::zoomOut;
        return Action::none;
    }
    switch (tool) {
    case kToolPickSelectionHue:
        if (keys.onlyShift())
            return Action::addSelectionHue;
        if (keys.onlyOption())
            return Action::subtractSelectionHue;
        return Action::setSelectionHue;
    case kToolAddToSelectionHue:
        return keys.onlyOption() ? Action::subtractSelectionHue : Action::addSelectionHue;
    case kToolSubtractFromSelectionHue:
        return keys.onlyShift() ? Action::addSelectionHue : Action::subtractSelectionHue;
    case kToolPickTargetHue:
        return Action::setTargetHue;
    case kToolMaskBrush:
        return Action::none;
    default:
        if (keys.command && keys.option && keys.control && !keys.shift && !keys.function)
            return Action::debugPixel;
        return Action::none;
    }
}

KVEditorDragAction editorDragAction(int tool, const KVModifierKeys& keys)
{
    using Action = KVEditorDragAction;
    if (keys.spacebar && keys.command && !keys.shift && !keys.control && !keys.function)
        return Action::zoom;
    if (keys.spacebar && keys.none())
        return Action::pan;
    if (tool >= kToolPickSelectionHue && tool <= kToolPickTargetHue)
        return Action::repeatClick;
    if (tool == kToolMaskBrush)
        return brushStrokeStarts(tool, keys) ? Action::brush : Action::none;
    if (!keys.spacebar && keys.none())
        return Action::dragOut;
    return Action::none;
}

bool brushStrokeStarts(int tool, const KVModifierKeys& keys)
{
    return tool == kToolMaskBrush && !keys.spacebar &&
           (keys.none() || keys.onlyShift() || keys.onlyOption());
}

} // namespace tintorra
