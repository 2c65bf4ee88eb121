#pragma once

#include "highlight/HGParseResult.h"

#include <QList>

// Where the preview should stand for a place of the editor. Sections run
// from one heading to the next; the preview finds the same heading in its
// page and stands as far into that section. When the page's headings differ
// from the editor's (headings inside raw HTML, say), the share of the whole
// document is used instead.
struct ORVScrollSyncTarget {
    int sectionIndex = -1;       // the heading the section starts with; -1 before the first
    double fraction = 0;         // 0 to 1 into the section
    double documentFraction = 0; // 0 to 1 into the whole text
    int headingCount = 0;        // the editor's headings

    // For a view whose top is `blockFraction` into line `topBlock` of a
    // text of `blockCount` lines with these headings.
    static ORVScrollSyncTarget forEditorPosition(const QList<HGOutlineItem> &outline, int topBlock,
                                                 double blockFraction, int blockCount);
};
