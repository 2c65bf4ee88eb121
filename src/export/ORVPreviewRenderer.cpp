#include "export/ORVPreviewRenderer.h"

#include "export/ORVPreviewScripts.h"

#include <QElapsedTimer>
#include <QtConcurrent/QtConcurrentRun>

namespace {

const QString kBodyStart = QStringLiteral("<div id=\"markdown-body-wrap\" class=\"markdown-body\">\n");
const QString kBodyEnd = QStringLiteral("\n</div></body>\n\n</html>\n");

bool isVoidElement(QStringView name)
{
    static const char *const kVoid[] = {"area", "base", "br", "col", "embed", "hr", "img", "input",
                                        "link", "meta", "param", "source", "track", "wbr"};
    for (const char *v : kVoid) {
        if (name.compare(QLatin1String(v), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

bool isRawTextElement(QStringView name)
{
    return name.compare(QLatin1String("script"), Qt::CaseInsensitive) == 0 ||
           name.compare(QLatin1String("style"), Qt::CaseInsensitive) == 0 ||
           name.compare(QLatin1String("textarea"), Qt::CaseInsensitive) == 0;
}

} // namespace

namespace {

enum class MarkupEvent { Open, Close, LineEnd };

// Walks the markup of `html`, telling `visit(event, index)` of each element
// opened or closed (void and self-closed elements tell nothing) and of each
// line end outside raw text (scripts, styles and <pre>, whose lines are not
// blocks). Comments are passed over. Index: the "<" of a tag, the "\n" of a
// line end.
template<typename Visit>
void walkMarkup(const QString &html, Visit &&visit)
{
    const qsizetype n = html.size();
    int preDepth = 0;
    qsizetype i = 0;
    while (i < n) {
        const QChar c = html.at(i);
        if (c == QLatin1Char('\n')) {
            if (preDepth == 0)
                visit(MarkupEvent::LineEnd, i);
            ++i;
            continue;
        }
        if (c != QLatin1Char('<')) {
            ++i;
            continue;
        }
        if (QStringView(html).mid(i, 4) == QLatin1String("<!--")) {
            const qsizetype end = html.indexOf(QLatin1String("-->"), i + 4);
            i = end < 0 ? n : end + 3;
            continue;
        }
        const bool closing = i + 1 < n && html.at(i + 1) == QLatin1Char('/');
        const qsizetype nameStart = i + (closing ? 2 : 1);
        qsizetype j = nameStart;
        while (j < n && (html.at(j).isLetterOrNumber() || html.at(j) == QLatin1Char('-')))
            ++j;
        if (j == nameStart || !html.at(nameStart).isLetter()) {
            ++i; // a "<" of text, or a declaration
            continue;
        }
        const QStringView name = QStringView(html).mid(nameStart, j - nameStart);
        // The tag's ">", past quoted attribute values that may hold one.
        QChar quote;
        qsizetype k = j;
        for (; k < n; ++k) {
            const QChar d = html.at(k);
            if (!quote.isNull()) {
                if (d == quote)
                    quote = QChar();
            } else if (d == QLatin1Char('"') || d == QLatin1Char('\'')) {
                quote = d;
            } else if (d == QLatin1Char('>')) {
                break;
            }
        }
        if (k >= n)
            return;
        const bool isPre = name.compare(QLatin1String("pre"), Qt::CaseInsensitive) == 0;
        if (closing) {
            if (isPre && preDepth > 0)
                --preDepth;
            visit(MarkupEvent::Close, i);
            i = k + 1;
            continue;
        }
        if (html.at(k - 1) == QLatin1Char('/') || isVoidElement(name)) {
            i = k + 1;
            continue;
        }
        if (isPre)
            ++preDepth;
        visit(MarkupEvent::Open, i);
        i = k + 1;
        if (isRawTextElement(name)) {
            // Its text is not markup: go on at its end tag.
            const qsizetype end = html.indexOf(QLatin1String("</") + name.toString(), i, Qt::CaseInsensitive);
            i = end < 0 ? n : end;
        }
    }
}

} // namespace

QStringList ORVPreviewPage::topLevelBlocks(const QString &html)
{
    QStringList blocks;
    qsizetype depth = 0;
    qsizetype start = 0;
    walkMarkup(html, [&](MarkupEvent e, qsizetype at) {
        if (e == MarkupEvent::Open) {
            ++depth;
        } else if (e == MarkupEvent::Close) {
            depth = qMax<qsizetype>(0, depth - 1);
        } else {
            // A blank line ends a block of raw HTML in Markdown: an element it
            // left open (say "<i32>" in text) would otherwise make the rest of
            // the page one block. Inside such an element the page script still
            // finds blocks, as siblings of one parent.
            if (at > 0 && html.at(at - 1) == QLatin1Char('\n'))
                depth = 0;
            if (depth == 0) {
                blocks.append(html.mid(start, at + 1 - start));
                start = at + 1;
            }
        }
    });
    if (start < html.size())
        blocks.append(html.mid(start));
    return blocks;
}

bool ORVPreviewPage::isBalanced(const QString &html)
{
    qsizetype depth = 0;
    bool dipped = false;
    walkMarkup(html, [&](MarkupEvent e, qsizetype) {
        if (e == MarkupEvent::Open)
            ++depth;
        else if (e == MarkupEvent::Close && --depth < 0)
            dipped = true;
    });
    return depth == 0 && !dipped;
}

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
    p.blocks = topLevelBlocks(p.body);
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
    ORVPreviewPage result = ORVPreviewPage::split(page).value_or(ORVPreviewPage{page, page, QString(), {}, 0, 0});
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
