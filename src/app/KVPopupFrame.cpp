#include "app/KVPopupFrame.h"

#include <QScreen>
#include <QVBoxLayout>

namespace tintorra {

KVPopupFrame::KVPopupFrame(QWidget* parent) : QFrame(parent, Qt::Popup)
{
    setFrameShape(QFrame::StyledPanel);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
}

void KVPopupFrame::setContent(QWidget* content)
{
    if (content_ == content)
        return;
    if (content_)
        layout()->removeWidget(content_);
    content_ = content;
    if (content) {
        layout()->addWidget(content);
        content->show();
    }
}

void KVPopupFrame::showBelow(QWidget* anchor)
{
    adjustSize();
    QPoint position = anchor->mapToGlobal(QPoint(0, anchor->height() + 2));
    if (const QScreen* screen = anchor->screen()) {
        const QRect available = screen->availableGeometry();
        position.setX(std::clamp(position.x(), available.left(),
                                 std::max(available.left(), available.right() - width())));
        if (position.y() + height() > available.bottom())
            position.setY(anchor->mapToGlobal(QPoint(0, 0)).y() - height() - 2);
    }
    move(position);
    show();
}

void KVPopupFrame::hideEvent(QHideEvent* event)
{
    QFrame::hideEvent(event);
    emit closed();
}

} // namespace tintorra
