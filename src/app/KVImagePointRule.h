#pragma once

#include <QPoint>
#include <QPointF>
#include <QSize>
#include <QSizeF>

namespace tintorra {

// The pixel under a point of an image, the point in image points measured from the top-left
// corner (`pointSize` is the image's size in points, `pixelSize` in pixels). Rows are counted
// from the bottom edge as the rule was first written, so the point set is half-open the other
// way round: the top edge lies outside and gives (-1, -1), while the bottom edge itself maps to
// row pixelsHigh, one past the last row. That edge is kept on purpose; callers that pass pixel
// centres never reach it.
QPoint pixelPointForImagePoint(QPointF point, QSizeF pointSize, QSize pixelSize);

// The factor that fits an image of `imageSize` proportionally into `area`.
double fitZoomFactor(QSizeF imageSize, QSizeF area);

} // namespace tintorra
