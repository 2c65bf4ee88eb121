#pragma once

#include "editor/ORVEditingOptions.h"
#include "editor/ORVTextBuffer.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QString>

// The Markdown text commands of the editor: continuing structure on Return,
// keeping ordered lists numbered, indenting, deleting inside lists, the
// formatting toggles, headings, block toggles and the insert commands.
//
// Each command is a pure transformation of the buffer's text and selection,
// made through ORVTextBuffer::replaceCharactersInRange, and each one undoes
// as a single step. The buffer is not owned and must outlive the object.
// Thread: the buffer's (the main thread for a view).
class ORVMDTextCommands
{
public:
    // The kinds of list item currentLineListItemTypeWithRange tells apart.
    enum ListItemType { NoListItem = 0, OrderedListItem = 1, BulletListItem = 2 };

    explicit ORVMDTextCommands(ORVTextBuffer &buffer, ORVEditingOptions options = {});

    const ORVEditingOptions &options() const { return m_options; }
    void setOptions(const ORVEditingOptions &options) { m_options = options; }
    ORVTextBuffer &buffer() { return m_buffer; }

    // The line pattern every rule uses (line anchors on): 1 leading white
    // space, 2 a bullet and its spaces, 3 an ordered marker, 4 the first
    // character of the item text.
    static const QRegularExpression &listLinePattern();
    // "^((?:\\> ?)+).*$": group 1 is the block quote mark.
    static const QRegularExpression &blockquoteLinePattern();

    // ---- Return

    // Return as the editor does it: a list item, else a block quote line,
    // else indentation is continued; else a plain line end is inserted.
    void insertNewlineContinuingStructure();
    // 0 no list item, 1 an ordered marker is present, 2 a bullet only, for
    // the lines that `range` touches; 0 for a range outside the text.
    int currentLineListItemTypeWithRange(ORVEditRange range) const;
    // Continues (or, on an empty item, ends) the list item at the caret.
    // `increaseNumber` false keeps an ordered item's number. True when it acted.
    bool completeNextListItem(bool increaseNumber = true);
    bool completeNextBlockquoteLine();
    bool completeNextIndentedLine();

    // ---- Ordered lists

    // Numbers the ordered list at the selection again from 1, nested lists
    // by their own columns; the selection stays on the same text.
    void processOrderListItem();
    // Deletion inside an ordered list: when the selection (an empty one
    // standing for the character before it) touches an ordered item, deletes
    // it when `doDelete`, renumbers and answers true; otherwise false and
    // nothing changes.
    bool checkIsDeleteCharactsInOrderListAndIsDoDelelte(bool doDelete);

    // ---- Formatting

    void toggleStrong();
    void toggleEmphasis();
    void toggleInlineCode();
    void toggleBlockCode();
    void toggleStrikethrough();
    void toggleUnderline();
    void toggleHighlight();
    void toggleComment();
    void toggleLink();
    void toggleImage();
    // Wraps the selection in prefix and suffix, or unwraps it when it is
    // already wrapped; the selection stays on the text. True when it wrapped.
    bool toggleForMarkupPrefixSuffix(const QString &prefix, const QString &suffix);
    // Whether `range` stands between prefix and suffix. "*" and "*" are
    // special, so that emphasis and strong stay apart: true around "***",
    // otherwise only when not around "**".
    bool substringInRangeIsSurroundedByPrefixSuffix(ORVEditRange range, const QString &prefix,
                                                    const QString &suffix) const;

    // ---- Headings

    void convertToH1() { makeHeaderForSelectedLinesWithLevel(1); }
    void convertToH2() { makeHeaderForSelectedLinesWithLevel(2); }
    void convertToH3() { makeHeaderForSelectedLinesWithLevel(3); }
    void convertToH4() { makeHeaderForSelectedLinesWithLevel(4); }
    void convertToH5() { makeHeaderForSelectedLinesWithLevel(5); }
    void convertToH6() { makeHeaderForSelectedLinesWithLevel(6); }
    void convertToParagraph() { makeHeaderForSelectedLinesWithLevel(0); }
    // Level 1 to 6 makes the selected lines headings of that level (the same
    // level again makes them paragraphs); 0 makes them paragraphs.
    void makeHeaderForSelectedLinesWithLevel(int level);

    // ---- Block toggles

    void toggleUnorderedList();
    void toggleOrderedList();
    void toggleTaskList();
    void toggleBlockquote();
    // Takes `prefix` off every selected line when every non-empty one matches
    // `pattern`, else puts it on every non-empty line ("1. " numbers them,
    // 1 to 9 and round again).
    void toggleBlockWithPatternPrefix(const QString &pattern, const QString &prefix);

    // ---- Indentation

    void indent();
    void unindent();
    // The Tab key: indents a selection or a list item; else inserts spaces to
    // the next multiple of 4 columns, or a tab when spaces are off.
    void insertTab();
    void indentSelectedLinesWithPadding(const QString &padding);
    void unindentSelectedLines();
    void insertSpacesForTab();

    // ---- Inserting

    void insertCommentReadMore();
    void insertHR();
    void insertAmp();
    void insertLt();
    void insertGt();
    void insertNbsp();
    void insertQuot();
    void insert39();
    void insertEmsp();
    void insertEnsp();
    // The time (medium date and time styles of the user's locale); `now`
    // defaults to the present.
    void insertCurrentDateTime(const QDateTime &now = QDateTime());
    void insertCurrentDate(const QDateTime &now = QDateTime());
    void insertNewParagraph();

    // ---- Primitives on the buffer

    // A line end in place of the selection.
    void insertNewline();
    // Replaces `range` by `text`; the caret goes after it.
    void insertTextReplacementRange(const QString &text, ORVEditRange range);
    // Replaces the selection by `text`; the caret goes after it.
    void orv_insertTextToCurrentSelectRange(const QString &text);
    void orv_insertText(const QString &text) { orv_insertTextToCurrentSelectRange(text); }

    // The medium date and time forms of the user's locale ("Jan 5, 2024,
    // 3:04:05 PM" in English), as the insert commands write them.
    static QString mediumDateTimeString(const QDateTime &when, bool withTime);

private:
    bool cursorLineIsEmptyAtStart() const;
    bool cursorLineBeginsWith(const QString &prefix) const;
    void takeOffCursorLinePrefix(const QString &prefix);
    ORVEditRange wholeLinesOfSelection() const;

    ORVTextBuffer &m_buffer;
    ORVEditingOptions m_options;
};
