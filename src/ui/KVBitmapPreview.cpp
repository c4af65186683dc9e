#include "ui/KVBitmapPreview.h"

#include "image/PixelAccess.h"

#include <algorithm>
#include <cmath>

namespace tintorra {

QImage previewImage(const KVBitmapPtr& bitmap, int longestSide)
{
    const PixelManipulationOffsets offsets = pixelManipulationOffsetsWithImageGamma(bitmap, 1.0);
    if (!offsets.supported || offsets.pixelsWide <= 0 || offsets.pixelsHigh <= 0 ||
        longestSide <= 0) {
        return {};
    }
    const double scale =
        std::min(1.0, static_cast<double>(longestSide) /
                          static_cast<double>(std::max(offsets.pixelsWide, offsets.pixelsHigh)));
    const int wide = std::max(1, static_cast<int>(std::lround(offsets.pixelsWide * scale)));
    const int high = std::max(1, static_cast<int>(std::lround(offsets.pixelsHigh * scale)));
    QImage image(wide, high, QImage::Format_RGBA8888);
    const auto toByte = [](double value) {
        return static_cast<uchar>(std::clamp(value, 0.0, 1.0) * 255.0 + 0.5);
    };
    for (int y = 0; y < high; ++y) {
        const auto sourceY = std::min<std::int64_t>(offsets.pixelsHigh - 1,
                                                    static_cast<std::int64_t>((y + 0.5) / scale));
        uchar* row = image.scanLine(y);
        for (int x = 0; x < wide; ++x) {
            const auto sourceX = std::min<std::int64_t>(
                offsets.pixelsWide - 1, static_cast<std::int64_t>((x + 0.5) / scale));
            ColorComponents colour{};
            readGammaFloats(sourceX, sourceY, offsets, colour);
            if (offsets.hasAlpha && offsets.premultiplied && colour.alpha > 0.0) {
                colour.c0 /= colour.alpha;
                colour.c1 /= colour.alpha;
                colour.c2 /= colour.alpha;
            }
            row[x * 4 + 0] = toByte(colour.c0);
            row[x * 4 + 1] = toByte(colour.c1);
            row[x * 4 + 2] = toByte(colour.c2);
            row[x * 4 + 3] = toByte(colour.alpha);
        }
    }
    return image;
}

} // namespace tintorra
