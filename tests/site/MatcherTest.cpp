// The matcher: what one match record holds, how bodies split into words, and
// that the scanner finds exactly what the matcher's regular expression finds
// when ICU runs it.

#include "TemplateTestSupport.h"

#include "site/ICUTemplateMatcher.h"

#include <gtest/gtest.h>
#include <unicode/uregex.h>

#include <random>

using namespace sitetest;

namespace
{

QString describe(const MGTemplateMatch *m)
{
    if (!m)
        return QStringLiteral("none");
    return QStringLiteral("%1 %2 %3 name=[%4] args=[%5] filter=[%6] filterArgs=[%7]")
        .arg(m->type == MGTemplateMatch::Type::Marker ? QStringLiteral("marker")
                                                      : QStringLiteral("expression"))
        .arg(m->range.location)
        .arg(m->range.length)
        .arg(m->name, m->args.join(u'|'), m->filter, m->filterArgs.join(u'|'));
}

// A matcher over one text, as the engine would set it up for a run.
class MatcherFixture : public ::testing::Test
{
protected:
    const MGTemplateMatch *firstMatch(const QString &text, qsizetype from = 0)
    {
        m_engine->processTemplateWithVariables(text, {}); // makes the run's template the matcher's
        return m_matcher->firstMarkerWithinRange({from, text.size() - from});
    }

    std::unique_ptr<MGTemplateEngine> m_engine = makeEngine();
    MGTemplateEngineMatcher *m_matcher = m_engine->matcher();
};

TEST_F(MatcherFixture, MatchRecords)
{
    const struct {
        const char *text;
        const char *expected;
    } cases[] = {
        {"ab {% for x in list %} cd", "marker 3 19 name=[for] args=[x|in|list] filter=[] filterArgs=[]"},
        {"{{ name }}", "expression 0 10 name=[name] args=[] filter=[] filterArgs=[]"},
        {R"({{ d | date_format: "yyyy" }})",
         "expression 0 29 name=[d] args=[] filter=[date_format] filterArgs=[yyyy]"},
        {R"({{ d|date_format:"a b" c }})",
         "expression 0 27 name=[d] args=[] filter=[date_format] filterArgs=[a b|c]"},
        {R"({{ d | f "HH:mm" }})", "expression 0 19 name=[d] args=[] filter=[f] filterArgs=[HH mm]"},
        {"{% now | date_format: x %}", "marker 0 26 name=[now] args=[] filter=[date_format] filterArgs=[x]"},
        {"{{ a | b | c }}", "expression 0 15 name=[a] args=[] filter=[b] filterArgs=[||c]"},
        {"{{ a |}}", "expression 0 8 name=[a] args=[] filter=[] filterArgs=[]"},
        {"{{ }}", "expression 0 5 name=[] args=[] filter=[] filterArgs=[]"},
        {"{{\n a \n}}", "expression 0 9 name=[a] args=[] filter=[] filterArgs=[]"},
        {"{{ a\nb }} {{ c }}", "expression 10 7 name=[c] args=[] filter=[] filterArgs=[]"},
        {"{{ a | b\nc }}", "none"},
        {"{{ a |\n b }}", "expression 0 12 name=[a] args=[] filter=[b] filterArgs=[]"},
        {"{%% x %}", "marker 0 8 name=[%] args=[x] filter=[] filterArgs=[]"},
        {"{{{ x }}}", "expression 0 8 name=[{] args=[x] filter=[] filterArgs=[]"},
        {"no markers at all", "none"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(describe(firstMatch(QString::fromUtf8(c.text))).toStdString(), c.expected) << c.text;
}

TEST_F(MatcherFixture, MatchesLieWithinTheRange)
{
    const QString text = QStringLiteral("{{ a }} {{ b }} {{ c }}");
    m_engine->processTemplateWithVariables(text, {});
    EXPECT_EQ(describe(m_matcher->firstMarkerWithinRange({1, text.size() - 1})).toStdString(),
              "expression 8 7 name=[b] args=[] filter=[] filterArgs=[]");
    // A range that ends inside "{{ c }}" can't hold it.
    EXPECT_EQ(describe(m_matcher->firstMarkerWithinRange({9, 12})).toStdString(), "none");
    EXPECT_EQ(m_matcher->firstMarkerWithinRange({0, text.size() + 1}), nullptr);
    EXPECT_EQ(m_matcher->firstMarkerWithinRange({-1, 2}), nullptr);
}

TEST_F(MatcherFixture, KeptMatchesFollowTheTemplate)
{
    // Runs alternate between templates; what is kept of one never leaks
    // into another.
    const MGTemplateMap vars{{QStringLiteral("a"), "1"}, {QStringLiteral("b"), "2"}};
    const QString first = QStringLiteral("{{ a }}-{{ b }}");
    const QString second = QStringLiteral("{{ b }}+{{ a }}");
    for (int i = 0; i < 3; ++i) {
        for (int t = 1; t <= 6; ++t) {
            const QString other = QStringLiteral("{{ a }}").repeated(t);
            EXPECT_EQ(expand(*m_engine, other, vars).output, QStringLiteral("1").repeated(t));
        }
        EXPECT_EQ(expand(*m_engine, first, vars).output, QStringLiteral("1-2"));
        EXPECT_EQ(expand(*m_engine, second, vars).output, QStringLiteral("2+1"));
    }
}

TEST(ArgumentsFromString, SplitsWords)
{
    const struct {
        const char *text;
        QStringList expected;
    } cases[] = {
        {"a b  c", {"a", "b", "c"}},
        {"", {}},
        {"   ", {}},
        {R"("a b" c)", {"a b", "c"}},
        {"'a b' \"c'd\"", {"a b", "c'd"}},
        {R"("a\"b" c)", {R"(a\"b)", "c"}},
        {R"(a "" b)", {"a"}},
        {"'' b", {}},
        {R"("abc)", {R"("abc)"}},
        {R"(a"b c")", {R"(a"b)", R"(c")"}},
        {R"("a b"c)", {"a b", "c"}},
        {R"("\")", {R"("\")"}},
        {"\"a\nb\" c", {"\"a", "b\"", "c"}},
        {"x\u00a0y\u2003z", {"x", "y", "z"}},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(ICUTemplateMatcher::argumentsFromString(QString::fromUtf8(c.text)), c.expected) << c.text;
    }
}

TEST(ICUTemplateMatcherRegex, IsBuiltFromTheDelimiters)
{
    auto engine = makeEngine();
    engine->processTemplateWithVariables(QString(), {});
    const auto *matcher = dynamic_cast<ICUTemplateMatcher *>(engine->matcher());
    ASSERT_NE(matcher, nullptr);
    EXPECT_EQ(matcher->regex().toStdString(),
              R"((?m)(?:(\Q{%\E)(?:\s+)?(.*?)(?:(?:\s+)?\Q|\E(?:\s+)?(.*?))?(?:\s+)?\Q%}\E|)"
              R"((\Q{{\E)(?:\s+)?(.*?)(?:(?:\s+)?\Q|\E(?:\s+)?(.*?))?(?:\s+)?\Q}}\E))");
}

// ---- The scanner against ICU's regular expressions ----

class IcuRegex
{
public:
    explicit IcuRegex(const QString &pattern)
    {
        UErrorCode status = U_ZERO_ERROR;
        m_re = uregex_open(reinterpret_cast<const UChar *>(pattern.utf16()), int32_t(pattern.size()), 0,
                           nullptr, &status);
        EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    }
    ~IcuRegex() { uregex_close(m_re); }
    IcuRegex(const IcuRegex &) = delete;
    IcuRegex &operator=(const IcuRegex &) = delete;

    void setText(const QString &text)
    {
        m_text = text;
        UErrorCode status = U_ZERO_ERROR;
        uregex_setText(m_re, reinterpret_cast<const UChar *>(m_text.utf16()), int32_t(m_text.size()),
                       &status);
    }
    bool findFrom(qsizetype from)
    {
        UErrorCode status = U_ZERO_ERROR;
        uregex_setRegion(m_re, int32_t(from), int32_t(m_text.size()), &status);
        return uregex_findNext(m_re, &status);
    }
    bool findNext()
    {
        UErrorCode status = U_ZERO_ERROR;
        return uregex_findNext(m_re, &status);
    }
    qsizetype start(int group = 0) const
    {
        UErrorCode status = U_ZERO_ERROR;
        return uregex_start(m_re, group, &status);
    }
    qsizetype end(int group = 0) const
    {
        UErrorCode status = U_ZERO_ERROR;
        return uregex_end(m_re, group, &status);
    }
    QString group(int g) const { return start(g) < 0 ? QString() : m_text.mid(start(g), end(g) - start(g)); }

private:
    URegularExpression *m_re = nullptr;
    QString m_text;
};

// The record the matcher is to build from a match of its expression.
QString recordFromRegex(const IcuRegex &re)
{
    auto m = std::make_unique<MGTemplateMatch>();
    const bool marker = re.start(1) >= 0;
    m->type = marker ? MGTemplateMatch::Type::Marker : MGTemplateMatch::Type::Expression;
    m->range = {re.start(), re.end() - re.start()};
    QStringList words = ICUTemplateMatcher::argumentsFromString(re.group(marker ? 2 : 5));
    if (!words.isEmpty()) {
        m->name = words.takeFirst();
        m->args = words;
    }
    QString filterText = re.group(marker ? 3 : 6);
    if (!filterText.isEmpty()) {
        IcuRegex colon(QStringLiteral(":(?:\\s+)?"));
        colon.setText(filterText);
        if (colon.findFrom(0))
            filterText.replace(colon.start(), colon.end() - colon.start(), QStringLiteral(" "));
        words = ICUTemplateMatcher::argumentsFromString(filterText);
        if (!words.isEmpty()) {
            m->filter = words.takeFirst();
            m->filterArgs = words;
        }
    }
    return describe(m.get());
}

// Texts made of the pieces that matter to the expression (delimiters, bars,
// quotes, colons, every kind of white space and line end), half of them
// shaped like markers and expressions so that matches are common.
QString randomText(std::mt19937 &random)
{
    static const char16_t *const pieces[] = {
        u"{%",     u"%}",     u"{{", u"}}", u"|",  u" ",     u"  ",     u"\n",   u"a",
        u"bc",     u":",      u"\"", u"'",  u"\\", u"\t",    u"\u2028", u"\r\n", u"\u0085",
        u"\u00a0", u"\u000b", u"{",  u"}",  u"%",  u"x | y", u": "};
    static const char16_t *const starts[] = {u"{%", u"{{"};
    static const char16_t *const ends[] = {u"%}", u"}}", u"", u"}"};
    std::uniform_int_distribution<int> segments(0, 5);
    std::uniform_int_distribution<int> noise(0, 4);
    std::uniform_int_distribution<size_t> pick(0, std::size(pieces) - 1);
    std::uniform_int_distribution<int> coin(0, 3);
    const auto addNoise = [&](QString &text) {
        for (int n = noise(random); n > 0; --n)
            text += QString::fromUtf16(pieces[pick(random)]);
    };
    QString text;
    for (int s = segments(random); s > 0; --s) {
        addNoise(text);
        if (coin(random) == 0)
            continue;
        text += QString::fromUtf16(starts[coin(random) % 2]);
        addNoise(text);
        if (coin(random) == 0) {
            text += u'|';
            addNoise(text);
        }
        text += QString::fromUtf16(ends[coin(random)]);
    }
    return text;
}

TEST(ICUTemplateMatcherScanner, FindsWhatTheRegularExpressionFinds)
{
    auto engine = makeEngine();
    engine->processTemplateWithVariables(QString(), {});
    auto *matcher = dynamic_cast<ICUTemplateMatcher *>(engine->matcher());
    IcuRegex re(matcher->regex());
    std::mt19937 random(20240601);
    int matches = 0, markers = 0, filters = 0;
    for (int i = 0; i < 30000; ++i) {
        const QString text = randomText(random);
        engine->processTemplateWithVariables(text, {});
        re.setText(text);
        const qsizetype from = std::uniform_int_distribution<qsizetype>(0, text.size())(random);
        const QString expected = re.findFrom(from) ? recordFromRegex(re) : QStringLiteral("none");
        const QString found = describe(matcher->firstMarkerWithinRange({from, text.size() - from}));
        ASSERT_EQ(found.toStdString(), expected.toStdString())
            << "text: " << text.toStdString() << " from " << from;
        matches += expected != u"none";
        markers += expected.startsWith(u"marker");
        filters += expected.contains(u"filter=[") && !expected.contains(u"filter=[] ");
    }
    // The texts must exercise the expression, not only miss it.
    EXPECT_GT(matches, 6000);
    EXPECT_GT(markers, 3000);
    EXPECT_GT(filters, 1000);
}

TEST(ArgumentsFromString, SplitsAsTheWordExpressionDoes)
{
    IcuRegex re(QStringLiteral(R"re("(.*?)(?<!\\)"|'(.*?)(?<!\\)'|(\S+))re"));
    static const char16_t *const pieces[] = {u"\"", u"'",  u"\\",     u" ",  u"a",
                                             u"bc", u"\n", u"\u00a0", u"\t", u"|"};
    std::mt19937 random(7);
    std::uniform_int_distribution<int> count(0, 12);
    std::uniform_int_distribution<size_t> pick(0, std::size(pieces) - 1);
    for (int i = 0; i < 20000; ++i) {
        QString text;
        for (int n = count(random); n > 0; --n)
            text += QString::fromUtf16(pieces[pick(random)]);
        re.setText(text);
        QStringList expected;
        for (bool found = re.findFrom(0); found; found = re.findNext()) {
            const QString word = re.start(1) >= 0   ? re.group(1)
                                 : re.start(2) >= 0 ? re.group(2)
                                                    : re.group(3);
            if (word.isEmpty())
                break;
            expected.append(word);
        }
        ASSERT_EQ(ICUTemplateMatcher::argumentsFromString(text), expected) << text.toStdString();
    }
}

} // namespace
