#pragma once

#include "controls/KVValueDictionary.h"

#include <QVariantMap>

namespace tintorra {

// Slider dictionaries as the settings store them, and back (entries that are not numbers read
// as missing).
QVariantMap variantMapFromDictionary(const KVValueDictionary& dictionary);
KVValueDictionary dictionaryFromVariantMap(const QVariantMap& map);

} // namespace tintorra
