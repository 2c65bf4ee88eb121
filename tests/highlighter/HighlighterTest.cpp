// HGMarkdownHighlighter on a text document: when it parses (driven by a fake
// clock), what it drops, what it styles, and what it tells.
#include "core/ORVNotificationCenter.h"
#include "highlight/HGMarkdownHighlighter.h"
#include "highlight/HGStyleSheetParser.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>

namespace {

// A timer the test fires by hand.
struct FakeTimer : HGMarkdownHighlighter::Timer {
    void start(int ms) override
    {
        active = true;
        interval = ms;
        ++starts;
    }
    void stop() override { active = false; }
    bool isActive() const override { return active; }
    void fire()
    {
        active = false;
        onTimeout();
    }
    bool active = false;
    int interval = 0;
    int starts = 0;
};

struct Fixture {
    explicit Fixture(const QString &text)
    {
        doc.setPlainText(text);
        doc.documentLayout(); // a document reports its changes once it has a layout, as a view gives it
        highlighter = std::make_unique<HGMarkdownHighlighter>(&doc, nullptr, [this] {
            auto t = std::make_unique<FakeTimer>();
            timers.push_back(t.get());
            return t;
        });
        highlighter->applyStylesFromStylesheet(HGStyleSheetParser::parse(
            QStringLiteral("H1\ncolor: cb4b16\nfont-style: bold\nEMPH\ncolor: 6c71c4\nSTRONG\nfont-style: bold\n")));
    }
    FakeTimer &updateTimer() { return *timers.at(0); }

    // Activates and waits until the whole text is styled and the worker
    // has ended.
    void activateAndWait()
    {
        QSignalSpy done(highlighter.get(), &HGMarkdownHighlighter::didParseAllAndHighlight);
        QSignalSpy ended(highlighter.get(), &HGMarkdownHighlighter::parsingFinished);
        highlighter->activate();
        ASSERT_TRUE(ended.wait(10000));
        ASSERT_EQ(done.count(), 1);
    }
    void type(int position, const QString &text)
    {
        QTextCursor c(&doc);
        c.setPosition(position);
        c.insertText(text);
    }
    QList<QTextLayout::FormatRange> formatsOfBlock(int n) { return doc.findBlockByNumber(n).layout()->formats(); }

    QTextDocument doc;
    std::vector<FakeTimer *> timers;
    std::unique_ptr<HGMarkdownHighlighter> highlighter;
};

const QColor kHeading(0xcb, 0x4b, 0x16);

} // namespace

TEST(HighlighterScheduling, TypingNeverParsesBeforeAPause)
{
    Fixture f(QStringLiteral("# Title\n\ntext"));
    f.activateAndWait();
    QSignalSpy started(f.highlighter.get(), &HGMarkdownHighlighter::parsingStarted);
    for (int i = 0; i < 20; ++i) {
        f.type(f.doc.characterCount() - 1, QStringLiteral("x"));
        EXPECT_TRUE(f.updateTimer().isActive());
    }
    EXPECT_EQ(f.updateTimer().interval, 150) << "the wait is 0.15 s";
    EXPECT_EQ(f.updateTimer().starts, 20) << "each keystroke restarts the wait";
    EXPECT_EQ(started.count(), 0);
    EXPECT_FALSE(f.highlighter->editedRanges().isEmpty());
    f.updateTimer().fire();
    ASSERT_EQ(started.count(), 1);
    EXPECT_EQ(started.at(0).at(0).value<qsizetype>(), f.doc.characterCount() - 1) << "the copy has the text's length";
}

TEST(HighlighterScheduling, ChangeDuringAParseDropsItsResultAndParsesAgain)
{
    Fixture f(QStringLiteral("para\n\ntext"));
    f.activateAndWait();
    QSignalSpy started(f.highlighter.get(), &HGMarkdownHighlighter::parsingStarted);
    QSignalSpy dropped(f.highlighter.get(), &HGMarkdownHighlighter::parseResultDropped);
    QSignalSpy styled(f.highlighter.get(), &HGMarkdownHighlighter::didHighlightVisibleRange);

    f.type(0, QStringLiteral("# "));
    f.updateTimer().fire();
    ASSERT_TRUE(f.highlighter->isParsing());
    f.type(f.doc.characterCount() - 1, QStringLiteral("!"));
    f.updateTimer().fire();
    EXPECT_TRUE(f.highlighter->isParseAgainFlagSet()) << "one worker at most";
    EXPECT_EQ(started.count(), 1);

    ASSERT_TRUE(dropped.wait(10000));
    EXPECT_TRUE(styled.isEmpty()) << "nothing from the dropped parse";
    ASSERT_TRUE(styled.wait(10000)) << "the worker's exit starts the next parse";
    EXPECT_EQ(started.count(), 2);
    ASSERT_EQ(f.formatsOfBlock(0).size(), 1);
    EXPECT_EQ(f.formatsOfBlock(0).first().format.foreground().color(), kHeading);
    EXPECT_EQ(f.formatsOfBlock(0).first().length, 6);
}

TEST(HighlighterScheduling, StaleResultLeavesTextUnstyledUntilTheNextParse)
{
    Fixture f(QStringLiteral("para"));
    f.activateAndWait();
    QSignalSpy outline(f.highlighter.get(), &HGMarkdownHighlighter::docOutlineDidChange);
    QSignalSpy styled(f.highlighter.get(), &HGMarkdownHighlighter::didHighlightVisibleRange);
    f.type(0, QStringLiteral("# "));
    f.updateTimer().fire();
    f.type(f.doc.characterCount() - 1, QStringLiteral("!")); // the length changes while it parses
    ASSERT_TRUE(outline.wait(10000)) << "the result arrives";
    EXPECT_FALSE(f.highlighter->isCachedResultCurrent());
    EXPECT_TRUE(styled.isEmpty());
    EXPECT_TRUE(f.formatsOfBlock(0).isEmpty()) << "no heading style from a stale parse";

    f.updateTimer().fire();
    ASSERT_TRUE(styled.wait(10000));
    ASSERT_FALSE(f.formatsOfBlock(0).isEmpty());
    EXPECT_EQ(f.formatsOfBlock(0).first().format.foreground().color(), kHeading);
}

TEST(HighlighterStyling, HeadingColoursEmojiOffsetsAndNotifications)
{
    Fixture f(QString::fromUtf8("# Title\n\n\xF0\x9F\x98\x80 *em* **bold**"));
    int visible = 0;
    int all = 0;
    QObject context;
    ORVNotificationCenter::defaultCenter()->addObserver(kHGMarkdownHighlighterDidHighlightVisibleRange, &context,
                                                        [&](const ORVNotification &) { ++visible; });
    ORVNotificationCenter::defaultCenter()->addObserver(kHGMarkdownHighlighterDidParseAllAndHighlight, &context,
                                                        [&](const ORVNotification &) { ++all; });
    f.activateAndWait();
    EXPECT_TRUE(f.highlighter->isFirstPassDone());
    EXPECT_EQ(all, 1);
    EXPECT_GE(visible, 1);

    const auto heading = f.formatsOfBlock(0);
    ASSERT_EQ(heading.size(), 1);
    EXPECT_EQ(heading[0].start, 0);
    EXPECT_EQ(heading[0].length, 7);
    EXPECT_EQ(heading[0].format.foreground().color(), kHeading);
    EXPECT_EQ(heading[0].format.fontWeight(), QFont::Bold);

    const auto line = f.formatsOfBlock(2);
    ASSERT_EQ(line.size(), 2);
    EXPECT_EQ(line[0].start, 3) << "the emoji is two units";
    EXPECT_EQ(line[0].length, 4);
    EXPECT_EQ(line[0].format.foreground().color(), QColor(0x6c, 0x71, 0xc4));
    EXPECT_EQ(line[1].start, 8);
    EXPECT_EQ(line[1].format.fontWeight(), QFont::Bold);

    ASSERT_EQ(f.highlighter->docOutline().size(), 1);
    EXPECT_EQ(f.highlighter->docOutline().first().title, QStringLiteral("Title"));
}

TEST(HighlighterStyling, StylesFollowTypingUntilTheNextParse)
{
    Fixture f(QStringLiteral("# Title\n*em* after"));
    f.activateAndWait();
    f.type(3, QStringLiteral("XY")); // inside the heading: it grows
    auto heading = f.formatsOfBlock(0);
    ASSERT_EQ(heading.size(), 1);
    EXPECT_EQ(heading[0].length, 9);
    f.type(f.doc.findBlockByNumber(1).position(), QStringLiteral("ab")); // before the emphasis: it moves
    const auto emph = f.formatsOfBlock(1);
    ASSERT_EQ(emph.size(), 1);
    EXPECT_EQ(emph[0].start, 2);
    EXPECT_EQ(emph[0].length, 4);
    f.type(f.doc.findBlockByNumber(1).position() + 6, QStringLiteral("zz")); // right after it: not taken in
    EXPECT_EQ(f.formatsOfBlock(1)[0].length, 4);
}

TEST(HighlighterStyling, NewThemeRestylesAndLinksCarryAnchors)
{
    Fixture f(QStringLiteral("# Title [a](http://x.example)"));
    f.highlighter->makeLinksClickable = true;
    f.activateAndWait();
    f.highlighter->applyStylesFromStylesheet(HGStyleSheetParser::parse(QStringLiteral("H1\ncolor: 00ff00\nLINK\ncolor: 0000ff\n")));
    const auto formats = f.formatsOfBlock(0);
    ASSERT_EQ(formats.size(), 2);
    EXPECT_EQ(formats[0].format.foreground().color(), QColor(0, 255, 0));
    EXPECT_EQ(formats[1].format.anchorHref(), QStringLiteral("http://x.example"));
}

TEST(HighlighterLifecycle, DestroyedWhileParsing)
{
    auto f = std::make_unique<Fixture>(QString(200000, QLatin1Char('x')) + QStringLiteral("\n# h"));
    f->highlighter->activate();
    EXPECT_TRUE(f->highlighter->isParsing());
    f->highlighter.reset(); // waits for the worker; its result goes nowhere
    SUCCEED();
}
