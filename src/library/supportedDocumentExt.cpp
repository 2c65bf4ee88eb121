#include "library/supportedDocumentExt.h"

#include "library/fileNames.h"

const QStringList &supportedDocumentExt()
{
    static const QStringList exts{
        QStringLiteral("md"),     QStringLiteral("markdown"), QStringLiteral("txt"),       QStringLiteral("text"),
        QStringLiteral("mdown"),  QStringLiteral("mkd"),      QStringLiteral("rmd"),       QStringLiteral("mkdn"),
        QStringLiteral("mdwn"),   QStringLiteral("mdtxt"),    QStringLiteral("mdtext"),    QStringLiteral("taskpaper"),
        QStringLiteral("fountain"), QStringLiteral("rst"),
    };
    return exts;
}

bool checkIsSupportedDocumentWithPath(const QString &path)
{
    const QString ext = pathExtension(path);
    return !ext.isEmpty() && supportedDocumentExt().contains(ext.toLower());
}
