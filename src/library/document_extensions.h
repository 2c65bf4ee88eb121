#pragma once

#include <QString>
#include <QStringList>

// The file extensions that count as documents in folders outside the
// library (searching them, finding images no document refers to), lower
// case, in their usual order. A file's extension is compared in lower case.
inline const QStringList &orvoFolderDocumentExtensions()
{
    static const QStringList extensions{
        QStringLiteral("md"),     QStringLiteral("markdown"), QStringLiteral("txt"),    QStringLiteral("text"),
        QStringLiteral("mdown"),  QStringLiteral("mkd"),      QStringLiteral("rmd"),    QStringLiteral("mkdn"),
        QStringLiteral("mdwn"),   QStringLiteral("mdtxt"),    QStringLiteral("mdtext"), QStringLiteral("taskpaper"),
        QStringLiteral("fountain"), QStringLiteral("rst")};
    return extensions;
}
