#include "export/ORVPreviewRenderer.h"

#include "export/ORVPreviewScripts.h"

#include <QElapsedTimer>
#include <QtConcurrent/QtConcurrentRun>

namespace {

const QString kBodyStart = QStringLiteral("<div id=\"markdown-body-wrap\" class=\"markdown-body\">\n");
const QString kBodyEnd = QStringLiteral("\n</div></body>\n\n</html>\n");

} // namespace

std::optional<ORVPreviewPage> ORVPreviewPage::split(const QString &page)
{
    const qsizetype start = page.indexOf(kBodyStart);
    if (start < 0 || !page.endsWith(kBodyEnd))
        return std::nullopt;
    const qsizetype bodyFrom = start + kBodyStart.size();
    const qsizetype bodyTo = page.size() - kBodyEnd.size();
    if (bodyTo < bodyFrom)
        return std::nullopt;
    ORVPreviewPage p;
    p.page = page;
    p.body = page.mid(bodyFrom, bodyTo - bodyFrom);
    p.shell = page.left(bodyFrom) + kBodyEnd;
    return p;
}

ORVPreviewRenderer::ORVPreviewRenderer(QObject *parent) : QObject(parent)
{
    connect(&m_watcher, &QFutureWatcher<ORVPreviewPage>::finished, this, &ORVPreviewRenderer::finished);
}

ORVPreviewRenderer::~ORVPreviewRenderer() { m_watcher.waitForFinished(); }

ORVPreviewPage ORVPreviewRenderer::renderPage(const ORVPreviewRequest &request, quint64 generation)
{
    QElapsedTimer timer;
    timer.start();
    const ORVHTMLPageAssembler assembler(request.document, request.preferences, ORVPreviewScripts::shared());
    const QString page = assembler.makePreviewHTMLStringWithMarkdown(request.markdown, request.title, nullptr, false,
                                                                     request.style);
    ORVPreviewPage result = ORVPreviewPage::split(page).value_or(ORVPreviewPage{page, page, QString(), 0, 0});
    result.generation = generation;
    result.renderMilliseconds = double(timer.nsecsElapsed()) / 1e6;
    return result;
}

quint64 ORVPreviewRenderer::requestRender(const ORVPreviewRequest &request)
{
    const quint64 generation = m_nextGeneration++;
    if (m_running)
        m_pending = std::make_pair(request, generation);
    else
        start(request, generation);
    return generation;
}

void ORVPreviewRenderer::start(const ORVPreviewRequest &request, quint64 generation)
{
    m_running = true;
    m_watcher.setFuture(QtConcurrent::run([request, generation] { return renderPage(request, generation); }));
}

void ORVPreviewRenderer::finished()
{
    m_running = false;
    const ORVPreviewPage page = m_watcher.result();
    if (m_pending) {
        const auto next = std::move(*m_pending);
        m_pending.reset();
        start(next.first, next.second);
    }
    emit pageReady(page);
}
