#pragma once

#include <QString>
#include <QStringList>

// Extensions of the files that open as documents, in their fixed order:
// md, markdown, txt, text, mdown, mkd, rmd, mkdn, mdwn, mdtxt, mdtext,
// taskpaper, fountain, rst.
const QStringList &supportedDocumentExt();

// Whether the file's extension, in lower case, is one of them.
bool checkIsSupportedDocumentWithPath(const QString &path);
