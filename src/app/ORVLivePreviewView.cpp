#include "app/ORVLivePreviewView.h"

#include "app/ORVPreviewWebPage.h"
#include "core/ORVAppPaths.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineSettings>

namespace {

QString previewScriptSource()
{
    QFile f(ORVAppPaths::previewAssetFullPath() + QStringLiteral("/orvojs/orvo-preview.js"));
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

// Closes each block of the body in the page ("<!--orvo-block:N-->", N
// counting the blocks sent together), so that the page script finds the
// blocks again without comparing their markup.
QString blockMark(qsizetype number) { return QStringLiteral("<!--orvo-block:%1-->").arg(number); }

QUrl folderUrl(const QString &folder)
{
    QString path = folder;
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    return QUrl::fromLocalFile(path);
}

} // namespace

ORVLivePreviewView::ORVLivePreviewView(QWidget *parent) : QWebEngineView(parent)
{
    m_clock.start();
    m_page = new ORVPreviewWebPage(this);
    setPage(m_page);
    QWebEngineSettings *s = m_page->settings();
    s->setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, true);
    s->setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, true); // PlantUML's server
    s->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, false);
    s->setAttribute(QWebEngineSettings::ErrorPageEnabled, false);

    QWebEngineScript script;
    script.setName(QStringLiteral("orvo-preview"));
    script.setSourceCode(previewScriptSource());
    script.setInjectionPoint(QWebEngineScript::DocumentCreation);
    script.setWorldId(QWebEngineScript::MainWorld);
    script.setRunsOnSubFrames(false);
    m_page->scripts().insert(script);

    m_baseUrl = folderUrl(ORVAppPaths::previewAssetFullPath());
    connect(&m_renderer, &ORVPreviewRenderer::pageReady, this, &ORVLivePreviewView::pageReady);
    connect(m_page, &QWebEnginePage::loadFinished, this, &ORVLivePreviewView::shellLoaded);
}

ORVLivePreviewView::~ORVLivePreviewView() = default;

void ORVLivePreviewView::setBaseFolder(const QString &folder)
{
    const QUrl url = folderUrl(folder.isEmpty() ? ORVAppPaths::previewAssetFullPath() : folder);
    if (url == m_baseUrl)
        return;
    m_baseUrl = url;
    m_loadedShell.clear(); // the next page loads its shell against the new base
}

void ORVLivePreviewView::updatePreview(const ORVPreviewRequest &request)
{
    const quint64 generation = m_renderer.requestRender(request);
    m_requested = generation;
    m_requestTimes.insert(generation, m_clock.elapsed());
}

bool ORVLivePreviewView::isIdle() const
{
    return !m_renderer.isRendering() && !m_renderer.hasPendingRequest() && !m_shellLoading && !m_pushing &&
           !m_waiting && m_current.generation == m_requested;
}

void ORVLivePreviewView::pageReady(const ORVPreviewPage &page)
{
    if (m_waiting && m_waiting->generation > page.generation)
        return;
    m_waiting = page;
    if (m_shellLoading || m_pushing)
        return; // taken up when the running step ends
    if (page.shell != m_loadedShell)
        loadShell(page);
    else
        pushBody();
}

void ORVLivePreviewView::loadShell(const ORVPreviewPage &page)
{
    m_shellLoading = true;
    ++m_shellLoads;
    m_loadedShell = page.shell;
    // Keep the reader's place across the new shell.
    m_page->runJavaScript(QStringLiteral("window.orvoPreview ? orvoPreview.scrollPosition() : 0"),
                          [this, shell = page.shell](const QVariant &y) {
                              m_savedScroll = y.toDouble();
                              m_page->setHtml(shell, m_baseUrl);
                          });
}

void ORVLivePreviewView::shellLoaded(bool)
{
    if (!m_shellLoading)
        return;
    m_shellLoading = false;
    m_current = ORVPreviewPage{};
    m_blocksInPage = false;
    pushBody();
}

void ORVLivePreviewView::pushBody()
{
    if (!m_waiting)
        return;
    if (m_waiting->shell != m_loadedShell) {
        loadShell(*m_waiting);
        return;
    }
    const ORVPreviewPage page = *m_waiting;
    m_waiting.reset();
    m_pushing = true;
    const bool restore = m_current.generation == 0 && m_savedScroll > 0;

    // Blocks the page shows already, at the start and at the end.
    const QStringList &was = m_current.blocks;
    const QStringList &now = page.blocks;
    bool partial = m_blocksInPage && m_current.generation != 0;
    qsizetype head = 0;
    qsizetype tail = 0;
    if (partial) {
        while (head < was.size() && head < now.size() && was.at(head) == now.at(head))
            ++head;
        while (tail < was.size() - head && tail < now.size() - head &&
               was.at(was.size() - 1 - tail) == now.at(now.size() - 1 - tail))
            ++tail;
        // New blocks go into the page parsed on their own: one that opens or
        // closes an element of its neighbours must be parsed with them.
        for (qsizetype i = head; partial && i < now.size() - tail; ++i)
            partial = ORVPreviewPage::isBalanced(now.at(i));
    }
    const auto marked = [](const QStringList &blocks, qsizetype from, qsizetype to) {
        QString html;
        qsizetype size = 0;
        for (qsizetype i = from; i < to; ++i)
            size += blocks.at(i).size() + 24;
        html.reserve(size);
        for (qsizetype i = from; i < to; ++i) {
            html += blocks.at(i);
            html += blockMark(i - from);
        }
        return QString::fromUtf8(QJsonDocument(QJsonArray{html}).toJson(QJsonDocument::Compact));
    };
    const QString whole = QStringLiteral("orvoPreview.replaceAll(%1[0], %2)").arg(marked(now, 0, now.size())).arg(now.size());
    // The call's answer, with the reader's place put back first when the shell is new.
    const auto withScroll = [restore, y = m_savedScroll](const QString &call) {
        return restore ? QStringLiteral("(function(){var r=%1;orvoPreview.restoreScroll(%2);return r;})()").arg(call).arg(y)
                       : call;
    };

    const auto finish = [this, page](bool blocksInPage) {
        m_pushing = false;
        m_blocksInPage = blocksInPage;
        m_current = page;
        if (const auto t = m_requestTimes.find(page.generation); t != m_requestTimes.end())
            m_lastUpdateMs = double(m_clock.elapsed() - t.value());
        // Requests up to this one are answered.
        for (auto it = m_requestTimes.begin(); it != m_requestTimes.end();)
            it = it.key() <= page.generation ? m_requestTimes.erase(it) : std::next(it);
        emit previewUpdated(page.generation);
        if (m_waiting)
            pushBody();
    };
    const auto pushWhole = [this, whole = withScroll(whole), finish] {
        m_page->runJavaScript(whole, [finish](const QVariant &r) { finish(r.toInt() >= 0); });
    };
    if (!partial) {
        pushWhole();
        return;
    }
    const QString js = QStringLiteral("orvoPreview.updateBlocks(%1, %2, %3, %4[0], %5)")
                           .arg(head)
                           .arg(tail)
                           .arg(was.size())
                           .arg(marked(now, head, now.size() - tail))
                           .arg(now.size() - head - tail);
    m_page->runJavaScript(withScroll(js), [this, finish, pushWhole](const QVariant &r) {
        if (r.toInt() < 0) {
            pushWhole(); // the page lost track of its blocks
        } else {
            ++m_partialUpdates;
            finish(true);
        }
    });
}

void ORVLivePreviewView::syncScroll(int index, double fraction, double documentFraction, int headingCount)
{
    if (m_shellLoading)
        return;
    m_page->runJavaScript(QStringLiteral("window.orvoPreview && orvoPreview.syncTo(%1, %2, %3, %4)")
                              .arg(index)
                              .arg(fraction, 0, 'f', 6)
                              .arg(documentFraction, 0, 'f', 6)
                              .arg(headingCount));
}
