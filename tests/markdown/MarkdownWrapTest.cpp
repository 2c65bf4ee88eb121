// MarkdownWrap's forms: which preferences each reads, what it reports, the
// render counter, and renders on many threads at once.
#include "core/MyPreferences.h"
#include "markdown/MarkdownWrap.h"

#include <QtConcurrent/QtConcurrentMap>

#include <gtest/gtest.h>

namespace {

class MarkdownWrapTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        prefs = MyPreferences::sharedInstance();
        prefs->setIsSmartypants(false);
        prefs->setIsRenderTOC(true);
        prefs->setIsTranslateNewlineToBRtags(false);
        prefs->setIsEnableMath(true);
        prefs->setIsDisableAutolink(false);
        prefs->setIsEnableImgTagToFigureTag(false);
        prefs->setIsEnableCodeblockLineNumber(false);
    }
    MyPreferences *prefs = nullptr;
};

const QString kSample = QStringLiteral("[TOC]\n\n# Title\n\n\"Quoted\" line\nnext $x$\n");

TEST_F(MarkdownWrapTest, PreviewFormsFollowThePreferences)
{
    // The defaults: table of contents spliced, math, no typographic
    // replacement, no line breaks.
    QString html = MarkdownWrap::markdownToHtml(kSample);
    EXPECT_TRUE(html.startsWith(QLatin1String("<ul>\n<li>\n<a href=\"#toc_0\">Title</a>")));
    EXPECT_TRUE(html.contains(QLatin1String("<h1 id=\"toc_0\">Title</h1>")));
    EXPECT_TRUE(html.contains(QLatin1String("<p>&quot;Quoted&quot; line\nnext \\(x\\)</p>")));

    prefs->setIsSmartypants(true);
    prefs->setIsRenderTOC(false);
    prefs->setIsTranslateNewlineToBRtags(true);
    prefs->setIsEnableMath(false);
    // The smartypants argument is not read: the preference decides.
    html = MarkdownWrap::markdownToHtmlSmartypants(kSample, false);
    EXPECT_EQ(html, QStringLiteral("<p>[TOC]</p>\n\n<h1>Title</h1>\n<p>&ldquo;Quoted&rdquo; line<br/>\nnext $x$</p>\n"));
    EXPECT_EQ(MarkdownWrap::markdownToHtml(kSample), html);

    prefs->setIsSmartypants(false);
    EXPECT_FALSE(MarkdownWrap::markdownToHtmlSmartypants(kSample, true).contains(QLatin1String("&ldquo;")));
}

TEST_F(MarkdownWrapTest, FormsWithTheirOwnSwitches)
{
    prefs->setIsRenderTOC(false);
    // Table of contents forced on.
    QString html = MarkdownWrap::markdownToHtmlIsNewlineBRRenderTypeInfo(kSample, true, ORVRenderTypePlain, nullptr);
    EXPECT_TRUE(html.startsWith(QLatin1String("<ul>")));
    EXPECT_TRUE(html.contains(QLatin1String("line<br/>\nnext")));
    // ...or as given.
    html = MarkdownWrap::markdownToHtmlIsNewlineBRIsTocRenderTypeInfo(kSample, false, false, ORVRenderTypePlain,
                                                                      nullptr);
    EXPECT_TRUE(html.startsWith(QLatin1String("<p>[TOC]</p>")));
    EXPECT_TRUE(html.contains(QLatin1String("<h1>Title</h1>")));

    // The table of contents is given back, and spliced only as isRenderTOC says.
    QString toc;
    html = MarkdownWrap::markdownToHtmlWithTOCIsNewlineBRToc(kSample, false, &toc);
    EXPECT_EQ(toc, QStringLiteral("<ul>\n<li>\n<a href=\"#toc_0\">Title</a>\n</li>\n</ul>\n"));
    EXPECT_TRUE(html.startsWith(QLatin1String("<p>[TOC]</p>")));
    EXPECT_TRUE(html.contains(QLatin1String("<h1 id=\"toc_0\">")));
    prefs->setIsRenderTOC(true);
    html = MarkdownWrap::markdownToHtmlWithTOCIsNewlineBRToc(kSample, false, &toc);
    EXPECT_TRUE(html.startsWith(toc));

    // Notes: always spliced and wrapped.
    html = MarkdownWrap::markdownToEvernotehHtmlInfo(QStringLiteral("[TOC]\n\n# A\n\n==m==\n"), nullptr);
    EXPECT_EQ(html, QStringLiteral("<div style=\"padding:8px;\"><div class=\"orvo-toc\"><p><a href=\"#toc_0\">A</a><br />\n"
                                   "</p></div>\n\n<h1 id=\"toc_0\">A</h1>\n<p><strong>m</strong></p>\n</div>"));

    // A table of contents is only written when asked for.
    MarkdownWrap::Options o;
    o.tocString = &toc;
    toc = QStringLiteral("untouched");
    MarkdownWrap::markdownToHtml(kSample, o);
    EXPECT_EQ(toc, QStringLiteral("untouched"));
}

TEST_F(MarkdownWrapTest, TableOfContentsAloneHasEveryExtension)
{
    prefs->setIsEnableMath(false);
    prefs->setIsDisableAutolink(true);
    EXPECT_EQ(MarkdownWrap::markdownToHtmlTOC(QStringLiteral("# ~~Old~~ ==new== x^2 and _u_\n")),
              QStringLiteral("<ul>\n<li>\n<a href=\"#toc_0\"><del>Old</del> <mark>new</mark> x<sup>2</sup> and "
                             "<u>u</u></a>\n</li>\n</ul>\n"));
}

struct ChartCase {
    const char *lang;
    bool ORVMarkdownToHTMLInfo::*flag;
};

TEST_F(MarkdownWrapTest, InfoReportsChartsCodeAndMath)
{
    const ChartCase cases[] = {
        {"sequence", &ORVMarkdownToHTMLInfo::isChartOldFlowSeq}, {"flow", &ORVMarkdownToHTMLInfo::isChartOldFlowSeq},
        {"Mermaid", &ORVMarkdownToHTMLInfo::isChartMermaid},     {"PlantUML", &ORVMarkdownToHTMLInfo::isChartPlantUML},
        {"echarts", &ORVMarkdownToHTMLInfo::isChartECharts},     {"dot", &ORVMarkdownToHTMLInfo::isChartVIZ},
        {"neato", &ORVMarkdownToHTMLInfo::isChartVIZ},           {"fdp", &ORVMarkdownToHTMLInfo::isChartVIZ},
        {"sfdp", &ORVMarkdownToHTMLInfo::isChartVIZ},            {"twopi", &ORVMarkdownToHTMLInfo::isChartVIZ},
        {"circo", &ORVMarkdownToHTMLInfo::isChartVIZ},
    };
    for (const ChartCase &c : cases) {
        ORVMarkdownToHTMLInfo info;
        MarkdownWrap::markdownToHtmlRenderTypeInfo(QStringLiteral("```%1\nx\n```\n").arg(QLatin1String(c.lang)),
                                                   ORVRenderTypePlain, &info);
        EXPECT_TRUE(info.*c.flag) << c.lang;
        EXPECT_TRUE(info.isHaveCodeBlock) << c.lang;
        EXPECT_FALSE(info.isHaveLaTeX) << c.lang;
        const int set = info.isChartOldFlowSeq + info.isChartMermaid + info.isChartPlantUML + info.isChartECharts +
                        info.isChartVIZ;
        EXPECT_EQ(set, 1) << c.lang;
    }

    ORVMarkdownToHTMLInfo info;
    MarkdownWrap::markdownToHtmlRenderTypeInfo(QStringLiteral("text\n"), ORVRenderTypePlain, &info);
    EXPECT_FALSE(info.isHaveCodeBlock || info.isHaveLaTeX || info.isChartMermaid);
    MarkdownWrap::markdownToHtmlRenderTypeInfo(QStringLiteral("    indented\n"), ORVRenderTypePlain, &info);
    EXPECT_TRUE(info.isHaveCodeBlock);
    // Flags are only ever set: a render without code leaves them.
    MarkdownWrap::markdownToHtmlRenderTypeInfo(QStringLiteral("text\n"), ORVRenderTypePlain, &info);
    EXPECT_TRUE(info.isHaveCodeBlock);

    // Math is reported by the forms the page's MathJax renders.
    const struct {
        int type;
        bool reported;
    } math[] = {{ORVRenderTypePlain, true},  {ORVRenderTypeEvernote, true}, {ORVRenderTypePDF, true},
                {ORVRenderTypeLaTeXTag, false}, {ORVRenderTypeEPub, true},  {ORVRenderTypeMathImage, false}};
    for (const auto &m : math) {
        ORVMarkdownToHTMLInfo mi;
        MarkdownWrap::markdownToHtmlRenderTypeInfo(QStringLiteral("$x$\n"), m.type, &mi);
        EXPECT_EQ(mi.isHaveLaTeX, m.reported) << m.type;
    }
    prefs->setIsEnableMath(false);
    ORVMarkdownToHTMLInfo off;
    MarkdownWrap::markdownToHtmlRenderTypeInfo(QStringLiteral("$x$ $$y$$\n"), ORVRenderTypePlain, &off);
    EXPECT_FALSE(off.isHaveLaTeX);
}

TEST_F(MarkdownWrapTest, RenderCounterNumbersFullRendersAndPDFIds)
{
    const int before = MarkdownWrap::renderCounter();
    MarkdownWrap::markdownToHtml(QStringLiteral("a\n"));
    EXPECT_EQ(MarkdownWrap::renderCounter(), before + 1);
    MarkdownWrap::markdownToHtmlTOC(QStringLiteral("# a\n"));
    EXPECT_EQ(MarkdownWrap::renderCounter(), before + 1);

    const QString text = QStringLiteral("# A\n\nx[^1]\n\n[^1]: n\n");
    const QString first = MarkdownWrap::markdownToHtmlRenderTypeInfo(text, ORVRenderTypePDF, nullptr);
    const QString second = MarkdownWrap::markdownToHtmlRenderTypeInfo(text, ORVRenderTypePDF, nullptr);
    const QString p2 = QString::number(before + 2), p3 = QString::number(before + 3);
    EXPECT_TRUE(first.contains(QStringLiteral("<h1 id=\"p%1_toc_0\">").arg(p2)));
    EXPECT_TRUE(first.contains(QStringLiteral("<li id=\"fn1_p%1\">").arg(p2)));
    EXPECT_TRUE(second.contains(QStringLiteral("<sup id=\"fn1_p%1_ref\">").arg(p3)));
}

TEST_F(MarkdownWrapTest, RendersOnManyThreadsAtOnce)
{
    QStringList texts;
    for (int i = 0; i < 64; ++i)
        texts << QStringLiteral("# Doc %1\n\n[TOC]\n\n- [x] item *%1*\n\n```mermaid\ng\n```\n\n$m_%1$ [^a]\n\n[^a]: note %1\n")
                     .arg(i);
    QStringList serial;
    for (const QString &t : texts)
        serial << MarkdownWrap::markdownToHtml(t);
    const QStringList parallel = QtConcurrent::blockingMapped(texts, [](const QString &t) {
        return MarkdownWrap::markdownToHtml(t);
    });
    EXPECT_EQ(parallel, serial);
}

} // namespace
