#pragma once

#include "app/KVImageRenderer.h"

#include <QImage>
#include <QObject>
#include <QRect>
#include <QThreadPool>
#include <cstdint>
#include <optional>

class QPainter;

namespace tintorra {

// What an editor view draws from: the visible part of its image already scaled and colour
// converted (the sharp buffer), and the whole image at a small scale (the overview) that stands
// in, stretched, wherever the sharp buffer has not caught up yet: after a scroll, a zoom or a
// resize. Both are made on a worker thread; the main thread only asks and blits.
//
// Coordinates: "device" rectangles are in device pixels of the whole image scaled by `scale`
// (device pixels per image pixel), with the image's top-left corner at 0,0.
class KVImageDisplayCache : public QObject {
    Q_OBJECT

public:
    explicit KVImageDisplayCache(QObject* parent = nullptr);
    ~KVImageDisplayCache() override;

    // A new image, mask or overlay: every buffer after this shows it. Buffers of the old one are
    // still drawn until the new ones arrive, when the size is the same (a new shifted result
    // keeps its place on screen); a different size drops them.
    void setSource(KVRenderSource source);
    const KVRenderSource& source() const { return source_; }

    // Makes sure the sharp buffer will cover `visible` at `scale` (device pixels, see above);
    // starts a render when it does not. Never waits.
    void require(QRect visible, double scale);
    // True when the sharp buffer of the current source covers `visible` at `scale`.
    bool covers(QRect visible, double scale) const;

    // Draws the image for `exposed` (logical coordinates of the view, image at `zoom` logical
    // pixels per image pixel): the overview where it must, the sharp buffer over it.
    void paint(QPainter& painter, QRectF exposed, double zoom) const;

    // The number of renders finished and taken; for tests and benchmarks.
    std::uint64_t rendersTaken() const { return rendersTaken_; }
    // Waits for the worker; for benchmarks and teardown only.
    void waitForWorker();

signals:
    // A buffer arrived: the view repaints.
    void updated();

private:
    struct Buffer {
        QImage image;
        QRect deviceRect;
        double scale = 0.0;
        std::uint64_t generation = 0;
        bool isNull() const { return image.isNull(); }
    };
    struct Job {
        KVRenderSource source;
        std::uint64_t generation = 0;
        QRect deviceRect;
        double scale = 0.0;
        Buffer previous; // reused where it overlaps
        bool overview = false;
    };

    void startNextJob();
    void jobFinished(bool overview, Buffer buffer);
    static Buffer runJob(const Job& job);
    QRect wantedRect(QRect visible, double scale) const;

    KVRenderSource source_;
    std::uint64_t generation_ = 0;
    Buffer sharp_;
    Buffer overview_;
    std::optional<std::pair<QRect, double>> wanted_;
    bool busy_ = false;
    std::uint64_t rendersTaken_ = 0;
    QThreadPool worker_;
};

} // namespace tintorra
