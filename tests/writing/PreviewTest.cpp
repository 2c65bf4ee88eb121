// The live preview in QtWebEngine (offscreen): bodies pushed into a shell
// loaded once, the reader's place kept, math, diagrams and code drawn from
// the local assets, one failing chart leaving the others drawn, the PlantUML
// address decoding back to its text, links and scroll sync.
#include "WritingTestSupport.h"
#include "app/ORVLivePreviewView.h"
#include "app/ORVPreviewWebPage.h"
#include "core/MyPreferences.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>
#include <QWebEngineSettings>
#include <QTemporaryDir>

#include <zlib.h>

using writingtest::runJavaScript;
using writingtest::waitFor;

namespace {

ORVPreviewRequest requestFor(const QString &markdown)
{
    ORVPreviewRequest r;
    r.markdown = markdown;
    r.title = QStringLiteral("Test");
    r.preferences = ORVPagePreferences::fromPreferences();
    return r;
}

// Shows `markdown` and waits until the page has it.
bool show(ORVLivePreviewView &view, const QString &markdown)
{
    view.updatePreview(requestFor(markdown));
    return waitFor([&] { return view.isIdle(); }, 30000);
}

QString js(ORVLivePreviewView &view, const QString &script)
{
    return runJavaScript(view.page(), script).toString();
}

QString longText(int sections)
{
    QString md;
    for (int i = 0; i < sections; ++i) {
        md += QStringLiteral("## Section %1\n\n").arg(i);
        for (int p = 0; p < 6; ++p)
            md += QStringLiteral("Paragraph %1 of section %2, long enough to wrap a little in a narrow window.\n\n").arg(p).arg(i);
    }
    return md;
}

// The text a PlantUML address carries: PlantUML's 64-character alphabet
// back to bytes, then raw inflate.
QByteArray decodePlantUML(const QString &encoded)
{
    QByteArray packed;
    auto value = [](QChar c) -> int {
        const char ch = char(c.unicode());
        if (ch >= '0' && ch <= '9') return ch - '0';
        if (ch >= 'A' && ch <= 'Z') return ch - 'A' + 10;
        if (ch >= 'a' && ch <= 'z') return ch - 'a' + 36;
        if (ch == '-') return 62;
        return 63;
    };
    for (qsizetype i = 0; i + 3 < encoded.size(); i += 4) {
        const int a = value(encoded[i]), b = value(encoded[i + 1]), c = value(encoded[i + 2]), d = value(encoded[i + 3]);
        packed.append(char((a << 2) | (b >> 4)));
        packed.append(char(((b & 15) << 4) | (c >> 2)));
        packed.append(char(((c & 3) << 6) | d));
    }
    QByteArray out(1 << 16, '\0');
    z_stream z{};
    inflateInit2(&z, -15);
    z.next_in = reinterpret_cast<Bytef *>(packed.data());
    z.avail_in = uInt(packed.size());
    z.next_out = reinterpret_cast<Bytef *>(out.data());
    z.avail_out = uInt(out.size());
    const int rc = inflate(&z, Z_FINISH);
    out.truncate(qsizetype(z.total_out));
    inflateEnd(&z);
    return rc == Z_STREAM_END || rc == Z_BUF_ERROR ? out : QByteArray();
}

} // namespace

TEST(LivePreview, PushesBodiesIntoOneShellAndKeepsThePlace)
{
    ORVLivePreviewView view;
    view.resize(700, 500);
    view.show();
    const QString text = longText(20);
    ASSERT_TRUE(show(view, text));
    EXPECT_TRUE(js(view, QStringLiteral("orvoPreview.bodyHTML()")).contains(QStringLiteral("<h2 id=\"toc_0\">Section 0</h2>")));
    EXPECT_EQ(view.shellLoadCount(), 1);

    js(view, QStringLiteral("window.scrollTo(0, 1500); document.querySelector('h2').orvoMark = 'kept'; ''"));
    QString edited = text;
    edited.replace(QStringLiteral("Paragraph 3 of section 12"), QStringLiteral("Paragraph three of section 12"));
    ASSERT_TRUE(show(view, edited));
    EXPECT_TRUE(js(view, QStringLiteral("orvoPreview.bodyHTML()")).contains(QStringLiteral("Paragraph three of section 12")));
    EXPECT_EQ(view.shellLoadCount(), 1) << "typing never reloads the page";
    EXPECT_EQ(runJavaScript(view.page(), QStringLiteral("window.scrollY")).toInt(), 1500) << "the reader keeps their place";
    EXPECT_EQ(js(view, QStringLiteral("document.querySelector('h2').orvoMark")), QStringLiteral("kept"))
        << "blocks that did not change are not replaced";
    EXPECT_EQ(view.partialUpdateCount(), 1);

    // Raw HTML that opens an element around Markdown: the blocks inside it
    // are replaced in place, and the page matches a page made whole.
    const QString boxed = edited + QStringLiteral("\n\n<div class=\"box\">\n\nInside *one*\n\n</div>\n\nAfter\n");
    ASSERT_TRUE(show(view, boxed));
    const int partialBefore = view.partialUpdateCount();
    ASSERT_TRUE(show(view, QString(boxed).replace(QStringLiteral("*one*"), QStringLiteral("*two*"))));
    EXPECT_EQ(js(view, QStringLiteral("document.querySelector('.box em').textContent")), QStringLiteral("two"));
    EXPECT_EQ(js(view, QStringLiteral("document.querySelectorAll('.box em').length + ' ' + document.querySelector('.box').nextElementSibling.textContent")),
              QStringLiteral("1 After"));
    EXPECT_EQ(view.partialUpdateCount(), partialBefore + 1) << "the edit inside the box went in alone";

    // Many quick edits coalesce; the page ends with the newest.
    for (int i = 0; i < 30; ++i)
        view.updatePreview(requestFor(edited + QStringLiteral("\n\nTail %1").arg(i)));
    ASSERT_TRUE(waitFor([&] { return view.isIdle(); }, 30000));
    EXPECT_TRUE(js(view, QStringLiteral("orvoPreview.bodyHTML()")).contains(QStringLiteral("Tail 29")));

    // A first formula needs MathJax: the shell is loaded again, the place kept.
    ASSERT_TRUE(show(view, edited + QStringLiteral("\n\n$$x^2$$\n")));
    EXPECT_EQ(view.shellLoadCount(), 2);
    EXPECT_EQ(runJavaScript(view.page(), QStringLiteral("window.scrollY")).toInt(), 1500);
}

TEST(LivePreview, MathDiagramsAndCodeDrawFromLocalAssets)
{
    if (!writingtest::previewLibrariesInstalled())
        GTEST_SKIP() << "preview libraries not installed (scripts/install-preview-assets)";
    ORVLivePreviewView view;
    view.resize(900, 700);
    view.show();
    const QString md = QStringLiteral(
        "# Charts\n\n$$E = mc^2$$\n\n"
        "```mermaid\ngraph TD;\n  A-->B;\n```\n\n"
        "```dot\ndigraph { a -> b }\n```\n\n"
        "```sequence\nAlice->Bob: Hello\n```\n\n"
        "```flow\nst=>start: Start\ne=>end\nst->e\n```\n\n"
        "```echarts\nthrow new Error('broken chart');\n```\n\n"
        "```echarts\noption = {xAxis:{type:'category',data:['a','b']},yAxis:{type:'value'},series:[{type:'bar',data:[1,2]}]};\n```\n\n"
        "```c\nint main(void) { return 0; }\n```\n");
    ASSERT_TRUE(show(view, md));
    const auto count = [&](const char *selector) {
        return runJavaScript(view.page(), QStringLiteral("document.querySelectorAll(\"%1\").length").arg(QLatin1String(selector))).toInt();
    };
    EXPECT_TRUE(waitFor([&] { return js(view, QStringLiteral("theOrvoMathJaxRenderIsReady('')")) == QLatin1String("yes"); }, 60000));
    EXPECT_TRUE(waitFor([&] { return count(".MathJax_SVG_Display svg") == 1; }, 60000)) << "the formula is drawn";
    EXPECT_TRUE(waitFor([&] { return count(".mermaid svg") == 1; }, 30000)) << "mermaid";
    EXPECT_TRUE(waitFor([&] { return count("[id^='orvo-chart-ele-'] svg") >= 4; }, 30000)) << "viz, sequence and flow draw too";
    EXPECT_TRUE(waitFor([&] { return count("[id^='orvo-chart-ele-'] canvas") == 1; }, 30000)) << "the good ECharts block";
    EXPECT_GE(count("code.language-c .token"), 3) << "Prism coloured the code";
    EXPECT_EQ(count("pre code.language-echarts"), 0) << "both ECharts blocks were taken";
    EXPECT_EQ(js(view, QStringLiteral("document.getElementById('orvo-chart-ele-4').innerHTML")), QString())
        << "the throwing block stays empty and stops nothing";
}

TEST(LivePreview, PlantUMLAddressCarriesTheText)
{
    ORVLivePreviewView view;
    view.show();
    const QString diagram = QString::fromUtf8("@startuml\nAlice -> Bób: Grüße ✓\n@enduml");
    ASSERT_TRUE(show(view, QStringLiteral("```plantuml\n%1\n```\n").arg(diagram)));
    QString src;
    ASSERT_TRUE(waitFor([&] {
        src = js(view, QStringLiteral("(document.querySelector('[id^=\"orvo-chart-ele-\"] img')||{}).src||''"));
        return !src.isEmpty();
    }));
    const QString prefix = QStringLiteral("https://www.plantuml.com/plantuml/svg/");
    ASSERT_TRUE(src.startsWith(prefix)) << src.toStdString();
    EXPECT_EQ(decodePlantUML(src.mid(prefix.size())), (diagram + QLatin1Char('\n')).toUtf8());
}

TEST(LivePreview, LinksGoWhereTheyBelong)
{
    using Action = ORVPreviewWebPage::LinkAction;
    const QUrl page = QUrl::fromLocalFile(QStringLiteral("/docs/"));
    const struct {
        const char *url;
        Action action;
    } cases[] = {
        {"https://example.com/a", Action::OpenExternally},
        {"mailto:me@example.com", Action::OpenExternally},
        {"orvolib://open?doc=1", Action::OpenInOrvo},
        {"file:///docs/other.md", Action::OpenDocument},
        {"file:///docs/picture.png", Action::OpenExternally},
        {"file:///docs/#toc_2", Action::FollowInPage},
        {"javascript:alert(1)", Action::Ignore},
    };
    for (const auto &c : cases)
        EXPECT_EQ(int(ORVPreviewWebPage::actionForLink(QUrl(QString::fromLatin1(c.url)), page)), int(c.action)) << c.url;

    QTemporaryDir folder;
    ORVLivePreviewView view;
    view.previewPage()->openExternalLinks = false;
    view.setBaseFolder(folder.path());
    view.show();
    ASSERT_TRUE(show(view, QStringLiteral("# Top\n\n[web](https://example.com/x) [lib](orvolib://open?doc=7) "
                                          "[doc](other.md) [new](https://example.com/new){target}\n\n<a href=\"https://example.com/blank\" target=\"_blank\">blank</a>\n")));
    QSignalSpy external(view.previewPage(), &ORVPreviewWebPage::externalLinkActivated);
    QSignalSpy app(view.previewPage(), &ORVPreviewWebPage::linkToApplicationActivated);
    QSignalSpy docs(view.previewPage(), &ORVPreviewWebPage::documentLinkActivated);
    js(view, QStringLiteral("document.querySelectorAll('a')[0].click(); ''"));
    ASSERT_TRUE(waitFor([&] { return external.count() == 1; }));
    js(view, QStringLiteral("document.querySelectorAll('a')[1].click(); ''"));
    ASSERT_TRUE(waitFor([&] { return app.count() == 1; }));
    js(view, QStringLiteral("document.querySelectorAll('a')[2].click(); ''"));
    ASSERT_TRUE(waitFor([&] { return docs.count() == 1; }));
    EXPECT_EQ(external.at(0).at(0).toUrl(), QUrl(QStringLiteral("https://example.com/x")));
    EXPECT_EQ(app.at(0).at(0).toUrl(), QUrl(QStringLiteral("orvolib://open?doc=7")));
    EXPECT_EQ(docs.at(0).at(0).toUrl(), QUrl::fromLocalFile(folder.filePath(QStringLiteral("other.md"))));
    // A script's click opens no window unless scripts may: let this one.
    view.page()->settings()->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, true);
    js(view, QStringLiteral("document.querySelector('a[target=_blank]').click(); ''"));
    ASSERT_TRUE(waitFor([&] { return external.count() == 2; })) << "a new window goes to the browser too";
    EXPECT_EQ(external.at(1).at(0).toUrl(), QUrl(QStringLiteral("https://example.com/blank")));
    EXPECT_TRUE(js(view, QStringLiteral("orvoPreview.bodyHTML()")).contains(QStringLiteral("Top"))) << "the page stayed";
}

TEST(LivePreview, ScrollFollowsTheEditorsSections)
{
    ORVLivePreviewView view;
    view.resize(700, 500);
    view.show();
    ASSERT_TRUE(show(view, longText(10)));
    view.syncScroll(5, 0.0, 0.5, 10);
    ASSERT_TRUE(waitFor([&] {
        const int heading = runJavaScript(view.page(), QStringLiteral("Math.round(document.querySelectorAll('h2')[5].getBoundingClientRect().top)")).toInt();
        return qAbs(heading) <= 1;
    })) << "section 5 stands at the top";
    view.syncScroll(0, 0.0, 0.0, 3); // the page has 10 headings: the share of the document decides
    ASSERT_TRUE(waitFor([&] { return runJavaScript(view.page(), QStringLiteral("window.scrollY")).toInt() == 0; }));
}
