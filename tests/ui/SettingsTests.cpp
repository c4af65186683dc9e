#include "ui/KVSettings.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace tintorra;

namespace {

QByteArray fileText(KVSettings& settings)
{
    settings.sync();
    QFile file(settings.fileName());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class SettingsTests : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;

private slots:
    // Registered defaults are read but never stored, and a write wins over them; here in the
    // shared settings, sent to a file of the test's own before anything is written.
    void defaultsApplyWithoutBeingWritten()
    {
        KVSettings::redirectStandard(folder_.filePath("standard.ini"));
        KVSettings& settings = KVSettings::standard();
        QCOMPARE(settings.fileName(), folder_.filePath("standard.ini"));
        settings.registerDefaults({{kShowWelcomeWindowKey, true}, {kLastShownWelcomeStepKey, 3}});
        settings.setValue(kLastShownWelcomeStepKey, 5);
        QVERIFY(settings.boolValue(kShowWelcomeWindowKey));
        QCOMPARE(settings.intValue(kLastShownWelcomeStepKey), 5);
        const QByteArray text = fileText(settings);
        QVERIFY(text.contains("lastShownWelcomeStep=5") && !text.contains("showWelcomeWindow"));
    }

    // What an earlier run left on disk beats the defaults until it is removed, although the file
    // keeps a bool as text and an empty list as no value at all.
    void storedValuesWinUntilRemoved()
    {
        QFile file(folder_.filePath("earlier.ini"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[General]\nflag=false\nsets=@Invalid()\n");
        file.close();
        KVSettings settings(file.fileName());
        settings.registerDefaults({{"flag", true}, {"sets", QVariantList{1}}});
        QCOMPARE(settings.boolValue("flag"), false);
        QCOMPARE(settings.listValue("sets"), QVariantList{});
        settings.remove("sets");
        QCOMPARE(settings.listValue("sets"), QVariantList{1});
        QVERIFY(!fileText(settings).contains("sets"));
    }

    // An observer hears its own key's new values, the default again after a removal, and
    // nothing about other keys.
    void observersFollowOneKey()
    {
        KVSettings settings(folder_.filePath("observed.ini"));
        QVariantList heard;
        QObject context;
        settings.observe(kSaveAsFileTypeTagKey, &context,
                         [&](const QVariant& value) { heard << value.toInt(); });
        settings.registerDefaults({{kSaveAsFileTypeTagKey, 1}});
        settings.setValue(kSaveAsFileTypeTagKey, 2);
        settings.setValue(kEditorLayoutHorizontalKey, true);
        settings.remove(kSaveAsFileTypeTagKey);
        QCOMPARE(heard, (QVariantList{1, 2, 1}));
    }
};

QTEST_MAIN(SettingsTests)
#include "SettingsTests.moc"
