#include "ui/KVNotificationCenter.h"

namespace tintorra {

KVNotificationCenter& KVNotificationCenter::defaultCenter()
{
    static KVNotificationCenter center;
    return center;
}

void KVNotificationCenter::post(const QString& name, QObject* object, const QVariantMap& userInfo)
{
    emit notificationPosted(KVNotification{name, object, userInfo});
}

void KVNotificationCenter::postLater(const QString& name, QObject* object,
                                     const QVariantMap& userInfo)
{
    KVNotification notification{name, object, userInfo};
    QMetaObject::invokeMethod(
        this, [this, notification] { emit notificationPosted(notification); },
        Qt::QueuedConnection);
}

QMetaObject::Connection KVNotificationCenter::addObserver(const QString& name, QObject* context,
                                                          Handler handler)
{
    return connect(this, &KVNotificationCenter::notificationPosted, context,
                   [name, handler = std::move(handler)](const KVNotification& notification) {
                       if (notification.name == name)
                           handler(notification);
                   });
}

} // namespace tintorra
