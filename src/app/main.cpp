// tintorra: Tintorra's desktop program.
#include "app/DesktopRecentFiles.h"
#include "app/DocumentController.h"
#include "app/KVWelcomeAssistant.h"
#include "app/MainWindowDoc.h"
#include "app/MainWindowWC.h"
#include "app/WidgetMap.h"
#include "engine/Engine.h"
#include "ui/KVSettings.h"
#include "ui/TintorraVC.h"

#include <QApplication>
#include <QFile>

namespace {

// The picture shown when no file is named: the application icon at full size.
QByteArray sampleImageBytes()
{
    QFile file(QStringLiteral(":/sample/tintorra-1024.png"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
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
    tintorra::TintorraVC::registerDefaults();
    tintorra::MainWindowWC::registerDefaults();
    tintorra::KVWelcomeAssistant::registerDefaults();

    tintorra::Engine engine;
    tintorra::DocumentController* controller = nullptr;
    tintorra::DocumentController documents([&](tintorra::MainWindowDoc& document) {
        return new tintorra::MainWindowWC(engine, document, *controller);
    });
    controller = &documents;

    // A program without a window would have nothing to quit it.
    QObject::connect(&documents, &tintorra::DocumentController::openFailed, [&documents] {
        if (documents.documents().isEmpty() && !documents.isOpening()) {
            documents.newDocument();
        }
    });
    const QStringList files = QApplication::arguments().mid(1);
    if (files.isEmpty()) {
        if (!documents.openImageData(sampleImageBytes())) {
            documents.newDocument();
        }
    }
    for (const QString& file : files) {
        documents.openDocument(file);
        tintorra::DesktopRecentFiles().addFile(file);
    }
    if (tintorra::KVSettings::standard().boolValue(tintorra::kShowWelcomeWindowKey)) {
        tintorra::KVWelcomeAssistant::sharedAssistant(QStringLiteral("Welcome to Tintorra"));
    }
    return QApplication::exec();
}
