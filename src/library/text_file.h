#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Whole text files whose encoding nobody told us: documents that come from
// other programs (imports, folders being searched or cleaned).
//
// The encoding is detected as a text editor would: a byte order mark
// decides (UTF-8, UTF-16 or UTF-32, either byte order); without one, text
// with a NUL in every other byte of its start is UTF-16; other bytes holding
// a NUL are not text (nullopt); valid UTF-8 is UTF-8; anything else is read
// as Windows Latin 1, the usual encoding of old plain-text notes. The mark
// itself is not part of the text.

// `isPlainUtf8` (when given) tells whether the bytes were UTF-8 without a
// mark, so that the text holds them one to one.
std::optional<QString> decodeTextDetectingEncoding(const QByteArray &bytes, bool *isPlainUtf8 = nullptr);

// The whole content of a file, read with plain system calls (searches read
// every document of a library; a buffered file object costs several calls
// more per file). nullopt when it cannot be opened or read.
std::optional<QByteArray> orvoReadWholeFile(const QString &path);

// stringWithContentsOfURL:usedEncoding:error:. nullopt when the file cannot
// be read or is not text.
std::optional<QString> readTextFileDetectingEncoding(const QString &path);
