#include "library/FMDatabaseQueue.h"

FMDatabaseQueue::FMDatabaseQueue(QString path, int openFlags) : m_path(std::move(path)), m_openFlags(openFlags) {}

FMDatabaseQueue::~FMDatabaseQueue() { close(); }

std::unique_ptr<FMDatabaseQueue> FMDatabaseQueue::databaseQueueWithPath(const QString &path)
{
    return std::make_unique<FMDatabaseQueue>(path);
}

void FMDatabaseQueue::inDatabase(const std::function<void(FMDatabase *db)> &block)
{
    const auto self = std::this_thread::get_id();
    if (m_owner.load() == self) {
        // Nested call from inside a block: the connection is ours already.
        block(m_db && m_db->isOpen() ? m_db.get() : nullptr);
        return;
    }
    std::lock_guard guard(m_lock);
    m_owner.store(self);
    if (!m_db)
        m_db = std::make_unique<FMDatabase>(m_path);
    const bool open = m_db->isOpen() || m_db->openWithFlags(m_openFlags);
    block(open ? m_db.get() : nullptr);
    m_owner.store(std::thread::id());
}

void FMDatabaseQueue::close()
{
    std::lock_guard guard(m_lock);
    if (m_db)
        m_db->close();
    m_db.reset();
}
