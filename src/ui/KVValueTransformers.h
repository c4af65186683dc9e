#pragma once

#include "ui/KVValueTransformer.h"

namespace tintorra {

// The program's transformers, each registered once under its own class name. Unless a comment
// says otherwise a missing value gives a missing value, and a value that cannot answer the
// reading a transformer needs raises KVInternalInconsistencyException.

// A file path to the file's icon, or to the "notfound" image when nothing is there; 16 x 16.
class KVPathToIconValueTransformer final : public KVValueTransformer {
public:
    KVPathToIconValueTransformer();
    QVariant transformedValue(const QVariant& value) const override;
};

// 0.125 to "13%".
class KVFloatToPercentValueTransformer final : public KVValueTransformer {
public:
    KVFloatToPercentValueTransformer();
    QVariant transformedValue(const QVariant& value) const override;
};

// Missing gives false.
class KVFloatGreaterThanZeroTransformer final : public KVValueTransformer {
public:
    KVFloatGreaterThanZeroTransformer();
    QVariant transformedValue(const QVariant& value) const override;
};

// Missing gives false.
class KVIntegerNotZeroTransformer final : public KVValueTransformer {
public:
    KVIntegerNotZeroTransformer();
    QVariant transformedValue(const QVariant& value) const override;
};

// Enables the controls of the one mode whose value is 2. Missing gives false.
class KVIntegerIsTwoTransformer final : public KVValueTransformer {
public:
    KVIntegerIsTwoTransformer();
    QVariant transformedValue(const QVariant& value) const override;
};

// Whether a collection or text is non-empty, or a number non-zero. Missing gives false.
class KVAnythingToBoolTransformer final : public KVValueTransformer {
public:
    KVAnythingToBoolTransformer();
    QVariant transformedValue(const QVariant& value) const override;
};

// The opposite of KVAnythingToBoolTransformer. Missing gives true.
class KVAnythingToBoolNegatedTransformer final : public KVValueTransformer {
public:
    KVAnythingToBoolNegatedTransformer();
    QVariant transformedValue(const QVariant& value) const override;
};

// "YES" or "NO"; missing gives "--".
class KVBoolToStringTransformer final : public KVValueTransformer {
public:
    KVBoolToStringTransformer();
    QVariant transformedValue(const QVariant& value) const override;
};

// The display name of the font Qt picks for the family name at 12 points.
class KVFontNameToDisplayNameTransformer final : public KVValueTransformer {
public:
    KVFontNameToDisplayNameTransformer();
    QVariant transformedValue(const QVariant& value) const override;
};

// Never checks its input: anything that is not a number, missing included, reads as 0.
class KVRadiansToDegreesTransformer final : public KVValueTransformer {
public:
    KVRadiansToDegreesTransformer();
    bool allowsReverseTransformation() const override { return true; }
    QVariant transformedValue(const QVariant& value) const override;
    QVariant reverseTransformedValue(const QVariant& value) const override;
};

// A fraction of the circle to degrees and back.
class KVNormalizedFloatToDegreesTransformer final : public KVValueTransformer {
public:
    KVNormalizedFloatToDegreesTransformer();
    bool allowsReverseTransformation() const override { return true; }
    QVariant transformedValue(const QVariant& value) const override;
    QVariant reverseTransformedValue(const QVariant& value) const override;
};

// The full weekday name, in the user's language, of a date or of text starting "yyyy-MM-dd".
// A date-time counts in UTC; text that is no date gives a missing value.
class KVDateToWeekdayValueTransformer final : public KVValueTransformer {
public:
    KVDateToWeekdayValueTransformer();
    QVariant transformedValue(const QVariant& value) const override;
};

// 0..1 to 0..255, clamped; the reverse divides by 255.
class KVNormalizedFloatToUnsignedCharTransformer final : public KVValueTransformer {
public:
    KVNormalizedFloatToUnsignedCharTransformer();
    bool allowsReverseTransformation() const override { return true; }
    QVariant transformedValue(const QVariant& value) const override;
    QVariant reverseTransformedValue(const QVariant& value) const override;
};

} // namespace tintorra
