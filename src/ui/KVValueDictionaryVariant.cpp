#include "ui/KVValueDictionaryVariant.h"

#include "ui/KVVariantAccessors.h"

namespace tintorra {

QVariantMap variantMapFromDictionary(const KVValueDictionary& dictionary)
{
    QVariantMap map;
    for (const auto& [key, value] : dictionary) {
        map.insert(QString::fromStdString(key), value);
    }
    return map;
}

KVValueDictionary dictionaryFromVariantMap(const QVariantMap& map)
{
    KVValueDictionary dictionary;
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        if (const std::optional<double> number = doubleValueOf(it.value())) {
            dictionary.emplace(it.key().toStdString(), *number);
        }
    }
    return dictionary;
}

} // namespace tintorra
