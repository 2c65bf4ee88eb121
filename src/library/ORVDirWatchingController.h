#pragma once

#include "platform/ORVPathChangeBatcher.h"
#include "platform/SCEvent.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QStringList>

class ORVExternalSourceItemManager;
class ORVExternalTree;
class SCEvents;

// Posted through ORVNotificationCenter once per batch of file changes, after
// the external tree was brought in line; userInfo "paths" holds the batch
// (sorted, distinct) and "treeChanged" whether the tree changed.
inline const QString kORVExternalTreeViewControllerTreeControllerRearrangeObjectsNotification =
    QStringLiteral("kORVExternalTreeViewControllerTreeControllerRearrangeObjectsNotification");

// Watches every external source for changes made by other programs.
//
// One recursive event stream per source folder; a folder that stays in the
// list keeps its stream when the list changes. Events that are an edit, a
// rename or delete, a new file or a folder change put their path into the
// pending batch (each path once); the batch goes out 1.3 seconds after its
// first event, sorted, and the tree is patched once for it.
//
// Thread: the main thread. Neither the manager nor the tree is owned; both
// must outlive this object.
class ORVDirWatchingController : public QObject
{
    Q_OBJECT
public:
    // `tree` may be null: batches are then only reported.
    ORVDirWatchingController(ORVExternalSourceItemManager *sources, ORVExternalTree *tree, QObject *parent = nullptr);
    ~ORVDirWatchingController() override;

    // Makes the streams match the sources: new folders get one, folders that
    // went lose theirs (and access to them ends). Runs by itself whenever
    // the list of sources changes.
    void setupEventListernerPaths();
    // Resolves every source's bookmark into currentWatchingPaths().
    void updateBookmarkURLs();
    QStringList currentWatchingPaths() const { return m_currentWatchingPaths; }

    // Security scope of a folder: kept as a begin/end pair for the
    // platforms that have one; here access needs nothing.
    bool startAccessingSecurityScopedResourceByPath(const QString &path);
    void stopAccessingSecurityScopedResourceByPath(const QString &path);

    // The stream of a folder, or null (for diagnostics and tests).
    SCEvents *eventStreamForPath(const QString &path) const { return m_streams.value(path); }

    // Whether an event counts as a change worth a batch.
    static bool isBatchedEvent(const SCEvent &event);

signals:
    // Every event of every stream, classified or not.
    void eventOccurred(const SCEvent &event);
    // A batch, after the tree was patched.
    void batchDispatched(const QStringList &paths);
    void watchError(const QString &message);

private:
    void pathWatcherEventOccurred(const SCEvent &event);
    void dispatchBatch(const QStringList &paths);

    ORVExternalSourceItemManager *m_sources;
    ORVExternalTree *m_tree;
    ORVPathChangeBatcher m_batcher;
    QStringList m_currentWatchingPaths;
    QHash<QString, SCEvents *> m_streams;
    QSet<QString> m_accessingPaths;
};
