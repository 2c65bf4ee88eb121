#pragma once

#include "editor/ORVTextBuffer.h"

#include <QList>
#include <QString>

// A text buffer in memory with its own undo and redo: the editing commands
// without a widget, for tests and headless tools.
class ORVStringTextBuffer : public ORVTextBuffer
{
public:
    explicit ORVStringTextBuffer(const QString &text = QString(), ORVEditRange selection = {});

    const QString &string() const override { return m_text; }
    ORVEditRange selectedRange() const override { return m_selection; }
    void setSelectedRange(ORVEditRange range) override;
    void replaceCharactersInRange(ORVEditRange range, const QString &text) override;
    void beginUndoGrouping() override;
    void endUndoGrouping() override;

    // Undoes or redoes the last step (a group, or one edit outside a group);
    // false when there is none. The selection goes back to what it was
    // before the step, or after it.
    bool undo();
    bool redo();
    bool canUndo() const { return !m_undo.isEmpty(); }
    bool canRedo() const { return !m_redo.isEmpty(); }

private:
    struct Edit {
        qsizetype location;
        QString removed;
        QString inserted;
    };
    struct Step {
        QList<Edit> edits;
        ORVEditRange selectionBefore;
        ORVEditRange selectionAfter;
    };

    ORVEditRange clamped(ORVEditRange range) const;

    QString m_text;
    ORVEditRange m_selection;
    QList<Step> m_undo;
    QList<Step> m_redo;
    Step m_open;
    int m_groupDepth = 0;
};
