#pragma once

#include "library/ORVCatTreeItem.h"

#include <QByteArray>
#include <QList>
#include <QString>

class ORVLibraryTree;

// The drag type of library documents: UTF-8 JSON, an array of records
// {"uuid": <document>, "state": <0 or 1>}.
inline const QString kORV_LIB_DOC_PASTEBOARD_TYPE = QStringLiteral("application/x-orvo-library-documents");

struct ORVLibraryDocDragRecord {
    qint64 uuid = 0;
    int state = 1;
};

// What dropping documents on an entry of the tree does with them.
enum class ORVDocumentDropOperation {
    Move,   // no modifier: into the target, out of the entry the list shows
    Copy,   // Ctrl (Command): into the target as well
    Remove, // Alt (Option): out of the target
};

// Dropping library documents (dragged from the list) on an entry of the
// tree: a category or tag gains or loses them, "Trash" takes them.
//
// Thread: the tree's thread.
class ORVDocumentDropHandler
{
public:
    // What the list showed when the drag began (the list controller's
    // fetchUUID, isFetchTag, fetchTagName).
    struct ShownList {
        qint64 fetchUUID = 15;
        bool isFetchTag = false;
        QString fetchTagName;
    };

    explicit ORVDocumentDropHandler(ORVLibraryTree &tree);

    // Alt (Option) held is the removal, otherwise Ctrl (Command) a copy,
    // otherwise a move.
    static ORVDocumentDropOperation operationWithModifiers(bool option, bool command);
    static QByteArray pasteboardDataWithRecords(const QList<ORVLibraryDocDragRecord> &records);
    // Records that do not read as such are left out.
    static QList<ORVLibraryDocDragRecord> recordsWithPasteboardData(const QByteArray &data);

    // A drop goes on an entry itself (not between entries) that is a
    // category, a tag or "Trash".
    static bool validateDocumentsDrop(const ORVCatTreeItem &target);

    // Carries the drop out. On "Trash" each document goes to the trash,
    // whatever the operation. Elsewhere a document in the trash comes back
    // and gains the target (keeping its other links); for the others the
    // removal takes the target away, the copy adds it, and the move adds it
    // and takes away the category or tag the list shows when the target is
    // of the same sort. Returns false when the target takes no drop.
    bool acceptDocumentsDrop(const QList<ORVLibraryDocDragRecord> &records, const ORVCatTreeItem &target,
                             ORVDocumentDropOperation operation, const ShownList &shown);

private:
    ORVLibraryTree &m_tree;
};
