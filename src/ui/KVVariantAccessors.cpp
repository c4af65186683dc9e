#include "ui/KVVariantAccessors.h"

#include <QByteArray>
#include <QString>
#include <QVariantHash>
#include <QVariantList>
#include <QVariantMap>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace tintorra {

namespace {

bool isNumber(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

bool isFloatingPoint(const QVariant& value)
{
    return value.typeId() == QMetaType::Float || value.typeId() == QMetaType::Double;
}

bool isText(const QVariant& value)
{
    return value.typeId() == QMetaType::QString;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The text after leading white space, in Latin-1 so that the scans below see plain bytes; what
// is not Latin-1 cannot be part of a number anyway.
std::string trimmedLeadingText(const QVariant& value)
{
    const QString text = value.toString();
    qsizetype start = 0;
    while (start < text.size() && text.at(start).isSpace())
        ++start;
    return text.mid(start).toLatin1().toStdString();
}

// The longest decimal number at the start of the text, 0 when there is none. from_chars keeps the
// decimal point a point whatever the user's locale says.
double leadingDouble(const QVariant& value)
{
    const std::string text = trimmedLeadingText(value);
    const char* first = text.data();
    const char* const last = text.data() + text.size();
    bool negative = false;
    if (first != last && (*first == '+' || *first == '-'))
        negative = *first++ == '-';
    // Only digits or a point may start the number: "inf" and "nan" are words, not numbers.
    if (first == last || !(isDigit(*first) || *first == '.'))
        return 0.0;
    double result = 0.0;
    const auto [end, error] = std::from_chars(first, last, result);
    if (end == first)
        return 0.0;
    if (error == std::errc::result_out_of_range)
        result = std::abs(result) < 1.0 ? 0.0 : std::numeric_limits<double>::infinity();
    return negative ? -result : result;
}

qint64 leadingInteger(const QVariant& value)
{
    const std::string text = trimmedLeadingText(value);
    const char* first = text.data();
    const char* const last = text.data() + text.size();
    bool negative = false;
    if (first != last && (*first == '+' || *first == '-'))
        negative = *first++ == '-';
    // Accumulate negatively so that the most negative integer fits; saturate on overflow.
    constexpr qint64 lowest = std::numeric_limits<qint64>::lowest();
    qint64 result = 0;
    for (; first != last && isDigit(*first); ++first) {
        const int digit = *first - '0';
        if (result < (lowest + digit) / 10) {
            result = lowest;
            break;
        }
        result = result * 10 - digit;
    }
    if (negative)
        return result;
    return result == lowest ? std::numeric_limits<qint64>::max() : -result;
}

bool leadingTruth(const QVariant& value)
{
    const std::string text = trimmedLeadingText(value);
    auto it = text.cbegin();
    if (it != text.cend() && (*it == '+' || *it == '-'))
        ++it;
    while (it != text.cend() && *it == '0')
        ++it;
    if (it == text.cend())
        return false;
    const char c = *it;
    return c == 'Y' || c == 'y' || c == 'T' || c == 't' || (c >= '1' && c <= '9');
}

qint64 truncatedToInteger(double number)
{
    if (std::isnan(number))
        return 0;
    // The limits as doubles: the upper one rounds up to 2^63, which itself no longer fits.
    constexpr double below = static_cast<double>(std::numeric_limits<qint64>::lowest());
    constexpr double above = static_cast<double>(std::numeric_limits<qint64>::max());
    if (number <= below)
        return std::numeric_limits<qint64>::lowest();
    if (number >= above)
        return std::numeric_limits<qint64>::max();
    return static_cast<qint64>(number);
}

} // namespace

std::optional<double> doubleValueOf(const QVariant& value)
{
    if (isNumber(value))
        return value.toDouble();
    if (isText(value))
        return leadingDouble(value);
    return std::nullopt;
}

std::optional<float> floatValueOf(const QVariant& value)
{
    if (const auto number = doubleValueOf(value))
        return static_cast<float>(*number);
    return std::nullopt;
}

std::optional<qint64> integerValueOf(const QVariant& value)
{
    if (isFloatingPoint(value))
        return truncatedToInteger(value.toDouble());
    if (isNumber(value))
        return value.toLongLong();
    if (isText(value))
        return leadingInteger(value);
    return std::nullopt;
}

std::optional<bool> boolValueOf(const QVariant& value)
{
    if (isFloatingPoint(value))
        return value.toDouble() != 0.0;
    if (isNumber(value))
        return value.toLongLong() != 0;
    if (isText(value))
        return leadingTruth(value);
    return std::nullopt;
}

std::optional<qsizetype> countOf(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QVariantList:
        return value.toList().size();
    case QMetaType::QStringList:
        return value.toStringList().size();
    case QMetaType::QVariantMap:
        return value.toMap().size();
    case QMetaType::QVariantHash:
        return value.toHash().size();
    default:
        return std::nullopt;
    }
}

std::optional<qsizetype> lengthOf(const QVariant& value)
{
    if (isText(value))
        return value.toString().size();
    if (value.typeId() == QMetaType::QByteArray)
        return value.toByteArray().size();
    return std::nullopt;
}

} // namespace tintorra
