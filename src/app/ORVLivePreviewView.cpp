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
    const QString body = QString::fromUtf8(QJsonDocument(QJsonArray{page.body}).toJson(QJsonDocument::Compact));
    QString js = QStringLiteral("orvoPreview.update(%1[0])").arg(body);
    if (restore)
        js += QStringLiteral(";orvoPreview.restoreScroll(%1)").arg(m_savedScroll);
    m_page->runJavaScript(js, [this, page](const QVariant &) {
        m_pushing = false;
        m_current = page;
        if (const auto t = m_requestTimes.find(page.generation); t != m_requestTimes.end())
            m_lastUpdateMs = double(m_clock.elapsed() - t.value());
        // Requests up to this one are answered.
        for (auto it = m_requestTimes.begin(); it != m_requestTimes.end();)
            it = it.key() <= page.generation ? m_requestTimes.erase(it) : std::next(it);
        emit previewUpdated(page.generation);
        if (m_waiting)
            pushBody();
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
