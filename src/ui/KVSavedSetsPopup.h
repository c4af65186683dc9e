#pragma once

#include <QComboBox>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace tintorra {

// A popup of named settings kept in the user's settings under one key (a map of name to set):
// the names in ordinary string order, a separator, then "Save current settings…" and "Manage
// settings…". Choosing a name applies its set, or deletes it while Alt is held; the two last
// items ask the owner to save or to manage. The menu follows every change of the key.
class KVSavedSetsPopup : public QComboBox {
    Q_OBJECT

public:
    KVSavedSetsPopup(const QString& settingsKey, QWidget* parent = nullptr);

    const QString& settingsKey() const { return settingsKey_; }
    QVariantMap savedSets() const;
    QStringList setNames() const;
    bool containsSet(const QString& name) const { return savedSets().contains(name); }

    // False, storing nothing, for an empty name or one already taken.
    bool saveSet(const QString& name, const QVariantMap& set);
    void deleteSet(const QString& name);

    void buildMenu();
    // No item selected; the popup shows its placeholder.
    void clearSelection() { setCurrentIndex(-1); }
    void selectSet(const QString& name);
    QString selectedSetName() const;

    // What choosing the item at `index` does with these modifier keys held.
    void chooseItem(int index, Qt::KeyboardModifiers modifiers);

signals:
    void setChosen(const QString& name, const QVariantMap& set);
    void saveRequested();
    void manageRequested();
    // Any choice, before it is acted on (the owner deselects its tools).
    void itemChosen();

private:
    QString settingsKey_;
    int setCount_ = 0;
};

} // namespace tintorra
