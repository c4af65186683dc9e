#include "ui/KVSettings.h"

#include <QSettings>

namespace tintorra {

namespace {

const QString kOrganisationName = QStringLiteral("velmora");
const QString kApplicationName = QStringLiteral("Tintorra");

} // namespace

KVSettings& KVSettings::standard()
{
    static KVSettings settings{std::make_unique<QSettings>(
        QSettings::IniFormat, QSettings::UserScope, kOrganisationName, kApplicationName)};
    return settings;
}

void KVSettings::redirectStandard(const QString& iniFilePath)
{
    standard().store_ = std::make_unique<QSettings>(iniFilePath, QSettings::IniFormat);
}

KVSettings::KVSettings(std::unique_ptr<QSettings> store) : store_(std::move(store)) {}

KVSettings::KVSettings(const QString& iniFilePath, QObject* parent)
    : QObject(parent), store_(std::make_unique<QSettings>(iniFilePath, QSettings::IniFormat))
{}

KVSettings::~KVSettings() = default;

void KVSettings::registerDefaults(const QVariantMap& defaults)
{
    for (auto it = defaults.cbegin(); it != defaults.cend(); ++it) {
        defaults_.insert(it.key(), it.value());
        if (!store_->contains(it.key()))
            emit valueChanged(it.key(), it.value());
    }
}

QVariant KVSettings::value(const QString& key) const
{
    // A written empty list comes back from the INI file as an invalid value; it is still the
    // user's value, so presence decides, not validity.
    return store_->contains(key) ? store_->value(key) : defaults_.value(key);
}

// INI files hand back scalars as text ("true", "12"), which QVariant converts on the way out.
bool KVSettings::boolValue(const QString& key) const
{
    return value(key).toBool();
}

int KVSettings::intValue(const QString& key) const
{
    return value(key).toInt();
}

QString KVSettings::stringValue(const QString& key) const
{
    return value(key).toString();
}

QVariantList KVSettings::listValue(const QString& key) const
{
    return value(key).toList();
}

QVariantMap KVSettings::mapValue(const QString& key) const
{
    return value(key).toMap();
}

void KVSettings::setValue(const QString& key, const QVariant& value)
{
    if (!value.isValid()) {
        remove(key);
        return;
    }
    store_->setValue(key, value);
    emit valueChanged(key, value);
}

void KVSettings::remove(const QString& key)
{
    store_->remove(key);
    emit valueChanged(key, value(key));
}

void KVSettings::sync()
{
    store_->sync();
}

QString KVSettings::fileName() const
{
    return store_->fileName();
}

QMetaObject::Connection KVSettings::observe(const QString& key, QObject* context, Observer observer)
{
    return connect(
        this, &KVSettings::valueChanged, context,
        [key, observer = std::move(observer)](const QString& changedKey, const QVariant& value) {
            if (changedKey == key)
                observer(value);
        });
}

} // namespace tintorra
