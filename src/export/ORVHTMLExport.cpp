#include "export/ORVHTMLExport.h"

#include "editor/ORVDocument.h"
#include "export/ORVHTMLPageAssembler.h"
#include "export/ORVPreviewScripts.h"

#include <QSaveFile>

QString ORVHTMLExport::exportPageForDocument(ORVDocument *document, const QString &fallbackMediaFolder)
{
    const ORVHTMLPageAssembler assembler(ORVPageDocumentContext::fromDocument(document, fallbackMediaFolder),
                                         ORVPagePreferences::fromPreferences(), ORVPreviewScripts::shared());
    return assembler.makeHTMLWithStringTitleInfoIsShowCodeIsPreview(document->textStorage()->string(),
                                                                    document->documentTitleRemoveMark(), nullptr,
                                                                    false, false);
}

bool ORVHTMLExport::writeHTML(const QString &html, const QString &path, QString *error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        if (error)
            *error = file.errorString();
        return false;
    }
    const QByteArray bytes = html.toUtf8();
    if (file.write(bytes) != bytes.size() || !file.commit()) {
        if (error)
            *error = file.errorString();
        file.cancelWriting();
        return false;
    }
    return true;
}
