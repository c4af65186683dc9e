#include "app/KVImageDisplayCache.h"

#include <QPainter>
#include <QRegion>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <thread>

namespace tintorra {

namespace {

// Rendered around the visible area, so that a short scroll finds its pixels ready.
constexpr int kMarginDevicePixels = 128;
// The overview's longest side: enough to stand in for a moment, quick to make.
constexpr double kOverviewLongestSide = 1024.0;

QSize scaledImageSize(const KVBitmapPtr& image, double scale)
{
    return {static_cast<int>(std::ceil(image->pixelsWide() * scale)),
            static_cast<int>(std::ceil(image->pixelsHigh() * scale))};
}

int renderThreads()
{
    return static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
}

void copyInto(QImage& target, QPoint at, const QImage& piece, QRect pieceRect)
{
    for (int y = 0; y < pieceRect.height(); ++y)
        std::memcpy(target.scanLine(at.y() + y) + 4 * at.x(),
                    piece.constScanLine(pieceRect.y() + y) + 4 * pieceRect.x(),
                    static_cast<std::size_t>(pieceRect.width()) * 4);
}

} // namespace

KVImageDisplayCache::KVImageDisplayCache(QObject* parent) : QObject(parent)
{
    worker_.setMaxThreadCount(1);
}

KVImageDisplayCache::~KVImageDisplayCache()
{
    worker_.waitForDone();
}

void KVImageDisplayCache::waitForWorker()
{
    worker_.waitForDone();
}

void KVImageDisplayCache::setSource(KVRenderSource source)
{
    const bool sameSize = source_.image && source.image &&
                          source_.image->pixelsWide() == source.image->pixelsWide() &&
                          source_.image->pixelsHigh() == source.image->pixelsHigh();
    source_ = std::move(source);
    ++generation_;
    if (!sameSize) {
        sharp_ = {};
        overview_ = {};
        emit updated();
        return;
    }
    // The same place at the same scale, made again from the new pixels at once: the old ones
    // stay on screen until then, so there is nothing to repaint yet.
    if (!sharp_.isNull() && !wanted_)
        wanted_ = std::make_pair(sharp_.deviceRect, sharp_.scale);
    startNextJob();
}

QRect KVImageDisplayCache::wantedRect(QRect visible, double scale) const
{
    const QRect whole(QPoint(0, 0), scaledImageSize(source_.image, scale));
    return visible
        .adjusted(-kMarginDevicePixels, -kMarginDevicePixels, kMarginDevicePixels,
                  kMarginDevicePixels)
        .intersected(whole);
}

bool KVImageDisplayCache::covers(QRect visible, double scale) const
{
    if (!source_.image || sharp_.isNull() || sharp_.generation != generation_ ||
        sharp_.scale != scale)
        return false;
    const QRect whole(QPoint(0, 0), scaledImageSize(source_.image, scale));
    return sharp_.deviceRect.contains(visible.intersected(whole));
}

void KVImageDisplayCache::require(QRect visible, double scale)
{
    if (!source_.image || visible.isEmpty() || !(scale > 0.0))
        return;
    if (covers(visible, scale)) {
        wanted_.reset();
        return;
    }
    const QRect rect = wantedRect(visible, scale);
    if (rect.isEmpty())
        return;
    wanted_ = std::make_pair(rect, scale);
    startNextJob();
}

void KVImageDisplayCache::startNextJob()
{
    if (busy_ || !source_.image)
        return;
    Job job;
    if (wanted_) {
        job.deviceRect = wanted_->first;
        job.scale = wanted_->second;
        wanted_.reset();
        if (sharp_.generation == generation_ && sharp_.scale == job.scale)
            job.previous = sharp_;
    } else if (overview_.isNull() || overview_.generation != generation_) {
        const double scale = std::min(
            1.0, kOverviewLongestSide / static_cast<double>(std::max(source_.image->pixelsWide(),
                                                                     source_.image->pixelsHigh())));
        // A sharp buffer of the whole image (at fit, say) stands in as well as any overview.
        if (sharp_.generation == generation_ && sharp_.scale <= 1.0 &&
            sharp_.deviceRect ==
                QRect(QPoint(0, 0), scaledImageSize(source_.image, sharp_.scale))) {
            overview_ = sharp_;
            return;
        }
        job.overview = true;
        job.scale = scale;
        job.deviceRect = QRect(QPoint(0, 0), scaledImageSize(source_.image, scale));
    } else {
        return;
    }
    job.source = source_;
    job.generation = generation_;
    busy_ = true;
    worker_.start([this, job = std::move(job)] {
        Buffer buffer = runJob(job);
        QMetaObject::invokeMethod(
            this,
            [this, overview = job.overview, buffer = std::move(buffer)]() mutable {
                jobFinished(overview, std::move(buffer));
            },
            Qt::QueuedConnection);
    });
}

KVImageDisplayCache::Buffer KVImageDisplayCache::runJob(const Job& job)
{
    Buffer buffer;
    buffer.deviceRect = job.deviceRect;
    buffer.scale = job.scale;
    buffer.generation = job.generation;
    const QRect reused =
        job.previous.isNull() ? QRect() : job.previous.deviceRect.intersected(job.deviceRect);
    if (reused.isEmpty()) {
        buffer.image = renderImageRegion(job.source, job.deviceRect, job.scale, renderThreads());
        return buffer;
    }
    // After a scroll only the strips that came into view are new.
    buffer.image = QImage(job.deviceRect.size(), QImage::Format_RGB32);
    copyInto(buffer.image, reused.topLeft() - job.deviceRect.topLeft(), job.previous.image,
             reused.translated(-job.previous.deviceRect.topLeft()));
    for (const QRect& missing : QRegion(job.deviceRect).subtracted(QRegion(reused))) {
        const QImage piece = renderImageRegion(job.source, missing, job.scale, renderThreads());
        if (piece.isNull())
            return {};
        copyInto(buffer.image, missing.topLeft() - job.deviceRect.topLeft(), piece, piece.rect());
    }
    return buffer;
}

void KVImageDisplayCache::jobFinished(bool overview, Buffer buffer)
{
    busy_ = false;
    if (!buffer.isNull() && buffer.generation == generation_) {
        ++rendersTaken_;
        (overview ? overview_ : sharp_) = std::move(buffer);
        emit updated();
    }
    startNextJob();
}

void KVImageDisplayCache::paint(QPainter& painter, QRectF exposed, double zoom) const
{
    if (!source_.image)
        return;
    const qreal dpr = painter.device() ? painter.device()->devicePixelRatioF() : 1.0;
    const double scale = zoom * dpr;
    const auto logicalRect = [&](const Buffer& buffer) {
        // A buffer made at another scale is stretched to where its pixels belong now.
        const double factor = zoom / buffer.scale;
        return QRectF(buffer.deviceRect.x() * factor, buffer.deviceRect.y() * factor,
                      buffer.deviceRect.width() * factor, buffer.deviceRect.height() * factor);
    };
    const QRectF imageRect(0, 0, source_.image->pixelsWide() * zoom,
                           source_.image->pixelsHigh() * zoom);
    const QRectF wanted = exposed.intersected(imageRect);
    if (!sharp_.isNull() && sharp_.scale == scale && logicalRect(sharp_).contains(wanted)) {
        painter.drawImage(logicalRect(sharp_), sharp_.image);
        return;
    }
    // Until the right pixels arrive: the overview, and over it whatever the last sharp buffer
    // holds of the area, both stretched.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, zoom < 1.0);
    if (!overview_.isNull())
        painter.drawImage(logicalRect(overview_), overview_.image);
    else
        painter.fillRect(wanted, painter.background());
    if (!sharp_.isNull())
        painter.drawImage(logicalRect(sharp_), sharp_.image);
}

} // namespace tintorra
