// The library window's state record ("lib") and its restore.

#include "app/ORVEditorArea.h"
#include "app/ORVLibraryListModel.h"
#include "app/ORVLibraryTreeModel.h"
#include "app/ORVLibraryWindow.h"
#include "app/window_state.h"
#include "core/AppDelegate.h"
#include "library/ORVDBCat.h"
#include "library/ORVLibraryFolder.h"
#include "library/ORVLibraryListController.h"

#include <QFileInfo>
#include <QListView>
#include <QScrollBar>
#include <QSplitter>
#include <QStackedWidget>
#include <QTreeView>

QVariantMap ORVLibraryWindow::theWindowStates() const
{
    QVariantMap state;
    state.insert(QStringLiteral("type"), QStringLiteral("lib"));
    state.insert(QStringLiteral("paneState"), int(m_paneState));
    const QList<int> sizes = m_treePane->isVisible() && m_listPane->isVisible() ? m_splitter->sizes()
                             : m_savedPaneWidths.size() == 3                    ? m_savedPaneWidths
                                                                                : m_splitter->sizes();
    state.insert(QStringLiteral("pw1"), sizes.value(0));
    state.insert(QStringLiteral("pw2"), sizes.value(1));
    state.insert(QStringLiteral("listRect"),
                 rectStringWithRect(QRect(0, m_listView->verticalScrollBar()->value(), m_listView->viewport()->width(),
                                          m_listView->viewport()->height())));
    QVariantMap expanded;
    std::function<void(const QModelIndex &)> walk = [&](const QModelIndex &parent) {
        for (int r = 0; r < m_treeModel->rowCount(parent); ++r) {
            const QModelIndex i = m_treeModel->index(r, 0, parent);
            if (m_treeView->isExpanded(i))
                expanded.insert(QString::number(i.data(ORVLibraryTreeModel::UUIDRole).toLongLong()), true);
            walk(i);
        }
    };
    if (m_treeReady)
        walk({});
    else
        expanded = m_pendingState.value(QStringLiteral("categoriesState")).toMap();
    state.insert(QStringLiteral("categoriesState"), expanded);
    const ORVCatTreeItemPtr selected = selectedTreeItem();
    state.insert(QStringLiteral("selectedCategoryUUID"), selected ? selected->uuid : qint64(15));
    if (selected && selected->catType == ORVCatType::Tag)
        state.insert(QStringLiteral("selectedIsTag"), true);

    QVariantList tabs;
    for (ORVEditorTab *tab : m_editorArea->editorTabs()) {
        if (!tab->document()->isLibraryDocument())
            continue;
        tabs << QVariantMap{{QStringLiteral("artUUID"), tab->document()->libraryDocumentUUID()},
                            {QStringLiteral("editorAreaState"), tab->editorAreaState()}};
    }
    state.insert(QStringLiteral("openedTabs"), tabs);
    const ORVEditorTab *current = m_editorArea->currentEditorTab();
    state.insert(QStringLiteral("currentDocUUID"),
                 current && current->document()->isLibraryDocument() ? current->document()->libraryDocumentUUID()
                                                                     : qint64(0));
    state.insert(QStringLiteral("winRect"), rectStringWithRect(geometry()));
    state.insert(QStringLiteral("isShowInfoSide"), false);
    state.insert(QStringLiteral("libURL"), m_libraryPath);
    return state;
}

void ORVLibraryWindow::setupWindowStates(const QVariantMap &state, bool restoreDocs)
{
    m_pendingState = state;
    m_pendingRestoreDocs = restoreDocs;
    if (m_treeReady)
        applyPendingState();
}

void ORVLibraryWindow::applyPendingState()
{
    const QVariantMap state = m_pendingState;
    const bool restoreDocs = m_pendingRestoreDocs;
    m_pendingState.clear();
    if (state.isEmpty())
        return;

    bool ok = false;
    const int pane = state.value(QStringLiteral("paneState")).toInt(&ok);
    const int pw1 = state.value(QStringLiteral("pw1")).toInt();
    const int pw2 = state.value(QStringLiteral("pw2")).toInt();
    if (pw1 > 0 && pw2 > 0) {
        const int rest = std::max(200, width() - pw1 - pw2);
        m_splitter->setSizes({pw1, pw2, rest});
        m_savedPaneWidths = m_splitter->sizes();
    }
    setPaneState(ok && pane >= 0 && pane <= 2 ? ORVLibraryPaneState(pane) : ORVLibraryPaneState::TreeListEditor);

    const QVariantMap expanded = state.value(QStringLiteral("categoriesState")).toMap();
    std::function<void(const QModelIndex &)> expand = [&](const QModelIndex &parent) {
        for (int r = 0; r < m_treeModel->rowCount(parent); ++r) {
            const QModelIndex i = m_treeModel->index(r, 0, parent);
            if (expanded.contains(QString::number(i.data(ORVLibraryTreeModel::UUIDRole).toLongLong())))
                m_treeView->expand(i);
            expand(i);
        }
    };
    expand({});

    const qint64 selected = state.value(QStringLiteral("selectedCategoryUUID"), 15).toLongLong();
    if (!selectTreeEntry(selected, state.value(QStringLiteral("selectedIsTag")).toBool()))
        selectTreeEntry(15);
    if (const auto listRect = rectWithRectString(state.value(QStringLiteral("listRect")).toString()))
        m_listView->verticalScrollBar()->setValue(listRect->y());

    if (!restoreDocs)
        return;
    const qint64 currentUUID = state.value(QStringLiteral("currentDocUUID")).toLongLong();
    ORVEditorTab *current = nullptr;
    for (const QVariant &v : state.value(QStringLiteral("openedTabs")).toList()) {
        const QVariantMap tab = v.toMap();
        const qint64 uuid = tab.value(QStringLiteral("artUUID")).toLongLong();
        const QString path = documentPath(uuid);
        if (uuid <= 0 || !QFileInfo::exists(path))
            continue;
        ORVEditorTab *opened = m_editorArea->openDocument(path, false);
        opened->setEditorAreaState(tab.value(QStringLiteral("editorAreaState")).toMap());
        if (uuid == currentUUID || !current)
            current = opened;
    }
    if (currentUUID > 0 && !m_editorArea->tabForPath(documentPath(currentUUID)) &&
        QFileInfo::exists(documentPath(currentUUID)))
        current = m_editorArea->openDocument(documentPath(currentUUID), false);
    if (current) {
        m_editorArea->setCurrentWidget(current);
        m_editorStack->setCurrentIndex(1);
        current->restoreTextViewState();
    }
}
