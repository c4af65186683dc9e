#include "app/AppDelegate.h"

#include "app/DesktopRecentFiles.h"
#include "app/DocumentController.h"
#include "app/KVWelcomeAssistant.h"
#include "app/MainWindowDoc.h"
#include "ui/KVSettings.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFile>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>

namespace tintorra {

namespace {

const QString kWelcomePdfName = QStringLiteral("Welcome to Tintorra");

// The picture shown when no file is named: the application icon at full size.
QByteArray sampleImageBytes()
{
    QFile file(QStringLiteral(":/sample/tintorra-1024.png"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

AppDelegate::AppDelegate(DocumentController& documents, QObject* parent)
    : QObject(parent), documents_(documents)
{}

void AppDelegate::registerDefaults()
{
    KVSettings::standard().registerDefaults(
        {{kShowWelcomeWindowKey, true}, {kLastShownWelcomeStepKey, 0}});
}

QUrl AppDelegate::homeURL()
{
    return QUrl(QStringLiteral("https://velmora.example/tintorra"));
}

void AppDelegate::applicationDidFinishLaunching(const QStringList& files)
{
    if (files.isEmpty() && !openSampleImage())
        documents_.newDocument();
    for (const QString& file : files) {
        documents_.openDocument(file);
        DesktopRecentFiles().addFile(file);
    }
    if (KVSettings::standard().boolValue(kShowWelcomeWindowKey))
        openWelcomeAssistant();
}

MainWindowDoc* AppDelegate::openSampleImage()
{
    return documents_.openImageData(sampleImageBytes());
}

void AppDelegate::openWelcomeAssistant()
{
    KVWelcomeAssistant::sharedAssistant(kWelcomePdfName);
}

void AppDelegate::openHomeURL()
{
    QDesktopServices::openUrl(homeURL());
}

void AppDelegate::showAbout()
{
    QMessageBox::about(QApplication::activeWindow(), tr("About Tintorra"),
                       tr("<h3>Tintorra</h3><p>Shifts the hues of a photograph: pick the colours "
                          "to change, choose where they should go, and save the result.</p>"
                          "<p><a href=\"%1\">%1</a></p>")
                           .arg(homeURL().toString()));
}

void AppDelegate::addApplicationMenus(QMainWindow& window)
{
    // Sits under Open Recent when the window has one, else ends the File menu's first group.
    if (auto* file = window.findChild<QMenu*>(QStringLiteral("fileMenu"))) {
        QAction* before = nullptr;
        const QList<QAction*> items = file->actions();
        for (qsizetype index = 0; index < items.size(); ++index) {
            if (items[index]->isSeparator()) {
                before = items[index];
                break;
            }
        }
        auto* sample = new QAction(tr("Open Sample Image"), file);
        sample->setObjectName(QStringLiteral("openSampleImage"));
        connect(sample, &QAction::triggered, this, [this] { openSampleImage(); });
        file->insertAction(before, sample);
    }

    QMenu* windowMenu = window.menuBar()->addMenu(tr("&Window"));
    windowMenu->setObjectName(QStringLiteral("windowMenu"));
    buildWindowMenu(windowMenu, &window);
    connect(windowMenu, &QMenu::aboutToShow, this,
            [this, windowMenu, owner = &window] { buildWindowMenu(windowMenu, owner); });

    QMenu* help = window.menuBar()->addMenu(tr("&Help"));
    help->setObjectName(QStringLiteral("helpMenu"));
    QAction* welcome = help->addAction(tr("Welcome to Tintorra"));
    welcome->setObjectName(QStringLiteral("openWelcomeAssistant"));
    connect(welcome, &QAction::triggered, this, &AppDelegate::openWelcomeAssistant);
    QAction* home = help->addAction(tr("Tintorra Home Page"));
    home->setObjectName(QStringLiteral("openHomeURL"));
    connect(home, &QAction::triggered, this, &AppDelegate::openHomeURL);
    help->addSeparator();
    QAction* about = help->addAction(tr("About Tintorra"));
    about->setObjectName(QStringLiteral("about"));
    about->setMenuRole(QAction::AboutRole);
    connect(about, &QAction::triggered, this, &AppDelegate::showAbout);
}

void AppDelegate::buildWindowMenu(QMenu* menu, QMainWindow* owner)
{
    // Rebuilt each time it opens: the open windows and their titles change all the time.
    menu->clear();
    QAction* minimize = menu->addAction(tr("Minimize"));
    minimize->setObjectName(QStringLiteral("minimize"));
    minimize->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_M));
    connect(minimize, &QAction::triggered, owner, &QWidget::showMinimized);
    menu->addSeparator();
    for (QWidget* window : documents_.windows()) {
        QAction* item = menu->addAction(window->windowTitle().remove(QStringLiteral("[*]")));
        item->setCheckable(true);
        item->setChecked(window == owner);
        connect(item, &QAction::triggered, window, [window] {
            if (window->isMinimized())
                window->showNormal();
            window->raise();
            window->activateWindow();
        });
    }
}

} // namespace tintorra
