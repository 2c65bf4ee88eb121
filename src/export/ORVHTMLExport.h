#pragma once

#include <QString>

class ORVDocument;

// The HTML export: the document's page in its written-out form (style and
// images embedded, online scripts) saved to a file.
class ORVHTMLExport
{
public:
    // The page of `document` as the export writes it.
    static QString exportPageForDocument(ORVDocument *document, const QString &fallbackMediaFolder = QString());

    // Writes `html` to `path` atomically, in UTF-8: the file is whole or
    // untouched. False with the system's description of the failure.
    static bool writeHTML(const QString &html, const QString &path, QString *error);
};
