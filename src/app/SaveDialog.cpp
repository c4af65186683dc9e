#include "app/SaveDialog.h"

#include "imageio/ImageTypes.h"
#include "ui/KVSettings.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QStandardPaths>

namespace tintorra {

namespace {

// Where the last save went (the dialog opens there next time) and the JPEG quality last chosen.
const QString kLastSaveFolderKey = QStringLiteral("lastSaveFolder");
const QString kJpegQualityKey = QStringLiteral("jpegQuality");

QString tr(const char* text)
{
    return QCoreApplication::translate("SaveDialog", text);
}

QString qstring(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

const std::vector<SaveFormat>& saveFormats()
{
    static const std::vector<SaveFormat> formats{
        {-1, qstring(TintorraTIFFType), tr("Tintorra document (*.tiff *.tif)"),
         QStringLiteral("tiff"), false},
        {0, qstring(kTypeTIFF), tr("TIFF image (*.tiff *.tif)"), QStringLiteral("tiff"), false},
        {1, qstring(kTypePNG), tr("PNG image (*.png)"), QStringLiteral("png"), false},
        {2, qstring(kTypeJPEG), tr("JPEG image (*.jpeg *.jpg)"), QStringLiteral("jpeg"), true},
        {3, qstring(kTypeJPEG2000), tr("JPEG 2000 image (*.jp2)"), QStringLiteral("jp2"), false},
    };
    return formats;
}

std::optional<SaveFormat> saveFormatForType(const QString& type)
{
    for (const SaveFormat& format : saveFormats()) {
        if (format.type == type)
            return format;
    }
    return std::nullopt;
}

std::optional<SaveFormat> saveFormatForFilter(const QString& filter)
{
    for (const SaveFormat& format : saveFormats()) {
        if (format.filter == filter)
            return format;
    }
    return std::nullopt;
}

QString fileNameWithExtension(const QString& name, const SaveFormat& format)
{
    const QFileInfo info(name);
    const QString suffix = info.suffix();
    const bool known = typeForExtension(suffix.toStdString()).has_value();
    const QString base = known ? name.left(name.size() - suffix.size() - 1) : name;
    return base + QLatin1Char('.') + format.extension;
}

QString initialSaveFolder()
{
    const QString last = KVSettings::standard().stringValue(kLastSaveFolderKey);
    if (!last.isEmpty())
        return last;
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    if (pictures.isEmpty())
        return QDir::homePath();
    return QDir(pictures).filePath(QStringLiteral("MyAppName"));
}

std::unique_ptr<QFileDialog> makeSaveDialog(QWidget* parent, const QString& suggestedName,
                                            const QString& currentType)
{
    auto dialog = std::make_unique<QFileDialog>(parent, tr("Save"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    // The format choice must change the name's extension as it is made, which the desktop's own
    // dialogs do not let us do.
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    QStringList filters;
    for (const SaveFormat& format : saveFormats())
        filters << format.filter;
    dialog->setNameFilters(filters);
    const SaveFormat chosen = saveFormatForType(currentType).value_or(saveFormats().front());
    dialog->selectNameFilter(chosen.filter);
    dialog->setDefaultSuffix(chosen.extension);
    dialog->setDirectory(initialSaveFolder());
    dialog->selectFile(fileNameWithExtension(suggestedName, chosen));
    QFileDialog* raw = dialog.get();
    QObject::connect(raw, &QFileDialog::filterSelected, raw, [raw](const QString& filter) {
        const std::optional<SaveFormat> format = saveFormatForFilter(filter);
        if (!format)
            return;
        raw->setDefaultSuffix(format->extension);
        const QStringList selected = raw->selectedFiles();
        if (!selected.isEmpty())
            raw->selectFile(fileNameWithExtension(QFileInfo(selected.front()).fileName(), *format));
    });
    return dialog;
}

SaveTarget saveTargetForAcceptedDialog(const QString& path, const QString& filter,
                                       double jpegQuality)
{
    const SaveFormat format = saveFormatForFilter(filter).value_or(saveFormats().front());
    KVSettings& settings = KVSettings::standard();
    if (format.tag >= 0)
        settings.setValue(kSaveAsFileTypeTagKey, format.tag);
    settings.setValue(kLastSaveFolderKey, QFileInfo(path).absolutePath());
    SaveTarget target{path, format.type, {}};
    target.options.quality = jpegQuality;
    return target;
}

std::optional<SaveTarget> runSaveDialog(QWidget* parent, const QString& suggestedName,
                                        const QString& currentType)
{
    const std::unique_ptr<QFileDialog> dialog = makeSaveDialog(parent, suggestedName, currentType);
    if (dialog->exec() != QDialog::Accepted || dialog->selectedFiles().isEmpty())
        return std::nullopt;
    const QString filter = dialog->selectedNameFilter();
    double quality = EncodeOptions{}.quality;
    const std::optional<SaveFormat> format = saveFormatForFilter(filter);
    if (format && format->hasQuality) {
        KVSettings& settings = KVSettings::standard();
        const QVariant stored = settings.value(kJpegQualityKey);
        const int remembered = stored.isValid() ? stored.toInt() : 90;
        bool accepted = false;
        const int chosen = QInputDialog::getInt(parent, tr("JPEG Quality"),
                                                tr("Quality (1 = smallest file, 100 = best):"),
                                                remembered, 1, 100, 1, &accepted);
        if (!accepted)
            return std::nullopt;
        settings.setValue(kJpegQualityKey, chosen);
        quality = chosen / 100.0;
    }
    return saveTargetForAcceptedDialog(dialog->selectedFiles().front(), filter, quality);
}

} // namespace tintorra
