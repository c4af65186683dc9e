#pragma once

#include <QVariant>
#include <optional>

namespace tintorra {

// The transformers ask a value for a number, a truth value, a count or a length and need to tell
// "cannot answer" apart from zero, so each reading is optional. What answers what:
// - numbers (bool and every integer and floating-point type): floatValue, doubleValue,
//   integerValue (truncated towards zero) and boolValue (not zero);
// - QString: floatValue and doubleValue (the leading decimal number after white space, else 0),
//   integerValue (the leading integer, else 0), boolValue (true when the first character after
//   white space, a sign and zeros is one of "YyTt" or a digit 1-9) and length;
// - QByteArray: length;
// - lists and maps (QVariantList, QStringList, QVariantMap, QVariantHash): count;
// - anything else, including a null pointer, answers none of them.
// A missing value is an invalid QVariant; the transformers deal with it before asking.

std::optional<float> floatValueOf(const QVariant& value);
std::optional<double> doubleValueOf(const QVariant& value);
std::optional<qint64> integerValueOf(const QVariant& value);
std::optional<bool> boolValueOf(const QVariant& value);
std::optional<qsizetype> countOf(const QVariant& value);
std::optional<qsizetype> lengthOf(const QVariant& value);

} // namespace tintorra
