#include "app/KVModifierKeyMonitor.h"

#include "ui/KVNotificationCenter.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QWidget>

namespace tintorra {

namespace {

bool isModifierKey(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
        return true;
    default:
        return false;
    }
}

bool acceptsText(const QWidget* widget)
{
    return qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QTextEdit*>(widget) ||
           qobject_cast<const QPlainTextEdit*>(widget);
}

} // namespace

KVModifierKeyMonitor::KVModifierKeyMonitor(QWidget* window) : QObject(window), window_(window) {}

KVModifierKeyMonitor::~KVModifierKeyMonitor()
{
    setActive(false);
}

void KVModifierKeyMonitor::setActive(bool active)
{
    if (active == active_ || !qApp)
        return;
    active_ = active;
    if (active) {
        qApp->installEventFilter(this);
        return;
    }
    qApp->removeEventFilter(this);
    // Keys released while another window was active never reach us.
    spacebarDown_ = false;
}

bool KVModifierKeyMonitor::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (type != QEvent::KeyPress && type != QEvent::KeyRelease)
        return QObject::eventFilter(watched, event);
    // A key event travels from the focus widget up through its parents; look at it once, and
    // only in our window.
    if (!watched->isWidgetType())
        return QObject::eventFilter(watched, event);
    auto* receiver = static_cast<QWidget*>(watched);
    QWidget* focus = QApplication::focusWidget();
    if (receiver->window() != window_ || (focus ? receiver != focus : receiver != window_))
        return QObject::eventFilter(watched, event);
    auto* key = static_cast<QKeyEvent*>(event);
    // Text fields keep their spaces; everywhere else the space bar means "grab the image".
    if (key->key() == Qt::Key_Space && !acceptsText(receiver)) {
        if (!key->isAutoRepeat()) {
            spacebarDown_ = type == QEvent::KeyPress;
            readModifiers(*key);
            postModifierKeysNotificationForEvent(*key);
        }
        return true;
    }
    if (isModifierKey(key->key())) {
        readModifiers(*key);
        postModifierKeysNotificationForEvent(*key);
    }
    return QObject::eventFilter(watched, event);
}

void KVModifierKeyMonitor::readModifiers(const QKeyEvent& event)
{
    Qt::KeyboardModifiers modifiers = event.modifiers();
    // The pressed or released modifier itself is not always in the event's state yet.
    const bool pressed = event.type() == QEvent::KeyPress;
    const auto adjust = [&](Qt::KeyboardModifier modifier) {
        modifiers.setFlag(modifier, pressed);
    };
    switch (event.key()) {
    case Qt::Key_Shift:
        adjust(Qt::ShiftModifier);
        break;
    case Qt::Key_Control:
        adjust(Qt::ControlModifier);
        break;
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
        adjust(Qt::AltModifier);
        break;
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
        adjust(Qt::MetaModifier);
        break;
    default:
        break;
    }
    shiftKeyDown_ = modifiers.testFlag(Qt::ShiftModifier);
    commandKeyDown_ = modifiers.testFlag(Qt::ControlModifier);
    optionKeyDown_ = modifiers.testFlag(Qt::AltModifier);
    controlKeyDown_ = modifiers.testFlag(Qt::MetaModifier);
    functionKeyDown_ = false;
}

void KVModifierKeyMonitor::postModifierKeysNotificationForEvent(const QKeyEvent& event)
{
    const QVariantMap description{
        {QStringLiteral("type"), static_cast<int>(event.type())},
        {QStringLiteral("key"), event.key()},
        {QStringLiteral("modifiers"), static_cast<int>(event.modifiers().toInt())},
    };
    KVNotificationCenter::defaultCenter().post(kModifierKeysChangedNotification, window_,
                                               {{QStringLiteral("event"), description},
                                                {QStringLiteral("spacebar"), spacebarDown_},
                                                {QStringLiteral("shiftKey"), shiftKeyDown_},
                                                {QStringLiteral("controlKey"), controlKeyDown_},
                                                {QStringLiteral("optionKey"), optionKeyDown_},
                                                {QStringLiteral("commandKey"), commandKeyDown_},
                                                {QStringLiteral("functionKey"), functionKeyDown_}});
}

} // namespace tintorra
