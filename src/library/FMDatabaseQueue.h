#pragma once

#include "library/FMDatabase.h"

#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

// One connection handed to its callers one at a time: inDatabase runs the
// block at once on the calling thread while no other block of this queue
// runs, so blocks from several threads never overlap. The connection opens
// on first use and stays open until close() or the queue's end.
//
// A block that calls inDatabase of the same queue again runs nested with the
// same connection rather than waiting for itself.
class FMDatabaseQueue
{
public:
    explicit FMDatabaseQueue(QString path, int openFlags = FMDatabase::OpenReadWrite | FMDatabase::OpenCreate);
    ~FMDatabaseQueue();
    FMDatabaseQueue(const FMDatabaseQueue &) = delete;
    FMDatabaseQueue &operator=(const FMDatabaseQueue &) = delete;

    static std::unique_ptr<FMDatabaseQueue> databaseQueueWithPath(const QString &path);

    const QString &path() const { return m_path; }

    // The block gets the open connection, or null when it cannot be opened.
    void inDatabase(const std::function<void(FMDatabase *db)> &block);
    void close();

private:
    QString m_path;
    int m_openFlags;
    std::mutex m_lock;
    std::atomic<std::thread::id> m_owner{};
    std::unique_ptr<FMDatabase> m_db;
};
