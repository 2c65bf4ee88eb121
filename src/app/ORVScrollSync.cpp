#include "app/ORVScrollSync.h"

ORVScrollSyncTarget ORVScrollSyncTarget::forEditorPosition(const QList<HGOutlineItem> &outline, int topBlock,
                                                           double blockFraction, int blockCount)
{
    ORVScrollSyncTarget t;
    t.headingCount = int(outline.size());
    blockCount = qMax(1, blockCount);
    const double at = qBound(0.0, topBlock + qBound(0.0, blockFraction, 1.0), double(blockCount));
    t.documentFraction = at / blockCount;
    int index = -1;
    while (index + 1 < outline.size() && outline.at(index + 1).blockNumber <= at)
        ++index;
    t.sectionIndex = index;
    const double start = index < 0 ? 0.0 : outline.at(index).blockNumber;
    const double end = index + 1 < outline.size() ? outline.at(index + 1).blockNumber : double(blockCount);
    t.fraction = end > start ? qBound(0.0, (at - start) / (end - start), 1.0) : 0.0;
    return t;
}
