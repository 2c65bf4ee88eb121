#pragma once

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QVariant>

#include <functional>
#include <mutex>

// A process-wide cache of short-lived values (access tokens and the like),
// each kept for a number of seconds. In memory only: nothing survives the
// process. Thread-safe.
class ORVCache
{
public:
    using Clock = std::function<QDateTime()>;

    // The process's cache, on the real clock.
    static ORVCache *sharedCache();

    // A cache of its own; `clock` gives the present moment (tests pass a
    // clock they move by hand).
    explicit ORVCache(Clock clock = {});

    // cacheItemWithKey:val:second:. Replaces an earlier value of the key.
    void cacheItemWithKeyValSecond(const QString &key, const QVariant &val, qint64 second);
    // fetchItemWithKey:. The value while the present moment is before the
    // time it was stored plus its seconds; after that the entry is removed
    // and the answer is an invalid QVariant.
    QVariant fetchItemWithKey(const QString &key);

private:
    struct Item {
        QVariant val;
        qint64 second = 0;
        QDateTime date;
    };
    QDateTime now() const;

    Clock m_clock;
    std::mutex m_lock;
    QHash<QString, Item> m_items;
};
