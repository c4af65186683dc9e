#include <QApplication>
#include <QWidget>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("velmora"));
    QApplication::setApplicationName(QStringLiteral("Tintorra"));
    QWidget window;
    window.setWindowTitle(QStringLiteral("Tintorra"));
    window.show();
    return QApplication::exec();
}
