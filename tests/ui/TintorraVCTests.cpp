#include "colour/ColorConversions.h"
#include "colour/ColorMatrices.h"
#include "colour/KVLChColor.h"
#include "editor/HueShiftParametersBuilder.h"
#include "editor/SavedSelectionSets.h"
#include "engine/HueSpectrum.h"
#include "ui/KVCircularSlider.h"
#include "ui/KVCircularSliderGeometry.h"
#include "ui/KVLChColorMetaType.h"
#include "ui/KVNotificationCenter.h"
#include "ui/KVSavedSetsPopup.h"
#include "ui/KVSelectionSetSaveSheet.h"
#include "ui/KVSettings.h"
#include "ui/TintorraVC.h"

#include <QLineEdit>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <QUndoStack>
#include <cstring>
#include <functional>

using namespace tintorra;

namespace {

// Hue across, saturation down: every hue of the circle at several saturations.
KVBitmapPtr rainbow(int wide, int high)
{
    KVBitmapPtr image = KVBitmap::deviceRGBA8888Rep(wide, high, false);
    for (int y = 0; y < high; ++y) {
        std::uint8_t* row = image->bitmapData() + y * image->bytesPerRow();
        for (int x = 0; x < wide; ++x) {
            const QColor color = QColor::fromHsvF(float(x) / float(wide),
                                                  0.2f + 0.8f * float(y) / float(high), 0.9f);
            const std::uint8_t pixel[4] = {std::uint8_t(color.red()), std::uint8_t(color.green()),
                                           std::uint8_t(color.blue()), 255};
            std::memcpy(row + x * 4, pixel, 4);
        }
    }
    return image;
}

KVBitmapPtr onePixel(std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint8_t a)
{
    KVBitmapPtr image = KVBitmap::deviceRGBA8888Rep(1, 1, false);
    const std::uint8_t pixel[4] = {r, g, b, a};
    std::memcpy(image->bitmapData(), pixel, 4);
    return image;
}

KVValueDictionary range(double upperFalloff, double upper, double lower, double lowerFalloff)
{
    return {{"upperFalloff", upperFalloff},
            {"upper", upper},
            {"lower", lower},
            {"lowerFalloff", lowerFalloff}};
}

QVariantMap variantRange(const KVSliderValues& v)
{
    return {{"upperFalloff", v.upperFalloff},
            {"upper", v.upper},
            {"middle", v.middle},
            {"lower", v.lower},
            {"lowerFalloff", v.lowerFalloff}};
}

// What a shift of the VC's current parameters gives when run directly, in order.
KVBitmapPtr synchronousShift(Engine& engine, const KVBitmapPtr& image,
                             const KVHueShiftParameterSet& parameters)
{
    const ColorSpaceModel model = parameters.colorSpaceModel();
    auto gamut = engine.buildGamut(image->colorSpace(), model).take();
    ColorTablePtr table =
        engine.buildColorTable(image, 1.0 / parameters.displayGamma(), model).take();
    const LChSpectrum spectrum = createLChSpectrumFromLChColorTable(*table);
    HueShiftContext context;
    context.gamut = gamut;
    context.colorTable = table.get();
    context.spectrum = &spectrum;
    return engine.shift({image, nullptr, hueShiftParameters(parameters, context), table}).take();
}

bool sameSamples(const KVBitmapPtr& a, const KVBitmapPtr& b)
{
    return a && b && a->sampleBytes() == b->sampleBytes() &&
           std::memcmp(a->bitmapData(), b->bitmapData(), a->sampleBytes()) == 0;
}

} // namespace

class TintorraVCTests : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { KVSettings::redirectStandard(folder_.filePath("settings.ini")); }
    void init() { KVSettings::standard().remove(kSavedSetsOfSelectionSettingsKey); }

    // Every setter: its value rule, its undo name, and undo then redo restoring exactly.
    void settersAreUndoableUnderTheirNames()
    {
        Engine engine({1});
        QUndoStack stack;
        TintorraVC vc(engine, &stack);
        // Pure blue in LChuv, from the colour core.
        Matrix3 srgb{};
        matrixFromColorSpace(srgb, nullptr);
        const double blueHue = hueFraction(rgbToLchuv({0.0, 0.0, 1.0, 1.0}, srgb).c2);
        const KVValueDictionary curve = dictionaryFromTenSegmentValues(
            {0.0, 0.05, 0.1, 0.2, 0.3, 0.45, 0.6, 0.7, 0.8, 0.9, 1.0});

        struct Case {
            const char* actionName;
            std::function<void()> change;
            std::function<bool(const KVHueShiftParameterSet&)> rule;
        };
        const Case cases[] = {
            {"Target Hue", [&] { vc.setTargetHue(0.37); },
             [](const auto& p) { return p.targetHue() == 0.37; }},
            {"Target Saturation", [&] { vc.setTargetSat(1.7); },
             [](const auto& p) { return p.targetSat() == 1.0; }},
            {"Target Brightness", [&] { vc.setTargetBri(-3.0); },
             [](const auto& p) { return p.targetBri() == -1.0; }},
            {"Target Brightness", [&] { vc.setTargetBriTenVals(curve); },
             [&](const auto& p) { return p.targetBriTenVals() == curve; }},
            {"Selection Hue", [&] { vc.setSourceHueValues(range(0.2, 0.1, 0.9, 0.8)); },
             // No middle given: derived across 0.
             [](const auto& p) {
                 return p.sourceHueRange() == KVSliderValues{0.2, 0.1, 0.0, 0.9, 0.8};
             }},
            {"Selection Saturation", [&] { vc.setSourceSatValues(range(0.9, 0.7, 0.3, 0.1)); },
             [](const auto& p) { return p.sourceSatRange().middle == 0.5; }},
            {"Selection Brightness", [&] { vc.setSourceBriValues(range(1.0, 0.8, 0.6, 0.5)); },
             [](const auto& p) { return p.sourceBriRange().lower == 0.6; }},
            {"Saved Selection Settings",
             [&] {
                 vc.setSelectionSettings({{"hue", variantRange(namedHueRange(120))},
                                          {"saturation", variantRange({0.9, 0.8, 0.5, 0.2, 0.1})},
                                          {"lightness", variantRange({1.0, 0.9, 0.5, 0.3, 0.2})}});
             },
             [](const auto& p) {
                 return p.sourceHueRange() == namedHueRange(120) &&
                        p.sourceSatRange().lower == 0.2 && p.sourceBriRange().lower == 0.3;
             }},
            {"Image Gamma", [&] { vc.setDisplayGamma(1.8); },
             [](const auto& p) { return p.displayGamma() == double(1.8f); }},
            {"Target Color", [&] { vc.setTargetColor(QColor(0, 0, 255)); },
             [&](const auto& p) { return std::abs(p.targetHue() - blueHue) < 1e-9; }},
            {"Hue preserving blends", [&] { vc.setPreserveHue(true); },
             [](const auto& p) { return p.preserveHue(); }},
            {"Color Mode", [&] { vc.setColorSpaceModel(ColorSpaceModel::HSB); },
             [](const auto& p) { return p.colorSpaceModel() == ColorSpaceModel::HSB; }},
            {"Blend to falloff hues", [&] { vc.setBlendToFalloffHues(true); },
             [](const auto& p) { return p.blendToFalloffHues(); }},
            {"Selection Hue", [&] { vc.invertSourceHueValues(); },
             // The complement of the hue range of the "Saved Selection Settings" row.
             [](const auto& p) {
                 const KVSliderValues green = namedHueRange(120);
                 return p.sourceHueRange().upperFalloff == green.lower &&
                        p.sourceHueRange().upper == green.lowerFalloff &&
                        p.sourceHueRange().lower == green.upperFalloff &&
                        p.sourceHueRange().lowerFalloff == green.upper;
             }},
        };
        for (const Case& c : cases) {
            const KVHueShiftParameterSet before = vc.parameters();
            const int count = stack.count();
            c.change();
            const KVHueShiftParameterSet after = vc.parameters();
            QVERIFY2(c.rule(after), c.actionName);
            QCOMPARE(stack.count(), count + 1);
            QCOMPARE(stack.undoText(), QString::fromUtf8(c.actionName));
            stack.undo();
            QVERIFY2(vc.parameters() == before, c.actionName);
            stack.redo();
            QVERIFY2(vc.parameters() == after, c.actionName);
        }
        // Showing a mask is not a change of the picture's recipe.
        const int count = stack.count();
        vc.setMaskToShow(2);
        QCOMPARE(vc.maskToShow(), 2);
        QCOMPARE(stack.count(), count);
    }

    // A drag of the target ring, however many steps, undoes in one.
    void aDragIsOneUndoStep()
    {
        Engine engine({1});
        QUndoStack stack;
        TintorraVC vc(engine, &stack);
        auto* ring = vc.findChild<KVCircularSlider*>("targetHueSlider");
        const auto point = [&](double value) {
            return KVCircularSliderGeometry(ring->size(), ring->model())
                .pointForValue(value)
                .toPoint();
        };
        QTest::mousePress(ring, Qt::LeftButton, {}, point(0.0));
        for (double value : {0.05, 0.1, 0.15, 0.2}) {
            QMouseEvent move(QEvent::MouseMove, point(value), ring->mapToGlobal(point(value)),
                             Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(ring, &move);
        }
        QTest::mouseRelease(ring, Qt::LeftButton, {}, point(0.2));
        QVERIFY(std::abs(vc.parameters().targetHue() - 0.2) < 0.02);
        QCOMPARE(stack.count(), 1);
        QCOMPARE(stack.undoText(), QStringLiteral("Target Hue"));
        stack.undo();
        QCOMPARE(vc.parameters().targetHue(), 0.0);
    }

    void defaultSetsAreTheNamedHues_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("upperFalloff");
        QTest::addColumn<double>("upper");
        QTest::addColumn<double>("middle");
        QTest::addColumn<double>("lower");
        QTest::addColumn<double>("lowerFalloff");
        QTest::newRow("red") << QStringLiteral("000° Red") << 20.0 << 10.0 << 0.0 << 350.0 << 340.0;
        QTest::newRow("rust") << QStringLiteral("020° Rust") << 40.0 << 30.0 << 20.0 << 10.0 << 0.0;
        QTest::newRow("raspberry")
            << QStringLiteral("340° Raspberry") << 360.0 << 350.0 << 340.0 << 330.0 << 320.0;
    }

    // Eighteen sets, one per named hue; near 0 the bounds are each brought into [0, 1].
    void defaultSetsAreTheNamedHues()
    {
        QFETCH(QString, name);
        Engine engine({1});
        QUndoStack stack;
        TintorraVC vc(engine, &stack);
        const QVariantMap sets = KVSettings::standard().mapValue(kSavedSetsOfSelectionSettingsKey);
        QCOMPARE(sets.size(), 18);
        QCOMPARE(vc.selectionSetsPopup()->count(), 18 + 3);
        QCOMPARE(vc.selectionSetsPopup()->itemText(18 + 1),
                 QStringLiteral("Save current settings…"));
        QCOMPARE(vc.selectionSetsPopup()->itemText(18 + 2), QStringLiteral("Manage settings…"));
        const QVariantMap hue = sets.value(name).toMap().value("hue").toMap();
        const QVariantMap full = sets.value(name).toMap().value("saturation").toMap();
        for (const char* key : {"upperFalloff", "upper", "middle", "lower", "lowerFalloff"}) {
            const double degrees = [&] {
                QFETCH(double, upperFalloff);
                QFETCH(double, upper);
                QFETCH(double, middle);
                QFETCH(double, lower);
                QFETCH(double, lowerFalloff);
                const std::map<std::string, double> byKey{{"upperFalloff", upperFalloff},
                                                          {"upper", upper},
                                                          {"middle", middle},
                                                          {"lower", lower},
                                                          {"lowerFalloff", lowerFalloff}};
                return byKey.at(key);
            }();
            QCOMPARE(hue.value(key).toDouble(), degrees / 360.0);
        }
        QCOMPARE(full.value("upper").toDouble(), 1.0);
        QCOMPARE(full.value("lower").toDouble(), 0.0);
        QCOMPARE(full.value("middle").toDouble(), 0.5);
    }

    // Save, a refused duplicate and empty name, choosing, and Alt-choosing to delete.
    void savedSelectionSets()
    {
        Engine engine({1});
        QUndoStack stack;
        QWidget window;
        auto* vc = new TintorraVC(engine, &stack, &window);
        window.show();
        KVSavedSetsPopup* popup = vc->selectionSetsPopup();
        KVSelectionSetSaveSheet* sheet = vc->selectionSetSaveSheet();
        vc->setSourceSatValues(range(0.9, 0.8, 0.4, 0.3));

        popup->chooseItem(popup->count() - 2, Qt::NoModifier);
        QVERIFY(sheet->isVisible());
        sheet->nameField()->setText(QStringLiteral("Mine"));
        QVERIFY(vc->closeSelectionSetSaveSheet(true));
        QVERIFY(!sheet->isVisible());
        QCOMPARE(popup->currentText(), QStringLiteral("Mine"));
        QCOMPARE(popup->savedSets().value("Mine").toMap(), vc->dictionaryOfSelectionSettings());

        for (const QString& refused : {QStringLiteral("Mine"), QString()}) {
            popup->chooseItem(popup->count() - 2, Qt::NoModifier);
            sheet->nameField()->setText(refused);
            QVERIFY(!vc->closeSelectionSetSaveSheet(true));
            QVERIFY(sheet->isVisible());
            QVERIFY(vc->closeSelectionSetSaveSheet(false));
            QCOMPARE(popup->currentIndex(), -1);
        }
        QCOMPARE(popup->setNames().count(QStringLiteral("Mine")), 1);

        // Choosing applies the set as one step, which undoes all three ranges.
        const KVHueShiftParameterSet before = vc->parameters();
        popup->chooseItem(popup->findText(QStringLiteral("020° Rust")), Qt::NoModifier);
        QCOMPARE(vc->parameters().sourceHueRange(), namedHueRange(20));
        QCOMPARE(vc->parameters().sourceSatRange(), fullSelectionRange());
        QCOMPARE(popup->currentText(), QStringLiteral("020° Rust"));
        QCOMPARE(stack.undoText(), QStringLiteral("Saved Selection Settings"));
        stack.undo();
        QVERIFY(vc->parameters() == before);

        // With Alt held it deletes instead.
        popup->chooseItem(popup->findText(QStringLiteral("040° Orange")), Qt::AltModifier);
        QVERIFY(!popup->containsSet(QStringLiteral("040° Orange")));
        QCOMPARE(popup->findText(QStringLiteral("040° Orange")), -1);
        QCOMPARE(popup->currentIndex(), -1);
        QVERIFY(vc->parameters() == before);

        // "Manage settings…" turns to the second tab.
        popup->chooseItem(popup->count() - 1, Qt::NoModifier);
        QCOMPARE(vc->selectionTabView()->currentIndex(), 1);
    }

    // The eyedroppers read the pixel's hue in the current mode and move the ranges.
    void eyedroppersMoveTheRanges()
    {
        Engine engine({1});
        QUndoStack stack;
        TintorraVC vc(engine, &stack);
        vc.setColorSpaceModel(ColorSpaceModel::HSB);
        // HSB hue of a linear colour: (0.2, 1, 0) linear is 72 degrees.
        const double exponent = 1.0 / double(2.2f);
        const auto encoded = [&](double linear) {
            return std::uint8_t(std::lround(std::pow(linear, exponent) * 255.0));
        };
        const KVBitmapPtr image = onePixel(encoded(0.2), 255, 0, 255);
        const double hue =
            rgbToHsb({std::pow(encoded(0.2) / 255.0, 1.0 / exponent), 1.0, 0.0, 1.0}).c0;
        vc.setSelectionHueSliderValue({0, 0}, image);
        QVERIFY(std::abs(vc.parameters().sourceHueRange().middle - hue) < 1e-6);
        QCOMPARE(stack.undoText(), QStringLiteral("Selection Hue"));

        vc.setSourceHueValues(range(0.1, 0.05, -0.05, -0.1));
        vc.addSelectionHueSliderValue({0, 0}, image);
        QVERIFY(std::abs(vc.parameters().sourceHueRange().upper - hue) < 1e-6);
        // Yellow, 60 degrees: nearer the upper bound, which is pulled in to it.
        vc.subtractSelectionHueSliderValue({0, 0}, onePixel(255, 255, 0, 255));
        QVERIFY(std::abs(vc.parameters().sourceHueRange().upper - 1.0 / 6.0) < 1e-6);
        QCOMPARE(vc.parameters().sourceHueRange().lower, -0.05);

        vc.setTargetHueSliderValue({0, 0}, image);
        QVERIFY(std::abs(vc.parameters().targetHue() - hue) < 1e-6);
    }

    void readoutFollowsThePointer_data()
    {
        QTest::addColumn<int>("model");
        QTest::addColumn<QString>("header");
        const QString common = QStringLiteral("x,y\nOp\nr'g'b'\nrgb");
        const QString luv = QStringLiteral("\nLuv\nLChuv\nSat");
        QTest::newRow("LChuv") << 0 << common + luv;
        QTest::newRow("LChab") << 1 << common + "\nLab\nLChab\nSat" + luv;
        QTest::newRow("HCL") << 2 << common + "\nhcl\nSat" + luv;
        QTest::newRow("HSB") << 3 << common + "\nhsb\nh's'b'" + luv;
        QTest::newRow("HSL") << 4 << common + "\nhsl\nh's'l'" + luv;
    }

    // One pixel per model against the colour core's own values.
    void readoutFollowsThePointer()
    {
        QFETCH(int, model);
        QFETCH(QString, header);
        Engine engine({1});
        QUndoStack stack;
        TintorraVC vc(engine, &stack);
        vc.setColorSpaceModel(*colorSpaceModelFromNumber(model));
        const KVBitmapPtr image = onePixel(200, 100, 50, 128);
        vc.mouseMovedOverImage({0, 0}, image);
        QCOMPARE(vc.pixelPropertiesHeader(), header);

        const double exponent = 1.0 / (1.0 / double(2.2f));
        const ColorComponents encoded{200 / 255.0, 100 / 255.0, 50 / 255.0, 128 / 255.0};
        const ColorComponents linear{std::pow(encoded.c0, exponent), std::pow(encoded.c1, exponent),
                                     std::pow(encoded.c2, exponent), encoded.alpha};
        Matrix3 srgb{};
        matrixFromColorSpace(srgb, nullptr);
        const ColorComponents xyz = rgbToXyz(linear, srgb);
        const ColorComponents lab = xyzToLab(xyz);
        const ColorComponents luv = xyzToLuv(xyz);
        const auto cells = [](std::initializer_list<double> values, const char* format) {
            QString text;
            for (double v : values) {
                text += QString::asprintf(format, v);
            }
            return text;
        };
        QString first =
            QStringLiteral("0\n128") + cells({200}, "\n%.0f") + cells({linear.c0}, "\n%.3f");
        switch (model) {
        case 1:
            // No image, no gamut: the relative saturation is unknown.
            first += cells({lab.c0, labToLch(lab).c0}, "\n%.3f") + "\n\u2013";
            break;
        case 2:
            first += cells({rgbToHcl(linear).h * 360.0}, "\n%.1f°");
            first += cells({rgbToHcl(linear).saturation * 100.0}, "\n%.1f%%");
            break;
        case 3:
            first += cells({rgbToHsb(linear).c0 * 360.0, rgbToHsb(encoded).c0 * 360.0}, "\n%.1f°");
            break;
        case 4:
            first += cells({rgbToHsl(linear).c0 * 360.0, rgbToHsl(encoded).c0 * 360.0}, "\n%.1f°");
            break;
        default:
            break;
        }
        first += cells({luv.c0, luvToLch(luv).c0}, "\n%.3f");
        QCOMPARE(vc.pixelPropertiesColumns().at(0).left(first.size()), first);
        const QString third = vc.pixelPropertiesColumns().at(2);
        QVERIFY2(
            third.contains(QString::asprintf("\n%.1f°", hueFraction(luvToLch(luv).c2) * 360.0)),
            qPrintable(third));

        vc.mouseMovedOverImage({-1, -1}, image);
        QCOMPARE(vc.pixelPropertiesHeader(), QStringLiteral("x,y\nOp\nr'g'b'\nrgb"));
    }

    // A burst of changes, with the colour table rebuilt midway, ends in exactly the picture of
    // the last parameters, and no older picture is ever shown after a newer one.
    void aBurstEndsInThePictureOfTheLastParameters()
    {
        Engine engine({2});
        QUndoStack stack;
        TintorraVC vc(engine, &stack);
        std::vector<std::uint64_t> shown;
        connect(&vc, &TintorraVC::imageProcessed, &vc,
                [&](const KVBitmapPtr&) { shown.push_back(vc.shownShift()); });
        const KVBitmapPtr image = rainbow(600, 300);
        vc.setImageReps({image});
        QTRY_VERIFY(vc.isOkToProcessImage());
        vc.setSourceHueValues(range(0.3, 0.25, 0.05, 0.0));
        for (int step = 1; step <= 40; ++step) {
            vc.setTargetHue(step / 40.0);
            if (step == 20) {
                vc.setDisplayGamma(2.0);
            }
            if (step % 8 == 0) {
                QTest::qWait(5);
            }
        }
        // The new table arrives and is shifted with too.
        QTRY_VERIFY(vc.isOkToProcessImage() && vc.shownShift() == vc.lastRequestedShift());
        const std::uint64_t last = vc.lastRequestedShift();
        QVERIFY(std::is_sorted(shown.begin(), shown.end()));
        QVERIFY(std::adjacent_find(shown.begin(), shown.end()) == shown.end());
        QVERIFY(sameSamples(vc.destinationRep(), synchronousShift(engine, image, vc.parameters())));
        // Nothing else arrives later.
        QTest::qWait(50);
        QCOMPARE(shown.back(), last);
    }

    // Clicks in a spectrogram count only when it belongs to the controller's own window.
    void spectrogramClicksAndHovering()
    {
        Engine engine({1});
        QUndoStack stack;
        TintorraVC vc(engine, &stack);
        QWidget otherWindow;
        KVNotificationCenter& center = KVNotificationCenter::defaultCenter();
        const auto click = [&](const QString& name, double hue, QWidget* window) {
            const KVLChColor color(50.0, 30.0, hue * kTwoPi, 1.0);
            center.post(name, vc.spectrumView(),
                        {{kSpectrumColorKey, QVariant::fromValue(color)},
                         {kSpectrumWindowKey, QVariant::fromValue(window)}});
        };
        click(kUserClickedOnLChColorNotification, 0.25, &otherWindow);
        QCOMPARE(vc.parameters().sourceHueRange().middle, 0.0);
        click(kUserClickedOnLChColorNotification, 0.25, vc.window());
        QVERIFY(std::abs(vc.parameters().sourceHueRange().middle - 0.25) < 1e-9);
        click(kUserShiftClickedOnLChColorNotification, 0.4, vc.window());
        QVERIFY(std::abs(vc.parameters().sourceHueRange().upper - 0.4) < 1e-9);

        auto* targetHue = vc.findChild<KVCircularSlider*>("targetHueSlider");
        center.post(kMouseMovedOverCircularSliderThumbSlotNotification, targetHue,
                    {{"targetHue", 0.5}});
        QCOMPARE(vc.targetHoverText(), QStringLiteral("Hue 180.0°"));
        center.post(kMouseMovedOverCircularSliderThumbSlotNotification, targetHue);
        QCOMPARE(vc.targetHoverText(), QString());
    }

    // One tool at a time; the brush brings an exclusion mask; target changes put the
    // selection tools away.
    void toolButtonsAreExclusive()
    {
        Engine engine({1});
        QUndoStack stack;
        TintorraVC vc(engine, &stack);
        vc.setImageReps({onePixel(10, 20, 30, 255)});
        QList<int> posted;
        KVNotificationCenter::defaultCenter().addObserver(
            kToolButtonPressedNotification, &vc,
            [&](const KVNotification& note) { posted << note.userInfo.value("tag").toInt(); });
        QCOMPARE(vc.currentSelectionTool(), -1);
        for (int tag : {1, 3, 5, 2}) {
            vc.toolButton(tag)->click();
            QCOMPARE(vc.currentSelectionTool(), tag);
            for (int other = 1; other <= 5; ++other) {
                QCOMPARE(vc.toolButton(other)->isChecked(), other == tag);
            }
        }
        QCOMPARE(posted, QList<int>({1, 3, 5, 2}));
        QVERIFY(vc.exMaskRep() != nullptr);
        QCOMPARE(vc.exMaskRep()->bitmapData()[0], std::uint8_t(0));
        vc.setTargetSat(0.5);
        QCOMPARE(vc.currentSelectionTool(), -1);
    }

    void nudgeKeyPaths()
    {
        QCOMPARE(TintorraVC::nudgeKeyPath("self.hueSlider.middleValue"),
                 QStringLiteral("hueSlider.middleValue"));
        QCOMPARE(TintorraVC::nudgeKeyPath("self.targetHueSlider.middleValue"),
                 QStringLiteral("targetHueSlider.middleValue"));
        QCOMPARE(TintorraVC::nudgeKeyPath("values.op_middle"), QStringLiteral("op_middle"));
        QCOMPARE(TintorraVC::nudgeKeyPath("self.satSlider.middleValue"), QString());
    }

private:
    QTemporaryDir folder_;
};

QTEST_MAIN(TintorraVCTests)
#include "TintorraVCTests.moc"
