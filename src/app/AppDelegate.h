#pragma once

#include <QObject>
#include <QStringList>
#include <QUrl>

class QMainWindow;
class QMenu;

namespace tintorra {

class DocumentController;
class MainWindowDoc;

// The program's own part of start-up and its application-wide commands: it registers the
// application's defaults, opens the files named at launch (else the sample image) and the
// welcome tour, and gives every document window the commands that are not about one document
// (the sample image, the Window and Help menus).
class AppDelegate : public QObject {
    Q_OBJECT

public:
    explicit AppDelegate(DocumentController& documents, QObject* parent = nullptr);

    // "showWelcomeWindow" (true) and "lastShownWelcomeStep" (0); the welcome assistant
    // registers the same pair, so either may come first.
    static void registerDefaults();
    static QUrl homeURL();

    // Opens `files` (recorded as recent), or the sample image when none is named, then the
    // welcome tour while "showWelcomeWindow" is set.
    void applicationDidFinishLaunching(const QStringList& files);

    // A new untitled document holding the application icon at 1024 pixels, read like any file
    // (so it passes the RGB check); null when it cannot be read.
    MainWindowDoc* openSampleImage();
    void openWelcomeAssistant();
    void openHomeURL();
    void showAbout();

    // Adds "Open Sample Image" to the window's File menu and appends the Window and Help menus.
    void addApplicationMenus(QMainWindow& window);

private:
    void buildWindowMenu(QMenu* menu, QMainWindow* owner);

    DocumentController& documents_;
};

} // namespace tintorra
