#include "library/ORVSearchController.h"

#include "core/ORVNotificationCenter.h"
#include "core/app_log.h"
#include "library/FMDatabaseQueue.h"
#include "library/ORVDBManager.h"
#include "library/document_title.h"
#include "library/search_text.h"
#include "library/text_file.h"

#include <QDateTime>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QtConcurrent/QtConcurrentMap>

#include <algorithm>

namespace {

// A snippet shorter than this gets a tail of the text after its last piece.
constexpr qsizetype kSnippetTailBelow = 300;
// The tail is at most this long.
constexpr qsizetype kSnippetTailLength = 120;

bool isSwitch(const QString &piece)
{
    const QString lower = piece.toLower();
    return lower == QLatin1String("-t") || lower == QLatin1String("-c") || lower == QLatin1String("-h");
}

// Every key must stand in the joined text; an empty text holds nothing.
bool joinedHoldsAllKeys(const QStringList &values, const QStringList &keys)
{
    const QString joined = orvoFoldCase(values.join(QLatin1Char(',')));
    if (joined.isEmpty())
        return false;
    return std::all_of(keys.begin(), keys.end(), [&](const QString &k) { return joined.contains(orvoFoldCase(k)); });
}

// Every document of the library, newest row first. No condition on
// `state`: documents in the trash are searched too.
QList<ORVDBArticle> readAllLibraryArticles(const QString &dbPath)
{
    QList<ORVDBArticle> articles;
    FMDatabaseQueue queue(dbPath, FMDatabase::OpenReadOnly);
    queue.inDatabase([&](FMDatabase *db) {
        if (!db)
            return;
        FMResultSet rs = db->executeQuery(QStringLiteral("SELECT * FROM article ORDER BY id DESC "));
        while (rs.next())
            articles << ORVDBArticle::fromResultSet(rs);
    });
    return articles;
}

struct LibraryScan {
    QString dbPath;
    QString libraryPath;
    ORVSearchKeys keys;
    std::shared_ptr<const QList<ORVLibraryListDataItem>> cachedRows;
    QHash<qint64, ORVDBManager::LinkRecord> cats;
    QHash<qint64, ORVDBManager::LinkRecord> tags;
};

struct RowWork {
    ORVLibraryListDataItem row;
    bool hit = false;
    QString snippet;
};

// One row of a library search: its title when the rows are being built,
// then the filters and the content test.
void scanLibraryRow(RowWork &work, const ORVSearchKeys &keys, bool buildRow)
{
    ORVLibraryListDataItem &row = work.row;
    const bool needContent = !keys.searchKeyArr.isEmpty();
    QByteArray bytes;
    if (needContent) {
        std::optional<QByteArray> read = orvoReadWholeFile(row.url);
        if (!read) {
            if (buildRow)
                row.setupTitleAndContentWithText(QString()); // a missing file: empty title and summary
            return;
        }
        bytes = std::move(*read);
    } else {
        if (buildRow)
            row.setupTitleAndContentWithFileURL();
        if (!QFileInfo::exists(row.url))
            return;
    }
    std::optional<QString> text;
    if (needContent) {
        bool isPlainUtf8 = false;
        text = decodeTextDetectingEncoding(bytes, &isPlainUtf8);
        if (buildRow)
            // From the text already decoded when every line of it is UTF-8.
            row.setupTitleAndContentWithText(text && isPlainUtf8 ? readFileContentWithTextMaxLineLenth(*text)
                                                                 : readFileContentWithBytesMaxLineLenth(bytes));
    }
    bool filterHeld = false;
    if (!keys.searchTagsArr.isEmpty()) {
        if (!joinedHoldsAllKeys(row.tags, keys.searchTagsArr))
            return;
        filterHeld = true;
    }
    if (!keys.searchCatsArr.isEmpty()) {
        if (!joinedHoldsAllKeys(row.cats, keys.searchCatsArr))
            return;
        filterHeld = true;
    }
    if (!keys.searchTitleArr.isEmpty()) {
        if (!joinedHoldsAllKeys({row.title()}, keys.searchTitleArr))
            return;
        filterHeld = true;
    }
    if (!needContent) {
        work.hit = filterHeld;
        return;
    }
    if (!text)
        return;
    work.hit = ORVSearchController::checkContentHasKeyAndHighlight(*text, keys.searchKeyArr, &work.snippet);
}

QList<ORVLibraryListDataItem> scanLibrary(const LibraryScan &scan,
                                          std::shared_ptr<const QList<ORVLibraryListDataItem>> *builtRows)
{
    const bool build = !scan.cachedRows;
    std::vector<RowWork> work;
    if (build) {
        // The rows are made on the workers too, each beside its file.
        const QList<ORVDBArticle> articles = readAllLibraryArticles(scan.dbPath);
        work.resize(size_t(articles.size()));
        for (qsizetype i = 0; i < articles.size(); ++i)
            work[size_t(i)].row.art = articles.at(i);
    } else {
        work.resize(size_t(scan.cachedRows->size()));
        for (qsizetype i = 0; i < scan.cachedRows->size(); ++i)
            work[size_t(i)].row = scan.cachedRows->at(i);
    }
    QtConcurrent::blockingMap(work, [&](RowWork &w) {
        if (build)
            w.row = ORVLibraryListDataItem::LibraryListDataItemWithDBArticle(w.row.art, scan.cats, scan.tags,
                                                                             scan.libraryPath);
        scanLibraryRow(w, scan.keys, build);
    });

    QList<ORVLibraryListDataItem> results;
    QList<ORVLibraryListDataItem> built;
    if (build)
        built.reserve(qsizetype(work.size()));
    for (RowWork &w : work) {
        if (w.hit) {
            ORVLibraryListDataItem result = w.row.copy(); // the cached row keeps its own summary
            if (!w.snippet.isEmpty())
                result.content = w.snippet;
            results << result;
        }
        if (build)
            built << std::move(w.row);
    }
    if (build)
        *builtRows = std::make_shared<const QList<ORVLibraryListDataItem>>(std::move(built));
    std::stable_sort(results.begin(), results.end(), [](const auto &a, const auto &b) {
        return a.modifDateSeconds() > b.modifDateSeconds();
    });
    return results;
}

} // namespace

// ---- object

ORVSearchController *ORVSearchController::sharedInstance()
{
    static ORVSearchController *controller = new ORVSearchController();
    return controller;
}

ORVSearchController::ORVSearchController(QObject *parent) : QObject(parent) {}

ORVSearchController::~ORVSearchController() { m_pool.waitForDone(); }

double ORVSearchController::nextSearchTime()
{
    // The start time is the search's identity: two searches never share one.
    double now = double(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
    if (now <= m_lastSearchTime)
        now = m_lastSearchTime + 0.001;
    m_lastSearchTime = now;
    return now;
}

void ORVSearchController::stopQuery() { m_searchTimeInterval = 0; }

void ORVSearchController::clearSearchData()
{
    stopQuery();
    m_searchString.clear();
    m_keys = {};
    m_searchHighlightArr.clear();
    QMutexLocker lock(&m_cacheLock);
    m_libraryAllDataItem.reset();
}

bool ORVSearchController::writeSearchLogWithString(const QString &string)
{
    return writeLogStringToLogFile(QStringLiteral("orvo-search-log.txt"), string);
}

// ---- query language

ORVSearchKeys ORVSearchController::analyticsSearchString(const QString &searchString)
{
    ORVSearchKeys keys;
    const QStringList pieces = searchString.split(QLatin1Char(' '));
    enum class Content { NotStarted, Running, Ended } content = Content::NotStarted;
    for (qsizetype i = 0; i < pieces.size(); ++i) {
        const QString piece = pieces.at(i).trimmed();
        if (isSwitch(piece)) {
            if (content == Content::Running)
                content = Content::Ended;
            // The value is the next piece; another switch is not a value
            // (the user is still typing the first one's).
            const QString value = i + 1 < pieces.size() ? pieces.at(i + 1).trimmed() : QString();
            if (value.isEmpty() || isSwitch(value))
                continue;
            ++i;
            QStringList *list = piece.compare(QLatin1String("-t"), Qt::CaseInsensitive) == 0   ? &keys.searchTagsArr
                                : piece.compare(QLatin1String("-c"), Qt::CaseInsensitive) == 0 ? &keys.searchCatsArr
                                                                                               : &keys.searchTitleArr;
            for (const QString &part : value.split(QLatin1Char(',')))
                if (!part.trimmed().isEmpty())
                    *list << part.trimmed();
            continue;
        }
        if (piece.isEmpty())
            continue;
        if (content == Content::NotStarted)
            content = Content::Running;
        if (content == Content::Running)
            keys.searchKeyArr << piece;
    }
    if (!keys.searchKeyArr.isEmpty() && keys.searchKeyArr.last() == QLatin1String("-"))
        keys.searchKeyArr.removeLast();
    if (keys.searchKeyArr.size() > 1)
        keys.searchKeyArr.prepend(keys.searchKeyArr.join(QLatin1Char(' ')));
    return keys;
}

bool ORVSearchController::setupAndAnalyticsWithSearchString(const QString &searchString)
{
    const ORVSearchKeys keys = analyticsSearchString(searchString);
    if (keys.isEmpty() || keys == m_keys)
        return false;
    m_keys = keys;
    m_searchHighlightArr = keys.searchKeyArr + keys.searchTagsArr + keys.searchCatsArr + keys.searchTitleArr;
    return true;
}

// ---- testing text

QString ORVSearchController::highlightKeyStringWithRange(qsizetype location, qsizetype length, const QString &text)
{
    const qsizetype total = text.size();
    QString prefix;
    qsizetype start = location;
    if (location > 5) {
        prefix = QStringLiteral("...");
        start = location - 5;
    }
    qsizetype pieceLength = length + 10;
    if (!(total - 10 > location + length) || total < 11)
        pieceLength = total - location - length;
    return prefix + text.mid(start, std::max<qsizetype>(0, pieceLength));
}

bool ORVSearchController::checkContentHasKeyAndHighlight(const QString &content, const QStringList &keys,
                                                         QString *highlightContent)
{
    const QString folded = orvoFoldCase(content);
    QList<QPair<qsizetype, qsizetype>> ranges;
    for (const QString &key : keys) {
        const QString k = orvoFoldCase(key);
        if (k.isEmpty())
            continue;
        qsizetype at = folded.indexOf(k);
        if (at < 0)
            return false;
        for (; at >= 0; at = folded.indexOf(k, at + k.size()))
            ranges.append({at, k.size()});
    }
    if (!highlightContent)
        return true;
    std::stable_sort(ranges.begin(), ranges.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    QString snippet;
    for (const auto &[location, length] : std::as_const(ranges))
        snippet += highlightKeyStringWithRange(location, length, content);
    if (!ranges.isEmpty()) {
        const qsizetype lastEnd = ranges.last().first + ranges.last().second;
        if (snippet.size() < kSnippetTailBelow && content.size() > lastEnd + 10)
            snippet += QStringLiteral("...") + content.mid(lastEnd + 10, kSnippetTailLength);
    }
    snippet.replace(QLatin1Char('\n'), QLatin1Char(' '));
    *highlightContent = snippet;
    return true;
}

bool ORVSearchController::checkFileHasKeyAndHighlightWithFileURL(const QString &path, const QStringList &keys,
                                                                 QString *highlightContent, QString *title)
{
    const std::optional<QString> text = readTextFileDetectingEncoding(path);
    if (!text)
        return false;
    if (title) {
        // The title as a list shows it: the first paragraph of the file's start.
        constexpr qsizetype kStartOfFile = 4096;
        *title = documentTitleAndSummaryWithContent(text->left(kStartOfFile)).title;
    }
    return checkContentHasKeyAndHighlight(*text, keys, highlightContent);
}

bool ORVSearchController::checkStringHasKeysWithString(const QString &string, const QStringList &keys)
{
    const QString folded = orvoFoldCase(string);
    return std::any_of(keys.begin(), keys.end(), [&](const QString &k) { return folded.contains(orvoFoldCase(k)); });
}

// ---- searching

void ORVSearchController::postResult(const QString &type, const QVariant &data, bool isOK, double startTime,
                                     const QStringList &highlightKeys, const QString &searchString)
{
    // The only cancellation: a superseded scan ran to its end for nothing.
    if (startTime != m_searchTimeInterval)
        return;
    ORVNotificationCenter::defaultCenter()->postNotification(kORVSearchControllerDidUpdateResultNotification, this,
                                                             {{QStringLiteral("type"), type},
                                                              {QStringLiteral("data"), data},
                                                              {QStringLiteral("isOK"), isOK},
                                                              {QStringLiteral("keys"), highlightKeys},
                                                              {QStringLiteral("searchString"), searchString}});
}

void ORVSearchController::queryWithLibraryURL(const QString &libraryPath, const std::shared_ptr<ORVDBManager> &manager,
                                              const QString &searchString)
{
    if (!manager)
        return;
    if (libraryPath != m_libraryPath || manager != m_dbManager) {
        QMutexLocker lock(&m_cacheLock);
        m_libraryAllDataItem.reset(); // the rows of another library
    }
    m_libraryPath = libraryPath;
    m_dbManager = manager;
    stopQuery();
    m_searchString = searchString;
    const bool changed = setupAndAnalyticsWithSearchString(searchString);
    ORVNotificationCenter::defaultCenter()->postNotification(
        kORVSearchControllerDidUpdateInfoUINotification, this,
        {{QStringLiteral("type"), QStringLiteral("lib")}, {QStringLiteral("isChanged"), changed}});

    LibraryScan scan;
    {
        QMutexLocker lock(&m_cacheLock);
        scan.cachedRows = m_libraryAllDataItem;
    }
    if (!scan.cachedRows) {
        scan.cats = manager->dicArticleCatsMaps();
        scan.tags = manager->dicArticleTagsMaps();
    }
    scan.dbPath = manager->dbURL();
    scan.libraryPath = libraryPath;
    scan.keys = m_keys; // copies: the next keystroke may change the live lists
    const QStringList highlight = m_searchHighlightArr;
    const double start = nextSearchTime();
    m_searchTimeInterval = start;
    m_pool.start([this, scan, highlight, searchString, start] {
        std::shared_ptr<const QList<ORVLibraryListDataItem>> built;
        const QList<ORVLibraryListDataItem> results = scanLibrary(scan, &built);
        if (built) {
            QMutexLocker lock(&m_cacheLock);
            if (!m_libraryAllDataItem)
                m_libraryAllDataItem = built;
        }
        QMetaObject::invokeMethod(
            this,
            [this, results, start, highlight, searchString] {
                postResult(QStringLiteral("lib"), QVariant::fromValue(results), true, start, highlight, searchString);
            },
            Qt::QueuedConnection);
    });
}

namespace {

// The files one path of an external search stands for.
QStringList externalFiles(const QString &path, const QStringList &extensions)
{
    const QFileInfo fi(path);
    if (fi.isFile())
        return {fi.absoluteFilePath()};
    if (!fi.isDir())
        return {};
    QStringList files;
    // Hidden files and folders (.git, editor backups) are not documents.
    QDirIterator it(fi.absoluteFilePath(), QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo file(it.next());
        if (extensions.contains(file.suffix().toLower()))
            files << file.absoluteFilePath();
    }
    files.sort();
    return files;
}

} // namespace

void ORVSearchController::queryWithExternalURLs(const QStringList &paths, const QString &searchString,
                                                const QStringList &searchExts)
{
    if (paths.isEmpty())
        return;
    m_searchString = searchString;
    const bool changed = setupAndAnalyticsWithSearchString(searchString);
    ORVNotificationCenter::defaultCenter()->postNotification(
        kORVSearchControllerDidUpdateInfoUINotification, this,
        {{QStringLiteral("type"), QStringLiteral("ext")}, {QStringLiteral("isChanged"), changed}});
    if (!changed)
        return;
    const double start = nextSearchTime();
    m_searchTimeInterval = start;
    const QStringList highlight = m_searchHighlightArr;
    if (m_keys.searchKeyArr.isEmpty() && m_keys.searchTitleArr.isEmpty()) {
        postResult(QStringLiteral("ext"), QVariant::fromValue(ORVSearchExternalHits()), true, start, highlight,
                   searchString);
        return;
    }
    QStringList extensions;
    for (const QString &ext : searchExts)
        extensions << ext.toLower();
    const ORVSearchKeys keys = m_keys;
    m_pool.start([this, paths, extensions, keys, highlight, searchString, start] {
        QSet<QString> seen;
        ORVSearchExternalHits hits;
        const auto report = [&](bool isOK) {
            QMetaObject::invokeMethod(
                this,
                [this, hits, isOK, start, highlight, searchString] {
                    postResult(QStringLiteral("ext"), QVariant::fromValue(hits), isOK, start, highlight, searchString);
                },
                Qt::QueuedConnection);
        };
        for (const QString &path : paths) {
            for (const QString &file : externalFiles(path, extensions)) {
                if (seen.contains(file))
                    continue;
                seen.insert(file);
                QString snippet;
                if (!keys.searchTitleArr.isEmpty()) {
                    if (!checkStringHasKeysWithString(QFileInfo(file).fileName(), keys.searchTitleArr))
                        continue;
                    if (keys.searchKeyArr.isEmpty()) {
                        hits << ORVExternalListDataItem::initNoContentWithRealPath(file);
                        continue;
                    }
                }
                if (checkFileHasKeyAndHighlightWithFileURL(file, keys.searchKeyArr, &snippet, nullptr)) {
                    ORVExternalListDataItem::Ptr hit = ORVExternalListDataItem::initNoContentWithRealPath(file);
                    hit->content = snippet;
                    hits << hit;
                }
            }
            report(false);
        }
        report(true);
    });
}
