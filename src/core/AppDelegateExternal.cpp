// AppDelegate: the external folders it shares (sources, tree, watching).
#include "core/AppDelegate.h"

#include "library/ORVDirWatchingController.h"
#include "library/ORVExternalSourceItemManager.h"
#include "library/ORVExternalTree.h"

ORVExternalSourceItemManager *AppDelegate::externalSourceItemManager()
{
    if (!m_externalSourceItemManager) {
        m_externalSourceItemManager =
            std::make_unique<ORVExternalSourceItemManager>(statePath(QStringLiteral("externalSourceItems.data")));
        registerExternalSourceList(m_externalSourceItemManager.get());
    }
    return m_externalSourceItemManager.get();
}

ORVExternalTree *AppDelegate::externalTreeData()
{
    if (!m_externalTreeData) {
        m_externalTreeData = std::make_unique<ORVExternalTree>();
        updateExternalTreeDataTopItems();
        // theExternalSourceItemChanged:
        connect(externalSourceItemManager(), &ORVExternalSourceItemManager::itemsChanged, this,
                &AppDelegate::updateExternalTreeDataTopItems);
    }
    return m_externalTreeData.get();
}

void AppDelegate::updateExternalTreeDataTopItems()
{
    if (m_externalTreeData)
        m_externalTreeData->updateExternalTreeDataTopItems(externalSourceItemManager()->items());
}

void AppDelegate::setupExternalSourceWatching()
{
    if (!m_dirWatchingController)
        m_dirWatchingController = std::make_unique<ORVDirWatchingController>(externalSourceItemManager(), externalTreeData());
}
