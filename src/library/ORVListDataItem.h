#pragma once

#include <QString>

// The base of list rows (library documents, external files).
class ORVListDataItem
{
public:
    virtual ~ORVListDataItem();

    bool isGroup = false;
    QString url;

    QString title() const { return m_title; }
    void setTitle(const QString &title)
    {
        m_title = title;
        m_forSortTitleMade = false;
    }
    // The title's sort key, made on first read: numbers in the title are
    // padded so that "Chapter 10" comes after "Chapter 9".
    const QString &forSortTitle() const;

    // Every run of ASCII digits whose value is not 0 becomes its value
    // written with at least 8 digits ("%08ld"); runs of value 0 stay as they
    // are and do not count. After seven replaced runs the rest stays.
    static QString stringByWellToDigitSortString(const QString &text);

private:
    QString m_title;
    mutable QString m_forSortTitle;
    mutable bool m_forSortTitleMade = false;
};
