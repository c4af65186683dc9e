#include "ui/KVValueTransformers.h"

#include "ui/KVInternalInconsistencyException.h"
#include "ui/KVVariantAccessors.h"

#include <QString>
#include <algorithm>
#include <cmath>

// The transformers that read numbers and truth values; those that build images, font names and
// weekdays live with the display code.

namespace tintorra {

namespace {

constexpr const char* kNoFloatValue = "Value %@ does not respond to floatValue";
constexpr const char* kNoIntegerValue = "Value %@ does not respond to integerValue";
constexpr const char* kNoDoubleValue = "Value %@ does not respond to doubleValue";
constexpr const char* kNoBoolTransform = "Bool transform cannot be determined from value %@";

constexpr double kPi = 3.141592653589793;

template <typename Number>
Number checked(const std::optional<Number>& reading, const char* message, const QVariant& value)
{
    if (!reading)
        throw KVInternalInconsistencyException::aboutValue(message, value);
    return *reading;
}

// The first reading the value answers decides: a count, else a length, else an integer.
bool anythingToBool(const QVariant& value)
{
    if (const auto count = countOf(value))
        return *count != 0;
    if (const auto length = lengthOf(value))
        return *length != 0;
    return checked(integerValueOf(value), kNoBoolTransform, value) != 0;
}

} // namespace

KVFloatToPercentValueTransformer::KVFloatToPercentValueTransformer()
    : KVValueTransformer(QMetaType::fromType<QString>())
{}

QVariant KVFloatToPercentValueTransformer::transformedValue(const QVariant& value) const
{
    if (!value.isValid())
        return {};
    // The product stays in single precision, as the value is, before the half is added:
    // 0.285 gives 29%, which a double product would round down.
    const float hundredfold = checked(floatValueOf(value), kNoFloatValue, value) * 100.0f;
    const double percent = std::floor(static_cast<double>(hundredfold) + 0.5);
    return QString::asprintf("%.0f%%", percent);
}

KVFloatGreaterThanZeroTransformer::KVFloatGreaterThanZeroTransformer()
    : KVValueTransformer(QMetaType::fromType<bool>())
{}

QVariant KVFloatGreaterThanZeroTransformer::transformedValue(const QVariant& value) const
{
    if (!value.isValid())
        return false;
    return checked(floatValueOf(value), kNoFloatValue, value) > 0.0f;
}

KVIntegerNotZeroTransformer::KVIntegerNotZeroTransformer()
    : KVValueTransformer(QMetaType::fromType<bool>())
{}

QVariant KVIntegerNotZeroTransformer::transformedValue(const QVariant& value) const
{
    if (!value.isValid())
        return false;
    return checked(integerValueOf(value), kNoIntegerValue, value) != 0;
}

KVIntegerIsTwoTransformer::KVIntegerIsTwoTransformer()
    : KVValueTransformer(QMetaType::fromType<bool>())
{}

QVariant KVIntegerIsTwoTransformer::transformedValue(const QVariant& value) const
{
    if (!value.isValid())
        return false;
    return checked(integerValueOf(value), kNoIntegerValue, value) == 2;
}

KVAnythingToBoolTransformer::KVAnythingToBoolTransformer()
    : KVValueTransformer(QMetaType::fromType<bool>())
{}

QVariant KVAnythingToBoolTransformer::transformedValue(const QVariant& value) const
{
    return value.isValid() && anythingToBool(value);
}

KVAnythingToBoolNegatedTransformer::KVAnythingToBoolNegatedTransformer()
    : KVValueTransformer(QMetaType::fromType<bool>())
{}

QVariant KVAnythingToBoolNegatedTransformer::transformedValue(const QVariant& value) const
{
    return !value.isValid() || !anythingToBool(value);
}

KVBoolToStringTransformer::KVBoolToStringTransformer()
    : KVValueTransformer(QMetaType::fromType<QString>())
{}

QVariant KVBoolToStringTransformer::transformedValue(const QVariant& value) const
{
    if (!value.isValid())
        return QStringLiteral("--");
    return checked(boolValueOf(value), kNoBoolTransform, value) ? QStringLiteral("YES")
                                                                : QStringLiteral("NO");
}

KVRadiansToDegreesTransformer::KVRadiansToDegreesTransformer()
    : KVValueTransformer(QMetaType::fromType<double>())
{}

QVariant KVRadiansToDegreesTransformer::transformedValue(const QVariant& value) const
{
    return doubleValueOf(value).value_or(0.0) * 180.0 / kPi;
}

QVariant KVRadiansToDegreesTransformer::reverseTransformedValue(const QVariant& value) const
{
    return doubleValueOf(value).value_or(0.0) * kPi / 180.0;
}

KVNormalizedFloatToDegreesTransformer::KVNormalizedFloatToDegreesTransformer()
    : KVValueTransformer(QMetaType::fromType<double>())
{}

QVariant KVNormalizedFloatToDegreesTransformer::transformedValue(const QVariant& value) const
{
    if (!value.isValid())
        return {};
    return checked(doubleValueOf(value), kNoDoubleValue, value) * 360.0;
}

QVariant KVNormalizedFloatToDegreesTransformer::reverseTransformedValue(const QVariant& value) const
{
    if (!value.isValid())
        return {};
    return checked(doubleValueOf(value), kNoDoubleValue, value) / 360.0;
}

KVNormalizedFloatToUnsignedCharTransformer::KVNormalizedFloatToUnsignedCharTransformer()
    : KVValueTransformer(QMetaType::fromType<uchar>())
{}

QVariant KVNormalizedFloatToUnsignedCharTransformer::transformedValue(const QVariant& value) const
{
    if (!value.isValid())
        return {};
    const float fraction = checked(floatValueOf(value), kNoFloatValue, value);
    // Written so that a NaN lands on 0 rather than in the conversion below.
    const float clamped = fraction > 0.0f ? std::min(fraction, 1.0f) : 0.0f;
    const int rounded = static_cast<int>(clamped * 255.0 + 0.5);
    return QVariant::fromValue(static_cast<uchar>(rounded & 0xff));
}

QVariant
KVNormalizedFloatToUnsignedCharTransformer::reverseTransformedValue(const QVariant& value) const
{
    if (!value.isValid())
        return {};
    // Whatever answers floatValue answers doubleValue too; the message names the forward reading.
    return checked(doubleValueOf(value), kNoFloatValue, value) / 255.0;
}

} // namespace tintorra
