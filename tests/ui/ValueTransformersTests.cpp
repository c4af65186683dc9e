#include "ui/KVInternalInconsistencyException.h"
#include "ui/KVValueTransformer.h"

#include <QDate>
#include <QDir>
#include <QFileIconProvider>
#include <QFontDatabase>
#include <QIcon>
#include <QPixmap>
#include <QPoint>
#include <QTest>
#include <QTimeZone>
#include <numbers>
#include <stdexcept>

using namespace tintorra;

namespace {

const KVValueTransformer& transformer(const QString& name)
{
    const KVValueTransformer* const found = KVValueTransformer::named(name);
    if (!found)
        throw std::runtime_error("no transformer named " + name.toStdString());
    return *found;
}

QImage imageOf(const QVariant& pixmap)
{
    return pixmap.value<QPixmap>().toImage();
}

} // namespace

class ValueTransformersTests : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void registersEveryClassNameAndItsKind_data()
    {
        QTest::addColumn<QMetaType>("resultType");
        QTest::addColumn<bool>("reversible");
        const auto row = [](const char* name, QMetaType type, bool reversible) {
            QTest::newRow(name) << type << reversible;
        };
        const QMetaType truth = QMetaType::fromType<bool>();
        const QMetaType text = QMetaType::fromType<QString>();
        row("KVPathToIconValueTransformer", QMetaType::fromType<QPixmap>(), false);
        row("KVFloatToPercentValueTransformer", text, false);
        row("KVFloatGreaterThanZeroTransformer", truth, false);
        row("KVIntegerNotZeroTransformer", truth, false);
        row("KVIntegerIsTwoTransformer", truth, false);
        row("KVAnythingToBoolTransformer", truth, false);
        row("KVAnythingToBoolNegatedTransformer", truth, false);
        row("KVBoolToStringTransformer", text, false);
        row("KVFontNameToDisplayNameTransformer", text, false);
        row("KVRadiansToDegreesTransformer", QMetaType::fromType<double>(), true);
        row("KVNormalizedFloatToDegreesTransformer", QMetaType::fromType<double>(), true);
        row("KVDateToWeekdayValueTransformer", text, false);
        row("KVNormalizedFloatToUnsignedCharTransformer", QMetaType::fromType<uchar>(), true);
    }

    // Each name finds its own shared transformer, which gives what it promises and refuses to
    // reverse unless it can.
    void registersEveryClassNameAndItsKind()
    {
        QFETCH(QMetaType, resultType);
        QFETCH(bool, reversible);
        const QString name = QTest::currentDataTag();
        const KVValueTransformer& found = transformer(name);
        QCOMPARE(&found, KVValueTransformer::named(name));
        QCOMPARE(found.transformedValueType(), resultType);
        QCOMPARE(found.allowsReverseTransformation(), reversible);
        if (!reversible)
            QVERIFY_THROWS_EXCEPTION(KVInternalInconsistencyException,
                                     found.reverseTransformedValue(1));
    }

    // Nothing but the program's own transformers answers to a name.
    void registersNothingElse()
    {
        QCOMPARE(KVValueTransformer::registeredNames().size(), 13);
        QCOMPARE(KVValueTransformer::named("KVValueTransformer"), nullptr);
    }

    void transforms_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QVariant>("input");
        QTest::addColumn<QVariant>("expected");
        const auto row = [](const char* tag, const char* name, QVariant input, QVariant expected) {
            QTest::newRow(tag) << QString::fromLatin1(name) << input << expected;
        };
        const QVariant missing;
        const char* percent = "KVFloatToPercentValueTransformer";
        row("percent rounds half up", percent, 0.125, "13%");
        row("percent rounds down", percent, 0.124, "12%");
        row("percent never shows -0", percent, -0.004, "0%");
        row("percent in single precision", percent, 0.285, "29%");
        row("percent of text", percent, "0.5kg", "50%");
        row("percent of missing", percent, missing, missing);
        const char* toByte = "KVNormalizedFloatToUnsignedCharTransformer";
        row("byte clamps above", toByte, 1.7, QVariant::fromValue<uchar>(255));
        row("byte clamps below", toByte, -0.2, QVariant::fromValue<uchar>(0));
        row("byte rounds", toByte, 0.5, QVariant::fromValue<uchar>(128));
        row("byte of missing", toByte, missing, missing);
        const char* anything = "KVAnythingToBoolTransformer";
        const char* negated = "KVAnythingToBoolNegatedTransformer";
        row("empty text", anything, "", false);
        row("empty list", anything, QVariantList{}, false);
        row("missing", anything, missing, false);
        row("map counts", anything, QVariantMap{{"a", 0}}, true);
        row("bytes have length", anything, QByteArray("x"), true);
        row("number truncates", anything, 0.5, false);
        row("negated empty text", negated, "", true);
        row("negated empty list", negated, QVariantList{}, true);
        row("negated missing", negated, missing, true);
        row("negated text", negated, "0", false);
        row("above zero of missing", "KVFloatGreaterThanZeroTransformer", missing, false);
        row("above zero of text", "KVFloatGreaterThanZeroTransformer", " 0.1", true);
        row("not zero truncates", "KVIntegerNotZeroTransformer", 0.9, false);
        row("not zero of text", "KVIntegerNotZeroTransformer", "-3", true);
        row("not zero of missing", "KVIntegerNotZeroTransformer", missing, false);
        row("two truncates", "KVIntegerIsTwoTransformer", 2.9, true);
        row("three is not two", "KVIntegerIsTwoTransformer", 3, false);
        row("two of missing", "KVIntegerIsTwoTransformer", missing, false);
        row("YES of number", "KVBoolToStringTransformer", 2, "YES");
        row("YES of text", "KVBoolToStringTransformer", " -0012", "YES");
        row("NO of text", "KVBoolToStringTransformer", "no", "NO");
        row("YES of word", "KVBoolToStringTransformer", "Yes", "YES");
        row("-- of missing", "KVBoolToStringTransformer", missing, "--");
        row("radians", "KVRadiansToDegreesTransformer", std::numbers::pi, 180.0);
        row("radians of missing", "KVRadiansToDegreesTransformer", missing, 0.0);
        row("degrees", "KVNormalizedFloatToDegreesTransformer", 0.25, 90.0);
        row("degrees of missing", "KVNormalizedFloatToDegreesTransformer", missing, missing);
        const char* weekday = "KVDateToWeekdayValueTransformer";
        row("weekday of date", weekday, QDate(2024, 5, 1), "Wednesday");
        row("weekday of text", weekday, "2001-03-24 23:45:32 -0600", "Saturday");
        row("weekday in UTC", weekday,
            QDateTime(QDate(2024, 5, 1), QTime(23, 30), QTimeZone(-7200)), "Thursday");
        row("weekday of no date", weekday, "tomorrow", missing);
        const char* font = "KVFontNameToDisplayNameTransformer";
        const QString family = QFontDatabase::families().value(0);
        row("font family", font, family, family);
        row("font of missing", font, missing, missing);
    }

    void transforms()
    {
        QFETCH(QString, name);
        QFETCH(QVariant, input);
        QFETCH(QVariant, expected);
        const QVariant result = transformer(name).transformedValue(input);
        QCOMPARE(result, expected);
        if (expected.isValid())
            QCOMPARE(result.metaType(), transformer(name).transformedValueType());
    }

    void reverses_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QVariant>("input");
        QTest::addColumn<QVariant>("expected");
        const auto row = [](const char* tag, const char* name, QVariant input, QVariant expected) {
            QTest::newRow(tag) << QString::fromLatin1(name) << input << expected;
        };
        const QVariant missing;
        row("degrees to radians", "KVRadiansToDegreesTransformer", 90.0, std::numbers::pi / 2);
        row("missing radians", "KVRadiansToDegreesTransformer", missing, 0.0);
        row("degrees to fraction", "KVNormalizedFloatToDegreesTransformer", "270", 0.75);
        row("missing fraction", "KVNormalizedFloatToDegreesTransformer", missing, missing);
        row("byte to fraction", "KVNormalizedFloatToUnsignedCharTransformer",
            QVariant::fromValue<uchar>(51), 0.2);
        row("missing byte", "KVNormalizedFloatToUnsignedCharTransformer", missing, missing);
    }

    void reverses()
    {
        QFETCH(QString, name);
        QFETCH(QVariant, input);
        QFETCH(QVariant, expected);
        const QVariant result = transformer(name).reverseTransformedValue(input);
        QCOMPARE(result, expected);
        QCOMPARE(result.metaType(), expected.metaType());
    }

    void checksWhatItReads_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("reverse");
        QTest::addColumn<QVariant>("input");
        QTest::addColumn<QString>("message");
        const auto row = [](const char* name, bool reverse, QVariant input, const char* message) {
            QTest::newRow(name) << QString::fromLatin1(name) << reverse << input << message;
        };
        const QVariant date = QDate(2024, 5, 1);
        row("KVFloatToPercentValueTransformer", false, date,
            "Value QDate does not respond to floatValue");
        row("KVFloatGreaterThanZeroTransformer", false, QVariantList{},
            "Value QVariantList does not respond to floatValue");
        row("KVIntegerNotZeroTransformer", false, QVariantMap{},
            "Value QVariantMap does not respond to integerValue");
        row("KVIntegerIsTwoTransformer", false, QByteArray("2"),
            "Value QByteArray does not respond to integerValue");
        row("KVAnythingToBoolTransformer", false, date,
            "Bool transform cannot be determined from value QDate");
        row("KVAnythingToBoolNegatedTransformer", false, QVariant::fromValue(nullptr),
            "Bool transform cannot be determined from value std::nullptr_t");
        row("KVBoolToStringTransformer", false, QVariantList{},
            "Bool transform cannot be determined from value QVariantList");
        row("KVNormalizedFloatToDegreesTransformer", true, QPoint(),
            "Value QPoint does not respond to doubleValue");
        row("KVNormalizedFloatToUnsignedCharTransformer", false, QStringList{},
            "Value QStringList does not respond to floatValue");
    }

    // A value that cannot answer what a transformer reads is a programming error, reported with
    // the value's type.
    void checksWhatItReads()
    {
        QFETCH(QString, name);
        QFETCH(bool, reverse);
        QFETCH(QVariant, input);
        QFETCH(QString, message);
        const KVValueTransformer& checked = transformer(name);
        try {
            reverse ? checked.reverseTransformedValue(input) : checked.transformedValue(input);
            QFAIL("no exception");
        } catch (const KVInternalInconsistencyException& exception) {
            QCOMPARE(QString::fromUtf8(exception.what()), message);
        }
    }

    // No path, no icon; a path to nothing shows the stand-in; "~" is the home folder.
    void iconsForPaths()
    {
        const KVValueTransformer& icons = transformer("KVPathToIconValueTransformer");
        QVERIFY(!icons.transformedValue({}).isValid());

        const QVariant missingFile = icons.transformedValue("/no/such/file.tif");
        const QImage notFound = QIcon(":/images/notfound.svg").pixmap(16, 16).toImage();
        QVERIFY(!notFound.isNull());
        QCOMPARE(missingFile.value<QPixmap>().deviceIndependentSize(), QSizeF(16, 16));
        QCOMPARE(imageOf(missingFile), notFound);

        const QVariant home = icons.transformedValue("~");
        const QIcon folder = QFileIconProvider().icon(QFileInfo(QDir::homePath()));
        QCOMPARE(home.value<QPixmap>().deviceIndependentSize(), QSizeF(16, 16));
        QVERIFY(!imageOf(home).isNull());
        QCOMPARE(imageOf(home), folder.pixmap(16, 16).toImage());
        QVERIFY(imageOf(home) != notFound);
    }
};

QTEST_MAIN(ValueTransformersTests)
#include "ValueTransformersTests.moc"
