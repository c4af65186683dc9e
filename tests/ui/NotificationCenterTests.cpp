#include "ui/KVNotificationCenter.h"

#include <QSignalSpy>
#include <QTest>

using namespace tintorra;

class NotificationCenterTests : public QObject {
    Q_OBJECT

private slots:
    // Observers hear only the name they asked for, with the poster and its user info, and stop
    // hearing once their context is gone.
    void deliversByNameUntilTheContextDies()
    {
        KVNotificationCenter center;
        QObject poster;
        QStringList heard;
        auto context = std::make_unique<QObject>();
        center.addObserver(kToolButtonPressedNotification, context.get(),
                           [&](const KVNotification& n) {
                               QCOMPARE(n.object.data(), &poster);
                               heard << n.name + "=" + n.userInfo.value("tag").toString();
                           });
        center.post(kToolButtonPressedNotification, &poster, {{"tag", 3}});
        center.post(kImageNeedsDisplayNotification, &poster);
        context.reset();
        center.post(kToolButtonPressedNotification, &poster, {{"tag", 4}});
        QCOMPARE(heard, QStringList{"N_ToolButtonPressed=3"});
    }

    // A later post reaches its observers only from the event loop, never inside the call.
    void postLaterDoesNotWaitForObservers()
    {
        KVNotificationCenter center;
        int calls = 0;
        QObject context;
        center.addObserver(kImageNeedsDisplayNotification, &context,
                           [&](const KVNotification&) { ++calls; });
        center.postLater(kImageNeedsDisplayNotification, nullptr);
        QCOMPARE(calls, 0);
        QTRY_COMPARE(calls, 1);
    }
};

QTEST_MAIN(NotificationCenterTests)
#include "NotificationCenterTests.moc"
