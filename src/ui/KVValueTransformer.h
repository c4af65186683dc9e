#pragma once

#include <QMetaType>
#include <QStringList>
#include <QVariant>

namespace tintorra {

// Turns a model value into what a view shows, and back where that makes sense. Bindings name a
// transformer by its class name and look up the one shared instance with named().
class KVValueTransformer {
public:
    explicit KVValueTransformer(QMetaType resultType) : resultType_(resultType) {}
    virtual ~KVValueTransformer() = default;
    KVValueTransformer(const KVValueTransformer&) = delete;
    KVValueTransformer& operator=(const KVValueTransformer&) = delete;

    // The type of what transformedValue() gives when it gives anything.
    QMetaType transformedValueType() const { return resultType_; }
    virtual bool allowsReverseTransformation() const { return false; }

    // A missing value is an invalid QVariant, in and out.
    virtual QVariant transformedValue(const QVariant& value) const = 0;
    // Throws KVInternalInconsistencyException unless allowsReverseTransformation().
    virtual QVariant reverseTransformedValue(const QVariant& value) const;

    // The shared transformer registered under the name, or nullptr. Every transformer of the
    // program is registered on the first call, whichever comes first.
    static const KVValueTransformer* named(const QString& name);
    static QStringList registeredNames();

private:
    const QMetaType resultType_;
};

} // namespace tintorra
