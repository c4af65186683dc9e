#include "app/WidgetMap.h"

#include <QApplication>
#include <QEvent>
#include <QSaveFile>
#include <QWidget>

namespace tintorra {

namespace {

// Long enough for a window's layout to settle after it is shown.
constexpr int kSettleMilliseconds = 150;

} // namespace

void WidgetMap::installFromEnvironment()
{
    const QString path = qEnvironmentVariable("TINTORRA_WIDGET_MAP");
    if (!path.isEmpty()) {
        qApp->installEventFilter(new WidgetMap(path, qApp));
    }
}

WidgetMap::WidgetMap(QString path, QObject* parent) : QObject(parent), path_(std::move(path))
{
    debounce_.setSingleShot(true);
    debounce_.setInterval(kSettleMilliseconds);
    connect(&debounce_, &QTimer::timeout, this, &WidgetMap::write);
}

QString WidgetMap::describeVisibleWidgets()
{
    QString lines;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (!window->isVisible()) {
            continue;
        }
        QList<QWidget*> widgets = window->findChildren<QWidget*>();
        widgets.prepend(window);
        for (const QWidget* widget : widgets) {
            if (widget->objectName().isEmpty() || !widget->isVisible()) {
                continue;
            }
            const QPoint origin = widget->mapToGlobal(QPoint(0, 0));
            lines += QStringLiteral("%1 %2 %3 %4 %5\n")
                         .arg(widget->objectName())
                         .arg(origin.x())
                         .arg(origin.y())
                         .arg(widget->width())
                         .arg(widget->height());
        }
    }
    return lines;
}

bool WidgetMap::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Show:
    case QEvent::Hide:
    case QEvent::Move:
    case QEvent::Resize:
        if (watched->isWidgetType()) {
            debounce_.start();
        }
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void WidgetMap::write()
{
    QSaveFile file(path_);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(describeVisibleWidgets().toUtf8());
        file.commit();
    }
}

} // namespace tintorra
