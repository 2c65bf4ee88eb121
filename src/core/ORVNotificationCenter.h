#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariantMap>

#include <functional>

// One named notification: a name, the object that posted it (may be null)
// and a user-info map.
struct ORVNotification {
    QString name;
    QPointer<const QObject> sender;
    QVariantMap userInfo;
};
Q_DECLARE_METATYPE(ORVNotification)

// Named notifications between controllers, which tell each other of changes
// this way rather than by direct calls.
//
// Delivery: an observer whose context object lives in the posting thread is
// called synchronously, before postNotification returns; one whose context
// lives in another thread is called on that thread's event loop (queued).
// An observer goes away with its context object, or by removeObserver.
class ORVNotificationCenter : public QObject
{
    Q_OBJECT
public:
    using Handler = std::function<void(const ORVNotification &)>;

    // The process's center. Made on first use, kept until exit.
    static ORVNotificationCenter *defaultCenter();

    explicit ORVNotificationCenter(QObject *parent = nullptr);

    void postNotification(const QString &name, const QObject *sender = nullptr, const QVariantMap &userInfo = {});

    // Calls `handler` for every notification called `name` (every
    // notification when `name` is empty) while `context` lives.
    QMetaObject::Connection addObserver(const QString &name, const QObject *context, Handler handler);
    void removeObserver(const QMetaObject::Connection &connection);

signals:
    void posted(const ORVNotification &notification);
};
