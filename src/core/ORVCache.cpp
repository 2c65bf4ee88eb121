#include "core/ORVCache.h"

ORVCache *ORVCache::sharedCache()
{
    static ORVCache *cache = new ORVCache;
    return cache;
}

ORVCache::ORVCache(Clock clock) : m_clock(std::move(clock)) {}

QDateTime ORVCache::now() const { return m_clock ? m_clock() : QDateTime::currentDateTimeUtc(); }

void ORVCache::cacheItemWithKeyValSecond(const QString &key, const QVariant &val, qint64 second)
{
    std::lock_guard g(m_lock);
    m_items.insert(key, Item{val, second, now()});
}

QVariant ORVCache::fetchItemWithKey(const QString &key)
{
    std::lock_guard g(m_lock);
    const auto it = m_items.find(key);
    if (it == m_items.end())
        return {};
    if (now() < it->date.addSecs(it->second))
        return it->val;
    m_items.erase(it);
    return {};
}
