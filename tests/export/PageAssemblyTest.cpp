// Page assembly: each mode of the preview, export, PDF, Evernote and WeChat
// pages, the style sheet rules, the scripts by the render's flags, and the
// edge cases of images, front matter and external folders.
#include "export/ORVHTMLPageAssembler.h"
#include "export/ORVPreviewScripts.h"
#include "support/TestEnv.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

namespace {

struct Pages {
    Pages()
    {
        QDir(dir.path()).mkpath(QStringLiteral("assets/prism"));
        QDir(dir.path()).mkpath(QStringLiteral("assets/orvojs"));
        QDir(dir.path()).mkpath(QStringLiteral("inner"));
        QDir(dir.path()).mkpath(QStringLiteral("user"));
        QDir(dir.path()).mkpath(QStringLiteral("media"));
        orvotest::writeFile(path("assets/prism/prism.js"), "var Prism='inline prism';");
        orvotest::writeFile(path("assets/orvojs/chart-driver.js"), "!function(){var deflate=function(){}}();");
        orvotest::writeFile(path("inner/orvo-default.css"), "body{color:#111}");
        orvotest::writeFile(path("inner/orvo-solarized-dark.css"), "body{color:#eee}");
        orvotest::writeFile(path("user/mine.css"), "\xEF\xBB\xBF" "body{color:#123}"); // a byte order mark
        orvotest::writeFile(path("user/latin.css"), "p:after{content:'\xE9'}");   // Latin-1
        orvotest::writeFile(path("evernote.css"), ".markdown-body{font-size:15px}");
        prefs.previewCSSName = QStringLiteral("orvo-default");
        prefs.previewDarkCSSName = QStringLiteral("orvo-solarized-dark");
        prefs.isEnableMath = true;
        prefs.latexFontName = QStringLiteral("TeX");
        context.mediaFolderPath = path("media");
    }
    QString path(const char *rel) const { return dir.filePath(QString::fromUtf8(rel)); }
    QString assets() const { return path("assets"); }
    ORVHTMLPageAssembler assembler() const
    {
        return ORVHTMLPageAssembler(context, prefs, scripts,
                                    {path("inner"), path("user"), path("evernote.css")});
    }
    QString page(const QString &markdown, bool isPreview, int renderType = 0, ORVMarkdownToHTMLInfo *info = nullptr,
                 bool isShowCode = false, const QString &style = QString()) const
    {
        return assembler().makeHTMLWithString({markdown, QStringLiteral("T"), info, isShowCode, renderType, isPreview, style});
    }
    static QString head(const QString &page)
    {
        return page.section(QStringLiteral("<title>T</title>\n"), 1).section(QStringLiteral("\n<style> @media print"), 0, 0);
    }

    QTemporaryDir dir;
    ORVPreviewScripts scripts{dir.filePath(QStringLiteral("assets"))};
    ORVPagePreferences prefs;
    ORVPageDocumentContext context;
};

const QString kAllFeatures = QStringLiteral("# T\n\n$$x^2$$\n\n```sequence\nA->B: hi\n```\n\n```dot\ndigraph{a->b}\n```\n\n"
                                            "```echarts\noption={}\n```\n\n```plantuml\nA->B\n```\n\n```mermaid\ngraph TD;A-->B\n"
                                            "```\n\n```c\nint x;\n```\n");

} // namespace

TEST(PageAssembly, TemplateAndAPlainPageWithoutScripts)
{
    Pages s;
    const QString page = s.page(QStringLiteral("plain *text*"), true);
    EXPECT_TRUE(page.startsWith(QStringLiteral("<!DOCTYPE html><html>\n\n<head>\n<meta charset=\"utf-8\">\n<title>T</title>\n")));
    EXPECT_TRUE(page.endsWith(QStringLiteral("<br /><br />\n</div></body>\n\n</html>\n")));
    EXPECT_TRUE(page.contains(QStringLiteral("</style></head><body><div id=\"markdown-body-wrap\" class=\"markdown-body\">\n<p>plain <em>text</em></p>")));
    EXPECT_EQ(Pages::head(page), QStringLiteral("<link rel=\"stylesheet\" type=\"text/css\" href=\"%1\">").arg(s.path("inner/orvo-default.css")))
        << "the style and nothing else";
    EXPECT_FALSE(page.contains(QStringLiteral("<script")));
}

TEST(PageAssembly, EachModeOfThePage)
{
    Pages s;
    // Live preview: linked style, local SVG math with the readiness signal,
    // every diagram library from the asset folder, Prism by file.
    const QString preview = Pages::head(s.page(kAllFeatures, true));
    EXPECT_TRUE(preview.startsWith(QStringLiteral("<link rel=\"stylesheet\"")));
    EXPECT_TRUE(preview.contains(QStringLiteral("function theOrvoMathJaxRenderIsReady(key){ return isOrvoMathJaxRenderReady; }")));
    EXPECT_TRUE(preview.contains(s.assets() + QStringLiteral("/MathJax/MathJax.js?config=TeX-AMS_SVG-full\"></script>")));
    EXPECT_TRUE(preview.contains(QStringLiteral("SVG: { font: \"TeX\" }")));
    for (const char *lib : {"/flowseq/raphael.min.js", "/viz/full.render.js", "/echarts/echarts.min.js", "/mermaid/mermaid.min.js",
                            "/font-awesome/css/font-awesome.min.css", "/prism/prism.js"})
        EXPECT_TRUE(preview.contains(s.assets() + QString::fromLatin1(lib))) << lib;
    EXPECT_TRUE(preview.contains(QStringLiteral("<script>!function(){var deflate=function(){")));
    EXPECT_FALSE(preview.contains(QStringLiteral("https://")));

    // File export: embedded style, everything online, Prism inline.
    const QString exported = Pages::head(s.page(kAllFeatures, false));
    EXPECT_TRUE(exported.startsWith(QStringLiteral("<style>\nbody{color:#111}\n</style>\n")));
    EXPECT_TRUE(exported.contains(QStringLiteral("<script src=\"https://cdnjs.cloudflare.com/ajax/libs/mathjax/2.7.7/MathJax.js?config=TeX-AMS_SVG-full\"></script>"
                                                 "<script type=\"text/x-mathjax-config\">MathJax.Hub.Config({TeX: { equationNumbers: { autoNumber: \"AMS\" } }});</script>")));
    EXPECT_FALSE(exported.contains(QStringLiteral("theOrvoMathJaxRenderIsReady")));
    EXPECT_TRUE(exported.contains(QStringLiteral("/ajax/libs/js-sequence-diagrams/1.0.6/sequence-diagram-min.js\"></script><script src=\"https://cdnjs.cloudflare.com/ajax/libs/flowchart/1.11.0/flowchart.min.js")))
        << "sequence before flowchart online";
    EXPECT_TRUE(exported.contains(QStringLiteral("<script>var Prism='inline prism';</script>")));
    EXPECT_FALSE(exported.contains(s.assets()));

    // PDF: as the preview, laid out without margins.
    const QString pdf = Pages::head(s.page(kAllFeatures, true, 0, nullptr, true));
    EXPECT_TRUE(pdf.contains(QStringLiteral("html,body{ max-width: 100% !important;margin: 0 auto !important; padding: 0 !important;}")));
    EXPECT_TRUE(pdf.contains(QStringLiteral("theOrvoMathJaxRenderIsReady")));

    // Evernote: evernote.css, MathML math, only ECharts and PlantUML drawn.
    const QString evernote = Pages::head(s.page(kAllFeatures, false, 1));
    EXPECT_TRUE(evernote.startsWith(QStringLiteral("<style>\n.markdown-body{font-size:15px}\n</style>\n")));
    EXPECT_TRUE(evernote.contains(s.assets() + QStringLiteral("/MathJax/MathJax.js?config=TeX-AMS-MML_HTMLorMML\"")));
    EXPECT_TRUE(evernote.contains(QStringLiteral("/ajax/libs/echarts/4.1.0/echarts.min.js"))) << "sent pages load it online";
    EXPECT_TRUE(evernote.contains(QStringLiteral("var deflate=function(){"))) << "the driver draws PlantUML and ECharts";
    for (const char *absent : {"mermaid.min.js", "viz.js", "raphael.min.js"})
        EXPECT_FALSE(evernote.contains(QString::fromLatin1(absent))) << absent;
    EXPECT_TRUE(evernote.contains(QStringLiteral("<script src=\"%1/highlightjs/highlight.pack.js\"></script><script>hljs.initHighlightingOnLoad();</script>"
                                                 "<script src=\"%1/orvojs/jquery.min.js\"></script><script src=\"%1/other/html2enml.js\"></script>").arg(s.assets())));
    EXPECT_TRUE(evernote.contains(QStringLiteral("h2e.transCheck2Todo();")));
    EXPECT_TRUE(evernote.endsWith(QStringLiteral("<style>.markdown-body{margin:0;padding:0;}</style>")));

    // WeChat: embedded sheet, ECharts library but no driver.
    const QString wechat = Pages::head(s.page(kAllFeatures, false, 7));
    EXPECT_TRUE(wechat.startsWith(QStringLiteral("<style>\nbody{color:#111}\n</style>\n")));
    EXPECT_TRUE(wechat.contains(QStringLiteral("/ajax/libs/echarts/4.1.0/echarts.min.js")));
    EXPECT_FALSE(wechat.contains(QStringLiteral("var deflate=function(){")));
    EXPECT_FALSE(wechat.contains(QStringLiteral("h2e.transCheck2Todo();")));
    EXPECT_TRUE(wechat.contains(QStringLiteral("theOrvoToEvernoteHtmlString")));
}

TEST(PageAssembly, ChartScriptsInOrder)
{
    Pages s;
    const QString head = Pages::head(s.page(kAllFeatures, true));
    const QStringList order = {QStringLiteral("/flowseq/raphael.min.js"), QStringLiteral("/flowseq/underscore-min.js"),
                               QStringLiteral("/flowseq/flowchart.min.js"), QStringLiteral("/flowseq/sequence-diagram-min.js"),
                               QStringLiteral("/viz/viz.js"), QStringLiteral("/echarts/echarts.min.js"),
                               QStringLiteral("var deflate=function(){"), QStringLiteral("font-awesome.min.css"),
                               QStringLiteral("/mermaid/mermaid.min.js"), QStringLiteral("/prism/prism.js")};
    qsizetype last = -1;
    for (const QString &piece : order) {
        const qsizetype at = head.indexOf(piece);
        EXPECT_GT(at, last) << piece.toStdString();
        last = at;
    }
    EXPECT_EQ(head.count(QStringLiteral("var deflate=function(){")), 1) << "each script once";
}

TEST(PageAssembly, StyleSheetChoiceAndEmbedding)
{
    Pages s;
    s.prefs.isDarkThemes = true;
    EXPECT_TRUE(Pages::head(s.page(QStringLiteral("x"), true)).contains(s.path("inner/orvo-solarized-dark.css")));
    EXPECT_EQ(Pages::head(s.page(QStringLiteral("x"), true, 0, nullptr, false, QStringLiteral("mine"))),
              QStringLiteral("<link rel=\"stylesheet\" type=\"text/css\" href=\"%1/mine.css\">").arg(s.path("user")))
        << "the user's folder, linked";
    EXPECT_EQ(Pages::head(s.page(QStringLiteral("x"), false, 0, nullptr, false, QStringLiteral("mine"))),
              QStringLiteral("<style>\nbody{color:#123}\n</style>\n")) << "embedded, byte order mark read";
    EXPECT_EQ(Pages::head(s.page(QStringLiteral("x"), false, 0, nullptr, false, QStringLiteral("latin"))),
              QStringLiteral("<style>\np:after{content:'\u00e9'}\n</style>\n")) << "not UTF-8: Latin-1";
    EXPECT_EQ(Pages::head(s.page(QStringLiteral("x"), false, 0, nullptr, false, QStringLiteral("missing"))), QString())
        << "a missing sheet gives no style, in silence";
    s.prefs.isDebugCSSStyle = true;
    EXPECT_TRUE(Pages::head(s.page(QStringLiteral("x"), true, 0, nullptr, false, QStringLiteral("mine"))).startsWith(QStringLiteral("<style>")));
    s.prefs.isDebugCSSStyle = false;
    s.prefs.isUseWKWebView = true;
    EXPECT_TRUE(Pages::head(s.page(QStringLiteral("x"), true, 0, nullptr, false, QStringLiteral("mine"))).startsWith(QStringLiteral("<style>")))
        << "a user sheet is embedded for this web view";
    EXPECT_TRUE(Pages::head(s.page(QStringLiteral("x"), true)).startsWith(QStringLiteral("<link"))) << "shipped ones stay linked";
}

TEST(PageAssembly, GivenInfoMeansHTMLAlready)
{
    Pages s;
    orvotest::writeFile(s.path("media/a.png"), "png");
    ORVMarkdownToHTMLInfo info;
    const QString html = QStringLiteral("---\nk: v\n---\n<p>*not markdown*</p><img src=\"a.png\">");
    const QString exported = s.page(html, false, 0, &info);
    EXPECT_TRUE(exported.contains(QStringLiteral("<p>*not markdown*</p><img src=\"a.png\">"))) << "never rendered, never embedded";
    EXPECT_FALSE(exported.contains(QStringLiteral("<br /><br />")));
    const QString preview = s.page(html, true, 0, &info);
    EXPECT_TRUE(preview.contains(QStringLiteral("\n```yaml\nk: v\n\n```\n<p>"))) << "front matter still replaced in the string";
    EXPECT_FALSE(preview.contains(QStringLiteral("<br /><br />")));
}

TEST(PageAssembly, FrontMatterShowsAsYAMLInPagesThatStay)
{
    EXPECT_EQ(ORVHTMLPageAssembler::frontMatterAsYAMLBlock(QStringLiteral("---\ntitle: A\ntags: b\n---\nbody")),
              QStringLiteral("\n```yaml\ntitle: A\ntags: b\n\n```\nbody"));
    EXPECT_EQ(ORVHTMLPageAssembler::frontMatterAsYAMLBlock(QStringLiteral("+++\ntitle = \"A\"\n+++\nbody")),
              QStringLiteral("\n```yaml\ntitle = \"A\"\n\n```\nbody"));
    EXPECT_EQ(ORVHTMLPageAssembler::frontMatterAsYAMLBlock(QStringLiteral("text\n---\na\n---")), QStringLiteral("text\n---\na\n---"));
    EXPECT_EQ(ORVHTMLPageAssembler::frontMatterAsYAMLBlock(QStringLiteral("---\nunclosed")), QStringLiteral("---\nunclosed"));
    Pages s;
    EXPECT_TRUE(s.page(QStringLiteral("---\ntitle: A\n---\nbody"), true).contains(QStringLiteral("<code class=\"language-yaml\">title: A")));
    EXPECT_FALSE(s.page(QStringLiteral("---\ntitle: A\n---\nbody"), false).contains(QStringLiteral("language-yaml")));
}

TEST(PageAssembly, ExportEmbedsLocalImages)
{
    Pages s;
    orvotest::writeFile(s.path("media/a b.png"), "PNG!");
    orvotest::writeFile(s.path("media/anim.GIF"), "GIF!");
    orvotest::writeFile(s.path("media/pic.webp"), "WEBP");
    orvotest::writeFile(s.path("media/big.jpg"), QByteArray(100, 'x'));
    const QString md = QStringLiteral("![a](a%20b.png) ![again](a%20b.png) ![g](anim.GIF) ![w](pic.webp) ![r](https://x.example/r.png) "
                                      "![m](missing.png) ![big](big.jpg)");
    const QString exported = s.page(md, false);
    EXPECT_EQ(exported.count(QStringLiteral("src=\"data:image/png;base64,UE5HIQ==\"")), 2) << "one sweep for the same file";
    EXPECT_TRUE(exported.contains(QStringLiteral("src=\"data:image/gif;base64,R0lGIQ==\""))) << "upper-case extension";
    EXPECT_TRUE(exported.contains(QStringLiteral("src=\"data:image/jpeg;base64,V0VCUA==\""))) << "anything else is jpeg";
    EXPECT_TRUE(exported.contains(QStringLiteral("src=\"https://x.example/r.png\"")));
    EXPECT_TRUE(exported.contains(QStringLiteral("src=\"missing.png\"")));
    const QString big = exported.section(QStringLiteral("data:image/jpeg;base64,"), 2, 2).section(QLatin1Char('"'), 0, 0);
    EXPECT_EQ(big.section(QLatin1Char('\n'), 0, 0).size(), 64) << "base64 in lines of 64";
    EXPECT_FALSE(s.page(md, true).contains(QStringLiteral("base64"))) << "the preview keeps references";
    EXPECT_FALSE(s.page(md, false, 1).contains(QStringLiteral("base64"))) << "notes keep references";
}

TEST(PageAssembly, FlagsPreferencesAndExternalFolders)
{
    Pages s;
    s.prefs.isEnableMath = false;
    EXPECT_FALSE(s.page(QStringLiteral("$$x$$"), true).contains(QStringLiteral("MathJax"))) << "math off: no script";
    s.prefs.isEnableMath = true;

    EXPECT_FALSE(Pages::head(s.page(QStringLiteral("p"), true)).contains(QStringLiteral("text-indent")));
    s.prefs.editorTextIndentVal = 2;
    EXPECT_TRUE(Pages::head(s.page(QStringLiteral("p"), true)).endsWith(QStringLiteral("<style>p{text-indent: 2em !important;}</style>")));
    s.prefs.editorTextIndentVal = 0;

    ORVMarkdownToHTMLInfo info;
    info.isChartPlantUML = true;
    info.isChartVIZ = info.isChartMermaid = info.isChartOldFlowSeq = true;
    const QString wechat = s.page(QStringLiteral("<pre><code class=\"language-plantuml\">A</code></pre>"), false, 7, &info);
    EXPECT_FALSE(wechat.contains(QStringLiteral("var deflate"))) << "WeChat pages draw nothing";
    EXPECT_TRUE(wechat.contains(QStringLiteral("language-plantuml"))) << "the block stays code";
    EXPECT_FALSE(info.isChartVIZ || info.isChartMermaid || info.isChartOldFlowSeq) << "cleared on the caller's info";
    EXPECT_TRUE(info.isChartPlantUML);

    // An external folder with media at its root writes paths from the root.
    s.context.folderType = 11;
    ORVMarkdownToHTMLInfo given;
    EXPECT_TRUE(s.page(QStringLiteral("<img src=\"/m/a.png\">"), true, 0, &given).contains(QStringLiteral("<img src=\"m/a.png\">")));
    EXPECT_TRUE(s.page(QStringLiteral("![x](/m/a.png)"), true).contains(QStringLiteral("src=\"m/a.png\"")));
    // Its newline setting wins over the preference.
    s.context.folderType = 10;
    s.prefs.isTranslateNewlineToBRtags = true;
    s.context.newlinesToBR = false;
    EXPECT_FALSE(s.page(QStringLiteral("a\nb"), true).contains(QStringLiteral("a<br")));
    s.context.newlinesToBR = std::nullopt;
    EXPECT_TRUE(s.page(QStringLiteral("a\nb"), true).contains(QStringLiteral("a<br/>")));
}
