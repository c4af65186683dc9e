#include "app/KVSwatchGrid.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace tintorra {

KVSwatchGrid::KVSwatchGrid(QWidget* parent) : QWidget(parent)
{
    setToolTip(tr("The main colours of the image"));
}

void KVSwatchGrid::setColors(std::vector<QColor> colors)
{
    colors_ = std::move(colors);
    updateGeometry();
    adjustSize();
    update();
}

QRect KVSwatchGrid::swatchRect(int index) const
{
    const int column = index % kColumns;
    const int row = index / kColumns;
    return {column * (kSwatch + kGap), row * (kSwatch + kGap), kSwatch, kSwatch};
}

int KVSwatchGrid::swatchAt(QPoint point) const
{
    for (int i = 0; i < static_cast<int>(colors_.size()); ++i) {
        if (swatchRect(i).contains(point))
            return i;
    }
    return -1;
}

QSize KVSwatchGrid::sizeHint() const
{
    const int count = std::max<int>(1, static_cast<int>(colors_.size()));
    const int columns = std::min(count, kColumns);
    const int rows = (count + kColumns - 1) / kColumns;
    return {columns * (kSwatch + kGap) - kGap, rows * (kSwatch + kGap) - kGap};
}

void KVSwatchGrid::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (colors_.empty()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(rect(), Qt::AlignCenter, tr("No colours"));
        return;
    }
    painter.setPen(QPen(palette().color(QPalette::Mid), 1.0));
    for (int i = 0; i < static_cast<int>(colors_.size()); ++i) {
        painter.setBrush(colors_[static_cast<std::size_t>(i)]);
        painter.drawRoundedRect(QRectF(swatchRect(i)).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
    }
}

bool KVSwatchGrid::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        const int index = swatchAt(help->pos());
        if (index >= 0) {
            const QColor colour = colors_[static_cast<std::size_t>(index)];
            QToolTip::showText(help->globalPos(),
                               tr("%1  (R %2, G %3, B %4)")
                                   .arg(colour.name())
                                   .arg(colour.red())
                                   .arg(colour.green())
                                   .arg(colour.blue()),
                               this, swatchRect(index));
            return true;
        }
    }
    return QWidget::event(event);
}

} // namespace tintorra
