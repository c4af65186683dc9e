#pragma once

#include "app/KVDisplayTransform.h"
#include "image/KVBitmap.h"

#include <QImage>
#include <QRect>
#include <memory>

namespace tintorra {

// How the mask brush's mask is laid over the image.
enum class KVMaskOverlay {
    none,
    darken, // the mask multiplied in at 40 %: unmasked (black) parts darken
    red,    // red at 50 % where the mask is black, nothing where it is white
};

// Everything a render needs, copied into the worker's job so the main thread can move on.
struct KVRenderSource {
    KVBitmapPtr image;
    KVBitmapPtr mask; // grey, ideally of the image's size; null for none
    KVMaskOverlay overlay = KVMaskOverlay::none;
    std::shared_ptr<const KVDisplayTransform> transform; // null: shown as stored
    int checkerSize = 8; // device pixels per square of the checkerboard behind transparent parts
};

// The part `deviceRect` of the image scaled by `scale` (device pixels per image pixel, the image
// starting at 0,0), as opaque RGB32 in display colours. Enlarged pixels are squares (nearest
// neighbour); reductions average four samples per output pixel. Only the pixels asked for are
// read, so a render costs what it shows, not what the photo holds. 16-bit images go through the
// colour transform at 16 bits and are dithered on the way to 8, so gradients keep no bands.
// `threads` > 1 splits the rows. Any thread; a null image for an unsupported bitmap.
QImage renderImageRegion(const KVRenderSource& source, QRect deviceRect, double scale,
                         int threads = 1);

} // namespace tintorra
