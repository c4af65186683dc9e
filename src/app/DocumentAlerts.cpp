#include "app/DocumentAlerts.h"

#include "app/SaveDialog.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>

namespace tintorra {

namespace {

QString translated(const std::string& text)
{
    return QCoreApplication::translate("MainWindowDoc", text.c_str());
}

template <typename Choice>
Choice choiceOfClickedButton(QMessageBox& alert, Choice fallback)
{
    const QAbstractButton* clicked = alert.clickedButton();
    if (!clicked || !clicked->property("choice").isValid())
        return fallback;
    return static_cast<Choice>(clicked->property("choice").toInt());
}

class StandardPrompts : public DocumentPrompts {
public:
    ReplaceImageChoice askReplaceImage(QWidget* parent) override
    {
        const std::unique_ptr<QMessageBox> alert = replaceImageAlert(parent);
        alert->exec();
        return choiceOfClickedButton(*alert, ReplaceImageChoice::cancel);
    }

    void showError(QWidget* parent, const KVError& error) override
    {
        errorAlert(error, parent)->exec();
    }

    SaveChangesChoice askSaveChanges(QWidget* parent, const QString& displayName) override
    {
        const std::unique_ptr<QMessageBox> alert = saveChangesAlert(displayName, parent);
        alert->exec();
        return choiceOfClickedButton(*alert, SaveChangesChoice::cancel);
    }

    bool askRevert(QWidget* parent, const QString& displayName) override
    {
        QMessageBox alert(QMessageBox::Warning, QCoreApplication::applicationName(),
                          QCoreApplication::translate("MainWindowDoc",
                                                      "Do you want to revert to the most "
                                                      "recently saved version of the document "
                                                      "\u201c%1\u201d?")
                              .arg(displayName),
                          QMessageBox::Cancel, parent);
        alert.setInformativeText(
            QCoreApplication::translate("MainWindowDoc", "Your current changes will be lost."));
        QPushButton* revert = alert.addButton(
            QCoreApplication::translate("MainWindowDoc", "Revert"), QMessageBox::AcceptRole);
        alert.setDefaultButton(revert);
        alert.exec();
        return alert.clickedButton() == revert;
    }

    std::optional<SaveTarget> askSaveTarget(QWidget* parent, const QString& suggestedName,
                                            const QString& currentType) override
    {
        return runSaveDialog(parent, suggestedName, currentType);
    }
};

} // namespace

DocumentPrompts& DocumentPrompts::standard()
{
    static StandardPrompts prompts;
    return prompts;
}

std::unique_ptr<QMessageBox> errorAlert(const KVError& error, QWidget* parent)
{
    auto alert = std::make_unique<QMessageBox>(parent);
    alert->setIcon(QMessageBox::Warning);
    alert->setWindowTitle(QCoreApplication::applicationName());
    alert->setText(translated(error.localizedDescription));
    alert->setInformativeText(translated(error.localizedRecoverySuggestion));
    alert->setStandardButtons(QMessageBox::Ok);
    alert->setProperty("errorDomain", QString::fromStdString(error.domain));
    alert->setProperty("errorCode", static_cast<qlonglong>(error.code));
    return alert;
}

std::unique_ptr<QMessageBox> replaceImageAlert(QWidget* parent)
{
    auto alert = std::make_unique<QMessageBox>(parent);
    alert->setIcon(QMessageBox::Question);
    alert->setWindowTitle(QCoreApplication::applicationName());
    alert->setText(QCoreApplication::translate(
        "MainWindowDoc", "The current document already contains a source image. Would you like "
                         "to open the image in a new window or replace the current image?"));
    alert->setInformativeText(QStringLiteral("%1").arg(QCoreApplication::translate(
        "MainWindowDoc",
        "Replacing the current image will leave all the control settings as they are.")));
    QPushButton* open =
        alert->addButton(QCoreApplication::translate("MainWindowDoc", "Open in new window"),
                         QMessageBox::AcceptRole);
    open->setProperty("choice", static_cast<int>(ReplaceImageChoice::openInNewWindow));
    QPushButton* cancel = alert->addButton(QCoreApplication::translate("MainWindowDoc", "Cancel"),
                                           QMessageBox::RejectRole);
    cancel->setProperty("choice", static_cast<int>(ReplaceImageChoice::cancel));
    QPushButton* replace =
        alert->addButton(QCoreApplication::translate("MainWindowDoc", "Replace image"),
                         QMessageBox::DestructiveRole);
    replace->setProperty("choice", static_cast<int>(ReplaceImageChoice::replaceImage));
    alert->setDefaultButton(open);
    alert->setEscapeButton(cancel);
    return alert;
}

std::unique_ptr<QMessageBox> saveChangesAlert(const QString& displayName, QWidget* parent)
{
    auto alert = std::make_unique<QMessageBox>(parent);
    alert->setIcon(QMessageBox::Warning);
    alert->setWindowTitle(QCoreApplication::applicationName());
    alert->setText(QCoreApplication::translate(
                       "MainWindowDoc", "Do you want to save the changes made to the document "
                                        "\u201c%1\u201d?")
                       .arg(displayName));
    alert->setInformativeText(QCoreApplication::translate(
        "MainWindowDoc", "Your changes will be lost if you don\u2019t save them."));
    QPushButton* save = alert->addButton(QMessageBox::Save);
    save->setProperty("choice", static_cast<int>(SaveChangesChoice::save));
    QPushButton* discard = alert->addButton(QMessageBox::Discard);
    discard->setText(QCoreApplication::translate("MainWindowDoc", "Don\u2019t Save"));
    discard->setProperty("choice", static_cast<int>(SaveChangesChoice::discard));
    QPushButton* cancel = alert->addButton(QMessageBox::Cancel);
    cancel->setProperty("choice", static_cast<int>(SaveChangesChoice::cancel));
    alert->setDefaultButton(save);
    alert->setEscapeButton(cancel);
    return alert;
}

} // namespace tintorra
