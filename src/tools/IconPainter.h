#pragma once

#include "image/KVBitmap.h"

namespace tintorra {

// Draws the application icon at `size` x `size` pixels: a ring of every hue at the most chroma
// sRGB allows, one arc of it lifted out as a selection, and a disc of the target hue in the
// middle. 8-bit RGBA, unpremultiplied, sRGB, transparent outside the shapes and anti-aliased.
KVBitmapPtr paintTintorraIcon(int size);

} // namespace tintorra
