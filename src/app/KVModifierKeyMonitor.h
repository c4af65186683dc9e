#pragma once

#include <QObject>
#include <QPointer>
#include <QVariantMap>

class QKeyEvent;
class QWidget;

namespace tintorra {

// Watches the keyboard for one window while it is the active one (an event filter on the whole
// application), so that every view of the window knows the modifier keys and the space bar:
// each change posts "N_ModifierKeysChanged" with the window as object. The space bar is taken
// from the other widgets (it means "grab the image" here), and its auto-repeats are swallowed.
// Ctrl stands for command, Alt for option and Meta for control.
class KVModifierKeyMonitor : public QObject {
    Q_OBJECT

public:
    explicit KVModifierKeyMonitor(QWidget* window);
    ~KVModifierKeyMonitor() override;

    // Installs or removes the filter; the window calls it as it becomes active or inactive.
    void setActive(bool active);
    bool isActive() const { return active_; }

    bool spacebarDown() const { return spacebarDown_; }
    bool shiftKeyDown() const { return shiftKeyDown_; }
    bool controlKeyDown() const { return controlKeyDown_; }
    bool optionKeyDown() const { return optionKeyDown_; }
    bool commandKeyDown() const { return commandKeyDown_; }
    bool functionKeyDown() const { return functionKeyDown_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void readModifiers(const QKeyEvent& event);
    void postModifierKeysNotificationForEvent(const QKeyEvent& event);

    QPointer<QWidget> window_;
    bool active_ = false;
    bool spacebarDown_ = false;
    bool shiftKeyDown_ = false;
    bool controlKeyDown_ = false;
    bool optionKeyDown_ = false;
    bool commandKeyDown_ = false;
    bool functionKeyDown_ = false;
};

} // namespace tintorra
