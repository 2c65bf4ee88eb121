#include "app/ORVSpacedTextLayout.h"

#include <QTextBlock>
#include <QTextLayout>

QRectF ORVSpacedTextLayout::blockBoundingRect(const QTextBlock &block) const
{
    QRectF rect = QPlainTextDocumentLayout::blockBoundingRect(block);
    if (m_lineSpacing <= 0 || !block.isValid() || !block.isVisible())
        return rect;
    QTextLayout *layout = block.layout();
    const int lines = layout ? layout->lineCount() : 0;
    if (lines == 0)
        return rect;
    // Once spaced, the layout's own bounds (and so the base rectangle)
    // already hold the spacing.
    if (!qFuzzyIsNull(layout->lineAt(0).y()))
        return rect;
    for (int i = 0; i < lines; ++i) {
        QTextLine line = layout->lineAt(i);
        line.setPosition(QPointF(line.x(), line.y() + m_lineSpacing * (i + 1)));
    }
    rect.setHeight(rect.height() + m_lineSpacing * lines);
    return rect;
}
