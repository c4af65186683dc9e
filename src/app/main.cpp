// tintorra: Tintorra's desktop program.
#include "app/ControlsWindow.h"
#include "app/DesktopRecentFiles.h"
#include "app/KVWelcomeAssistant.h"
#include "app/WidgetMap.h"
#include "engine/Engine.h"
#include "imageio/ImageFile.h"
#include "ui/KVSettings.h"

#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <cstdint>
#include <span>

namespace {

// The picture shown when no file is named: the application icon at full size.
tintorra::IOResult<tintorra::KVBitmapPtr> sampleImage()
{
    QFile file(QStringLiteral(":/sample/tintorra-1024.png"));
    if (!file.open(QIODevice::ReadOnly)) {
        return tintorra::ioError("the built-in sample image is missing from this build");
    }
    const QByteArray bytes = file.readAll();
    return tintorra::decodeImage(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                           static_cast<std::size_t>(bytes.size())));
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("velmora"));
    QApplication::setApplicationName(QStringLiteral("Tintorra"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tintorra"));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.velmora.Tintorra"));
    tintorra::WidgetMap::installFromEnvironment();

    const QStringList arguments = QApplication::arguments();
    auto image = arguments.size() > 1 ? tintorra::readImageFile(arguments.at(1).toStdString())
                                      : sampleImage();
    if (!image) {
        QMessageBox::critical(nullptr, QObject::tr("Tintorra"),
                              QObject::tr("The image could not be opened: %1")
                                  .arg(QString::fromStdString(image.error().message)));
        return 1;
    }

    if (arguments.size() > 1) {
        tintorra::DesktopRecentFiles().addFile(arguments.at(1));
    }

    tintorra::Engine engine;
    tintorra::ControlsWindow window(engine, image.take());
    window.show();
    tintorra::KVWelcomeAssistant::registerDefaults();
    if (tintorra::KVSettings::standard().boolValue(tintorra::kShowWelcomeWindowKey)) {
        tintorra::KVWelcomeAssistant::sharedAssistant(QStringLiteral("Welcome to Tintorra"));
    }
    return QApplication::exec();
}
