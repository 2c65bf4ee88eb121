#include "editor/ORVTextStatistics.h"

namespace {

bool isIdeographic(char32_t c)
{
    return (c >= 0x4E00 && c <= 0x9FFF)     // CJK unified ideographs
           || (c >= 0x3400 && c <= 0x4DBF)  // extension A
           || (c >= 0x20000 && c <= 0x2FA1F) // extensions B.. and compatibility supplement
           || (c >= 0xF900 && c <= 0xFAFF)  // compatibility ideographs
           || (c >= 0x3040 && c <= 0x30FF)  // hiragana, katakana
           || (c >= 0x31F0 && c <= 0x31FF)  // katakana extensions
           || (c >= 0xAC00 && c <= 0xD7AF); // hangul syllables
}

bool isWordChar(char32_t c)
{
    const QChar::Category cat = QChar::category(c);
    switch (cat) {
    case QChar::Letter_Uppercase:
    case QChar::Letter_Lowercase:
    case QChar::Letter_Titlecase:
    case QChar::Letter_Modifier:
    case QChar::Letter_Other:
    case QChar::Number_DecimalDigit:
    case QChar::Number_Letter:
    case QChar::Number_Other:
    case QChar::Mark_NonSpacing:
    case QChar::Mark_SpacingCombining:
    case QChar::Mark_Enclosing:
    case QChar::Punctuation_Connector:
        return true;
    default:
        return false;
    }
}

// Apostrophes and hyphens join the letters on both sides into one word.
bool isJoiner(char32_t c) { return c == U'\'' || c == U'\u2019' || c == U'-'; }

} // namespace

ORVTextStatistics ORVTextStatistics::countText(QStringView text)
{
    ORVTextStatistics s;
    bool inWord = false;
    bool lineBlank = true;
    bool inParagraph = false;
    char32_t previous = 0;
    const auto endLine = [&] {
        ++s.lines;
        if (lineBlank)
            inParagraph = false;
        else if (!inParagraph) {
            inParagraph = true;
            ++s.paragraphs;
        }
        lineBlank = true;
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        char32_t c = text.at(i).unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            c = QChar::surrogateToUcs4(text.at(i), text.at(i + 1));
            ++i;
        }
        if (c == U'\n') {
            endLine();
            inWord = false;
            previous = c;
            continue;
        }
        ++s.characters;
        const bool space = QChar::isSpace(c);
        if (!space) {
            ++s.charactersWithoutSpaces;
            lineBlank = false;
        }
        if (isIdeographic(c)) {
            ++s.words;
            inWord = false;
        } else if (isWordChar(c)) {
            if (!inWord)
                ++s.words;
            inWord = true;
        } else if (isJoiner(c) && inWord && isWordChar(previous)) {
            // stays in the word if a letter follows; a trailing joiner ends it
            const qsizetype next = i + 1;
            inWord = next < text.size() && isWordChar(text.at(next).unicode()) && !isIdeographic(text.at(next).unicode());
        } else {
            inWord = false;
        }
        previous = c;
    }
    if (!text.isEmpty())
        endLine();
    return s;
}
