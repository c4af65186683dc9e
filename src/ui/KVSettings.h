#pragma once

#include <QObject>
#include <QString>
#include <QVariant>
#include <QVariantList>
#include <QVariantMap>
#include <functional>
#include <memory>

class QSettings;

namespace tintorra {

// The keys the program keeps in its settings. Whoever owns a key registers its default at start-up.
inline const QString kShowWelcomeWindowKey = QStringLiteral("showWelcomeWindow");
inline const QString kLastShownWelcomeStepKey = QStringLiteral("lastShownWelcomeStep");
inline const QString kEditorLayoutHorizontalKey = QStringLiteral("editorLayoutHorizontal");
inline const QString kSaveAsFileTypeTagKey = QStringLiteral("saveAsFileTypeTag");
inline const QString kSavedSetsOfSelectionSettingsKey =
    QStringLiteral("savedSetsOfSelectionSettings");
inline const QString kSavedSetsOfTargetSettingsKey = QStringLiteral("savedSetsOfTargetSettings");

// The user's settings with defaults registered in memory: a key nobody has written reads as its
// registered default, and the store on disk only ever holds what was written, so that a new
// version can change a default the user never touched. Main thread only.
class KVSettings : public QObject {
    Q_OBJECT

public:
    using Observer = std::function<void(const QVariant& value)>;

    // The shared settings of the program, stored for organisation "velmora", application
    // "Tintorra".
    static KVSettings& standard();
    // Points the shared settings at an INI file of their own (tests use a temporary folder),
    // keeping the registered defaults.
    static void redirectStandard(const QString& iniFilePath);

    // Settings kept in the given INI file instead of the user's own.
    explicit KVSettings(const QString& iniFilePath, QObject* parent = nullptr);
    ~KVSettings() override;

    // Adds to the defaults; a key registered again takes the newer default.
    void registerDefaults(const QVariantMap& defaults);

    // The written value, else the registered default, else an invalid QVariant.
    QVariant value(const QString& key) const;
    bool boolValue(const QString& key) const;
    int intValue(const QString& key) const;
    QString stringValue(const QString& key) const;
    QVariantList listValue(const QString& key) const;
    QVariantMap mapValue(const QString& key) const;

    // Writing an invalid QVariant removes the key.
    void setValue(const QString& key, const QVariant& value);
    // The key reads as its registered default again.
    void remove(const QString& key);

    // Writes pending changes to disk now rather than when the event loop gets to it.
    void sync();
    QString fileName() const;

    // Calls the observer with the key's new value each time it changes, for as long as the
    // context lives.
    QMetaObject::Connection observe(const QString& key, QObject* context, Observer observer);

signals:
    // Emitted on every write and removal, and when a newly registered default becomes the value.
    void valueChanged(const QString& key, const QVariant& value);

private:
    explicit KVSettings(std::unique_ptr<QSettings> store);

    std::unique_ptr<QSettings> store_;
    QVariantMap defaults_;
};

} // namespace tintorra
