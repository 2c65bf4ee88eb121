#include "core/ORVNotificationCenter.h"

#include <QCoreApplication>
#include <QThread>
#include <gtest/gtest.h>

TEST(ORVNotificationCenter, DeliversByNameUntilTheContextGoes)
{
    ORVNotificationCenter center;
    int a = 0, any = 0;
    auto *context = new QObject;
    center.addObserver(QStringLiteral("A"), context, [&](const ORVNotification &n) {
        ++a;
        EXPECT_EQ(n.userInfo.value(QStringLiteral("k")).toInt(), 7);
    });
    QObject anyContext;
    center.addObserver(QString(), &anyContext, [&](const ORVNotification &) { ++any; });

    center.postNotification(QStringLiteral("A"), nullptr, {{QStringLiteral("k"), 7}});
    center.postNotification(QStringLiteral("B"));
    EXPECT_EQ(a, 1);
    EXPECT_EQ(any, 2);

    delete context;
    center.postNotification(QStringLiteral("A"), nullptr, {{QStringLiteral("k"), 7}});
    EXPECT_EQ(a, 1);
    EXPECT_EQ(any, 3);
}

TEST(ORVNotificationCenter, PostFromAWorkerReachesTheMainThreadObserverQueued)
{
    ORVNotificationCenter center;
    QObject context;
    Qt::HANDLE deliveredOn = nullptr;
    center.addObserver(QStringLiteral("done"), &context, [&](const ORVNotification &) {
        deliveredOn = QThread::currentThreadId();
    });
    QThread *worker = QThread::create([&] { center.postNotification(QStringLiteral("done")); });
    worker->start();
    worker->wait();
    EXPECT_EQ(deliveredOn, nullptr); // not yet: queued to the main thread
    QCoreApplication::processEvents();
    EXPECT_EQ(deliveredOn, QThread::currentThreadId());
    delete worker;
}
