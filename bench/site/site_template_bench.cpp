// Expansions per second of a post page as a site build expands it: a theme's
// header, post, sidebar and footer joined into one template (73 markers and
// expressions), a post body of 5 KB, a sidebar looping over 20 recent posts
// and a two-level category tree.
//
//   PostPage            one engine for every page, as a site build uses it
//   PostPageFreshEngine a new engine for every page: the template is parsed
//                       each time
//   TwoTemplates        post pages and category pages in turn

#include "site/ICUTemplateMatcher.h"
#include "site/MGTemplateEngine.h"

#include <QFile>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

namespace
{

QString themeFile(const char *name)
{
    QFile f(QStringLiteral(ORVO_BENCH_THEME_DIR "/") + QLatin1String(name));
    if (!f.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", name);
        std::exit(1);
    }
    return QString::fromUtf8(f.readAll());
}

// The parts joined with one blank, as the site build composes a page.
QString composed(std::initializer_list<const char *> parts)
{
    QStringList texts;
    for (const char *p : parts)
        texts.append(themeFile(p));
    return texts.join(u' ');
}

MGTemplateMap link(const QString &name, const QString &url)
{
    return {{QStringLiteral("name"), name}, {QStringLiteral("title"), name}, {QStringLiteral("url"), url}};
}

QString postBody()
{
    const QString sentence = QStringLiteral(
        "Static sites keep the writing close to the reader: every page is ready before anyone asks for it, "
        "and nothing runs on the server but the file system. ");
    QString body;
    int section = 1;
    while (body.size() < 5 * 1024) {
        body += QStringLiteral("<h2 id=\"s%1\">Section %1</h2>\n<p>").arg(section++);
        body += sentence.repeated(4) +
                QStringLiteral("</p>\n<pre><code class=\"language-sh\">make build &amp;&amp; "
                               "make test\n</code></pre>\n");
    }
    return body;
}

MGTemplateMap siteVariables()
{
    MGTemplateList menu;
    for (const char *name : {"Home", "Archives", "About", "Projects"})
        menu.append(MGTemplateMap{{QStringLiteral("name"), name},
                                  {QStringLiteral("url"), QString::fromLatin1(name).toLower() + ".html"},
                                  {QStringLiteral("className"), ""},
                                  {QStringLiteral("target"), "_self"}});
    MGTemplateList recent;
    for (int i = 0; i < 20; ++i)
        recent.append(link(QStringLiteral("Notes from the field, part %1").arg(i + 1),
                           QStringLiteral("%1.html").arg(1700000000 + i)));
    MGTemplateList tree;
    for (int c = 0; c < 5; ++c) {
        MGTemplateList children;
        for (int s = 0; s < 3; ++s) {
            MGTemplateMap child = link(QStringLiteral("Topic %1.%2").arg(c).arg(s),
                                       QStringLiteral("topic-%1-%2.html").arg(c).arg(s));
            child.insert(QStringLiteral("count"), MGTemplateValue::integer(3 + s));
            child.insert(QStringLiteral("posts"), MGTemplateList{});
            children.append(child);
        }
        MGTemplateMap cat =
            link(QStringLiteral("Category %1").arg(c), QStringLiteral("category-%1.html").arg(c));
        cat.insert(QStringLiteral("count"), MGTemplateValue::integer(12 + c));
        cat.insert(QStringLiteral("children"), children);
        cat.insert(QStringLiteral("posts"), MGTemplateList{});
        tree.append(cat);
    }
    MGTemplateList cats{link(QStringLiteral("Writing"), QStringLiteral("writing.html")),
                        link(QStringLiteral("Tools"), QStringLiteral("tools.html"))};
    MGTemplateList tags;
    for (const char *t : {"Markdown", "Static-Sites", "Themes", "Build"})
        tags.append(link(QString::fromLatin1(t), QStringLiteral("tag_%1.html").arg(QLatin1String(t))));
    const MGTemplateMap post{
        {QStringLiteral("title"), "Notes from the field, part 21"},
        {QStringLiteral("content"), postBody()},
        {QStringLiteral("desContent"), "<p>Static sites keep the writing close to the reader.</p>"},
        {QStringLiteral("date"), "5/1/2024 10:0 AM"},
        {QStringLiteral("dateGTM"), "2024-05-01T10:00:00+00:00"},
        {QStringLiteral("artDate"), "2024-04-30T08:00:00+00:00"},
        {QStringLiteral("cats"), cats},
        {QStringLiteral("tags"), tags},
        {QStringLiteral("readMore"), ""},
        {QStringLiteral("url"), "1700000020.html"},
    };
    return {
        {QStringLiteral("siteURL"), "https://example.org/"},
        {QStringLiteral("siteDomain"), "example.org"},
        {QStringLiteral("siteName"), "Field Notes"},
        {QStringLiteral("pageTitle"), "Notes from the field, part 21 - Field Notes"},
        {QStringLiteral("siteDes"), "Writing about writing, tools and the web."},
        {QStringLiteral("siteMenu"), menu},
        {QStringLiteral("mathJaxSupport"), ""},
        {QStringLiteral("seqAndFlowChartSupport"), ""},
        {QStringLiteral("commentAndShareCode"), "<div id=\"comments\"></div>"},
        {QStringLiteral("lastBuildDate"), "2024-05-01T10:00:00+00:00"},
        {QStringLiteral("siteOther"), ""},
        {QStringLiteral("recentPosts"), recent},
        {QStringLiteral("categoriesTree"), tree},
        {QStringLiteral("post"), post},
        {QStringLiteral("postNav"),
         MGTemplateMap{{QStringLiteral("prev"), link(QStringLiteral("Part 20"), QStringLiteral("20.html"))},
                       {QStringLiteral("next"), link(QStringLiteral("Part 22"), QStringLiteral("22.html"))}}},
        {QStringLiteral("posts"), recent},
        {QStringLiteral("currentCat"), link(QStringLiteral("Writing"), QStringLiteral("writing.html"))},
        {QStringLiteral("prevPageUrl"), ""},
        {QStringLiteral("nextPageUrl"), "writing_1.html"},
    };
}

// Fails loudly when a template reports anything: a benchmark of error paths
// would measure the wrong thing.
class FailOnError : public MGTemplateEngineDelegate
{
public:
    void templateEngineEncounteredErrorIsContinuing(MGTemplateEngine *, const MGTemplateError &error,
                                                    bool) override
    {
        std::fprintf(stderr, "template error %d: %s\n", error.code, qPrintable(error.description));
        std::exit(1);
    }
};

std::unique_ptr<MGTemplateEngine> makeEngine(FailOnError *delegate)
{
    auto engine = MGTemplateEngine::templateEngine();
    engine->setMatcher(std::make_unique<ICUTemplateMatcher>(engine.get()));
    engine->setDelegate(delegate);
    return engine;
}

const QString &postTemplate()
{
    static const QString t = composed({"header.html", "post.html", "sidebar.html", "footer.html"});
    return t;
}

const QString &categoryTemplate()
{
    static const QString t = composed({"header.html", "category.html", "sidebar.html", "footer.html"});
    return t;
}

void PostPage(benchmark::State &state)
{
    FailOnError delegate;
    auto engine = makeEngine(&delegate);
    const MGTemplateMap variables = siteVariables();
    qsizetype bytes = 0;
    for (auto _ : state) {
        const std::optional<QString> out = engine->processTemplateWithVariables(postTemplate(), variables);
        bytes = out->size();
        benchmark::DoNotOptimize(out);
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["output_chars"] = double(bytes);
}

void PostPageFreshEngine(benchmark::State &state)
{
    FailOnError delegate;
    const MGTemplateMap variables = siteVariables();
    for (auto _ : state) {
        auto engine = makeEngine(&delegate);
        benchmark::DoNotOptimize(engine->processTemplateWithVariables(postTemplate(), variables));
    }
    state.SetItemsProcessed(state.iterations());
}

void TwoTemplates(benchmark::State &state)
{
    FailOnError delegate;
    auto engine = makeEngine(&delegate);
    const MGTemplateMap variables = siteVariables();
    bool post = true;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            engine->processTemplateWithVariables(post ? postTemplate() : categoryTemplate(), variables));
        post = !post;
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(PostPage)->Unit(benchmark::kMicrosecond);
BENCHMARK(PostPageFreshEngine)->Unit(benchmark::kMicrosecond);
BENCHMARK(TwoTemplates)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
