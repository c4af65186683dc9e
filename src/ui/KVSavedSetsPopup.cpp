#include "ui/KVSavedSetsPopup.h"

#include "ui/KVSettings.h"

#include <QApplication>
#include <algorithm>

namespace tintorra {

namespace {

// Choosing an item a second time must act again, so the popup acts on `activated`.
constexpr int kMenuItemsAfterSets = 2;

} // namespace

KVSavedSetsPopup::KVSavedSetsPopup(const QString& settingsKey, QWidget* parent)
    : QComboBox(parent), settingsKey_(settingsKey)
{
    setPlaceholderText(tr("Saved settings"));
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(12);
    buildMenu();
    clearSelection();
    connect(this, &QComboBox::activated, this,
            [this](int index) { chooseItem(index, QApplication::keyboardModifiers()); });
    KVSettings::standard().observe(settingsKey_, this, [this](const QVariant&) {
        const QString selected = selectedSetName();
        buildMenu();
        selectSet(selected);
    });
}

QVariantMap KVSavedSetsPopup::savedSets() const
{
    return KVSettings::standard().mapValue(settingsKey_);
}

QStringList KVSavedSetsPopup::setNames() const
{
    QStringList names = savedSets().keys();
    // The ordinary comparison: by character codes, as the store keeps them.
    std::sort(names.begin(), names.end());
    return names;
}

bool KVSavedSetsPopup::saveSet(const QString& name, const QVariantMap& set)
{
    QVariantMap sets = savedSets();
    if (name.isEmpty() || sets.contains(name)) {
        return false;
    }
    sets.insert(name, set);
    KVSettings::standard().setValue(settingsKey_, sets);
    return true;
}

void KVSavedSetsPopup::deleteSet(const QString& name)
{
    QVariantMap sets = savedSets();
    if (sets.remove(name) > 0) {
        KVSettings::standard().setValue(settingsKey_, sets);
    }
}

void KVSavedSetsPopup::buildMenu()
{
    const QSignalBlocker blocker(this);
    clear();
    const QStringList names = setNames();
    addItems(names);
    setCount_ = static_cast<int>(names.size());
    if (setCount_ > 0) {
        insertSeparator(count());
    }
    addItem(tr("Save current settings\u2026"));
    addItem(tr("Manage settings\u2026"));
    setCurrentIndex(-1);
}

void KVSavedSetsPopup::selectSet(const QString& name)
{
    const int index = name.isEmpty() ? -1 : findText(name);
    setCurrentIndex(index >= 0 && index < setCount_ ? index : -1);
}

QString KVSavedSetsPopup::selectedSetName() const
{
    const int index = currentIndex();
    return index >= 0 && index < setCount_ ? itemText(index) : QString();
}

void KVSavedSetsPopup::chooseItem(int index, Qt::KeyboardModifiers modifiers)
{
    emit itemChosen();
    const int last = count() - 1;
    if (index == last) {
        emit manageRequested();
        return;
    }
    if (index == last - 1) {
        emit saveRequested();
        return;
    }
    if (index < 0 || index >= setCount_ || last < kMenuItemsAfterSets) {
        return;
    }
    const QString name = itemText(index);
    if (modifiers.testFlag(Qt::AltModifier)) {
        deleteSet(name);
        buildMenu();
        clearSelection();
        return;
    }
    selectSet(name);
    emit setChosen(name, savedSets().value(name).toMap());
}

} // namespace tintorra
