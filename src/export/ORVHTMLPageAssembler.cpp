#include "export/ORVHTMLPageAssembler.h"

#include "core/MyPreferences.h"
#include "core/ORVAppPaths.h"
#include "editor/ORVDocument.h"
#include "export/ORVPreviewScripts.h"
#include "markdown/MarkdownWrap.h"
#include "markdown/ORVRenderType.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QUrl>

namespace {

constexpr int kEvernotePage = 1;
constexpr int kWeChatPage = 7;
constexpr std::uint64_t kFolderTypeMediaBesideDocument = 10;
constexpr std::uint64_t kFolderTypeMediaAtSourceRoot = 11;

// A style sheet larger than this is no style sheet; it is not embedded.
constexpr qint64 kLargestStyleSheet = 16 * 1024 * 1024;

bool isExternalFolderType(const std::optional<std::uint64_t> &t)
{
    return t && (*t == kFolderTypeMediaBesideDocument || *t == kFolderTypeMediaAtSourceRoot);
}

// A text file in the encoding its bytes tell: a byte order mark, else UTF-8
// when the bytes are valid UTF-8, else Latin-1. Null when unreadable.
std::optional<QString> readTextFileDetectingEncoding(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly) || f.size() > kLargestStyleSheet)
        return std::nullopt;
    const QByteArray bytes = f.readAll();
    if (const std::optional<QStringConverter::Encoding> bom = QStringConverter::encodingForData(bytes)) {
        QStringDecoder decoder(*bom);
        return QString(decoder(bytes));
    }
    QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = utf8(bytes);
    if (!utf8.hasError())
        return text;
    return QString::fromLatin1(bytes);
}

QString base64Lines(const QByteArray &data)
{
    // Data URLs of embedded images are broken into lines of 64 characters.
    constexpr qsizetype kLineLength = 64;
    const QByteArray b64 = data.toBase64();
    QString out;
    out.reserve(b64.size() + b64.size() / kLineLength + 1);
    for (qsizetype i = 0; i < b64.size(); i += kLineLength) {
        if (i > 0)
            out += QLatin1Char('\n');
        out += QLatin1String(b64.mid(i, kLineLength));
    }
    return out;
}

} // namespace

// ---- Inputs

ORVPageDocumentContext ORVPageDocumentContext::fromDocument(ORVDocument *document, const QString &fallbackMediaFolder)
{
    ORVPageDocumentContext c;
    if (document) {
        std::optional<QString> name;
        c.mediaFolderPath = document->mediaSaveURLFloderType(&name, &c.folderType);
        if (isExternalFolderType(c.folderType)) {
            const auto item = document->externalCateroryItem();
            if (item && item->settingData()) {
                const std::uint64_t v = item->settingData()->newlinesToBR;
                if (v == 1 || v == 2)
                    c.newlinesToBR = v == 1;
            }
        }
    }
    if (c.mediaFolderPath.isEmpty())
        c.mediaFolderPath = fallbackMediaFolder;
    return c;
}

ORVPagePreferences ORVPagePreferences::fromPreferences()
{
    const MyPreferences *p = MyPreferences::sharedInstance();
    ORVPagePreferences o;
    o.isDarkThemes = p->isDarkThemes();
    o.previewCSSName = p->previewCSSName();
    o.previewDarkCSSName = p->previewDarkCSSName();
    o.isTranslateNewlineToBRtags = p->isTranslateNewlineToBRtags();
    o.isDebugCSSStyle = p->isDebugCSSStyle();
    o.isUseWKWebView = p->isUseWKWebView();
    o.isEnableMath = p->isEnableMath();
    o.editorTextIndentVal = p->editorTextIndentVal();
    o.latexFontName = p->latexFontName();
    return o;
}

ORVHTMLPageAssembler::Folders ORVHTMLPageAssembler::Folders::installed()
{
    return {ORVAppPaths::innerPreviewCSSFolderURL(), ORVAppPaths::applicationThemesDirectoryPreviewCSS(),
            ORVAppPaths::applicationResourcesURL() + QStringLiteral("/evernote.css")};
}

ORVHTMLPageAssembler::ORVHTMLPageAssembler(const ORVPageDocumentContext &document, const ORVPagePreferences &preferences,
                                           const ORVPreviewScripts &scripts, const Folders &folders)
    : m_document(document), m_prefs(preferences), m_scripts(scripts), m_folders(folders)
{
}

// ---- Pieces

QString ORVHTMLPageAssembler::frontMatterAsYAMLBlock(const QString &markdown)
{
    static const QRegularExpression dashes(QStringLiteral("^---\\n(.*?\\n)---"),
                                           QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression pluses(QStringLiteral("^\\+\\+\\+\\n(.*?\\n)\\+\\+\\+"),
                                           QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpression *re = markdown.startsWith(QLatin1String("---"))   ? &dashes
                                   : markdown.startsWith(QLatin1String("+++")) ? &pluses
                                                                               : nullptr;
    if (!re)
        return markdown;
    const QRegularExpressionMatch m = re->match(markdown);
    if (!m.hasMatch())
        return markdown;
    QString out = markdown;
    out.replace(m.capturedStart(), m.capturedLength(), QStringLiteral("\n```yaml\n%1\n```").arg(m.captured(1)));
    return out;
}

QString ORVHTMLPageAssembler::embedLocalImages(const QString &html, const QString &mediaFolder)
{
    static const QRegularExpression images(
        QStringLiteral("(<img\\s[\\s\\S]*?src\\s*?=\\s*?['\"](.*?)['\"][\\s\\S]*?>)+?"),
        QRegularExpression::CaseInsensitiveOption);
    QString out = html;
    QRegularExpressionMatchIterator it = images.globalMatch(html);
    while (it.hasNext()) {
        const QString src = it.next().captured(2);
        if (src.isEmpty() || src.startsWith(QLatin1String("http://")) || src.startsWith(QLatin1String("https://")))
            continue;
        const QString path = mediaFolder + QLatin1Char('/') + QUrl::fromPercentEncoding(src.toUtf8());
        QFile file(path);
        if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
            continue;
        const QByteArray data = file.readAll();
        const QString ext = QFileInfo(path).suffix().toLower();
        const QString prefix = ext == QLatin1String("png")   ? QStringLiteral("data:image/png")
                               : ext == QLatin1String("gif") ? QStringLiteral("data:image/gif")
                                                             : QStringLiteral("data:image/jpeg");
        // Every reference to the file goes in one sweep; a later match of
        // the same file then finds nothing left to replace.
        out.replace(QStringLiteral("=\"%1\"").arg(src), QStringLiteral("=\"%1;base64,%2\"").arg(prefix, base64Lines(data)));
    }
    return out;
}

QString ORVHTMLPageAssembler::styleSheetHeadText(const QString &styleName, int renderType, bool isPreview) const
{
    const QString innerPath = m_folders.innerPreviewCSSFolder + QLatin1Char('/') + styleName + QStringLiteral(".css");
    const QString userPath = m_folders.userPreviewCSSFolder + QLatin1Char('/') + styleName + QStringLiteral(".css");
    const bool inner = !styleName.isEmpty() && QFileInfo(innerPath).isFile();
    const bool embed = renderType == kEvernotePage || renderType == kWeChatPage || !isPreview ||
                       m_prefs.isDebugCSSStyle || (!inner && m_prefs.isUseWKWebView);
    const auto styleBlock = [](const QString &css) { return QStringLiteral("<style>\n%1\n</style>\n").arg(css); };
    if (renderType == kEvernotePage) {
        const std::optional<QString> css = readTextFileDetectingEncoding(m_folders.evernoteCSSPath);
        return css ? styleBlock(*css) : QString();
    }
    if (!embed) {
        if (inner)
            return QStringLiteral("<link rel=\"stylesheet\" type=\"text/css\" href=\"%1\">").arg(innerPath);
        return QStringLiteral("<link rel=\"stylesheet\" type=\"text/css\" href=\"%1/%2.css\">")
            .arg(m_folders.userPreviewCSSFolder, styleName);
    }
    const std::optional<QString> css = readTextFileDetectingEncoding(inner ? innerPath : userPath);
    return css ? styleBlock(*css) : QString();
}

QString ORVHTMLPageAssembler::pageTemplate(const QString &title, const QString &head, const QString &body)
{
    return QStringLiteral("<!DOCTYPE html><html>\n\n<head>\n<meta charset=\"utf-8\">\n<title>") + title +
           QStringLiteral("</title>\n") + head +
           QStringLiteral("\n<style> @media print{ code[class*=\"language-\"],pre[class*=\"language-\"]{overflow: "
                          "visible; word-wrap: break-word !important;} }</style></head><body><div "
                          "id=\"markdown-body-wrap\" class=\"markdown-body\">\n") +
           body + QStringLiteral("\n</div></body>\n\n</html>\n");
}

// ---- The assembly

QString ORVHTMLPageAssembler::makeHTMLWithString(const ORVMakeHTMLRequest &request) const
{
    const int renderType = request.renderType;
    const bool noteLike = renderType == kEvernotePage || renderType == kWeChatPage;

    // 1. Front matter shows as a YAML block in pages that stay here.
    QString string = request.string;
    if (request.isPreview)
        string = frontMatterAsYAMLBlock(string);

    // 2. The style sheet's name.
    QString styleName = m_prefs.isDarkThemes ? m_prefs.previewDarkCSSName : m_prefs.previewCSSName;
    if (!request.style.isEmpty())
        styleName = request.style;

    // 3. A given info means the string is HTML already.
    ORVMarkdownToHTMLInfo ownInfo;
    const bool givenInfo = request.info != nullptr;
    ORVMarkdownToHTMLInfo &info = givenInfo ? *request.info : ownInfo;

    // 4. Evernote pages keep to the sheets known to suit notes. (Step 10
    // embeds evernote.css for them all the same.)
    if (renderType == kEvernotePage &&
        !QStringList{QStringLiteral("orvo-solarized-dark"), QStringLiteral("orvo-solarized-light"),
                     QStringLiteral("orvo-Tomorrow Blue"), QStringLiteral("orvo-Tomorrow"), QStringLiteral("orvo-github")}
             .contains(styleName))
        styleName = QStringLiteral("orvo-github");

    // 5, 6. Media folder, and newlines by the external folder's setting.
    const bool external = isExternalFolderType(m_document.folderType);
    const bool atSourceRoot = m_document.folderType && *m_document.folderType == kFolderTypeMediaAtSourceRoot;
    bool newlineToBR = m_prefs.isTranslateNewlineToBRtags;
    if (external && m_document.newlinesToBR)
        newlineToBR = *m_document.newlinesToBR;

    // 7. Such folders write image paths from their root, which is the base.
    if (givenInfo && atSourceRoot)
        string.replace(QStringLiteral("src=\"/"), QStringLiteral("src=\""));

    QString body = string;
    if (!givenInfo) {
        // 8. Rendered as an ordinary page whatever this page is for.
        body = MarkdownWrap::markdownToHtmlIsNewlineBRRenderTypeInfo(string, newlineToBR, ORVRenderTypePlain, &info);
        // 9. Pages written out carry their images.
        if (!request.isPreview && !noteLike)
            body = embedLocalImages(body, m_document.mediaFolderPath);
        else if (atSourceRoot)
            body.replace(QStringLiteral("src=\"/"), QStringLiteral("src=\""));
    }

    // 10. Style.
    QString head = styleSheetHeadText(styleName, renderType, request.isPreview);

    // 11. Math.
    const bool isOnline = !request.isPreview;
    QString math = m_scripts.mathJaxSupportScriptString(isOnline, m_prefs.latexFontName);
    if (noteLike) {
        math = m_scripts.mathJaxSupportScriptString(false, m_prefs.latexFontName)
                   .replace(QStringLiteral("TeX-AMS_SVG-full"), QStringLiteral("TeX-AMS-MML_HTMLorMML"));
    }
    if (m_prefs.isEnableMath && info.isHaveLaTeX)
        head += math;

    // 12. Notes and WeChat draw none of these; their blocks stay code.
    if (noteLike) {
        info.isChartVIZ = false;
        info.isChartMermaid = false;
        info.isChartOldFlowSeq = false;
    }

    // 13. Libraries before the driver, which tests which of them exist.
    if (info.isChartOldFlowSeq)
        head += m_scripts.seqAndFlowChartScriptString(isOnline);
    if (info.isChartVIZ)
        head += m_scripts.vizChartScriptString(isOnline);
    if (info.isChartECharts)
        head += m_scripts.echartsChartScriptString(isOnline);
    const bool anyChart = info.isChartOldFlowSeq || info.isChartVIZ || info.isChartECharts || info.isChartPlantUML ||
                          info.isChartMermaid;
    if (anyChart && renderType != kWeChatPage)
        head += m_scripts.chartDriverScriptString();
    if (info.isChartMermaid)
        head += m_scripts.mermaidChartScriptString(isOnline);
    if (info.isHaveCodeBlock)
        head += m_scripts.codeBlockHighlightChartScriptString(isOnline);

    // 14. Printing and capturing: no margins.
    if (request.isShowCode) {
        head += QStringLiteral("<style> code[class*=\"language-\"],pre[class*=\"language-\"]{overflow: visible; "
                               "word-wrap: break-word !important;} body{ background:none !important; "
                               "background-color:none !important;}html,body{ max-width: 100% !important;margin: 0 "
                               "auto !important; padding: 0 !important;}  </style>");
    }

    // 15. First-line indent of paragraphs.
    if (m_prefs.editorTextIndentVal > 0)
        head += QStringLiteral("<style>p{text-indent: %1em !important;}</style>").arg(m_prefs.editorTextIndentVal);

    // 16. Notes and WeChat: their converters, always from this machine.
    if (noteLike) {
        const QString assets = m_scripts.assetPath();
        head += QStringLiteral("<script src=\"%1/highlightjs/highlight.pack.js\"></script><script>hljs."
                               "initHighlightingOnLoad();</script>")
                    .arg(assets);
        head += QStringLiteral("<script src=\"%1/orvojs/jquery.min.js\"></script>").arg(assets);
        head += QStringLiteral("<script src=\"%1/other/html2enml.js\"></script>").arg(assets) +
                (renderType == kEvernotePage ? m_scripts.evernoteHTML2ENMLScriptString()
                                             : m_scripts.weChatStyleHTMLScriptString());
    }

    // 17. Room at the preview's end.
    if (!givenInfo && request.isPreview)
        body += QStringLiteral("<br /><br />");

    // 18. The page.
    return pageTemplate(request.title, head, body);
}

QString ORVHTMLPageAssembler::makeHTMLWithStringTitleInfoIsShowCodeIsPreview(const QString &string, const QString &title,
                                                                             ORVMarkdownToHTMLInfo *info,
                                                                             bool isShowCode, bool isPreview) const
{
    return makeHTMLWithString({string, title, info, isShowCode, 0, isPreview, QString()});
}

QString ORVHTMLPageAssembler::makePreviewHTMLStringWithMarkdown(const QString &markdown, const QString &title,
                                                                ORVMarkdownToHTMLInfo *info, bool isShowCode,
                                                                const QString &style) const
{
    return makeHTMLWithString({markdown, title, info, isShowCode, 0, true, style});
}

QString ORVHTMLPageAssembler::evernotePreviewTemplateHtmlWithString(const QString &string, ORVMarkdownToHTMLInfo *info) const
{
    return makeHTMLWithString({string, QString(), info, false, kEvernotePage, false, QString()});
}

QString ORVHTMLPageAssembler::weChatPreviewTemplateHtmlWithString(const QString &string, ORVMarkdownToHTMLInfo *info) const
{
    return makeHTMLWithString({string, QString(), info, false, kWeChatPage, false, QString()});
}

QString markdownPreviewHtmlForDocument(ORVDocument *document)
{
    if (!document)
        return QString();
    if (document->markdownPreviewHtml.isEmpty() || document->isReRenderMarkdownPreviewHtml) {
        const ORVHTMLPageAssembler assembler(ORVPageDocumentContext::fromDocument(document),
                                             ORVPagePreferences::fromPreferences(), ORVPreviewScripts::shared());
        document->markdownPreviewHtml =
            assembler.makeHTMLWithString({document->textStorage()->string(), QString(), nullptr, false, 0, true, QString()});
        document->isReRenderMarkdownPreviewHtml = false;
    }
    return document->markdownPreviewHtml;
}
