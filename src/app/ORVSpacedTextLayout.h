#pragma once

#include <QPlainTextDocumentLayout>

// The plain text editor's layout with room between lines: every line,
// wrapped ones too, stands `lineSpacing` pixels below the one before it,
// and the first line of a block as far below the block's top.
//
// The base layout places lines one under the other; this one moves them
// down each time a block's bounding rectangle is asked for, which the editor
// does before it paints, hit-tests or places the caret in a block. A block
// whose first line stands at 0 is freshly laid out and gets its spacing.
class ORVSpacedTextLayout : public QPlainTextDocumentLayout
{
    Q_OBJECT
public:
    explicit ORVSpacedTextLayout(QTextDocument *document) : QPlainTextDocumentLayout(document) {}

    qreal lineSpacing() const { return m_lineSpacing; }
    // Takes effect as blocks are laid out again (the editor requests it).
    void setLineSpacing(qreal pixels) { m_lineSpacing = qMax<qreal>(0, pixels); }

    QRectF blockBoundingRect(const QTextBlock &block) const override;

private:
    qreal m_lineSpacing = 0;
};
