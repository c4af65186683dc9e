#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

namespace tintorra {

// For scripts that drive the program with the real pointer (scripts/e2e.sh): while the
// environment variable TINTORRA_WIDGET_MAP names a file, the program keeps in it one line per
// visible widget that has an object name,
//     objectName x y width height
// in screen coordinates, rewritten whole (atomically) shortly after windows appear, move or
// change size. Without the variable nothing is installed.
class WidgetMap : public QObject {
    Q_OBJECT

public:
    static void installFromEnvironment();

    explicit WidgetMap(QString path, QObject* parent = nullptr);
    // The lines the file would get now.
    static QString describeVisibleWidgets();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void write();

    QString path_;
    QTimer debounce_;
};

} // namespace tintorra
