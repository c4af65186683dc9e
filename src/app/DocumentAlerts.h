#pragma once

#include "imageio/ImageCodec.h"
#include "imageio/ImageErrors.h"

#include <QString>
#include <memory>
#include <optional>

class QMessageBox;
class QWidget;

namespace tintorra {

// The answers of the alert shown when an image arrives at a document that already has one.
enum class ReplaceImageChoice { openInNewWindow, cancel, replaceImage };
// The answers of the alert shown when a document with unsaved changes is closed.
enum class SaveChangesChoice { save, discard, cancel };

// Where and how a document is to be saved, as the save dialog answers.
struct SaveTarget {
    QString path;
    QString type;
    EncodeOptions options;
};

// The questions a document asks its user. The standard prompts show modal dialogs; tests put
// their own answers in.
class DocumentPrompts {
public:
    virtual ~DocumentPrompts() = default;

    virtual ReplaceImageChoice askReplaceImage(QWidget* parent) = 0;
    virtual void showError(QWidget* parent, const KVError& error) = 0;
    virtual SaveChangesChoice askSaveChanges(QWidget* parent, const QString& displayName) = 0;
    virtual bool askRevert(QWidget* parent, const QString& displayName) = 0;
    // `suggestedName` is the file name offered; `currentType` the format chosen at first.
    virtual std::optional<SaveTarget> askSaveTarget(QWidget* parent, const QString& suggestedName,
                                                    const QString& currentType) = 0;

    static DocumentPrompts& standard();
};

// An alert built from an error: its description as text, its recovery suggestion as informative
// text; domain and code are kept as the properties "errorDomain" and "errorCode".
std::unique_ptr<QMessageBox> errorAlert(const KVError& error, QWidget* parent);

// The alert that asks whether an arriving image replaces the document's image. Its buttons carry
// their ReplaceImageChoice in the property "choice".
std::unique_ptr<QMessageBox> replaceImageAlert(QWidget* parent);

// The alert that asks whether to save a document before it is closed. Its buttons carry their
// SaveChangesChoice in the property "choice".
std::unique_ptr<QMessageBox> saveChangesAlert(const QString& displayName, QWidget* parent);

} // namespace tintorra
