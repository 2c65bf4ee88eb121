#include "app/ORVEditorWindow.h"

#include "app/ORVFindBar.h"
#include "app/ORVLivePreviewView.h"
#include "app/ORVMDTextView.h"
#include "app/ORVPreviewWebPage.h"
#include "app/ORVScrollSync.h"
#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "export/ORVHTMLExport.h"
#include "highlight/HGMarkdownHighlighter.h"

#include <QAction>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QResizeEvent>
#include <QSplitter>
#include <QStatusBar>
#include <QVBoxLayout>

namespace {

// Scroll sync follows the editor at most this often: scrolling sends many
// events, and each one is a call into the page.
constexpr int kScrollSyncMilliseconds = 16;

} // namespace

ORVEditorWindow::ORVEditorWindow(AppDelegate *app, const QString &path, QWidget *parent)
    : QMainWindow(parent), m_app(app), m_document(std::make_unique<ORVDocument>(app))
{
    QString readError;
    if (!path.isEmpty() && !m_document->readFromURL(path, &readError))
        m_document->setFileURL(QString());

    auto *editorPane = new QWidget(this);
    m_message = new QLabel(editorPane);
    m_message->setWordWrap(true);
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_message->setContentsMargins(10, 6, 10, 6);
    m_message->setStyleSheet(QStringLiteral("background:#fff4e5;color:#663c00;"));
    m_message->hide();
    m_view = new ORVMDTextView(editorPane);
    m_findBar = new ORVFindBar(m_view, editorPane);
    m_findBar->hide();
    auto *column = new QVBoxLayout(editorPane);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_message);
    column->addWidget(m_view, 1);
    column->addWidget(m_findBar);

    m_preview = new ORVLivePreviewView(this);
    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->addWidget(editorPane);
    m_splitter->addWidget(m_preview);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 1);
    setCentralWidget(m_splitter);

    m_counts = new QLabel(this);
    statusBar()->addPermanentWidget(m_counts);

    connect(m_view, &ORVMDTextView::themeDidFail, this, [this](const HGEditorThemes::LoadedTheme &theme) {
        QStringList lines;
        for (const HGStyleSheetError &e : theme.errors)
            lines << (e.line > 0 ? tr("line %1: %2").arg(e.line).arg(e.message) : e.message);
        showMessage(tr("The editor theme \"%1\" has faults%2:\n%3")
                        .arg(theme.name, theme.fellBackToDefault ? tr(" (the built-in theme stands in)") : QString(),
                             lines.join(QLatin1Char('\n'))));
    });
    // The theme was applied while the view was made, before the connection.
    if (!m_view->currentTheme().errors.isEmpty())
        emit m_view->themeDidFail(m_view->currentTheme());

    m_view->bindDocument(m_document.get());
    if (!readError.isEmpty())
        showMessage(tr("Cannot open %1: %2").arg(path, readError));

    connect(m_view, &ORVMDTextView::statisticsChanged, this, [this](const ORVTextStatistics &s) {
        m_counts->setText(tr("%n word(s)", nullptr, int(s.words)) + QStringLiteral("   ") +
                          tr("%n character(s)", nullptr, int(s.charactersWithoutSpaces)));
    });
    emit m_view->statisticsChanged(m_view->statistics());
    connect(m_view, &ORVMDTextView::markdownTextChanged, this, &ORVEditorWindow::schedulePreview);
    connect(m_view, &ORVMDTextView::findRequested, m_findBar, &ORVFindBar::showWithNeedle);
    connect(m_view, &ORVMDTextView::linkActivated, this, [](const QString &address) {
        QDesktopServices::openUrl(QUrl::fromUserInput(address));
    });
    connect(m_preview->previewPage(), &ORVPreviewWebPage::linkToApplicationActivated, this, [this](const QUrl &url) {
        statusBar()->showMessage(tr("Opening %1").arg(url.toString()), 4000);
    });
    connect(m_preview->previewPage(), &ORVPreviewWebPage::documentLinkActivated, this, [this](const QUrl &url) {
        auto *w = new ORVEditorWindow(m_app, url.toLocalFile());
        w->setAttribute(Qt::WA_DeleteOnClose);
        w->resize(size());
        w->show();
    });

    m_scrollSyncTimer.setSingleShot(true);
    m_scrollSyncTimer.setInterval(kScrollSyncMilliseconds);
    connect(&m_scrollSyncTimer, &QTimer::timeout, this, &ORVEditorWindow::syncPreviewScroll);
    connect(m_view, &ORVMDTextView::visibleTopChanged, this, [this] {
        if (MyPreferences::sharedInstance()->isLivePreviewSync() && !m_scrollSyncTimer.isActive())
            m_scrollSyncTimer.start();
    });
    connect(m_preview, &ORVLivePreviewView::previewUpdated, this, [this] {
        if (MyPreferences::sharedInstance()->isLivePreviewSync())
            syncPreviewScroll();
    });

    buildMenus();
    updateTitle();
    resize(1280, 820);
    schedulePreview();
}

ORVEditorWindow::~ORVEditorWindow()
{
    m_view->bindDocument(nullptr);
}

QString ORVEditorWindow::messageText() const { return m_message->isHidden() ? QString() : m_message->text(); }

void ORVEditorWindow::showMessage(const QString &text)
{
    // Messages gather (a theme fault and a read error may both stand).
    const QString shown = messageText();
    m_message->setText(shown.isEmpty() ? text : shown + QStringLiteral("\n\n") + text);
    m_message->setVisible(!m_message->text().isEmpty());
}

void ORVEditorWindow::updateTitle()
{
    const QString name = m_document->fileURL().isEmpty() ? tr("Untitled") : QFileInfo(m_document->fileURL()).fileName();
    setWindowTitle(QStringLiteral("%1[*] — Orvo").arg(name));
    setWindowModified(m_document->hasUnautosavedChanges());
}

void ORVEditorWindow::schedulePreview()
{
    ORVPreviewRequest request;
    request.markdown = m_view->markdownText();
    request.title = m_document->documentTitleRemoveMark();
    request.document = ORVPageDocumentContext::fromDocument(
        m_document.get(), m_document->fileURL().isEmpty() ? QString() : QFileInfo(m_document->fileURL()).absolutePath());
    request.preferences = ORVPagePreferences::fromPreferences();
    m_preview->setBaseFolder(request.document.mediaFolderPath);
    m_preview->updatePreview(request);
    setWindowModified(m_document->hasUnautosavedChanges());
}

void ORVEditorWindow::syncPreviewScroll()
{
    const ORVScrollSyncTarget t = ORVScrollSyncTarget::forEditorPosition(
        m_view->highlighter()->docOutline(), m_view->topVisibleBlockNumber(), m_view->topVisibleBlockFraction(),
        m_view->document()->blockCount());
    m_preview->syncScroll(t.sectionIndex, t.fraction, t.documentFraction, t.headingCount);
}

bool ORVEditorWindow::saveDocument()
{
    QString path = m_document->fileURL();
    if (path.isEmpty()) {
        path = QFileDialog::getSaveFileName(this, tr("Save"), m_document->theUnLibrarayDocuementDefaultTitle() +
                                                                  QStringLiteral(".md"),
                                            tr("Markdown (*.md *.markdown);;All files (*)"));
        if (path.isEmpty())
            return false;
    }
    QString error;
    if (!m_document->saveToURL(path, &error)) {
        QMessageBox::warning(this, tr("Error:"), error);
        return false;
    }
    updateTitle();
    return true;
}

bool ORVEditorWindow::exportHTMLTo(const QString &path)
{
    const QString fallback = m_document->fileURL().isEmpty() ? QString() : QFileInfo(m_document->fileURL()).absolutePath();
    QString error;
    if (!ORVHTMLExport::writeHTML(ORVHTMLExport::exportPageForDocument(m_document.get(), fallback), path, &error)) {
        QMessageBox::warning(this, tr("Error:"), error);
        return false;
    }
    return true;
}

void ORVEditorWindow::buildMenus()
{
    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addAction(tr("&Open…"), QKeySequence::Open, this, [this] {
        const QString path = QFileDialog::getOpenFileName(this, tr("Open"), QString(),
                                                          tr("Markdown (*.md *.markdown *.txt);;All files (*)"));
        if (path.isEmpty())
            return;
        auto *w = new ORVEditorWindow(m_app, path);
        w->setAttribute(Qt::WA_DeleteOnClose);
        w->show();
    });
    file->addAction(tr("&Save"), QKeySequence::Save, this, [this] { saveDocument(); });
    file->addAction(tr("Export &HTML…"), this, [this] {
        const QString path = QFileDialog::getSaveFileName(this, tr("Export HTML"),
                                                          m_document->theUnLibrarayDocuementDefaultTitle() +
                                                              QStringLiteral(".html"),
                                                          tr("HTML (*.html)"));
        if (!path.isEmpty())
            exportHTMLTo(path);
    });
    file->addSeparator();
    file->addAction(tr("&Close"), QKeySequence::Close, this, &QWidget::close);

    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    edit->addAction(tr("&Undo"), QKeySequence::Undo, m_view, &QPlainTextEdit::undo);
    edit->addAction(tr("&Redo"), QKeySequence::Redo, m_view, &QPlainTextEdit::redo);
    edit->addSeparator();
    if (QAction *find = m_view->actionNamed(QStringLiteral("find")))
        edit->addAction(find);
    edit->addAction(tr("Find Next"), QKeySequence::FindNext, this, [this] { m_findBar->findNext(false); });
    edit->addAction(tr("Find Previous"), QKeySequence::FindPrevious, this, [this] { m_findBar->findNext(true); });

    QMenu *format = menuBar()->addMenu(tr("F&ormat"));
    QMenu *insert = menuBar()->addMenu(tr("&Insert"));
    for (QAction *a : m_view->editingActions()) {
        if (a->objectName() == QLatin1String("find"))
            continue;
        (a->objectName().startsWith(QLatin1String("insert")) ? insert : format)->addAction(a);
    }

    QMenu *view = menuBar()->addMenu(tr("&View"));
    QAction *showPreview = view->addAction(tr("&Preview"));
    showPreview->setCheckable(true);
    showPreview->setChecked(true);
    showPreview->setShortcut(QKeySequence(tr("Ctrl+Alt+P")));
    connect(showPreview, &QAction::toggled, m_preview, &QWidget::setVisible);
}

void ORVEditorWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    // The splitter shares its first width in proportion to the panes' size
    // hints, and the web view hints no size at all, which left the preview a
    // sliver. The first time the splitter has a real width the panes share
    // it evenly; the user's own division is kept after that.
    if (m_splitSet || m_splitter->width() < 100)
        return;
    const int total = m_splitter->width() - m_splitter->handleWidth();
    m_splitter->setSizes({total / 2, total - total / 2});
    m_splitSet = true;
}

void ORVEditorWindow::closeEvent(QCloseEvent *event)
{
    if (m_document->hasUnautosavedChanges()) {
        const auto answer = QMessageBox::question(this, tr("Save changes?"),
                                                  tr("The document has changes that are not saved."),
                                                  QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
        if (answer == QMessageBox::Cancel || (answer == QMessageBox::Save && !saveDocument())) {
            event->ignore();
            return;
        }
    }
    event->accept();
}
