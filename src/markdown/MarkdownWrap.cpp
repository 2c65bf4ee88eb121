#include "markdown/MarkdownWrap.h"

#include "core/MyPreferences.h"
#include "hoedown/document.h"
#include "markdown/html.h"
#include "markdown/html_overrides.h"

#include <QRegularExpression>
#include <QStringEncoder>

#include <atomic>
#include <utility>
#include <cstdint>
#include <cstring>

namespace {

// Full renders so far. Relaxed: only PDF ids read it, and PDF export renders
// its documents one after the other.
std::atomic<int> g_renderCounter{0};

// The extensions of every render but the table only one; the autolink bit and
// the math bits come on top.
constexpr unsigned int kBaseExtensions = HOEDOWN_EXT_TABLES | HOEDOWN_EXT_FENCED_CODE | HOEDOWN_EXT_FOOTNOTES |
                                         HOEDOWN_EXT_STRIKETHROUGH | HOEDOWN_EXT_UNDERLINE |
                                         HOEDOWN_EXT_HIGHLIGHT | HOEDOWN_EXT_SUPERSCRIPT;
static_assert(kBaseExtensions == 0x177);
// The table of contents alone: every bit of a full render, autolink and math.
constexpr unsigned int kTOCOnlyExtensions =
    kBaseExtensions | HOEDOWN_EXT_AUTOLINK | HOEDOWN_EXT_MATH | HOEDOWN_EXT_MATH_EXPLICIT;
static_assert(kTOCOnlyExtensions == 0x237F);

// Headings up to this level get ids when the table of contents is on.
constexpr int kTOCNestingLevel = 6;

// Nesting is bounded only by the parser's own limit.
constexpr size_t kMaxNesting = SIZE_MAX;

// Growth unit of output buffers.
constexpr size_t kOutputUnit = 64;

QString fromBuffer(const hoedown_buffer *buf)
{
    if (!buf->size)
        return QString();
    QString html = QString::fromUtf8(reinterpret_cast<const char *>(buf->data), qsizetype(buf->size));
    // A NUL byte in the text would end the fragment wherever it is read as a
    // C string (web views, exporters), silently dropping the rest of the
    // document: it is shown as the replacement character instead.
    if (memchr(buf->data, 0, buf->size))
        html.replace(QChar(0), QChar(QChar::ReplacementCharacter));
    return html;
}

// Whether the bytes hold "[TOC]" in any case, which every splice needs.
bool holdsTOCMarker(const hoedown_buffer *buf)
{
    const uint8_t *p = buf->data;
    const uint8_t *end = buf->data + buf->size;
    while (p < end) {
        p = static_cast<const uint8_t *>(memchr(p, '[', size_t(end - p)));
        if (!p || end - p < 5)
            return false;
        if ((p[1] | 0x20) == 't' && (p[2] | 0x20) == 'o' && (p[3] | 0x20) == 'c' && p[4] == ']')
            return true;
        ++p;
    }
    return false;
}

// A replacement template as the platform's regular expressions read it:
// "$0" is the whole match, "$n" a group (this pattern has none, so it is
// empty), a backslash takes the next character as it is.
QString expandTemplate(const QString &tpl, const QRegularExpressionMatch &match)
{
    QString out;
    out.reserve(tpl.size());
    for (qsizetype i = 0; i < tpl.size(); ++i) {
        const QChar c = tpl.at(i);
        if (c == QLatin1Char('\\')) {
            if (i + 1 < tpl.size())
                out += tpl.at(++i);
            continue;
        }
        if (c == QLatin1Char('$') && i + 1 < tpl.size() && tpl.at(i + 1).isDigit()) {
            const int group = tpl.at(++i).digitValue();
            if (group <= match.lastCapturedIndex())
                out += match.captured(group);
            continue;
        }
        out += c;
    }
    return out;
}

QString spliceTOC(const QString &html, const QString &toc)
{
    static const QRegularExpression marker = [] {
        QRegularExpression re(QStringLiteral("<p.*?>\\s*\\[TOC\\]\\s*</p>"),
                              QRegularExpression::CaseInsensitiveOption |
                                  QRegularExpression::UseUnicodePropertiesOption);
        re.optimize();
        return re;
    }();
    QRegularExpressionMatchIterator it = marker.globalMatch(html);
    if (!it.hasNext())
        return html;
    QString out;
    out.reserve(html.size() + toc.size());
    qsizetype last = 0;
    while (it.hasNext()) {
        const QRegularExpressionMatch m = it.next();
        out += QStringView(html).mid(last, m.capturedStart() - last);
        out += expandTemplate(toc, m);
        last = m.capturedEnd();
    }
    out += QStringView(html).mid(last);
    return out;
}

// The text as UTF-8 in a buffer of ours, ending in a newline (which the
// parser would add anyway). It is encoded in slices, so that the buffer is
// about the size of the text rather than of the worst case, three bytes a
// character.
hoedown_buffer *encodeText(const QString &markdown)
{
    // Characters per slice: small next to a long document, large enough
    // that the calls cost nothing.
    constexpr qsizetype kSlice = 64 * 1024;
    QStringEncoder encoder(QStringEncoder::Utf8);
    hoedown_buffer *in = hoedown_buffer_new(kOutputUnit);
    hoedown_buffer_grow(in, size_t(markdown.size()) + size_t(markdown.size()) / 8 + 1);
    for (qsizetype at = 0; at < markdown.size(); at += kSlice) {
        const QStringView slice = QStringView(markdown).mid(at, kSlice);
        hoedown_buffer_grow(in, in->size + size_t(encoder.requiredSpace(slice.size())) + 1);
        char *out = reinterpret_cast<char *>(in->data + in->size);
        in->size += size_t(encoder.appendToBuffer(out, slice) - out);
    }
    if (in->size && in->data[in->size - 1] != '\n')
        hoedown_buffer_putc(in, '\n');
    return in;
}

// Renders the text with a renderer, leaving the text as it was; the caller
// frees the renderer and the result.
hoedown_buffer *renderWith(hoedown_renderer *renderer, unsigned int extensions, const hoedown_buffer *text)
{
    hoedown_document *doc = hoedown_document_new(renderer, extensions, kMaxNesting);
    hoedown_buffer *ob = hoedown_buffer_new(kOutputUnit);
    hoedown_document_render(doc, ob, text->data, text->size);
    hoedown_document_free(doc);
    return ob;
}

QString renderTOC(const hoedown_buffer *text, unsigned int extensions, int renderType, int counter)
{
    hoedown_renderer *renderer = hoedown_html_toc_renderer_new(kTOCNestingLevel);
    static_cast<hoedown_html_renderer_state *>(renderer->opaque)->render_counter = counter;
    orvo_html_toc_apply_form(renderer, renderType);
    hoedown_buffer *ob = renderWith(renderer, extensions, text);
    const QString toc = fromBuffer(ob);
    hoedown_buffer_free(ob);
    hoedown_html_renderer_free(renderer);
    return toc;
}

void copyInfo(unsigned int flags, ORVMarkdownToHTMLInfo *info)
{
    if (flags & HOEDOWN_HTML_SAW_FLOW_SEQ)
        info->isChartOldFlowSeq = true;
    if (flags & HOEDOWN_HTML_SAW_MERMAID)
        info->isChartMermaid = true;
    if (flags & HOEDOWN_HTML_SAW_PLANTUML)
        info->isChartPlantUML = true;
    if (flags & HOEDOWN_HTML_SAW_ECHARTS)
        info->isChartECharts = true;
    if (flags & HOEDOWN_HTML_SAW_GRAPH)
        info->isChartVIZ = true;
    if (flags & HOEDOWN_HTML_SAW_MATH)
        info->isHaveLaTeX = true;
    if (flags & HOEDOWN_HTML_SAW_CODE)
        info->isHaveCodeBlock = true;
}

MarkdownWrap::Options preferenceOptions(MyPreferences *prefs)
{
    MarkdownWrap::Options o;
    o.smartypants = prefs->isSmartypants();
    o.toc = prefs->isRenderTOC();
    o.replaceTOC = o.toc;
    o.newlineToBR = prefs->isTranslateNewlineToBRtags();
    o.isMath = prefs->isEnableMath();
    return o;
}

} // namespace

QString MarkdownWrap::markdownToHtml(const QString &markdown, const Options &options)
{
    const int counter = g_renderCounter.fetch_add(1, std::memory_order_relaxed) + 1;
    MyPreferences *prefs = MyPreferences::sharedInstance();
    const bool autolinkOff = prefs->isDisableAutolink();
    const bool figures = prefs->isEnableImgTagToFigureTag();
    const bool lineNumbers = prefs->isEnableCodeblockLineNumber();

    // The PDF type falls back to plain on one toolkit version of another
    // platform that cannot use the PDF ids; that version never occurs here.
    const int type = options.renderType;

    unsigned int extensions;
    if (type == ORVRenderTypeTableOnly) {
        extensions = HOEDOWN_EXT_TABLES;
    } else {
        extensions = kBaseExtensions;
        if (!autolinkOff)
            extensions |= HOEDOWN_EXT_AUTOLINK;
        if (options.isMath)
            extensions |= HOEDOWN_EXT_MATH | HOEDOWN_EXT_MATH_EXPLICIT;
    }
    unsigned int flags = HOEDOWN_HTML_USE_XHTML | HOEDOWN_HTML_USE_TASK_LIST;
    if (lineNumbers)
        flags |= HOEDOWN_HTML_LINE_NUMBERS;
    if (options.newlineToBR)
        flags |= HOEDOWN_HTML_HARD_WRAP;
    if (type != ORVRenderTypeEvernote && (figures || type == ORVRenderTypeFigure))
        flags |= HOEDOWN_HTML_FIGURE;

    hoedown_buffer *text = encodeText(markdown);

    // The table of contents is rendered only when someone reads it: the
    // caller, or a "[TOC]" to replace. It goes first, while the text is
    // intact: the body's render works on the text where it lies.
    const bool splice = options.toc && (options.replaceTOC || type == ORVRenderTypeEvernote) && holdsTOCMarker(text);
    QString toc;
    if (options.toc && (options.tocString || splice)) {
        toc = renderTOC(text, extensions, type, counter);
        if (options.tocString)
            *options.tocString = toc;
    }

    hoedown_renderer *renderer = hoedown_html_renderer_new(flags, options.toc ? kTOCNestingLevel : 0);
    hoedown_html_renderer_state *state = static_cast<hoedown_html_renderer_state *>(renderer->opaque);
    state->render_counter = counter;
    orvo_html_apply_overrides(renderer, type, options.isMath);
    hoedown_document *doc = hoedown_document_new(renderer, extensions, kMaxNesting);
    hoedown_buffer *ob = hoedown_buffer_new(kOutputUnit);
    // HTML runs about a quarter longer than its Markdown: one allocation
    // instead of a series of growing ones.
    hoedown_buffer_grow(ob, text->size + text->size / 4 + 1);
    hoedown_document_render_in_place(doc, ob, text->data, text->size);
    hoedown_document_free(doc);
    if (options.info)
        copyInfo(state->flags, options.info);
    hoedown_html_renderer_free(renderer);

    hoedown_buffer *body = ob;
    if (options.smartypants && type != ORVRenderTypeTableOnly) {
        // The text is spent: its memory takes the replacement's output.
        text->size = 0;
        hoedown_html_smartypants(text, ob->data, ob->size);
        std::swap(body, text);
    }
    // Only the body is left to read: the rest goes before the string is made.
    hoedown_buffer_free(text);
    QString html = fromBuffer(body);
    hoedown_buffer_free(body);

    if (splice) {
        if (type == ORVRenderTypeEvernote)
            toc = QStringLiteral("<div class=\"orvo-toc\"><p>") + toc + QStringLiteral("</p></div>");
        html = spliceTOC(html, toc);
    }

    if (type == ORVRenderTypeEvernote || type == ORVRenderTypeMathImage)
        html = QStringLiteral("<div style=\"padding:8px;\">") + html + QStringLiteral("</div>");
    return html;
}

QString MarkdownWrap::markdownToHtml(const QString &markdown)
{
    return markdownToHtmlSmartypants(markdown, true);
}

QString MarkdownWrap::markdownToHtmlSmartypants(const QString &markdown, bool smartypants)
{
    // The argument is not read: the preference decides, as it always has.
    Q_UNUSED(smartypants);
    return markdownToHtml(markdown, preferenceOptions(MyPreferences::sharedInstance()));
}

QString MarkdownWrap::markdownToHtmlRenderTypeInfo(const QString &markdown, int renderType, ORVMarkdownToHTMLInfo *info)
{
    Options o = preferenceOptions(MyPreferences::sharedInstance());
    o.renderType = renderType;
    o.info = info;
    return markdownToHtml(markdown, o);
}

QString MarkdownWrap::markdownToEvernotehHtmlInfo(const QString &markdown, ORVMarkdownToHTMLInfo *info)
{
    return markdownToHtmlRenderTypeInfo(markdown, ORVRenderTypeEvernote, info);
}

QString MarkdownWrap::markdownToHtmlIsNewlineBRRenderTypeInfo(const QString &markdown, bool isNewlineBR,
                                                               int renderType, ORVMarkdownToHTMLInfo *info)
{
    return markdownToHtmlIsNewlineBRIsTocRenderTypeInfo(markdown, isNewlineBR, true, renderType, info);
}

QString MarkdownWrap::markdownToHtmlIsNewlineBRIsTocRenderTypeInfo(const QString &markdown, bool isNewlineBR,
                                                                    bool isToc, int renderType,
                                                                    ORVMarkdownToHTMLInfo *info)
{
    Options o = preferenceOptions(MyPreferences::sharedInstance());
    o.toc = o.replaceTOC = isToc;
    o.newlineToBR = isNewlineBR;
    o.renderType = renderType;
    o.info = info;
    return markdownToHtml(markdown, o);
}

QString MarkdownWrap::markdownToHtmlWithTOCIsNewlineBRToc(const QString &markdown, bool isNewlineBR, QString *toc)
{
    MyPreferences *prefs = MyPreferences::sharedInstance();
    Options o = preferenceOptions(prefs);
    o.toc = true;
    o.replaceTOC = prefs->isRenderTOC();
    o.newlineToBR = isNewlineBR;
    o.tocString = toc;
    return markdownToHtml(markdown, o);
}

QString MarkdownWrap::markdownToHtmlTOC(const QString &markdown)
{
    hoedown_buffer *text = encodeText(markdown);
    const QString toc = renderTOC(text, kTOCOnlyExtensions, ORVRenderTypePlain, renderCounter());
    hoedown_buffer_free(text);
    return toc;
}

int MarkdownWrap::renderCounter()
{
    return g_renderCounter.load(std::memory_order_relaxed);
}
