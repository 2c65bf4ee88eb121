#include "library/ORVDirWatchingController.h"

#include "core/ORVNotificationCenter.h"
#include "library/ORVExternalSourceItemManager.h"
#include "library/ORVExternalTree.h"
#include "platform/SCEvents.h"

ORVDirWatchingController::ORVDirWatchingController(ORVExternalSourceItemManager *sources, ORVExternalTree *tree,
                                                   QObject *parent)
    : QObject(parent), m_sources(sources), m_tree(tree)
{
    connect(&m_batcher, &ORVPathChangeBatcher::batchReady, this, &ORVDirWatchingController::dispatchBatch);
    connect(m_sources, &ORVExternalSourceItemManager::itemsChanged, this,
            &ORVDirWatchingController::setupEventListernerPaths);
    setupEventListernerPaths();
}

ORVDirWatchingController::~ORVDirWatchingController()
{
    for (auto it = m_streams.cbegin(); it != m_streams.cend(); ++it) {
        stopAccessingSecurityScopedResourceByPath(it.key());
        delete it.value();
    }
}

void ORVDirWatchingController::updateBookmarkURLs()
{
    m_currentWatchingPaths.clear();
    for (const auto &item : m_sources->items()) {
        QString path = item->resolveBookmark();
        if (path.isEmpty())
            path = item->realURL();
        if (path.isEmpty() || m_currentWatchingPaths.contains(path))
            continue;
        m_currentWatchingPaths.append(path);
    }
}

bool ORVDirWatchingController::startAccessingSecurityScopedResourceByPath(const QString &path)
{
    m_accessingPaths.insert(path);
    return true;
}

void ORVDirWatchingController::stopAccessingSecurityScopedResourceByPath(const QString &path)
{
    m_accessingPaths.remove(path);
}

void ORVDirWatchingController::setupEventListernerPaths()
{
    updateBookmarkURLs();
    for (const QString &path : std::as_const(m_currentWatchingPaths)) {
        if (m_streams.contains(path))
            continue;
        startAccessingSecurityScopedResourceByPath(path);
        auto *stream = new SCEvents(this);
        connect(stream, &SCEvents::eventOccurred, this, &ORVDirWatchingController::pathWatcherEventOccurred);
        connect(stream, &SCEvents::watchError, this, &ORVDirWatchingController::watchError);
        QString error;
        if (!stream->startWatchingPath(path, &error)) {
            emit watchError(error);
            delete stream;
            continue;
        }
        m_streams.insert(path, stream);
    }
    const QStringList watched = m_streams.keys();
    for (const QString &path : watched) {
        if (m_currentWatchingPaths.contains(path))
            continue;
        delete m_streams.take(path);
        stopAccessingSecurityScopedResourceByPath(path);
    }
}

bool ORVDirWatchingController::isBatchedEvent(const SCEvent &event)
{
    const std::uint32_t f = event.eventFlags;
    return SCEvent::isEditFileEvent(f) || SCEvent::isRenameORDeleteFileEvent(f) || SCEvent::isNewFileEvent(f) ||
           SCEvent::isDirChangedEvent(f);
}

void ORVDirWatchingController::pathWatcherEventOccurred(const SCEvent &event)
{
    emit eventOccurred(event);
    if (isBatchedEvent(event))
        m_batcher.addPath(event.eventPath);
}

void ORVDirWatchingController::dispatchBatch(const QStringList &paths)
{
    const bool treeChanged = m_tree && m_tree->updateWithChangedPaths(paths);
    ORVNotificationCenter::defaultCenter()->postNotification(
        kORVExternalTreeViewControllerTreeControllerRearrangeObjectsNotification, this,
        QVariantMap{{QStringLiteral("paths"), paths}, {QStringLiteral("treeChanged"), treeChanged}});
    emit batchDispatched(paths);
}
