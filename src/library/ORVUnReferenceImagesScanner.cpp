#include "library/ORVUnReferenceImagesScanner.h"

#include "library/search_text.h"
#include "library/supportedDocumentExt.h"
#include "library/text_file.h"
#include "platform/ORVSystemTrash.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QUrl>

#include <sys/stat.h>

const QStringList &ORVUnReferenceImagesScanner::imageExtensions()
{
    static const QStringList extensions{QStringLiteral("png"),  QStringLiteral("jpg"), QStringLiteral("jpeg"),
                                        QStringLiteral("gif"),  QStringLiteral("webp"), QStringLiteral("svg"),
                                        QStringLiteral("tiff")};
    return extensions;
}

QString ORVUnReferenceImagesScanner::urlEncodedFileName(const QString &name)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(name, "!$&'()*+,;=:@/"));
}

QList<ORVLibraryMediaItem> ORVUnReferenceImagesScanner::scanFolder(const QString &folder)
{
    const QDir root(folder);
    QStringList documents;
    QList<QFileInfo> images;
    QDirIterator it(folder, QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo fi(it.next());
        const QString ext = fi.suffix().toLower();
        if (supportedDocumentExt().contains(ext))
            documents << fi.absoluteFilePath();
        else if (imageExtensions().contains(ext))
            images << fi;
    }
    if (images.isEmpty())
        return {};
    // Each document is read once and kept folded, rather than read again
    // for every image.
    QList<QString> texts;
    texts.reserve(documents.size());
    for (const QString &path : std::as_const(documents))
        if (const auto text = readTextFileDetectingEncoding(path))
            texts << orvoFoldCase(*text);

    const auto isReferenced = [&](const QString &name) {
        const QString folded = orvoFoldCase(name);
        const QString encoded = urlEncodedFileName(name);
        const QString foldedEncoded = encoded != name ? orvoFoldCase(encoded) : QString();
        for (const QString &text : std::as_const(texts)) {
            if (text.contains(folded))
                return true;
            if (!foldedEncoded.isEmpty() && text.contains(foldedEncoded))
                return true;
        }
        return false;
    };

    QList<ORVLibraryMediaItem> unreferenced;
    for (const QFileInfo &image : std::as_const(images)) {
        if (isReferenced(image.fileName()))
            continue;
        ORVLibraryMediaItem item;
        item.isPicture = true;
        item.isInDoc = false;
        item.realPath = image.absoluteFilePath();
        item.fileName = root.relativeFilePath(item.realPath);
        item.fileSize = image.size();
        struct stat st {};
        if (::stat(QFile::encodeName(item.realPath).constData(), &st) == 0)
            item.systemFileNumber = quint64(st.st_ino);
        unreferenced << item;
    }
    std::sort(unreferenced.begin(), unreferenced.end(),
              [](const ORVLibraryMediaItem &a, const ORVLibraryMediaItem &b) { return a.fileName < b.fileName; });
    return unreferenced;
}

QStringList ORVUnReferenceImagesScanner::moveItemsToTrash(const QList<ORVLibraryMediaItem> &items, QStringList *errors)
{
    QStringList moved;
    for (const ORVLibraryMediaItem &item : items) {
        QString why;
        if (ORVSystemTrash::moveFileOrDirToTrashWithPath(item.realPath, &why))
            moved << item.realPath;
        else if (errors)
            *errors << why;
    }
    return moved;
}
