#pragma once

#include "library/ORVExternalListDataItem.h"
#include "library/ORVLibraryListDataItem.h"

#include <QMetaType>
#include <QMutex>
#include <QObject>
#include <QStringList>
#include <QThreadPool>

#include <memory>

class ORVDBManager;

// Names of the search's notifications (ORVNotificationCenter).
// A search was accepted or repeated: userInfo "type" ("lib" or "ext") and
// "isChanged" (the query differs from the last one).
inline const QString kORVSearchControllerDidUpdateInfoUINotification =
    QStringLiteral("kORVSearchControllerDidUpdateInfoUINotification");
// Results: "type" ("lib" or "ext"), "data" (QList<ORVLibraryListDataItem>
// for "lib", ORVSearchExternalHits for "ext"), "isOK" (true when the
// search finished, false for a partial result), "keys" (the highlight
// list) and "searchString".
inline const QString kORVSearchControllerDidUpdateResultNotification =
    QStringLiteral("kORVSearchControllerDidUpdateResultNotification");

// The rows of an external search: one per file found, as the folder's list
// shows it (title the file name), with the snippet as `content` ("" for a
// hit by name alone).
using ORVSearchExternalHits = QList<ORVExternalListDataItem::Ptr>;
Q_DECLARE_METATYPE(ORVSearchExternalHits)

// The key lists of one query.
struct ORVSearchKeys {
    QStringList searchKeyArr;   // the content must hold every one
    QStringList searchTagsArr;  // the tags must hold every one
    QStringList searchCatsArr;  // the categories must hold every one
    QStringList searchTitleArr; // the title (or file name) must hold them
    bool isEmpty() const
    {
        return searchKeyArr.isEmpty() && searchTagsArr.isEmpty() && searchCatsArr.isEmpty() && searchTitleArr.isEmpty();
    }
    bool operator==(const ORVSearchKeys &) const = default;
};

// The shared search driver. It searches a library or a set of folders by
// reading the document files themselves (there is no index), narrows by a
// small query language, and reports through notifications; a later search
// silently replaces an earlier one.
//
// Query language: words are split at spaces. "-t a,b" asks for tags, "-c"
// for categories, "-h" for the title (or file name); the first other word
// starts the content words, which run up to the next switch. With several
// content words, the phrase of them joined by single spaces is a key too:
// several words match only where they stand together in that order. A last
// content word of "-" is dropped (a switch being typed). Case is ignored
// everywhere.
//
// Thread: the object's thread (the main thread). Scans run on worker
// threads with copies of the keys; results come back to the object's
// thread, where the start time of the search still running decides whether
// they count.
class ORVSearchController : public QObject
{
    Q_OBJECT
public:
    static ORVSearchController *sharedInstance();

    explicit ORVSearchController(QObject *parent = nullptr);
    ~ORVSearchController() override; // waits for its scans to end

    // ---- The running search
    QString searchString() const { return m_searchString; }
    const ORVSearchKeys &keys() const { return m_keys; }
    const QStringList &searchHighlightArr() const { return m_searchHighlightArr; }
    double searchTimeInterval() const { return m_searchTimeInterval; }

    // setupAndAnalyticsWithSearchString: parses the query into the key
    // lists. False, and nothing changed, when the query has no keys at all or
    // the same keys as the present ones.
    bool setupAndAnalyticsWithSearchString(const QString &searchString);
    // The keys of a query, as above (the joined phrase first).
    static ORVSearchKeys analyticsSearchString(const QString &searchString);

    // queryWithLibraryURL:dbManager:searchString: searches every document
    // of the library, the trash included; the result ("lib") is the rows
    // that pass, newest change first, with the snippet as `content`.
    // Repeating the same query scans again.
    void queryWithLibraryURL(const QString &libraryPath, const std::shared_ptr<ORVDBManager> &manager,
                             const QString &searchString);
    // queryWithExternalURLs:searchString:searchExts: searches files and
    // folders (recursively, files with one of the extensions, lower case),
    // posting a partial result after each path. An unchanged query does
    // nothing.
    void queryWithExternalURLs(const QStringList &paths, const QString &searchString, const QStringList &searchExts);

    // clearSearchData: forgets the query and the cached rows.
    void clearSearchData();
    // stopQuery: whatever runs now will not report.
    void stopQuery();

    // ---- Testing text (thread-safe)
    // checkContentHasKeyAndHighlight:highlightContent:isHavKey: true when
    // the content holds every key; the snippet is made of a piece around
    // each occurrence of each key, in the order of the text, and, when
    // shorter than 300 characters, "..." and up to 120 characters of what
    // follows the last piece; line feeds become spaces.
    static bool checkContentHasKeyAndHighlight(const QString &content, const QStringList &keys,
                                               QString *highlightContent);
    // The same on a file, read whole with its encoding detected; `title` gets
    // its first paragraph. False when the file cannot be read.
    static bool checkFileHasKeyAndHighlightWithFileURL(const QString &path, const QStringList &keys,
                                                       QString *highlightContent, QString *title);
    // True when the string holds any one of the keys.
    static bool checkStringHasKeysWithString(const QString &string, const QStringList &keys);
    // highlightKeyStringWithRange:orgString: the piece of a snippet for a
    // key found at `location` with `length` in `text`: from five characters
    // before it ("..." in front) when it stands beyond the fifth, to ten
    // characters more than the key; near the end of the text (within ten
    // characters of it, or a text shorter than 11) the piece is as long as
    // what follows the key instead, and may thereby stop short of the key's
    // end.
    static QString highlightKeyStringWithRange(qsizetype location, qsizetype length, const QString &text);

    // writeSearchLogWithString: a line in "orvo-search-log.txt" (diagnostics).
    static bool writeSearchLogWithString(const QString &string);

private:
    double nextSearchTime();
    void postResult(const QString &type, const QVariant &data, bool isOK, double startTime,
                    const QStringList &highlightKeys, const QString &searchString);

    QString m_searchString;
    ORVSearchKeys m_keys;
    QStringList m_searchHighlightArr;
    double m_searchTimeInterval = 0;
    double m_lastSearchTime = 0; // the last start time given out; stopQuery does not reset it

    QString m_libraryPath;
    std::shared_ptr<ORVDBManager> m_dbManager;
    // libraryAllDataItem: the rows of all documents, built by the first
    // search after the cache was emptied and shared by later scans.
    QMutex m_cacheLock;
    std::shared_ptr<const QList<ORVLibraryListDataItem>> m_libraryAllDataItem;

    QThreadPool m_pool; // the scans; the destructor waits for them
};
