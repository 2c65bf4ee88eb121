#pragma once

#include <QString>

// What every row of a document list has, the library's and the external
// folders' alike: a group header or a document with its title and file.
// A plain value: copies are independent.
class ORVListDataItem
{
public:
    bool isGroup = false;
    QString url; // the document's file; "" for a group row

    // Null until the title was read (a row reads its file only when shown,
    // or when its list is ordered by title).
    const QString &title() const { return m_title; }
    void setTitle(const QString &title)
    {
        m_title = title;
        m_hasSortTitle = false;
    }

    // The title's sort key (stringByWellToDigitSortString), made on first
    // read and again after setTitle.
    const QString &forSortTitle() const;

private:
    QString m_title;
    mutable QString m_forSortTitle;
    mutable bool m_hasSortTitle = false;
};
