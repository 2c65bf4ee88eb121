// Every editing rule as a table of marked texts: the text and selection
// before a command, and after it ("|" caret, «» selection).
#include "EditingTestSupport.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QTimeZone>

using namespace editingtest;

namespace {

struct Case {
    const char *name;
    const char *before;
    const char *after;
};

void expectCases(const std::vector<Case> &cases, const Command &command, ORVEditingOptions options = {})
{
    for (const Case &c : cases) {
        const QString got = run(QString::fromUtf8(c.before), command, options);
        EXPECT_EQ(show(got), show(QString::fromUtf8(c.after))) << c.name << ": before " << show(QString::fromUtf8(c.before));
    }
}

// Backspace as the editor does it: the ordered-list rule first, else the
// character before the caret (or the selection) goes.
void backspace(ORVMDTextCommands &c)
{
    if (c.checkIsDeleteCharactsInOrderListAndIsDoDelelte(true))
        return;
    ORVEditRange r = c.buffer().selectedRange();
    if (r.isEmpty() && r.location > 0)
        r = {r.location - 1, 1};
    c.buffer().replaceCharactersInRange(r, QString());
}

ORVEditingOptions tabsOff()
{
    ORVEditingOptions o;
    o.isSpaceInsteadTabs = false;
    return o;
}

ORVEditingOptions numbersAsTyped()
{
    ORVEditingOptions o;
    o.isDisableAutoCorrectOrderListNumber = true;
    return o;
}

} // namespace

TEST(ReturnKey, ContinuesListsQuotesAndIndentationInThatOrder)
{
    expectCases({
        {"ordered item", "1. a|", "1. a\n2. |"},
        {"a list is numbered from 1", "10. a|", "1. a\n2. |"},
        {"indented bullet keeps its indent", "  - a|", "  - a\n  - |"},
        {"star and plus bullets", "* a|\n+ b", "* a\n* |\n+ b"},
        {"bullet with wide spacing", "-   a|", "-   a\n-   |"},
        {"checked task continues unchecked", "- [x] a|", "- [x] a\n- [ ] |"},
        {"unchecked task", "- [ ] a|", "- [ ] a\n- [ ] |"},
        {"ordered task is no task", "1. [ ] a|", "1. [ ] a\n2. |"},
        {"empty task ends the list", "- a\n- [ ] |", "- a\n\n|"},
        {"empty ordered item ends the list", "1. a\n1. |", "1. a\n\n|"},
        {"empty bullet keeps the indent", "  - |", "\n  |"},
        {"split in the middle", "- ab|cd", "- ab\n- |cd"},
        {"caret at the start of a list line", "|- a", "\n|- a"},
        {"caret after only white space", "  |- a", "  \n  |- a"},
        {"text after the caret starts with the marker", "1. a|2. b", "1. a\n|2. b"},
        {"following items renumbered", "1. a|\n2. b\n3. c", "1. a\n2. |\n3. b\n4. c"},
        {"block quote", "> a|", "> a\n> |"},
        {"nested block quote", ">> a|", ">> a\n>> |"},
        {"spaced nesting", "> > a|", "> > a\n> > |"},
        {"empty quote line keeps the mark", "> |", "> \n> |"},
        {"caret inside the quote mark", "|> a", "\n|> a"},
        {"indented code", "    code|", "    code\n    |"},
        {"tab indent", "\tx|", "\tx\n\t|"},
        {"plain paragraph", "plain|", "plain\n|"},
        {"empty text", "|", "\n|"},
        {"selection is replaced", "«1. a»", "\n|"},
        {"emoji in the item", "- \xF0\x9F\x98\x80|", "- \xF0\x9F\x98\x80\n- |"},
        {"blank line joins the list", "1. a\n\n3. b|", "1. a\n\n2. b\n3. |"},
        {"nested list", "1. a\n   1. x|\n2. b", "1. a\n   1. x\n   2. |\n2. b"},
    }, [](ORVMDTextCommands &c) { c.insertNewlineContinuingStructure(); });
}

TEST(ReturnKey, NumbersStayAsTypedWhenAutocorrectIsOff)
{
    expectCases({
        {"next number is still proposed", "1. a|", "1. a\n2. |"},
        {"following items untouched", "1. a|\n2. b", "1. a\n2. |\n2. b"},
    }, [](ORVMDTextCommands &c) { c.insertNewlineContinuingStructure(); }, numbersAsTyped());
    expectCases({{"same number kept on request", "3. a|", "3. a\n3. |"}},
                [](ORVMDTextCommands &c) { EXPECT_TRUE(c.completeNextListItem(false)); }, numbersAsTyped());
}

TEST(OrderedLists, RenumberNestedListsAndLooseItems)
{
    expectCases({
        {"wrong numbers", "1. a\n5. b\n9. c|", "1. a\n2. b\n3. c|"},
        {"spaces after the number become one", "1.   a\n2.\tb|", "1. a\n2. b|"},
        {"sublist restarts after leaving it", "1. a\n    7. x\n    8. y\n2. b\n    4. z|",
         "1. a\n    1. x\n    2. y\n2. b\n    1. z|"},
        {"continued paragraph inside an item", "1. a\n    more\n    more\n7. b|", "1. a\n    more\n    more\n2. b|"},
        {"paragraph stops the walk back", "1. a\ntext\n4. b|", "1. a\ntext\n1. b|"},
        {"caret moves with a longer marker", "1. a\n1. b\n1. c\n1. d\n1. e\n1. f\n1. g\n1. h\n1. i\n1. j|",
         "1. a\n2. b\n3. c\n4. d\n5. e\n6. f\n7. g\n8. h\n9. i\n10. j|"},
        {"not on an ordered line", "1. a\n3. b\nx|", "1. a\n3. b\nx|"},
        {"bullet before the number counts", "- 4. a|", "- 1. a|"},
    }, [](ORVMDTextCommands &c) { c.processOrderListItem(); });
    expectCases({{"switched off", "1. a\n5. b|", "1. a\n5. b|"}}, [](ORVMDTextCommands &c) { c.processOrderListItem(); },
                numbersAsTyped());
}

TEST(OrderedLists, DeletionRenumbersTheList)
{
    expectCases({
        {"delete the second of three lines", "1. a\n«2. b\n»3. c", "1. a\n|2. c"},
        {"backspace inside an item", "1. a\n2. b|", "1. a\n2. |"},
        {"join two items", "1. a\n|2. b\n3. c", "1. a|2. b\n2. c"},
        {"surrogate pair goes whole", "1. \xF0\x9F\x98\x80|", "1. |"},
        {"outside a list: plain deletion", "ab|", "a|"},
        {"at the start of the text", "|1. a", "|1. a"},
    }, backspace);
    // Without deleting, the list is only renumbered.
    expectCases({{"renumber only", "1. a\n3. b|", "1. a\n2. b|"}},
                [](ORVMDTextCommands &c) { EXPECT_TRUE(c.checkIsDeleteCharactsInOrderListAndIsDoDelelte(false)); });
}

TEST(Formatting, TogglesWrapAndUnwrapKeepingTheSelection)
{
    struct Toggle {
        const char *name;
        void (ORVMDTextCommands::*command)();
        const char *before;
        const char *after;
    };
    const std::vector<Toggle> cases = {
        {"strong", &ORVMDTextCommands::toggleStrong, "a «word» b", "a **«word»** b"},
        {"strong off", &ORVMDTextCommands::toggleStrong, "a **«word»** b", "a «word» b"},
        {"strong on an empty selection", &ORVMDTextCommands::toggleStrong, "a|", "a**|**"},
        {"strong off an empty pair", &ORVMDTextCommands::toggleStrong, "a**|**", "a|"},
        {"emphasis", &ORVMDTextCommands::toggleEmphasis, "«word»", "*«word»*"},
        {"emphasis off", &ORVMDTextCommands::toggleEmphasis, "*«word»*", "«word»"},
        {"emphasis inside strong wraps further", &ORVMDTextCommands::toggleEmphasis, "**«word»**", "***«word»***"},
        {"emphasis off strong emphasis", &ORVMDTextCommands::toggleEmphasis, "***«word»***", "**«word»**"},
        {"prefix would pass the start", &ORVMDTextCommands::toggleStrong, "«a»**", "**«a»****"},
        {"suffix would pass the end", &ORVMDTextCommands::toggleStrong, "**«a»", "****«a»**"},
        {"inline code", &ORVMDTextCommands::toggleInlineCode, "«x»", "`«x»`"},
        {"block code", &ORVMDTextCommands::toggleBlockCode, "«x»", "\n```«x»\n```"},
        {"block code off", &ORVMDTextCommands::toggleBlockCode, "\n```«x»\n```", "«x»"},
        {"strikethrough", &ORVMDTextCommands::toggleStrikethrough, "«x»", "~~«x»~~"},
        {"underline", &ORVMDTextCommands::toggleUnderline, "«x»", "_«x»_"},
        {"highlight off", &ORVMDTextCommands::toggleHighlight, "==«x»==", "«x»"},
        {"comment", &ORVMDTextCommands::toggleComment, "«x»", "<!--«x»-->"},
        {"link puts the caret between the parentheses", &ORVMDTextCommands::toggleLink, "«site»", "[site](|)"},
        {"link off", &ORVMDTextCommands::toggleLink, "[«site»]()", "«site»"},
        {"image", &ORVMDTextCommands::toggleImage, "«cat»", "![cat](|)"},
        {"image on nothing", &ORVMDTextCommands::toggleImage, "|", "![](|)"},
    };
    for (const Toggle &t : cases) {
        const QString got = run(QString::fromUtf8(t.before), [&](ORVMDTextCommands &c) { (c.*t.command)(); });
        EXPECT_EQ(show(got), show(QString::fromUtf8(t.after))) << t.name;
    }
}

TEST(Headings, LevelsParagraphsAndToggling)
{
    const auto level = [](int n) { return [n](ORVMDTextCommands &c) { c.makeHeaderForSelectedLinesWithLevel(n); }; };
    expectCases({
        {"empty line", "|", "## |"},
        {"caret at a line start", "|abc", "## |abc"},
        {"caret inside a line", "ab|c", "## ab|c"},
        {"twice makes a paragraph", "## ab|c", "ab|c"},
        {"other level converted", "### a|", "## a|"},
        {"other level, caret at the start", "|### a", "|## a"},
        {"stacked marks all go", "# ## x|", "## x|"},
        {"marks without a space stay text", "##no space|", "## ##no space|"},
        {"lines of a selection, blank line kept", "«a\n\nb»", "## «a\n\n## b»"},
        {"same level from inside the marks", "#«# a»", "«a»"},
    }, level(2));
    expectCases({
        {"paragraph", "### a|", "a|"},
        {"paragraph of a selection", "«# a\n## b»", "«a\nb»"},
        {"paragraph of plain text", "a|", "a|"},
    }, level(0));
    expectCases({{"level 6", "x|", "###### x|"}}, level(6));
}

TEST(BlockToggles, ListsTasksQuotesAndTheNumberingWrap)
{
    expectCases({
        {"empty line", "|", "* |"},
        {"plain line", "ab|c", "* ab|c"},
        {"bullet off at the caret's line", "* ab|c", "ab|c"},
        {"caret at the very start of a bullet", "|* a", "|a"},
        {"lines on", "«a\nb»", "* «a\n* b»"},
        {"lines off, mixed bullets", "«* a\n- b»", "«a\nb»"},
        {"empty line counts for nothing", "«* a\n\n* b»", "«a\n\nb»"},
        {"one line not a bullet: all on", "«* a\nb»", "* «* a\n* b»"},
    }, [](ORVMDTextCommands &c) { c.toggleUnorderedList(); });

    expectCases({
        {"empty line", "|", "1. |"},
        {"lines on", "«a\nb»", "1. «a\n2. b»"},
        {"lines off", "«1. a\n2. b»", "«a\nb»"},
        {"twelve lines wrap after nine", "«a\nb\nc\nd\ne\nf\ng\nh\ni\nj\nk\nl»",
         "1. «a\n2. b\n3. c\n4. d\n5. e\n6. f\n7. g\n8. h\n9. i\n1. j\n2. k\n3. l»"},
    }, [](ORVMDTextCommands &c) { c.toggleOrderedList(); });

    expectCases({
        {"empty line", "|", "* [ ] |"},
        {"plain bullet becomes a task", "- a|", "* [ ] a|"},
        {"task off", "* [ ] a|", "a|"},
        {"checked task off", "- [x] a|", "a|"},
        {"plain line", "a|", "* [ ] a|"},
    }, [](ORVMDTextCommands &c) { c.toggleTaskList(); });

    expectCases({
        {"empty line", "|", "> |"},
        {"caret at a line start nests", "|> a", "> |> a"},
        {"caret inside a line", "ab|c", "> ab|c"},
        {"quote off at the caret", "> ab|c", "ab|c"},
        {"selection on", "«a\nb»", "> «a\n> b»"},
        {"empty line between quoted lines stays", "«> a\n\n> b»", "«a\n\nb»"},
    }, [](ORVMDTextCommands &c) { c.toggleBlockquote(); });
}

TEST(Indentation, IndentUnindentAndTheirAsymmetry)
{
    expectCases({
        {"one line", "a|", "    a|"},
        {"selected lines", "«a\nb»", "    «a\n    b»"},
        {"selection ending at a line start", "«a\n»b", "    «a\n»b"},
        {"empty line in the middle padded too", "«a\n\nb»", "    «a\n    \n    b»"},
        {"ordered item renumbered", "1. a\n2. b|", "1. a\n    1. b|"},
    }, [](ORVMDTextCommands &c) { c.indent(); });
    expectCases({{"tabs", "a|", "\ta|"}}, [](ORVMDTextCommands &c) { c.indent(); }, tabsOff());

    expectCases({
        {"four spaces", "    a|", "a|"},
        {"at most four", "      a|", "  a|"},
        {"a tab", "\ta|", "a|"},
        {"spaces before a tab, and the tab", "  \ta|", "a|"},
        {"line of only indentation stays, caret moves", "  |", "|  "},
        {"selected lines", "«    a\n  b»", "«a\nb»"},
        {"nothing to take", "a|", "a|"},
        {"ordered item renumbered", "1. a\n    1. b\n    2. c|", "1. a\n    1. b\n2. c|"},
    }, [](ORVMDTextCommands &c) { c.unindent(); });
}

TEST(Indentation, TabKey)
{
    const auto tab = [](ORVMDTextCommands &c) { c.insertTab(); };
    expectCases({
        {"to the next multiple of four", "ab|", "ab  |"},
        {"at a tab stop, a whole step", "abcd|", "abcd    |"},
        {"line start", "x\n|", "x\n    |"},
        {"list item indents", "- a|", "    - a|"},
        {"selection indents", "«a\nb»", "    «a\n    b»"},
    }, tab);
    expectCases({{"tab character", "ab|", "ab\t|"}}, tab, tabsOff());
}

TEST(Inserting, EntitiesRulesAndParagraphs)
{
    struct Insert {
        void (ORVMDTextCommands::*command)();
        const char *before;
        const char *after;
    };
    const std::vector<Insert> cases = {
        {&ORVMDTextCommands::insertCommentReadMore, "a|", "a\n<!-- more -->\n|"},
        {&ORVMDTextCommands::insertHR, "a|", "a\n-------\n|"},
        {&ORVMDTextCommands::insertAmp, "«x»", "&amp;|"},
        {&ORVMDTextCommands::insertLt, "|", "&lt;|"},
        {&ORVMDTextCommands::insertGt, "|", "&gt;|"},
        {&ORVMDTextCommands::insertNbsp, "|", "&nbsp;|"},
        {&ORVMDTextCommands::insertQuot, "|", "&quot;|"},
        {&ORVMDTextCommands::insert39, "|", "&#39;|"},
        {&ORVMDTextCommands::insertEmsp, "|", "&emsp;|"},
        {&ORVMDTextCommands::insertEnsp, "|", "&ensp;|"},
        {&ORVMDTextCommands::insertNewParagraph, "ab|c\nd", "abc\n\n|\nd"},
        {&ORVMDTextCommands::insertNewParagraph, "«a\nb»c\nd", "a\nbc\n\n|\nd"},
        {&ORVMDTextCommands::insertNewParagraph, "a\n|\nb", "a\n\n|\nb"},
    };
    for (const Insert &t : cases) {
        const QString got = run(QString::fromUtf8(t.before), [&](ORVMDTextCommands &c) { (c.*t.command)(); });
        EXPECT_EQ(show(got), show(QString::fromUtf8(t.after))) << t.before;
    }
}

TEST(Inserting, DatesInTheMediumStyle)
{
    const QDateTime when(QDate(2024, 3, 9), QTime(15, 4, 5));
    const QString date = ORVMDTextCommands::mediumDateTimeString(when, false);
    const QString dateTime = ORVMDTextCommands::mediumDateTimeString(when, true);
    EXPECT_TRUE(date.contains(QStringLiteral("2024"))) << date.toStdString();
    EXPECT_FALSE(date.contains(QStringLiteral("04"))) << "no time in the date form: " << date.toStdString();
    EXPECT_TRUE(dateTime.startsWith(date)) << dateTime.toStdString();
    EXPECT_TRUE(dateTime.contains(QStringLiteral("05"))) << "seconds in the medium time: " << dateTime.toStdString();
    EXPECT_EQ(run(QStringLiteral("|"), [&](ORVMDTextCommands &c) { c.insertCurrentDate(when); }), date + QLatin1Char('|'));
}

TEST(ListItemType, TellsOrderedBulletAndNone)
{
    const struct {
        const char *text;
        int type;
    } cases[] = {{"- a", 2}, {"* a", 2}, {"  + a", 2}, {"1. a", 1}, {"- 1. a", 1}, {"a", 0}, {"", 0}, {"    code", 0}};
    for (const auto &c : cases) {
        ORVStringTextBuffer buffer(QString::fromUtf8(c.text));
        ORVMDTextCommands commands(buffer);
        EXPECT_EQ(commands.currentLineListItemTypeWithRange({0, 0}), c.type) << c.text;
    }
    ORVStringTextBuffer buffer(QStringLiteral("- a"));
    ORVMDTextCommands commands(buffer);
    EXPECT_EQ(commands.currentLineListItemTypeWithRange({2, 5}), 0) << "range past the end";
    EXPECT_EQ(commands.currentLineListItemTypeWithRange({-1, 0}), 0) << "invalid range";
}

TEST(Undo, EveryCommandIsOneStep)
{
    const std::vector<std::pair<const char *, Command>> commands = {
        {"return", [](ORVMDTextCommands &c) { c.insertNewlineContinuingStructure(); }},
        {"backspace", backspace},
        {"strong", [](ORVMDTextCommands &c) { c.toggleStrong(); }},
        {"link", [](ORVMDTextCommands &c) { c.toggleLink(); }},
        {"h2", [](ORVMDTextCommands &c) { c.convertToH2(); }},
        {"ordered list", [](ORVMDTextCommands &c) { c.toggleOrderedList(); }},
        {"task list", [](ORVMDTextCommands &c) { c.toggleTaskList(); }},
        {"quote", [](ORVMDTextCommands &c) { c.toggleBlockquote(); }},
        {"indent", [](ORVMDTextCommands &c) { c.indent(); }},
        {"unindent", [](ORVMDTextCommands &c) { c.unindent(); }},
        {"tab", [](ORVMDTextCommands &c) { c.insertTab(); }},
        {"new paragraph", [](ORVMDTextCommands &c) { c.insertNewParagraph(); }},
    };
    const char *texts[] = {"1. a|\n3. b\n5. c", "- b|", "«x»\ny", "    1. a\n    2. «b»", "> q|"};
    for (const auto &[name, command] : commands) {
        for (const char *marked : texts) {
            ORVStringTextBuffer buffer = bufferFromMarked(QString::fromUtf8(marked));
            const QString before = markedFromBuffer(buffer);
            ORVMDTextCommands c(buffer);
            command(c);
            const QString after = markedFromBuffer(buffer);
            if (after == before)
                continue;
            ASSERT_TRUE(buffer.undo()) << name << " on " << marked;
            EXPECT_EQ(show(markedFromBuffer(buffer)), show(before)) << name << " on " << marked;
            EXPECT_FALSE(buffer.canUndo()) << name << " took more than one step on " << marked;
            ASSERT_TRUE(buffer.redo());
            EXPECT_EQ(show(markedFromBuffer(buffer)), show(after)) << name << " redo on " << marked;
        }
    }
}
