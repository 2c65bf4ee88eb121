#pragma once

#include <QString>

// A library document's title and summary come from its file, never from
// the database: the title is the first paragraph without its heading mark,
// the summary what follows it. Reading stops early (lines and characters
// below) because only the start of a file is ever shown in a list.

// documentTitleRemoveMark: "" stays ""; a text not starting with "#" stays
// as it is; otherwise the leading run of "#" goes with one space after it
// ("## Title" and "##Title" give "Title"; "#" alone gives "").
QString documentTitleRemoveMark(const QString &text);

// readFileContentWithPath:maxLine:lenth: reads the file's first lines, each
// decoded as UTF-8 (a line that is not valid UTF-8 is dropped), until the
// end, `maxLine` lines, or the text is longer than `length` characters.
// "" for a missing file.
QString readFileContentWithPathMaxLineLenth(const QString &path, int maxLine = 14, int length = 250);
// The same over a file's bytes already in memory (a search reads each file
// whole once and takes the title from the same bytes).
QString readFileContentWithBytesMaxLineLenth(const QByteArray &bytes, int maxLine = 14, int length = 250);
// The same over a whole file already decoded from plain UTF-8 (no byte
// order mark), where every line decodes: the lines are taken from the text.
QString readFileContentWithTextMaxLineLenth(const QString &text, int maxLine = 14, int length = 250);

struct ORVDocumentTitleAndSummary {
    QString title;
    QString summary;
};
// The title (first paragraph, mark removed) and the summary (the text after
// the first paragraph's end and one more character, each "\n" a space).
ORVDocumentTitleAndSummary documentTitleAndSummaryWithContent(const QString &content);
// Both, from the start of a document file.
ORVDocumentTitleAndSummary documentTitleAndSummaryWithFile(const QString &path);
