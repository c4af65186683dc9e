#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariantMap>
#include <functional>

namespace tintorra {

// Names of the notifications that views broadcast to controllers they do not know.
inline const QString kModifierKeysChangedNotification = QStringLiteral("N_ModifierKeysChanged");
inline const QString kToolButtonPressedNotification = QStringLiteral("N_ToolButtonPressed");
inline const QString kImageNeedsDisplayNotification = QStringLiteral("N_ImageNeedsDisplay");
inline const QString kUserClickedOnLChColorNotification = QStringLiteral("N_UserClickedOnLChColor");
inline const QString kUserShiftClickedOnLChColorNotification =
    QStringLiteral("N_UserShiftClickedOnLChColor");
inline const QString kMouseMovedOverCircularSliderThumbSlotNotification =
    QStringLiteral("N_MouseMovedOverCircularSliderThumbSlot");
inline const QString kMouseMovedOverTenSegmentSliderThumbSlotNotification =
    QStringLiteral("N_MouseMovedOverTenSegmentSliderThumbSlot");

// One posted notification: its name, the object that posted it and its user info.
struct KVNotification {
    QString name;
    QPointer<QObject> object;
    QVariantMap userInfo;
};

// The broadcast channel between views and the controllers that listen to them. Observers name
// the notification they want and a context object; the connection ends with the context.
class KVNotificationCenter : public QObject {
    Q_OBJECT

public:
    using Handler = std::function<void(const KVNotification&)>;

    static KVNotificationCenter& defaultCenter();

    // Delivers the notification to every observer before returning.
    void post(const QString& name, QObject* object, const QVariantMap& userInfo = {});
    // Delivers it from the event loop, so that the poster never waits for the observers.
    void postLater(const QString& name, QObject* object, const QVariantMap& userInfo = {});

    QMetaObject::Connection addObserver(const QString& name, QObject* context, Handler handler);

signals:
    void notificationPosted(const tintorra::KVNotification& notification);
};

} // namespace tintorra

Q_DECLARE_METATYPE(tintorra::KVNotification)
