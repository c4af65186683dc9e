#pragma once

#include "app/DocumentAlerts.h"

#include <QString>
#include <optional>
#include <vector>

class QFileDialog;
class QWidget;

namespace tintorra {

// One choice of the save dialog: the program's own document, or the shifted image alone in one
// of the plain formats (whose tag is what "saveAsFileTypeTag" remembers).
struct SaveFormat {
    // 0 TIFF, 1 PNG, 2 JPEG, 3 JPEG 2000; -1 for the program's own document.
    int tag = -1;
    QString type;
    QString filter;
    QString extension;
    bool hasQuality = false;
};

// The document first, then the plain formats in tag order.
const std::vector<SaveFormat>& saveFormats();
std::optional<SaveFormat> saveFormatForType(const QString& type);
std::optional<SaveFormat> saveFormatForFilter(const QString& filter);

// `name` with its extension replaced by the one of `format`.
QString fileNameWithExtension(const QString& name, const SaveFormat& format);

// The folder the dialog opens in: the one last saved to, else the Pictures folder's "MyAppName".
QString initialSaveFolder();

// The dialog itself, unshown: a filter per format, the one of `currentType` chosen, the file
// name's extension following the chosen filter.
std::unique_ptr<QFileDialog> makeSaveDialog(QWidget* parent, const QString& suggestedName,
                                            const QString& currentType);

// What the user chose in a save dialog that was accepted with `filter`: a plain format's tag is
// remembered under "saveAsFileTypeTag" and the folder for the next dialog.
SaveTarget saveTargetForAcceptedDialog(const QString& path, const QString& filter,
                                       double jpegQuality);

// Shows the dialog (and, for JPEG, asks for the quality); nothing when cancelled.
std::optional<SaveTarget> runSaveDialog(QWidget* parent, const QString& suggestedName,
                                        const QString& currentType);

} // namespace tintorra
