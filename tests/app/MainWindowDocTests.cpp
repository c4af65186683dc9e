#include "DocumentTestSupport.h"
#include "app/DocumentReading.h"
#include "app/MainWindowDoc.h"
#include "app/SaveDialog.h"
#include "imageio/ImageFile.h"
#include "ui/KVSettings.h"

#include <QColorSpace>
#include <QFileDialog>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace tintorra;
using tintorra::test::RecordingPrompts;
using tintorra::test::TestDocumentWindow;

Q_DECLARE_METATYPE(tintorra::ImageFormat)

namespace {

// A document in a stand-in window, with the questions answered by the test.
struct Fixture {
    Fixture() : window(document)
    {
        document.setPrompts(&prompts);
        document.setWindowController(&window);
        document.windowControllerDidLoad();
    }

    MainWindowDoc document;
    TestDocumentWindow window;
    RecordingPrompts prompts;
};

QMimeData* fileDrop(const QString& path)
{
    auto* data = new QMimeData;
    data->setUrls({QUrl::fromLocalFile(path)});
    return data;
}

QMimeData* imageDrop(const KVBitmapPtr& image, quint64 identity = 0)
{
    auto* data = new QMimeData;
    const IOResult<std::vector<std::uint8_t>> png = encodeImage(*image, ImageFormat::png);
    data->setData(QStringLiteral("image/png"),
                  QByteArray(reinterpret_cast<const char*>(png.value().data()),
                             static_cast<qsizetype>(png.value().size())));
    if (identity != 0) {
        data->setData(QString::fromUtf8(TintorraNativeImageMimeType.data()),
                      QByteArray(reinterpret_cast<const char*>(&identity), sizeof identity));
    }
    return data;
}

const QString kOwnType = QString::fromUtf8(TintorraTIFFType.data());

} // namespace

class MainWindowDocTests : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;

private slots:
    void initTestCase() { test::useTemporarySettings(folder_); }

    void opensRgbImagesOfEveryFormat_data()
    {
        QTest::addColumn<ImageFormat>("format");
        QTest::addColumn<int>("bits");
        QTest::addColumn<bool>("alpha");
        QTest::addColumn<bool>("icc");
        QTest::addColumn<QString>("name");
        QTest::newRow("png 8") << ImageFormat::png << 8 << false << false << "a.png";
        QTest::newRow("png 16 alpha") << ImageFormat::png << 16 << true << false << "b.png";
        QTest::newRow("tiff 8") << ImageFormat::tiff << 8 << false << false << "c.tif";
        QTest::newRow("tiff 16 alpha") << ImageFormat::tiff << 16 << true << false << "d.tiff";
        QTest::newRow("tiff icc") << ImageFormat::tiff << 8 << false << true << "e.tif";
        QTest::newRow("jpeg icc") << ImageFormat::jpeg << 8 << false << true << "f.jpg";
        QTest::newRow("jpeg 2000") << ImageFormat::jpeg2000 << 8 << true << false << "g.jp2";
    }

    // An RGB file opens as the document's source, the document untitled under the shifted name,
    // with the depth, alpha and profile the file holds.
    void opensRgbImagesOfEveryFormat()
    {
        QFETCH(ImageFormat, format);
        QFETCH(int, bits);
        QFETCH(bool, alpha);
        QFETCH(bool, icc);
        QFETCH(QString, name);
        const QByteArray profile = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
        const KVBitmapPtr image =
            test::makeImage(40, 24, bits, alpha, true,
                            icc ? std::vector<std::uint8_t>(profile.begin(), profile.end())
                                : std::vector<std::uint8_t>{});
        const QString path = test::writeImage(folder_, name, *image, format);
        QVERIFY(!path.isEmpty());

        Fixture fixture;
        KVError error;
        QVERIFY(fixture.document.readFromFile(path, &error));
        QCOMPARE(fixture.window.reps_.size(), std::size_t{1});
        const KVBitmapPtr& source = fixture.window.reps_[0];
        QCOMPARE(source->pixelsWide(), 40);
        QCOMPARE(source->bitsPerSample(), bits);
        QCOMPARE(source->hasAlpha(), alpha);
        if (icc)
            QVERIFY(source->colorSpace().hasIccProfile());
        const bool lossy = format == ImageFormat::jpeg;
        QVERIFY(test::samePixels(source, image, lossy ? 12 : 0));
        QVERIFY(fixture.document.fileName().isEmpty());
        QCOMPARE(fixture.document.fileType(), kOwnType);
        QCOMPARE(fixture.document.displayName(),
                 QFileInfo(name).completeBaseName() + QStringLiteral(" (hue-shifted).tiff"));
        QVERIFY(!fixture.document.isModified());
    }

    void refusesImagesThatAreNotRgb_data()
    {
        QTest::addColumn<QString>("fixture");
        QTest::newRow("grey jpeg") << "grey.jpg";
        QTest::newRow("grey png") << "grey8.png";
        QTest::newRow("grey 16-bit tiff") << "grey16.tif";
        QTest::newRow("cmyk jpeg") << "cmyk.jpg";
        QTest::newRow("cmyk tiff") << "cmyk8.tif";
    }

    // Opening refuses with the file error; dropping refuses with the alert of the use error.
    // Either way the document keeps what it had.
    void refusesImagesThatAreNotRgb()
    {
        QFETCH(QString, fixture);
        Fixture opened;
        KVError error;
        QVERIFY(!opened.document.readFromFile(test::fixturePath(fixture), &error));
        QCOMPARE(error.domain, std::string("com.velmora.Tintorra.ErrorDomain"));
        QCOMPARE(error.code, 256);
        QCOMPARE(error.localizedDescription,
                 std::string("The image file could not be opened. Tintorra only supports RGB "
                             "images at this time."));
        QCOMPARE(error.localizedRecoverySuggestion,
                 std::string("Please convert the image to RGB or choose a different image."));
        QVERIFY(opened.document.imageReps().empty());

        Fixture dropped;
        const KVBitmapPtr original = test::makeImage(8, 8, 8, false);
        dropped.document.setImageReps({original}, {}, QStringLiteral("public.tiff"));
        dropped.prompts.replaceAnswer = ReplaceImageChoice::replaceImage;
        QSignalSpy finished(&dropped.document, &MainWindowDoc::readingFinished);
        std::unique_ptr<QMimeData> data(fileDrop(test::fixturePath(fixture)));
        QVERIFY(dropped.document.dropViewCanTakeData(nullptr, data.get()));
        dropped.document.dropViewTakeData(nullptr, data.get());
        QVERIFY(finished.wait());
        QCOMPARE(dropped.prompts.errors.size(), std::size_t{1});
        QCOMPARE(dropped.prompts.errors[0].code, 256);
        QCOMPARE(dropped.prompts.errors[0].localizedDescription,
                 std::string("The image cannot be used. Tintorra only supports RGB images at "
                             "this time."));
        QCOMPARE(dropped.document.imageReps().front(), original);
    }

    // The alerts are built from the error value and carry the exact texts and buttons.
    void alertsCarryTheirTexts()
    {
        const std::unique_ptr<QMessageBox> error = errorAlert(
            KVError{"com.velmora.Tintorra.ErrorDomain", 512, "Cannot.", "Try."}, nullptr);
        QCOMPARE(error->text(), QStringLiteral("Cannot."));
        QCOMPARE(error->informativeText(), QStringLiteral("Try."));
        QCOMPARE(error->property("errorDomain").toString(),
                 QStringLiteral("com.velmora.Tintorra.ErrorDomain"));
        QCOMPARE(error->property("errorCode").toInt(), 512);

        const std::unique_ptr<QMessageBox> replace = replaceImageAlert(nullptr);
        QCOMPARE(replace->text(),
                 QStringLiteral("The current document already contains a source image. Would "
                                "you like to open the image in a new window or replace the "
                                "current image?"));
        QCOMPARE(replace->informativeText(),
                 QStringLiteral("Replacing the current image will leave all the control "
                                "settings as they are."));
        QStringList buttons;
        for (QAbstractButton* button : replace->buttons())
            buttons << button->text();
        QCOMPARE(buttons.size(), 3);
        QVERIFY(buttons.contains(QStringLiteral("Open in new window")));
        QVERIFY(buttons.contains(QStringLiteral("Cancel")));
        QVERIFY(buttons.contains(QStringLiteral("Replace image")));
        QCOMPARE(replace->defaultButton()->text(), QStringLiteral("Open in new window"));
    }

    void savesEveryFormat_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("tolerance");
        QTest::newRow("tiff") << "public.tiff"
                              << "out.tiff" << 0;
        QTest::newRow("png") << "public.png"
                             << "out.png" << 0;
        QTest::newRow("jpeg") << "public.jpeg"
                              << "out.jpeg" << 14;
        QTest::newRow("jpeg 2000") << "public.jpeg-2000"
                                   << "out.jp2" << 0;
        QTest::newRow("own document") << kOwnType << "out-doc.tiff" << 0;
    }

    // What is saved is the shifted image (page 0 for the own document); the document is then
    // saved, named after its file and of its type.
    void savesEveryFormat()
    {
        QFETCH(QString, type);
        QFETCH(QString, name);
        QFETCH(int, tolerance);
        Fixture fixture;
        fixture.document.setImageReps({test::makeImage(30, 20, 8, false)}, {},
                                      QStringLiteral("public.tiff"));
        fixture.document.updateChangeCountDone();
        QVERIFY(fixture.document.isModified());
        const QString path = folder_.filePath(name);
        QSignalSpy finished(&fixture.document, &MainWindowDoc::saveFinished);
        QVERIFY(fixture.document.saveToPath(path, type));
        QVERIFY(fixture.window.busy_);
        QVERIFY(finished.wait());
        QCOMPARE(finished.at(0).at(0).toBool(), true);
        QVERIFY(!fixture.window.busy_);
        QVERIFY(fixture.prompts.errors.empty());

        const IOResult<KVBitmapPtr> read = readImageFile(path.toStdString());
        QVERIFY(read.ok());
        QVERIFY(test::samePixels(read.value(), fixture.window.output_, tolerance));
        QVERIFY(!test::samePixels(read.value(), fixture.window.reps_[0], tolerance));
        QVERIFY(!fixture.document.isModified());
        QCOMPARE(fixture.document.fileName(), path);
        QCOMPARE(fixture.document.fileType(), type);
    }

    // The program's own document keeps parameters and both masks: reopened, the parameters reach
    // the editor before the images, and the document is its file, unmodified.
    void ownDocumentReopensWithParametersAndMasks()
    {
        const QString parameters = QStringLiteral("tolm") + QString(442, QLatin1Char('a'));
        const QString path = folder_.filePath(QStringLiteral("own.tiff"));
        {
            Fixture fixture;
            KVBitmapPtr exclusion = test::makeImage(30, 20, 8, false, false);
            KVBitmapPtr inclusion = test::makeImage(30, 20, 8, false, false);
            fixture.document.setImageReps({test::makeImage(30, 20, 16, true), exclusion, inclusion},
                                          {}, QStringLiteral("public.tiff"));
            fixture.window.parameters_ = parameters;
            QSignalSpy finished(&fixture.document, &MainWindowDoc::saveFinished);
            QVERIFY(fixture.document.saveToPath(path, kOwnType));
            QVERIFY(finished.wait());
        }
        Fixture reopened;
        reopened.window.calls_.clear();
        QVERIFY(reopened.document.readFromFile(path));
        QCOMPARE(reopened.window.calls_,
                 QStringList({"undo:off", "reps:0", "params", "reps:3", "undo:on"}));
        QCOMPARE(reopened.window.parameters_, parameters);
        QCOMPARE(reopened.window.reps_[0]->bitsPerSample(), 16);
        QVERIFY(!reopened.window.reps_[1]->isRGB());
        QVERIFY(reopened.document.isTintorraTIFF());
        QCOMPARE(reopened.document.fileName(), path);
        QCOMPARE(reopened.document.displayName(), QStringLiteral("own.tiff"));
        QVERIFY(!reopened.document.isModified());
    }

    void namesResultsAfterTheirSource_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << "/p/photo.jpg"
                               << "photo (hue-shifted).tiff";
        QTest::newRow("shifted") << "/p/photo-shifted.png"
                                 << "photo (hue-shifted)-1.tiff";
        QTest::newRow("counted") << "/p/photo-shifted-3.tif"
                                 << "photo (hue-shifted)-4.tiff";
        QTest::newRow("zero") << "/p/name-shifted-0.tif"
                              << "name (hue-shifted)-1.tiff";
        QTest::newRow("ours") << "/p/photo (hue-shifted).tiff"
                              << "photo (hue-shifted) (hue-shifted).tiff";
        QTest::newRow("other case") << "/p/name-Shifted.png"
                                    << "name-Shifted (hue-shifted).tiff";
    }

    void namesResultsAfterTheirSource()
    {
        QFETCH(QString, source);
        QFETCH(QString, name);
        Fixture fixture;
        fixture.document.setImageReps({test::makeImage(4, 4, 8, false)}, source,
                                      QStringLiteral("public.png"));
        QCOMPARE(fixture.document.displayName(), name);
        QVERIFY(fixture.window.windowTitle().startsWith(name));
    }

    // Loading images is undoable under its name; the same first image again changes nothing.
    void loadingIsUndoable()
    {
        Fixture fixture;
        const KVBitmapPtr first = test::makeImage(4, 4, 8, false);
        const KVBitmapPtr second = test::makeImage(6, 4, 8, false);
        fixture.document.setImageReps({first}, QStringLiteral("/p/a.png"),
                                      QStringLiteral("public.png"));
        QCOMPARE(fixture.document.undoStack()->count(), 0);
        fixture.document.setImageReps({first}, QStringLiteral("/p/b.png"),
                                      QStringLiteral("public.png"));
        QCOMPARE(fixture.document.undoStack()->count(), 0);
        fixture.document.setImageReps({second}, QStringLiteral("/p/b.png"),
                                      QStringLiteral("public.png"));
        QCOMPARE(fixture.document.undoStack()->undoText(), QStringLiteral("Load Image File"));
        QVERIFY(fixture.document.isModified());
        fixture.document.undoStack()->undo();
        QCOMPARE(fixture.window.reps_[0], first);
        QCOMPARE(fixture.document.imageFileName(), QStringLiteral("/p/a.png"));
        QVERIFY(!fixture.document.isModified());
        fixture.document.setImageReps({second});
        QCOMPARE(fixture.document.undoStack()->undoText(), QStringLiteral("Load Image"));
    }

    // Drops: a file on an empty document is taken without a question; on a document with an
    // image the user chooses; the document's own output comes back as source without a
    // question, masks kept; other image data asks.
    void dropRules()
    {
        const QString photo = test::writeImage(folder_, QStringLiteral("drop.png"),
                                               *test::makeImage(9, 9, 8, false), ImageFormat::png);
        Fixture fixture;
        std::unique_ptr<QMimeData> file(fileDrop(photo));
        std::unique_ptr<QMimeData> folder(fileDrop(folder_.path()));
        std::unique_ptr<QMimeData> text(new QMimeData);
        text->setText(QStringLiteral("words"));
        QVERIFY(fixture.document.dropViewCanTakeData(nullptr, file.get()));
        QVERIFY(!fixture.document.dropViewCanTakeData(nullptr, folder.get()));
        QVERIFY(!fixture.document.dropViewCanTakeData(nullptr, text.get()));

        QSignalSpy finished(&fixture.document, &MainWindowDoc::readingFinished);
        fixture.document.dropViewTakeData(nullptr, file.get());
        QVERIFY(finished.wait());
        QCOMPARE(fixture.prompts.replaceQuestions, 0);
        QCOMPARE(fixture.document.imageFileName(), photo);
        QCOMPARE(fixture.window.reps_[0]->pixelsWide(), 9);

        QSignalSpy openElsewhere(&fixture.document, &MainWindowDoc::openFileInNewWindowRequested);
        fixture.prompts.replaceAnswer = ReplaceImageChoice::openInNewWindow;
        fixture.document.dropViewTakeData(nullptr, file.get());
        QCOMPARE(openElsewhere.size(), 1);
        QCOMPARE(openElsewhere.at(0).at(0).toString(), photo);

        const KVBitmapPtr mask = test::makeImage(9, 9, 8, false, false);
        fixture.document.setImageReps({fixture.window.reps_[0], mask});
        const KVBitmapPtr output = fixture.window.output_;
        const int asked = fixture.prompts.replaceQuestions;
        std::unique_ptr<QMimeData> own(imageDrop(output, nativeImageIdentityOf(output)));
        fixture.document.dropViewTakeData(nullptr, own.get());
        QCOMPARE(fixture.prompts.replaceQuestions, asked);
        QCOMPARE(fixture.document.imageReps()[0], output);
        QCOMPARE(fixture.document.imageReps()[1], mask);

        fixture.prompts.replaceAnswer = ReplaceImageChoice::cancel;
        std::unique_ptr<QMimeData> other(imageDrop(test::makeImage(5, 5, 8, false), 12345));
        fixture.document.dropViewTakeData(nullptr, other.get());
        QCOMPARE(fixture.prompts.replaceQuestions, asked + 1);
        QCOMPARE(fixture.document.imageReps()[0], output);
        fixture.prompts.replaceAnswer = ReplaceImageChoice::replaceImage;
        fixture.document.dropViewTakeData(nullptr, other.get());
        QCOMPARE(fixture.document.imageReps().size(), std::size_t{1});
        QCOMPARE(fixture.document.imageReps()[0]->pixelsWide(), 5);
        QVERIFY(fixture.document.fileName().isEmpty());
    }

    // Closing asks only about unsaved work; choosing to save closes once the file is written.
    void closingAsksAboutUnsavedWork()
    {
        Fixture fixture;
        QVERIFY(fixture.document.shouldCloseWindow());
        fixture.document.setImageReps({test::makeImage(4, 4, 8, false)}, QStringLiteral("/p/x.png"),
                                      QStringLiteral("public.png"));
        QVERIFY(!fixture.document.isModified());
        QVERIFY(fixture.document.shouldCloseWindow());
        fixture.document.updateChangeCountDone();
        QVERIFY(!fixture.document.validateAction(DocumentAction::revert));
        fixture.prompts.saveChangesAnswer = SaveChangesChoice::cancel;
        QVERIFY(!fixture.document.shouldCloseWindow());
        fixture.prompts.saveChangesAnswer = SaveChangesChoice::discard;
        QVERIFY(fixture.document.shouldCloseWindow());

        fixture.prompts.saveChangesAnswer = SaveChangesChoice::save;
        fixture.prompts.saveTarget =
            SaveTarget{folder_.filePath(QStringLiteral("closing.tiff")), kOwnType, {}};
        QSignalSpy close(&fixture.document, &MainWindowDoc::closeRequested);
        QVERIFY(!fixture.document.shouldCloseWindow());
        QCOMPARE(fixture.prompts.suggestedName, QStringLiteral("x (hue-shifted).tiff"));
        QVERIFY(close.wait());
        QVERIFY(!fixture.document.isModified());
        QCOMPARE(fixture.prompts.saveChangesQuestions, 3);
    }

    // Revert reads the document's file again and leaves it unmodified with nothing to undo.
    void revertReadsTheFileAgain()
    {
        const QString path = folder_.filePath(QStringLiteral("revert.tiff"));
        Fixture fixture;
        const KVBitmapPtr original = test::makeImage(7, 7, 8, false);
        fixture.document.setImageReps({original}, {}, QStringLiteral("public.tiff"));
        fixture.window.parameters_ = QStringLiteral("tolm0000");
        QSignalSpy saved(&fixture.document, &MainWindowDoc::saveFinished);
        QVERIFY(fixture.document.saveToPath(path, kOwnType));
        QVERIFY(saved.wait());
        fixture.document.setImageReps({test::makeImage(3, 3, 8, false)});
        QVERIFY(fixture.document.validateAction(DocumentAction::revert));
        QSignalSpy read(&fixture.document, &MainWindowDoc::readingFinished);
        fixture.document.revertToSaved();
        QVERIFY(read.wait());
        QVERIFY(test::samePixels(fixture.document.imageReps()[0], original, 0));
        QCOMPARE(fixture.document.undoStack()->count(), 0);
        QVERIFY(!fixture.document.isModified());
    }

    // The save dialog offers the document and the four formats, starts on the document's type,
    // keeps the name's extension in step with the chosen format and remembers a plain format's
    // tag for copying and dragging out.
    void saveDialogRemembersTheFormat()
    {
        const std::unique_ptr<QFileDialog> dialog =
            makeSaveDialog(nullptr, QStringLiteral("photo (hue-shifted).tiff"), kOwnType);
        QCOMPARE(dialog->nameFilters().size(), 5);
        QCOMPARE(dialog->selectedNameFilter(), saveFormats().front().filter);
        const SaveFormat png = *saveFormatForType(QStringLiteral("public.png"));
        dialog->selectNameFilter(png.filter);
        emit dialog->filterSelected(png.filter);
        QCOMPARE(dialog->defaultSuffix(), QStringLiteral("png"));
        QVERIFY(
            dialog->selectedFiles().front().endsWith(QStringLiteral("photo (hue-shifted).png")));

        KVSettings::standard().remove(kSaveAsFileTypeTagKey);
        const SaveFormat jpeg = *saveFormatForType(QStringLiteral("public.jpeg"));
        const SaveTarget target = saveTargetForAcceptedDialog(
            folder_.filePath(QStringLiteral("x.jpeg")), jpeg.filter, 0.7);
        QCOMPARE(target.type, QStringLiteral("public.jpeg"));
        QCOMPARE(target.options.quality, 0.7);
        QCOMPARE(KVSettings::standard().intValue(kSaveAsFileTypeTagKey), 2);
        saveTargetForAcceptedDialog(folder_.filePath(QStringLiteral("x.tiff")),
                                    saveFormats().front().filter, 0.9);
        QCOMPARE(KVSettings::standard().intValue(kSaveAsFileTypeTagKey), 2);
        QCOMPARE(initialSaveFolder(), folder_.path());
    }

    // Nothing to save without a source image; a type without an encoder is refused.
    void savingNeedsAnImageAndAFormat()
    {
        Fixture fixture;
        QVERIFY(!fixture.document.validateAction(DocumentAction::save));
        fixture.document.setImageReps({test::makeImage(4, 4, 8, false)});
        QVERIFY(fixture.document.validateAction(DocumentAction::save));
        KVError error;
        QVERIFY(!fixture.document.dataOfType(QStringLiteral("com.compuserve.gif"), &error));
        QCOMPARE(error.code, 512);
        QCOMPARE(error.localizedDescription,
                 std::string("The image cannot be saved in the specified format."));
        QVERIFY(fixture.document.dataForSaveFormat(4).isEmpty());
        QVERIFY(fixture.document.dataForSaveFormat(1).startsWith("\x89PNG"));
    }
};

QTEST_MAIN(MainWindowDocTests)
#include "MainWindowDocTests.moc"
