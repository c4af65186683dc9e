#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace tintorra {

// The sheet that asks for the name of the settings to save. Its buttons do not close it
// themselves: whoever shows it decides (a name that is empty or taken keeps it open).
class KVSelectionSetSaveSheet : public QDialog {
    Q_OBJECT

public:
    explicit KVSelectionSetSaveSheet(QWidget* parent = nullptr);

    QLineEdit* nameField() const { return nameField_; }
    QPushButton* saveButton() const { return saveButton_; }
    QPushButton* cancelButton() const { return cancelButton_; }
    QString name() const;

    // Opens over the parent's window with an empty field.
    void open() override;

signals:
    // true for the Save button, false for Cancel (and Escape).
    void buttonClicked(bool saveButton);

protected:
    void reject() override;

private:
    QLineEdit* nameField_ = nullptr;
    QPushButton* saveButton_ = nullptr;
    QPushButton* cancelButton_ = nullptr;
};

} // namespace tintorra
