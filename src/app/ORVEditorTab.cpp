#include "app/ORVEditorTab.h"

#include "app/ORVFindBar.h"
#include "app/ORVLivePreviewView.h"
#include "app/ORVMDTextView.h"
#include "app/ORVPreviewWebPage.h"
#include "app/ORVScrollSync.h"
#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "highlight/HGMarkdownHighlighter.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QResizeEvent>
#include <QScrollBar>
#include <QSplitter>
#include <QTextBlock>
#include <QVBoxLayout>

namespace {

// The preview follows the text this long after the last keystroke: rendering
// on every key would only be overtaken by the next one.
constexpr int kPreviewDelayMs = 120;
// Scroll sync follows the editor at most this often.
constexpr int kScrollSyncMs = 16;
// Watchers report a save as several events (write, rename, attributes);
// the file is looked at once they have settled.
constexpr int kDiskSettleMs = 150;

QByteArray hashOfFile(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    QCryptographicHash h(QCryptographicHash::Sha1);
    h.addData(&f);
    return h.result();
}

} // namespace

ORVEditorTab::ORVEditorTab(AppDelegate *app, const QString &path, QWidget *parent, QString *readError)
    : QWidget(parent), m_app(app), m_document(std::make_unique<ORVDocument>(app))
{
    QString error;
    if (!path.isEmpty() && !m_document->readFromURL(path, &error))
        m_document->setFileURL(QString());
    if (readError)
        *readError = error;

    auto *editorPane = new QWidget(this);
    m_messageBar = new QWidget(editorPane);
    m_messageBar->setObjectName(QStringLiteral("orvMessageBar"));
    m_messageBar->setAutoFillBackground(true);
    QPalette warn = m_messageBar->palette();
    warn.setColor(QPalette::Window, QColor(0xff, 0xf4, 0xe5));
    warn.setColor(QPalette::WindowText, QColor(0x66, 0x3c, 0x00));
    m_messageBar->setPalette(warn);
    m_message = new QLabel(m_messageBar);
    m_message->setWordWrap(true);
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_reloadButton = new QPushButton(tr("Reload from Disk"), m_messageBar);
    m_keepButton = new QPushButton(tr("Keep My Text"), m_messageBar);
    auto *bar = new QHBoxLayout(m_messageBar);
    bar->setContentsMargins(10, 6, 10, 6);
    bar->addWidget(m_message, 1);
    bar->addWidget(m_reloadButton);
    bar->addWidget(m_keepButton);
    m_messageBar->hide();

    m_view = new ORVMDTextView(editorPane);
    m_view->setFrameShape(QFrame::NoFrame);
    m_findBar = new ORVFindBar(m_view, editorPane);
    m_findBar->hide();
    auto *column = new QVBoxLayout(editorPane);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_messageBar);
    column->addWidget(m_view, 1);
    column->addWidget(m_findBar);

    m_previewHolder = new QWidget(this);
    auto *previewColumn = new QVBoxLayout(m_previewHolder);
    previewColumn->setContentsMargins(0, 0, 0, 0);

    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->addWidget(editorPane);
    m_splitter->addWidget(m_previewHolder);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 1);
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(m_splitter);

    m_view->bindDocument(m_document.get());
    if (!error.isEmpty())
        showMessage(tr("Cannot open %1: %2").arg(path, error));

    m_previewTimer.setSingleShot(true);
    m_previewTimer.setInterval(kPreviewDelayMs);
    connect(&m_previewTimer, &QTimer::timeout, this, &ORVEditorTab::schedulePreview);
    m_scrollSyncTimer.setSingleShot(true);
    m_scrollSyncTimer.setInterval(kScrollSyncMs);
    connect(&m_scrollSyncTimer, &QTimer::timeout, this, &ORVEditorTab::syncPreviewScroll);

    connect(m_view, &ORVMDTextView::markdownTextChanged, this, [this] {
        if (m_preview && m_previewHolder->isVisible())
            m_previewTimer.start();
        emit textChanged();
        emit tabStateChanged();
    });
    connect(m_view, &ORVMDTextView::findRequested, m_findBar, &ORVFindBar::showWithNeedle);
    connect(m_view, &ORVMDTextView::visibleTopChanged, this, [this] {
        if (m_preview && MyPreferences::sharedInstance()->isLivePreviewSync() && !m_scrollSyncTimer.isActive())
            m_scrollSyncTimer.start();
    });
    connect(m_document.get(), &ORVDocument::documentDidSave, this, [this](bool ok, const QString &) {
        if (!ok)
            return;
        rememberDiskState();
        if (m_fileMissing) {
            m_fileMissing = false;
            hideMessage();
        }
        emit documentSaved();
        emit tabStateChanged();
    });

    m_diskCheckTimer.setSingleShot(true);
    m_diskCheckTimer.setInterval(kDiskSettleMs);
    connect(&m_diskCheckTimer, &QTimer::timeout, this, &ORVEditorTab::checkFileOnDisk);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, [this] { m_diskCheckTimer.start(); });
    // A save by replacement (ours or another editor's) removes the watched
    // file; the folder's change tells when it is back.
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] { m_diskCheckTimer.start(); });
    connect(m_reloadButton, &QPushButton::clicked, this, &ORVEditorTab::reloadFromDisk);
    connect(m_keepButton, &QPushButton::clicked, this, [this] {
        // The text here wins: the next save writes it over the other one.
        m_askingAboutDiskChange = false;
        rememberDiskState();
        m_document->setHasUnautosavedChanges(true);
        hideMessage();
        emit tabStateChanged();
    });
    rememberDiskState();

    const qint64 mode = MyPreferences::sharedInstance()->editorAreaViewState();
    setPaneMode(mode >= 0 && mode <= 2 ? ORVEditorPaneMode(mode) : ORVEditorPaneMode::EditorAndPreview);
}

ORVEditorTab::~ORVEditorTab()
{
    m_view->bindDocument(nullptr);
}

ORVLivePreviewView *ORVEditorTab::previewView() const { return m_preview; }

QString ORVEditorTab::displayTitle() const
{
    if (m_document->isLibraryDocument() || m_document->fileURL().isEmpty()) {
        const QString title = m_document->documentTitleRemoveMark().trimmed();
        return title.isEmpty() ? tr("Untitled") : title.left(60);
    }
    return QFileInfo(m_document->fileURL()).fileName();
}

QString ORVEditorTab::messageText() const { return m_messageBar->isHidden() ? QString() : m_message->text(); }

void ORVEditorTab::showMessage(const QString &text, bool withActions)
{
    m_message->setText(text);
    m_reloadButton->setVisible(withActions);
    m_keepButton->setVisible(withActions);
    m_messageBar->show();
}

void ORVEditorTab::hideMessage()
{
    m_messageBar->hide();
    m_message->clear();
}

void ORVEditorTab::ensurePreview()
{
    if (m_preview)
        return;
    // The web view is the costly part of a tab: it is made when first shown,
    // so that restoring many tabs or an editor-only layout stays quick.
    m_preview = new ORVLivePreviewView(m_previewHolder);
    m_previewHolder->layout()->addWidget(m_preview);
    connect(m_preview->previewPage(), &ORVPreviewWebPage::documentLinkActivated, this,
            [this](const QUrl &url) { emit documentLinkActivated(url.toLocalFile()); });
    connect(m_preview->previewPage(), &ORVPreviewWebPage::linkToApplicationActivated, this,
            &ORVEditorTab::applicationLinkActivated);
    connect(m_preview, &ORVLivePreviewView::previewUpdated, this, [this] {
        if (MyPreferences::sharedInstance()->isLivePreviewSync())
            syncPreviewScroll();
    });
    schedulePreview();
}

void ORVEditorTab::setPaneMode(ORVEditorPaneMode mode)
{
    m_mode = mode;
    m_splitter->widget(0)->setVisible(mode != ORVEditorPaneMode::PreviewOnly);
    m_previewHolder->setVisible(mode != ORVEditorPaneMode::EditorOnly);
    if (mode != ORVEditorPaneMode::EditorOnly) {
        ensurePreview();
        schedulePreview();
        m_splitSet = false;
        if (width() > 0)
            resizeEvent(nullptr);
    }
}

void ORVEditorTab::resizeEvent(QResizeEvent *event)
{
    if (event)
        QWidget::resizeEvent(event);
    // The first time both panes show at a real width they share it; the
    // user's own division (or a restored one) is kept after that.
    if (m_splitSet || m_mode != ORVEditorPaneMode::EditorAndPreview || m_splitter->width() < 100)
        return;
    const int total = m_splitter->width() - m_splitter->handleWidth();
    m_splitter->setSizes({total / 2, total - total / 2});
    m_splitSet = true;
}

QVariantMap ORVEditorTab::editorAreaState() const
{
    QVariantList sizes;
    for (int s : m_splitter->sizes())
        sizes << s;
    return {{QStringLiteral("mode"), int(m_mode)}, {QStringLiteral("sizes"), sizes}};
}

void ORVEditorTab::setEditorAreaState(const QVariantMap &state)
{
    bool ok = false;
    const int mode = state.value(QStringLiteral("mode")).toInt(&ok);
    if (ok && mode >= 0 && mode <= 2)
        setPaneMode(ORVEditorPaneMode(mode));
    const QVariantList sizes = state.value(QStringLiteral("sizes")).toList();
    if (sizes.size() == 2 && sizes[0].toInt() > 0 && sizes[1].toInt() > 0) {
        m_splitter->setSizes({sizes[0].toInt(), sizes[1].toInt()});
        m_splitSet = true;
    }
}

void ORVEditorTab::schedulePreview()
{
    if (!m_preview)
        return;
    ORVPreviewRequest request;
    request.markdown = m_view->markdownText();
    request.title = m_document->documentTitleRemoveMark();
    request.document = ORVPageDocumentContext::fromDocument(
        m_document.get(), m_document->fileURL().isEmpty() ? QString() : QFileInfo(m_document->fileURL()).absolutePath());
    request.preferences = ORVPagePreferences::fromPreferences();
    m_preview->setBaseFolder(request.document.mediaFolderPath);
    m_preview->updatePreview(request);
}

void ORVEditorTab::syncPreviewScroll()
{
    if (!m_preview)
        return;
    const ORVScrollSyncTarget t = ORVScrollSyncTarget::forEditorPosition(
        m_view->highlighter()->docOutline(), m_view->topVisibleBlockNumber(), m_view->topVisibleBlockFraction(),
        m_view->document()->blockCount());
    m_preview->syncScroll(t.sectionIndex, t.fraction, t.documentFraction, t.headingCount);
}

bool ORVEditorTab::save(QString *error)
{
    QString message;
    bool ok = false;
    if (m_document->fileURL().isEmpty())
        message = tr("The document has no file yet.");
    else
        ok = m_document->saveDocument(&message);
    if (error)
        *error = message;
    emit tabStateChanged();
    return ok;
}

void ORVEditorTab::storeTextViewState()
{
    if (m_document->fileURL().isEmpty())
        return;
    const QTextCursor cursor = m_view->textCursor();
    ORVTextRange selected{quint64(cursor.selectionStart()), quint64(cursor.selectionEnd() - cursor.selectionStart())};
    const QTextCursor top = m_view->cursorForPosition(QPoint(0, 0));
    ORVTextRange chars{quint64(top.position()), 0};
    const QRectF visible(0, m_view->verticalScrollBar()->value(), m_view->viewport()->width(),
                         m_view->viewport()->height());
    m_document->setTextViewStateData(ORVTextViewStateData(visible, selected, chars));
}

void ORVEditorTab::restoreTextViewState()
{
    const std::optional<ORVTextViewStateData> state = m_document->textViewStateData();
    if (!state)
        return;
    const int length = int(m_view->document()->characterCount()) - 1;
    const auto clamp = [length](quint64 v) { return int(std::min<quint64>(v, quint64(std::max(0, length)))); };
    QTextCursor cursor(m_view->document());
    cursor.setPosition(clamp(state->selectedRange.location));
    cursor.setPosition(clamp(state->selectedRange.location + state->selectedRange.length), QTextCursor::KeepAnchor);
    m_view->setTextCursor(cursor);
    // The view shows the same first line again; the cursor is then kept in
    // view if that line is far from it.
    const QTextBlock topBlock = m_view->document()->findBlock(clamp(state->charRange.location));
    if (topBlock.isValid())
        m_view->verticalScrollBar()->setValue(topBlock.blockNumber());
    m_view->ensureCursorVisible();
}

void ORVEditorTab::rememberDiskState()
{
    const QString path = m_document->fileURL();
    if (path.isEmpty())
        return;
    m_diskHash = hashOfFile(path);
    const QStringList watched = m_watcher.files() + m_watcher.directories();
    if (!watched.isEmpty())
        m_watcher.removePaths(watched);
    if (QFileInfo::exists(path))
        m_watcher.addPath(path);
    m_watcher.addPath(QFileInfo(path).absolutePath());
}

void ORVEditorTab::checkFileOnDisk()
{
    const QString path = m_document->fileURL();
    if (path.isEmpty())
        return;
    if (!QFileInfo::exists(path)) {
        if (!m_fileMissing) {
            m_fileMissing = true;
            showMessage(tr("The file was deleted from disk. Your text is kept here: save to write it back, or "
                           "close the tab to let it go."));
            // Saving must write it again, even with no edit since.
            m_document->setHasUnautosavedChanges(true);
            emit tabStateChanged();
        }
        return;
    }
    if (!m_watcher.files().contains(path))
        m_watcher.addPath(path);
    if (m_fileMissing) {
        m_fileMissing = false;
        hideMessage();
        emit tabStateChanged();
    }
    const QByteArray hash = hashOfFile(path);
    if (hash.isEmpty() || hash == m_diskHash || m_askingAboutDiskChange)
        return;
    if (!m_document->hasUnautosavedChanges()) {
        reloadFromDisk();
        return;
    }
    m_askingAboutDiskChange = true;
    showMessage(tr("Another program changed this file, and this tab has changes that are not saved."), true);
}

void ORVEditorTab::reloadFromDisk()
{
    m_askingAboutDiskChange = false;
    const QTextCursor cursor = m_view->textCursor();
    const int position = cursor.position();
    const int scroll = m_view->verticalScrollBar()->value();
    QString error;
    if (!m_document->reloadDocumentFromDisk(&error)) {
        showMessage(tr("Cannot reload %1: %2").arg(m_document->fileURL(), error));
        return;
    }
    hideMessage();
    rememberDiskState();
    QTextCursor back(m_view->document());
    back.setPosition(std::min(position, int(m_view->document()->characterCount()) - 1));
    m_view->setTextCursor(back);
    m_view->verticalScrollBar()->setValue(scroll);
    schedulePreview();
    emit textChanged();
    emit tabStateChanged();
}
