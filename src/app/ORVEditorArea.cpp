#include "app/ORVEditorArea.h"

#include "app/ORVMDTextView.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QTabBar>

ORVEditorArea::ORVEditorArea(AppDelegate *app, QWidget *parent) : QTabWidget(parent), m_app(app)
{
    setDocumentMode(true);
    setTabsClosable(true);
    setMovable(true);
    setElideMode(Qt::ElideRight);
    tabBar()->setExpanding(false);
    connect(this, &QTabWidget::tabCloseRequested, this, [this](int index) {
        if (auto *tab = qobject_cast<ORVEditorTab *>(widget(index)))
            closeEditorTab(tab);
    });
    connect(this, &QTabWidget::currentChanged, this, [this] { emit currentEditorTabChanged(currentEditorTab()); });
}

ORVEditorTab *ORVEditorArea::tabForPath(const QString &path) const
{
    if (path.isEmpty())
        return nullptr;
    const QString wanted = QFileInfo(path).absoluteFilePath();
    for (ORVEditorTab *tab : editorTabs())
        if (!tab->filePath().isEmpty() && QFileInfo(tab->filePath()).absoluteFilePath() == wanted)
            return tab;
    return nullptr;
}

ORVEditorTab *ORVEditorArea::openDocument(const QString &path, bool makeCurrent)
{
    if (path.isEmpty())
        return nullptr;
    ORVEditorTab *tab = tabForPath(path);
    if (!tab) {
        tab = new ORVEditorTab(m_app, QFileInfo(path).absoluteFilePath(), this);
        const int at = count() == 0 ? 0 : currentIndex() + 1;
        insertTab(at, tab, tab->displayTitle());
        connect(tab, &ORVEditorTab::tabStateChanged, this, [this, tab] { refreshTabLabel(tab); });
        connect(tab, &ORVEditorTab::textChanged, this, [this, tab] { emit editorTabTextChanged(tab); });
        connect(tab, &ORVEditorTab::documentSaved, this, [this, tab] { emit editorTabSaved(tab); });
        connect(tab, &ORVEditorTab::documentLinkActivated, this, &ORVEditorArea::editorTabLinkActivated);
        connect(tab, &ORVEditorTab::applicationLinkActivated, this, &ORVEditorArea::applicationLinkActivated);
        tab->restoreTextViewState();
        refreshTabLabel(tab);
    }
    if (makeCurrent) {
        setCurrentWidget(tab);
        tab->textView()->setFocus();
    }
    return tab;
}

ORVEditorTab *ORVEditorArea::currentEditorTab() const { return qobject_cast<ORVEditorTab *>(currentWidget()); }

QList<ORVEditorTab *> ORVEditorArea::editorTabs() const
{
    QList<ORVEditorTab *> tabs;
    for (int i = 0; i < count(); ++i)
        if (auto *tab = qobject_cast<ORVEditorTab *>(widget(i)))
            tabs << tab;
    return tabs;
}

void ORVEditorArea::refreshTabLabel(ORVEditorTab *tab)
{
    const int index = indexOf(tab);
    if (index < 0)
        return;
    QString label = tab->displayTitle();
    if (tab->isFileMissing())
        label = tr("%1 (deleted)").arg(label);
    else if (tab->isModified())
        label = QStringLiteral("• ") + label;
    setTabText(index, label);
    setTabToolTip(index, tab->filePath());
}

bool ORVEditorArea::closeEditorTab(ORVEditorTab *tab, bool ask)
{
    if (!tab)
        return true;
    if (ask && tab->isModified()) {
        setCurrentWidget(tab);
        const auto answer = QMessageBox::question(
            this, tr("Save changes?"), tr("“%1” has changes that are not saved.").arg(tab->displayTitle()),
            QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
        if (answer == QMessageBox::Cancel)
            return false;
        if (answer == QMessageBox::Save) {
            QString error;
            if (!tab->save(&error)) {
                QMessageBox::warning(this, tr("Error:"), error);
                return false;
            }
        }
    }
    tab->storeTextViewState();
    removeTab(indexOf(tab));
    tab->deleteLater();
    if (count() == 0)
        emit becameEmpty();
    return true;
}

void ORVEditorArea::closeTabsOfPaths(const QStringList &paths)
{
    for (const QString &path : paths) {
        ORVEditorTab *tab = tabForPath(path);
        if (!tab)
            continue;
        if (tab->isModified() && QFileInfo::exists(path))
            tab->save();
        closeEditorTab(tab, false);
    }
}

bool ORVEditorArea::saveAllDocuments(QStringList *errors)
{
    bool ok = true;
    for (ORVEditorTab *tab : editorTabs()) {
        if (!tab->isModified())
            continue;
        QString error;
        if (!tab->save(&error)) {
            ok = false;
            if (errors)
                *errors << QStringLiteral("%1: %2").arg(tab->displayTitle(), error);
        }
    }
    return ok;
}

bool ORVEditorArea::hasUnsavedDocuments() const
{
    for (ORVEditorTab *tab : editorTabs())
        if (tab->isModified())
            return true;
    return false;
}

void ORVEditorArea::setPaneModeOfAllTabs(ORVEditorPaneMode mode)
{
    for (ORVEditorTab *tab : editorTabs())
        tab->setPaneMode(mode);
}

void ORVEditorArea::storeAllTextViewStates()
{
    for (ORVEditorTab *tab : editorTabs())
        tab->storeTextViewState();
}

bool ORVEditorArea::saveAllDocumentsTellingUser(bool quiet, QStringList *errors)
{
    QStringList failures;
    const bool ok = saveAllDocuments(&failures);
    if (errors)
        *errors << failures;
    if (!ok && !quiet)
        QMessageBox::warning(window(), tr("Error:"),
                             tr("These documents could not be saved:\n%1").arg(failures.join(QLatin1Char('\n'))));
    return ok;
}

void ORVEditorArea::checkFilesOnDisk()
{
    for (ORVEditorTab *tab : editorTabs())
        tab->checkFileOnDisk();
}
