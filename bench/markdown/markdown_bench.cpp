// markdown-bench MODE FILE [REPEAT]
//
// Renders FILE REPEAT times (default 5) and prints one line,
// "<name> <bytes> <seconds> <MB/s>", the time being the best of the repeats
// (MB is 10^6 bytes, as the peers print it). Modes:
//   parser    the parser with the preview's HTML renderer, bytes to bytes
//   wrap      MarkdownWrap's full render with the preview's defaults: table of
//             contents and its splicing, typographic replacement, line
//             breaks, math; a QString in and out
//   wraptoc   the same, also giving the table of contents back, which makes
//             it render whatever the text holds
#include "hoedown/document.h"
#include "markdown/MarkdownWrap.h"
#include "markdown/html.h"
#include "markdown/html_overrides.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <cstdio>

namespace {

double renderParser(const QByteArray &text)
{
    QElapsedTimer t;
    t.start();
    hoedown_renderer *r = hoedown_html_renderer_new(HOEDOWN_HTML_USE_XHTML | HOEDOWN_HTML_USE_TASK_LIST |
                                                        HOEDOWN_HTML_HARD_WRAP, 6);
    orvo_html_apply_overrides(r, ORVRenderTypePlain, true);
    hoedown_document *doc = hoedown_document_new(r, 0x237F, SIZE_MAX);
    hoedown_buffer *ob = hoedown_buffer_new(64);
    hoedown_document_render(doc, ob, reinterpret_cast<const uint8_t *>(text.constData()), size_t(text.size()));
    const double s = double(t.nsecsElapsed()) / 1e9;
    if (!ob->size)
        std::fprintf(stderr, "empty output\n");
    hoedown_buffer_free(ob);
    hoedown_document_free(doc);
    hoedown_html_renderer_free(r);
    return s;
}

double renderWrap(const QString &text, bool giveTOC)
{
    MarkdownWrap::Options o;
    o.smartypants = o.toc = o.replaceTOC = o.newlineToBR = o.isMath = true;
    QString toc;
    if (giveTOC)
        o.tocString = &toc;
    QElapsedTimer t;
    t.start();
    const QString html = MarkdownWrap::markdownToHtml(text, o);
    const double s = double(t.nsecsElapsed()) / 1e9;
    if (html.isEmpty() || (giveTOC && toc.isEmpty()))
        std::fprintf(stderr, "empty output\n");
    return s;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Orvo"));
    if (argc < 3) {
        std::fprintf(stderr, "usage: markdown-bench parser|wrap|wraptoc FILE [REPEAT]\n");
        return 2;
    }
    const QByteArray mode = argv[1];
    QFile f(QString::fromLocal8Bit(argv[2]));
    if (!f.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", argv[2]);
        return 1;
    }
    const QByteArray bytes = f.readAll();
    const int repeat = argc > 3 ? std::max(1, atoi(argv[3])) : 5;
    double best = 1e30;
    if (mode == "parser") {
        for (int i = 0; i < repeat; ++i)
            best = std::min(best, renderParser(bytes));
    } else if (mode == "wrap" || mode == "wraptoc") {
        // The caller's text is already a QString: its conversion is not
        // timed, the render's own conversions are.
        const QString text = QString::fromUtf8(bytes);
        for (int i = 0; i < repeat; ++i)
            best = std::min(best, renderWrap(text, mode == "wraptoc"));
    } else {
        std::fprintf(stderr, "unknown mode %s\n", mode.constData());
        return 2;
    }
    std::printf("orvo-%s %lld %.6f %.1f\n", mode.constData(), static_cast<long long>(bytes.size()), best,
                double(bytes.size()) / 1e6 / best);
    return 0;
}
