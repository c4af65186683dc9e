#pragma once

#include "image/KVBitmap.h"

#include <QImage>

namespace tintorra {

// A small picture of a bitmap for showing beside the controls: every pixel taken from the
// nearest one of the bitmap, its samples as stored (no colour management), straight alpha.
// `longestSide` bounds the picture's size; a bitmap that is already smaller keeps its size.
// Safe to call off the main thread; an unsupported layout gives a null image.
QImage previewImage(const KVBitmapPtr& bitmap, int longestSide);

} // namespace tintorra
