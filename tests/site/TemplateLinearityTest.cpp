// Long loops, deep nesting and texts that make a backtracking matcher crawl
// must cost time in proportion to their size. Each case is timed at two sizes,
// four times apart: a linear cost grows about four times, a quadratic one
// sixteen. Best of several runs of processor time, so that a busy machine
// doesn't decide, and sizes that stay within the processor's caches, so that
// memory doesn't either.

#include "TemplateTestSupport.h"

#include <gtest/gtest.h>

#include <ctime>
#include <functional>

using namespace sitetest;

namespace
{

// The thread's processor time, not the wall clock: on a busy machine a long
// run is interrupted more often than a short one, and the wall clock would
// count the interruptions.
double seconds(const std::function<void()> &work)
{
    const auto now = [] {
        timespec t{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
        return double(t.tv_sec) + double(t.tv_nsec) / 1e9;
    };
    const double start = now();
    work();
    return now() - start;
}

// `makeWork(n)` prepares a run of size n and returns it. The two sizes are
// timed in turn, seven times each, and the fastest of each kept, so that a
// change of load on the machine touches both alike.
void expectLinear(int n, const std::function<std::function<void()>(int)> &makeWork)
{
    const std::function<void()> smallWork = makeWork(n);
    const std::function<void()> largeWork = makeWork(4 * n);
    double small = 1e9;
    double large = 1e9;
    for (int i = 0; i < 7; ++i) {
        small = std::min(small, seconds(smallWork));
        large = std::min(large, seconds(largeWork));
    }
    EXPECT_LT(large, 10 * small) << "size " << n << ": " << small << " s, size " << 4 * n << ": " << large
                                 << " s";
}

MGTemplateMap postsVariables(int count)
{
    MGTemplateList posts;
    for (int i = 0; i < count; ++i) {
        posts.append(MGTemplateMap{{QStringLiteral("title"), QStringLiteral("Post %1").arg(i)},
                                   {QStringLiteral("url"), QStringLiteral("%1.html").arg(i)}});
    }
    return {{QStringLiteral("posts"), posts}, {QStringLiteral("name"), "Ann"}};
}

TEST(TemplateLinearity, LongLoops)
{
    expectLinear(1000, [](int n) {
        auto engine = std::shared_ptr<MGTemplateEngine>(makeEngine());
        const MGTemplateMap variables = postsVariables(n);
        return [engine, variables] {
            for (int repeat = 0; repeat < 3; ++repeat) {
                const Outcome o = expand(
                    *engine,
                    QStringLiteral("<ul>{% for p in posts %}<li class=\"{% cycle odd even %}\">"
                                   "<a href=\"{{ p.url }}\">{{ p.title | uppercase }}</a>"
                                   "{% if currentLoop.currentIndex > 3 %}!{% /if %}</li>{% /for %}</ul>"),
                    variables);
                ASSERT_TRUE(o.codes.empty());
            }
        };
    });
}

TEST(TemplateLinearity, DeepNesting)
{
    // Each level opens an if, a loop and a section, up to 3 x 320 = 960
    // blocks, just inside the engine's limit of open blocks.
    expectLinear(80, [](int depth) {
        QString text;
        for (int i = 0; i < depth; ++i)
            text += QStringLiteral("{% if yes %}{% for x in one %}{% section s %}<{{ x }}>");
        text += QStringLiteral("{{ currentLoop.currentIndex }}");
        for (int i = 0; i < depth; ++i)
            text += QStringLiteral("{% /section %}{% /for %}{% /if %}");
        auto engine = std::shared_ptr<MGTemplateEngine>(makeEngine());
        const MGTemplateMap variables{{QStringLiteral("one"), MGTemplateList{MGTemplateValue("x")}}};
        return [engine, variables, text] {
            for (int repeat = 0; repeat < 20; ++repeat) {
                const Outcome o = expand(*engine, text, variables);
                ASSERT_TRUE(o.codes.empty());
            }
        };
    });
}

TEST(TemplateLinearity, ManyMarkers)
{
    expectLinear(150, [](int n) {
        const QString text = QStringLiteral("<p>{{ name }}</p>{% if name %}x{% /if %}\n").repeated(n);
        auto engine = std::shared_ptr<MGTemplateEngine>(makeEngine());
        return [engine, text] {
            for (int repeat = 0; repeat < 20; ++repeat)
                expand(*engine, text, {{QStringLiteral("name"), "Ann"}});
        };
    });
}

TEST(TemplateLinearity, UnclosedDelimitersOnOneLine)
{
    // Starts without an end, bars without a filter's end, on one long line:
    // a backtracking matcher tries every start against the rest of the line.
    const char *const pieces[] = {"{{ |", "{% x | y", "{{{{", "{% a {{ b | c: d |", "{{\"|'"};
    for (const char *piece : pieces) {
        SCOPED_TRACE(piece);
        expectLinear(1000, [piece](int n) {
            const QString text = QString::fromUtf8(piece).repeated(n);
            return [text] {
                for (int repeat = 0; repeat < 4; ++repeat) {
                    auto engine = makeEngine();
                    const Outcome o = expand(*engine, text);
                    ASSERT_EQ(o.output, text);
                }
            };
        });
    }
}

} // namespace
