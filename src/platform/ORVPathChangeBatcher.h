#pragma once

#include <QHash>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QTimer>

// Gathers changed paths into batches, so that one save by another program,
// which causes several events, is handled once.
//
// The first path added starts a one-shot timer; paths added before it fires
// join the same batch (each path once, in arrival order). When the timer
// fires the batch is taken, reduced to distinct paths sorted ascending on a
// thread of the global pool, and batchReady is emitted back in this
// object's thread. Batches are delivered in the order they were taken.
//
// Thread: lives in a thread with an event loop; addPath is called there.
class ORVPathChangeBatcher : public QObject
{
    Q_OBJECT
public:
    // The interval that joins the events of one save, in milliseconds.
    static constexpr int kDispatchIntervalMs = 1300;

    explicit ORVPathChangeBatcher(QObject *parent = nullptr, int intervalMs = kDispatchIntervalMs);

    // Adds a path to the pending batch unless present; starts the timer when
    // none runs.
    void addPath(const QString &path);

    QStringList arrChangeFiles() const { return m_arrChangeFiles; }
    bool isTimerRunning() const { return m_timer.isActive(); }

    // Sorted distinct paths, as a batch is reduced.
    static QStringList reduceChangedPaths(QStringList paths);

signals:
    void batchReady(const QStringList &paths);

private:
    void dispatchChangeTimerFire();
    void deliverReadyBatches();

    QStringList m_arrChangeFiles;
    QSet<QString> m_present;
    QTimer m_timer;
    quint64 m_nextBatch = 0;
    quint64 m_nextDelivery = 0;
    QHash<quint64, QStringList> m_reduced;
};
