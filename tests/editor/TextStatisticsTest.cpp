#include "editor/ORVTextStatistics.h"

#include <gtest/gtest.h>

TEST(TextStatistics, WordsCharactersLinesAndParagraphs)
{
    const struct {
        const char *text;
        qsizetype words, characters, withoutSpaces, lines, paragraphs;
    } cases[] = {
        {"", 0, 0, 0, 0, 0},
        {"one two  three", 3, 14, 11, 1, 1},
        {"don't stop-gap co-op", 3, 20, 18, 1, 1},
        {"trailing- 'quoted'", 2, 18, 17, 1, 1},
        {"# Title\n\nbody text\nmore", 4, 20, 18, 4, 2},
        {"\xE4\xB8\xAD\xE6\x96\x87" "abc", 3, 5, 5, 1, 1},       // two ideographs and one Latin word
        {"\xF0\x9F\x98\x80 x", 1, 3, 2, 1, 1},                // an emoji is one character, no word
        {"snake_case_name 42", 2, 18, 17, 1, 1},
    };
    for (const auto &c : cases) {
        const ORVTextStatistics s = ORVTextStatistics::countText(QString::fromUtf8(c.text));
        EXPECT_EQ(s.words, c.words) << c.text;
        EXPECT_EQ(s.characters, c.characters) << c.text;
        EXPECT_EQ(s.charactersWithoutSpaces, c.withoutSpaces) << c.text;
        EXPECT_EQ(s.lines, c.lines) << c.text;
        EXPECT_EQ(s.paragraphs, c.paragraphs) << c.text;
    }
}
