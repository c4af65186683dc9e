#pragma once

#include "image/KVBitmap.h"

#include <string>

namespace tintorra {

// Draws the application icon at `size` x `size` pixels: a ring of every hue at the most chroma
// sRGB allows, one arc of it lifted out as a selection, and a disc of the target hue in the
// middle. 8-bit RGBA, unpremultiplied, sRGB, transparent outside the shapes and anti-aliased.
KVBitmapPtr paintTintorraIcon(int size);

// The same icon as an SVG document for the desktop's scalable icon: the ring and the arc as
// narrow wedges, each shaded from its inner to its outer edge as the bitmap is, and the disc as
// a radial gradient. Its colours are the bitmap's, gamma-encoded like them.
std::string tintorraIconSvg();

} // namespace tintorra
