#include "ui/KVValueTransformer.h"

#include "ui/KVInternalInconsistencyException.h"
#include "ui/KVValueTransformers.h"

#include <map>
#include <memory>

namespace tintorra {

namespace {

using Registry = std::map<QString, std::unique_ptr<const KVValueTransformer>>;

template <typename Transformer>
void add(Registry& registry, const char* className)
{
    registry.emplace(QString::fromLatin1(className), std::make_unique<const Transformer>());
}

// Built on first use, so no transformer depends on the order in which static objects of other
// files come to life.
const Registry& registry()
{
    static const Registry transformers = [] {
        Registry registry;
        add<KVPathToIconValueTransformer>(registry, "KVPathToIconValueTransformer");
        add<KVFloatToPercentValueTransformer>(registry, "KVFloatToPercentValueTransformer");
        add<KVFloatGreaterThanZeroTransformer>(registry, "KVFloatGreaterThanZeroTransformer");
        add<KVIntegerNotZeroTransformer>(registry, "KVIntegerNotZeroTransformer");
        add<KVIntegerIsTwoTransformer>(registry, "KVIntegerIsTwoTransformer");
        add<KVAnythingToBoolTransformer>(registry, "KVAnythingToBoolTransformer");
        add<KVAnythingToBoolNegatedTransformer>(registry, "KVAnythingToBoolNegatedTransformer");
        add<KVBoolToStringTransformer>(registry, "KVBoolToStringTransformer");
        add<KVFontNameToDisplayNameTransformer>(registry, "KVFontNameToDisplayNameTransformer");
        add<KVRadiansToDegreesTransformer>(registry, "KVRadiansToDegreesTransformer");
        add<KVNormalizedFloatToDegreesTransformer>(registry,
                                                   "KVNormalizedFloatToDegreesTransformer");
        add<KVDateToWeekdayValueTransformer>(registry, "KVDateToWeekdayValueTransformer");
        add<KVNormalizedFloatToUnsignedCharTransformer>(
            registry, "KVNormalizedFloatToUnsignedCharTransformer");
        return registry;
    }();
    return transformers;
}

} // namespace

QVariant KVValueTransformer::reverseTransformedValue(const QVariant& /*value*/) const
{
    throw KVInternalInconsistencyException("This value transformer cannot reverse its values");
}

const KVValueTransformer* KVValueTransformer::named(const QString& name)
{
    const auto found = registry().find(name);
    return found == registry().cend() ? nullptr : found->second.get();
}

QStringList KVValueTransformer::registeredNames()
{
    QStringList names;
    for (const auto& entry : registry())
        names << entry.first;
    return names;
}

} // namespace tintorra
