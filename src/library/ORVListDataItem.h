#pragma once

#include <QString>

// The base of every document list row, the library's and the external
// folders' alike: a group header or a document with its title and file.
// Copies are independent; rows derived from it are held by value (library)
// or by shared pointer (external), hence the virtual destructor.
class ORVListDataItem
{
public:
    virtual ~ORVListDataItem();

    bool isGroup = false;
    QString url; // the document's file; "" for a group row

    // Null until the title was read (a row reads its file only when shown,
    // or when its list is ordered by title).
    const QString &title() const { return m_title; }
    void setTitle(const QString &title)
    {
        m_title = title;
        m_forSortTitleMade = false;
    }
    // The title's sort key (stringByWellToDigitSortString), made on first
    // read and again after setTitle.
    const QString &forSortTitle() const;

    // Every run of ASCII digits whose value is not 0 becomes its value
    // written with at least 8 digits ("%08ld"), so that "Chapter 10" comes
    // after "Chapter 9"; leading zeros count for nothing, and runs of value 0
    // stay as they are and do not count. After seven replaced runs the rest
    // stays as written. A run longer than 8 significant digits keeps its
    // digits (no 64-bit overflow can change its value).
    static QString stringByWellToDigitSortString(const QString &text);

private:
    QString m_title;
    mutable QString m_forSortTitle;
    mutable bool m_forSortTitleMade = false;
};
