#include "app/KVProgressSpinner.h"

#include <QPainter>

namespace tintorra {

namespace {

constexpr int kSpokes = 12;

} // namespace

KVProgressSpinner::KVProgressSpinner(QWidget* parent) : QWidget(parent)
{
    setFixedSize(16, 16);
    timer_.setInterval(80);
    connect(&timer_, &QTimer::timeout, this, [this] {
        step_ = (step_ + 1) % kSpokes;
        update();
    });
    // Keeps its place in a layout while hidden, so that nothing jumps when it starts.
    QSizePolicy policy = sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    setSizePolicy(policy);
    hide();
}

void KVProgressSpinner::startAnimation()
{
    if (!timer_.isActive())
        timer_.start();
    show();
}

void KVProgressSpinner::stopAnimation()
{
    timer_.stop();
    hide();
}

void KVProgressSpinner::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2.0, height() / 2.0);
    const QColor base = palette().color(QPalette::WindowText);
    for (int i = 0; i < kSpokes; ++i) {
        QColor colour = base;
        colour.setAlphaF(0.15 + 0.85 * ((i - step_ + kSpokes) % kSpokes) / (kSpokes - 1.0));
        painter.setPen(QPen(colour, 1.6, Qt::SolidLine, Qt::RoundCap));
        painter.save();
        painter.rotate(360.0 * i / kSpokes);
        painter.drawLine(QPointF(0, -3.5), QPointF(0, -7));
        painter.restore();
    }
}

} // namespace tintorra
