#include "core/ORVNotificationCenter.h"

ORVNotificationCenter *ORVNotificationCenter::defaultCenter()
{
    static ORVNotificationCenter *center = new ORVNotificationCenter;
    return center;
}

ORVNotificationCenter::ORVNotificationCenter(QObject *parent) : QObject(parent)
{
    qRegisterMetaType<ORVNotification>();
}

void ORVNotificationCenter::postNotification(const QString &name, const QObject *sender, const QVariantMap &userInfo)
{
    emit posted(ORVNotification{name, sender, userInfo});
}

QMetaObject::Connection ORVNotificationCenter::addObserver(const QString &name, const QObject *context,
                                                           Handler handler)
{
    return connect(this, &ORVNotificationCenter::posted, context,
                   [name, handler = std::move(handler)](const ORVNotification &n) {
                       if (name.isEmpty() || n.name == name)
                           handler(n);
                   });
}

void ORVNotificationCenter::removeObserver(const QMetaObject::Connection &connection) { disconnect(connection); }
