#include "ui/KVSelectionSetSaveSheet.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace tintorra {

KVSelectionSetSaveSheet::KVSelectionSetSaveSheet(QWidget* parent) : QDialog(parent, Qt::Sheet)
{
    setWindowTitle(tr("Save Current Settings"));
    setWindowModality(Qt::WindowModal);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("Save the current settings as:"), this));
    nameField_ = new QLineEdit(this);
    nameField_->setToolTip(tr("A name that no saved settings have yet"));
    nameField_->setMinimumWidth(240);
    layout->addWidget(nameField_);
    auto* buttons = new QDialogButtonBox(this);
    saveButton_ = buttons->addButton(tr("Save"), QDialogButtonBox::AcceptRole);
    cancelButton_ = buttons->addButton(QDialogButtonBox::Cancel);
    saveButton_->setDefault(true);
    saveButton_->setToolTip(tr("Keep the current settings under this name"));
    cancelButton_->setToolTip(tr("Close without saving"));
    layout->addWidget(buttons);
    connect(saveButton_, &QPushButton::clicked, this, [this] { emit buttonClicked(true); });
    connect(cancelButton_, &QPushButton::clicked, this, [this] { emit buttonClicked(false); });
}

QString KVSelectionSetSaveSheet::name() const
{
    return nameField_->text();
}

void KVSelectionSetSaveSheet::open()
{
    nameField_->clear();
    QDialog::open();
    nameField_->setFocus();
}

void KVSelectionSetSaveSheet::reject()
{
    // Escape is the Cancel button; closing is the owner's decision.
    emit buttonClicked(false);
}

} // namespace tintorra
