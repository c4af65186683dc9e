#include "app/KVImagePointRule.h"

#include <algorithm>
#include <cmath>

namespace tintorra {

QPoint pixelPointForImagePoint(QPointF point, QSizeF pointSize, QSize pixelSize)
{
    const double w = pointSize.width();
    const double h = pointSize.height();
    // The height above the bottom edge, as the rule measures it.
    const double up = h - point.y();
    if (!(point.x() >= 0.0 && point.x() < w && up >= 0.0 && up < h))
        return {-1, -1};
    const int px = point.x() == 0.0 ? 0 : static_cast<int>(point.x() * pixelSize.width() / w);
    const int py =
        up == 0.0 ? pixelSize.height() : static_cast<int>((h - up) * pixelSize.height() / h);
    return {px, py};
}

double fitZoomFactor(QSizeF imageSize, QSizeF area)
{
    if (imageSize.isEmpty() || area.isEmpty())
        return 1.0;
    return std::min(area.width() / imageSize.width(), area.height() / imageSize.height());
}

} // namespace tintorra
