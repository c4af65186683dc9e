#pragma once

#include "app/KVEditorToolRules.h"

#include <QCursor>

namespace tintorra {

// The cursor for a kind: the pickers and magnifiers drawn from the program's SVG cursors (the
// 2x drawing on high-density screens), the hands and arrow of the platform, and for the brush a
// circle of `brushDiameter` logical pixels.
QCursor editorCursor(KVEditorCursorKind kind, double brushDiameter, qreal devicePixelRatio);

} // namespace tintorra
