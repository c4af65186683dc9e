#pragma once

#include <Qt>

namespace tintorra {

// The editor's tools as the tool buttons number them.
enum KVEditorTool : int {
    kToolPickSelectionHue = 1,
    kToolAddToSelectionHue = 2,
    kToolSubtractFromSelectionHue = 3,
    kToolPickTargetHue = 4,
    kToolMaskBrush = 5,
};

// The keys the rules are written for. Ctrl stands for command and Alt for option; the rules'
// control key is Meta. There is no function key on this platform's modifier list.
struct KVModifierKeys {
    bool spacebar = false;
    bool shift = false;
    bool control = false;
    bool option = false;
    bool command = false;
    bool function = false;

    static KVModifierKeys fromQt(Qt::KeyboardModifiers modifiers, bool spacebar);

    bool none() const { return !shift && !control && !option && !command && !function; }
    bool onlyShift() const { return shift && !control && !option && !command && !function; }
    bool onlyOption() const { return option && !shift && !control && !command && !function; }
    bool onlyCommand() const { return command && !shift && !control && !option && !function; }
    bool onlyCommandOption() const { return command && option && !shift && !control && !function; }
    friend bool operator==(const KVModifierKeys&, const KVModifierKeys&) = default;
};

enum class KVEditorCursorKind {
    arrow,
    openHand,
    closedHand,
    zoomIn,
    zoomOut,
    picker,
    pickerPlus,
    pickerMinus,
    brush,
};

// The cursor over the image for a tool and the keys held (and whether the button is down, which
// closes the panning hand).
KVEditorCursorKind editorCursorKind(int tool, const KVModifierKeys& keys, bool mouseDown);

enum class KVEditorClickAction {
    none,
    zoomIn,
    zoomOut,
    setSelectionHue,
    addSelectionHue,
    subtractSelectionHue,
    setTargetHue,
    debugPixel,
};

// What a click (press and release at one point) asks for; a drag with tools 1 to 4 repeats it at
// every step. The mask brush paints instead and has no click action.
KVEditorClickAction editorClickAction(int tool, const KVModifierKeys& keys);

enum class KVEditorDragAction {
    zoom,        // space and command: the zoom follows the horizontal movement
    pan,         // space alone: the image follows the pointer
    repeatClick, // tools 1 to 4 sample along the way
    brush,       // the mask brush continues its stroke
    dragOut,     // no tool and no key: the image leaves the window
    none,
};

KVEditorDragAction editorDragAction(int tool, const KVModifierKeys& keys);

// Whether a press with the mask brush starts a stroke (no key, or only shift; option erases).
bool brushStrokeStarts(int tool, const KVModifierKeys& keys);

} // namespace tintorra
