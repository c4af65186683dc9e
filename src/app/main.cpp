// tintorra: Tintorra's desktop program.
#include "app/AppDelegate.h"
#include "app/DocumentController.h"
#include "app/KVWelcomeAssistant.h"
#include "app/MainWindowDoc.h"
#include "app/MainWindowWC.h"
#include "app/WidgetMap.h"
#include "engine/Engine.h"
#include "ui/TintorraVC.h"

#include <QApplication>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("velmora"));
    QApplication::setApplicationName(QStringLiteral("Tintorra"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tintorra"));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.velmora.Tintorra"));
    tintorra::WidgetMap::installFromEnvironment();
    tintorra::AppDelegate::registerDefaults();
    tintorra::TintorraVC::registerDefaults();
    tintorra::MainWindowWC::registerDefaults();
    tintorra::KVWelcomeAssistant::registerDefaults();

    // Every slider move re-shifts the picture: keep what makes the next shift quick.
    tintorra::EngineOptions engineOptions;
    engineOptions.keepsEntryMaps = true;
    tintorra::Engine engine(engineOptions);
    tintorra::DocumentController* controller = nullptr;
    tintorra::AppDelegate* delegate = nullptr;
    tintorra::DocumentController documents([&](tintorra::MainWindowDoc& document) {
        auto* window = new tintorra::MainWindowWC(engine, document, *controller);
        delegate->addApplicationMenus(*window);
        return window;
    });
    controller = &documents;
    tintorra::AppDelegate appDelegate(documents);
    delegate = &appDelegate;

    // A program without a window would have nothing to quit it.
    QObject::connect(&documents, &tintorra::DocumentController::openFailed, [&documents] {
        if (documents.documents().isEmpty() && !documents.isOpening()) {
            documents.newDocument();
        }
    });
    appDelegate.applicationDidFinishLaunching(QApplication::arguments().mid(1));
    return QApplication::exec();
}
