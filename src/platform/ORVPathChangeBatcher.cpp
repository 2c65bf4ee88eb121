#include "platform/ORVPathChangeBatcher.h"

#include <QFutureWatcher>
#include <QPromise>
#include <QThreadPool>

#include <algorithm>

ORVPathChangeBatcher::ORVPathChangeBatcher(QObject *parent, int intervalMs) : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(intervalMs);
    connect(&m_timer, &QTimer::timeout, this, &ORVPathChangeBatcher::dispatchChangeTimerFire);
}

void ORVPathChangeBatcher::addPath(const QString &path)
{
    if (!m_present.contains(path)) {
        m_present.insert(path);
        m_arrChangeFiles.append(path);
    }
    if (!m_timer.isActive())
        m_timer.start();
}

QStringList ORVPathChangeBatcher::reduceChangedPaths(QStringList paths)
{
    std::sort(paths.begin(), paths.end());
    paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
    return paths;
}

void ORVPathChangeBatcher::dispatchChangeTimerFire()
{
    QStringList batch;
    batch.swap(m_arrChangeFiles);
    m_present.clear();
    if (batch.isEmpty())
        return;

    const quint64 seq = m_nextBatch++;
    // The watcher is a child: if this object goes first, the result is
    // dropped with it while the task finishes on its own.
    auto *watcher = new QFutureWatcher<QStringList>(this);
    connect(watcher, &QFutureWatcher<QStringList>::finished, this, [this, watcher, seq] {
        m_reduced.insert(seq, watcher->result());
        watcher->deleteLater();
        deliverReadyBatches();
    });
    auto promise = std::make_shared<QPromise<QStringList>>();
    watcher->setFuture(promise->future());
    promise->start();
    QThreadPool::globalInstance()->start([promise, batch = std::move(batch)]() mutable {
        promise->addResult(reduceChangedPaths(std::move(batch)));
        promise->finish();
    });
}

void ORVPathChangeBatcher::deliverReadyBatches()
{
    while (m_reduced.contains(m_nextDelivery)) {
        const QStringList paths = m_reduced.take(m_nextDelivery++);
        emit batchReady(paths);
    }
}
