#include "site/ORVSiteBuilder.h"

#include "core/MyPreferences.h"
#include "core/ORVAppPaths.h"
#include "library/ORVDBManager.h"
#include "library/document_title.h"
#include "markdown/MarkdownWrap.h"
#include "site/ICUTemplateMatcher.h"
#include "site/ORVSiteTemplateFilters.h"
#include "site/site_files.h"
#include "site/site_text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>

#include <unicode/udat.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace
{

const QString kGTMPattern = QStringLiteral("yyyy'-'MM'-'dd'T'HH':'mm':'ssZZZZZ");
const QString kDefaultSiteDateFormat = QStringLiteral("M/d/yyyy H:m aa");
const QString kMoreMark = QStringLiteral("<!-- more -->");
// How many posts the recent list, the home page's list and the main feed
// hold: a sidebar and a feed reader want the newest few, not the archive.
constexpr qsizetype kRecentPostsCount = 20;
// Characters of a list summary when the site doesn't say.
constexpr int kDefaultListTextNum = 300;

// A date pattern in the system's locale and time zone. Not thread-safe:
// the build formats dates on its own thread only.
class DateFormatter
{
public:
    explicit DateFormatter(const QString &pattern)
    {
        UErrorCode status = U_ZERO_ERROR;
        m_format = udat_open(UDAT_PATTERN, UDAT_PATTERN, nullptr, nullptr, 0,
                             reinterpret_cast<const UChar *>(pattern.utf16()), int32_t(pattern.size()), &status);
        if (U_FAILURE(status)) {
            if (m_format)
                udat_close(m_format);
            m_format = nullptr;
        }
    }
    ~DateFormatter()
    {
        if (m_format)
            udat_close(m_format);
    }
    DateFormatter(const DateFormatter &) = delete;
    DateFormatter &operator=(const DateFormatter &) = delete;

    // Milliseconds since 1970 (QDateTime in local time would consult the
    // time zone file at every step).
    QString format(qint64 msecs) const
    {
        if (!m_format)
            return QDateTime::fromMSecsSinceEpoch(msecs, Qt::UTC).toString(Qt::ISODate);
        UChar buffer[128];
        UErrorCode status = U_ZERO_ERROR;
        const int32_t length =
            udat_format(m_format, UDate(msecs), buffer, 128, nullptr, &status);
        if (U_FAILURE(status) || length > 128)
            return QDateTime::fromMSecsSinceEpoch(msecs, Qt::UTC).toString(Qt::ISODate);
        return QString(reinterpret_cast<const QChar *>(buffer), length);
    }

private:
    UDateFormat *m_format = nullptr;
};

// How many threads a build uses: the machine's cores.
qsizetype workerCount()
{
    return std::max(1u, std::thread::hardware_concurrency());
}

// Runs body(worker, i) for i in [0, n) on up to workerCount() threads, the
// calling thread being worker 0, and returns when all are done. Each worker
// index is used by one thread at a time.
template <typename Body>
void parallelFor(qsizetype n, Body body)
{
    const qsizetype threads = std::min(workerCount(), std::max<qsizetype>(1, n / 4));
    std::atomic<qsizetype> next{0};
    const auto work = [&](qsizetype worker) {
        for (;;) {
            const qsizetype i = next.fetch_add(1, std::memory_order_relaxed);
            if (i >= n)
                return;
            body(worker, i);
        }
    };
    std::vector<std::thread> pool;
    for (qsizetype t = 1; t < threads; ++t)
        pool.emplace_back(work, t);
    work(0);
    for (std::thread &t : pool)
        t.join();
}

MGTemplateMap nameURLRecord(const QString &name, const QString &url)
{
    MGTemplateMap m;
    m.insert(QStringLiteral("name"), name);
    m.insert(QStringLiteral("url"), url);
    return m;
}

// A stored boolean of the menu: JSON true, a non-zero number, or a text
// that reads as true ("true", "yes", a non-zero number).
bool menuBoolean(const QJsonValue &v)
{
    if (v.isBool())
        return v.toBool();
    if (v.isDouble())
        return v.toDouble() != 0;
    if (v.isString()) {
        const QString s = v.toString().trimmed().toLower();
        if (s.startsWith(QLatin1Char('y')) || s.startsWith(QLatin1Char('t')))
            return true;
        bool ok = false;
        const int n = s.toInt(&ok);
        return ok && n != 0;
    }
    return false;
}

QString jsonText(const QJsonValue &v)
{
    if (v.isString())
        return v.toString();
    if (v.isNull() || v.isUndefined())
        return QString(QLatin1String(""));
    if (v.isBool())
        return v.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    if (v.isDouble())
        return QString::number(v.toDouble(), 'g', 17);
    if (v.isArray())
        return QString::fromUtf8(QJsonDocument(v.toArray()).toJson(QJsonDocument::Compact));
    return QString::fromUtf8(QJsonDocument(v.toObject()).toJson(QJsonDocument::Compact));
}

} // namespace

// The date formats of one build, made once: opening an ICU formatter costs
// more than formatting thousands of dates.
struct ORVSiteBuilder::Formatters {
    explicit Formatters(const QString &siteFormat)
        : site(siteFormat), gtm(kGTMPattern), year(QStringLiteral("yyyy")), month(QStringLiteral("MMM")),
          day(QStringLiteral("dd"))
    {
    }
    DateFormatter site, gtm, year, month, day;
};

// An engine of a worker thread, with the errors of the page it runs now.
struct ORVSiteBuilder::WorkerEngine : MGTemplateEngineDelegate {
    WorkerEngine() : engine(MGTemplateEngine::templateEngine())
    {
        engine->setDelegate(this);
        engine->setMatcher(std::make_unique<ICUTemplateMatcher>(engine.get()));
        engine->loadFilter(std::make_shared<ORVSiteTemplateFilters>());
    }
    void templateEngineEncounteredErrorIsContinuing(MGTemplateEngine *, const MGTemplateError &error, bool) override
    {
        sink->append(error);
    }
    std::unique_ptr<MGTemplateEngine> engine;
    QList<MGTemplateError> *sink = nullptr;
};

// One page to expand on a worker and write.
struct ORVSiteBuilder::PageJob {
    QString templateString;
    QString templateName;
    MGTemplateMap vars;
    QString fileName;
    std::optional<QString> output;
    QList<MGTemplateError> errors;
};

// One post or page of the site, with what its file and its render gave.
struct ORVSiteBuilder::Item {
    ORVDBArticle art;
    QList<qint64> catUUIDs;
    QStringList tags;
    QString title;
    // The dates in milliseconds; a stored value below 1001 reads as the
    // build's start.
    qint64 artMs = 0, addMs = 0, modifMs = 0;
    bool hasFile = false;
    QString html;
    QString textOnly; // the whole HTML without tags, cut
    ORVMarkdownToHTMLInfo info;
    bool isPage() const { return art.type() == 1; }
};

QString ORVSiteBuilder::BuildError::description() const
{
    QString where = templateName.isEmpty() ? QString() : templateName + QStringLiteral(": ");
    QString out = where + error.description;
    if (!outputName.isEmpty())
        out += QStringLiteral(" (while making %1)").arg(outputName);
    return out;
}

ORVSiteBuilder::ORVSiteBuilder(std::shared_ptr<ORVDBManager> dbManager, QString libURL, qint64 catUUID,
                               QString outputBaseURL)
    : m_dbManager(std::move(dbManager)), m_libURL(std::move(libURL)), m_outputBaseURL(std::move(outputBaseURL))
{
    m_previewAssetPath = ORVAppPaths::previewAssetFullPath();
    if (!m_dbManager)
        return;
    const std::optional<ORVDBCat> cat = m_dbManager->itemDBCatWithUUID(catUUID);
    if (!cat)
        return;
    m_dbCat = *cat;
    m_valid = true;

    // 1. The last build's date, now when never built.
    m_lastBuildDate = m_dbCat.siteLastBuildDate() > 1000 ? m_dbCat.siteLastBuildDate() * 1000
                                                         : QDateTime::currentMSecsSinceEpoch();
    // 2, 3. Theme and its options.
    m_skinURL = ORVSiteTheme::themePathForSkinName(m_dbCat.siteSkinName());
    m_theme = ORVSiteTheme(m_skinURL);
    m_config = m_theme.config();
    // 4. The build path.
    setupBuildPath();
    // 5. Folders, categories, engine.
    m_outputURL = QDir(m_outputBaseURL).filePath(siteSafeFileBase(m_dbCat.siteBuildPath()));
    m_outputMediaURL = QDir(m_outputURL).filePath(QStringLiteral("media"));
    m_markdownDocURL = QDir(m_libURL).filePath(QStringLiteral("docs"));
    m_markdownDocMediaURL = QDir(m_markdownDocURL).filePath(QStringLiteral("media"));
    m_allCategories = m_dbManager->allDBCatChildItemsWidthCatUUID(m_dbCat.uuid());
    for (qsizetype i = 0; i < m_allCategories.size(); ++i)
        m_categoryIndex.insert(m_allCategories[i].uuid(), i);
    m_engine = MGTemplateEngine::templateEngine();
    m_engine->setDelegate(this);
    m_engine->setMatcher(std::make_unique<ICUTemplateMatcher>(m_engine.get()));
    m_engine->loadFilter(std::make_shared<ORVSiteTemplateFilters>());
}

ORVSiteBuilder::~ORVSiteBuilder() = default;

void ORVSiteBuilder::setupBuildPath()
{
    if (!m_dbCat.siteBuildPath().isEmpty())
        return;
    QString candidate = m_dbCat.name().isEmpty() ? QString::number(m_dbCat.uuid()) : m_dbCat.name();
    QList<ORVDBCat> siblings;
    for (const ORVDBCat &c : m_dbManager->getAllItemsDBCat())
        if (c.pid() == m_dbCat.pid() && c.uuid() != m_dbCat.uuid())
            siblings.append(c);
    std::stable_sort(siblings.begin(), siblings.end(),
                     [](const ORVDBCat &a, const ORVDBCat &b) { return a.sort() < b.sort(); });
    qint64 counter = 1;
    for (const ORVDBCat &sibling : siblings) {
        while (sibling.siteBuildPath() == candidate)
            candidate = QStringLiteral("%1-%2").arg(candidate).arg(counter++);
    }
    m_dbCat.setSiteBuildPath(candidate);
    m_dbManager->saveItemDBCat(m_dbCat);
    if (const std::optional<ORVDBCat> reloaded = m_dbManager->itemDBCatWithUUID(m_dbCat.uuid()))
        m_dbCat = *reloaded;
}

void ORVSiteBuilder::templateEngineEncounteredErrorIsContinuing(MGTemplateEngine *, const MGTemplateError &error,
                                                                bool)
{
    if (m_isBlaming)
        m_blameCodes.append(error.code);
    else
        m_errorArray.append(BuildError{error, m_currentTemplateName, m_currentOutputName});
}

QString ORVSiteBuilder::seqAndFlowChartSupportScript()
{
    return QStringLiteral(
        "<script src=\"asset/chart/all-min.js\"></script>"
        "<script>$(document).ready(function(){var orvoii=1;var orvoPrefix='orvo-chart-ele-';"
        "$('pre>code').each(function(){var code=$(this);var kind='';"
        "if(code.hasClass('language-sequence')){kind='seq';}else if(code.hasClass('language-flow')){kind='flow';}"
        "if(kind===''){return;}var text=code.text();code.addClass('nohighlight');"
        "var id=orvoPrefix+orvoii;orvoii++;var pre=code.parent();pre.hide();"
        "pre.after('<div id=\"'+id+'\"></div>');"
        "if(kind==='seq'){Diagram.parse(text).drawSVG(id,{theme:'simple'});}"
        "else{flowchart.parse(text).drawSVG(id);}});});</script>");
}

QString ORVSiteBuilder::mathJaxOnlineScript()
{
    return QStringLiteral(
        "<script src=\"https://cdnjs.cloudflare.com/ajax/libs/mathjax/2.7.7/MathJax.js?config=TeX-AMS_SVG-full\">"
        "</script><script type=\"text/x-mathjax-config\">MathJax.Hub.Config({TeX: { equationNumbers: { autoNumber: "
        "\"AMS\" } }});</script>");
}

// ---- Names and links

QString ORVSiteBuilder::createPostURL(const ORVDBArticle &art, bool isEscapes) const
{
    if (art.docName().isEmpty())
        return QStringLiteral("%1.html").arg(art.uuid());
    const QString base = siteSafeFileBase(art.docName());
    return (isEscapes ? stringByURLEncodedString(base) : base) + QStringLiteral(".html");
}

QString ORVSiteBuilder::categoryBaseName(const ORVDBCat &cat) const
{
    // A category with neither docName nor name would make ".html": it goes
    // under its id instead, as the build folder does.
    if (cat.docName().isEmpty())
        return QString::number(cat.uuid());
    return siteSafeFileBase(cat.docName());
}

QString ORVSiteBuilder::categoryURL(const ORVDBCat &cat) const
{
    return stringByURLEncodedString(categoryBaseName(cat)) + QStringLiteral(".html");
}

QString ORVSiteBuilder::tagURL(const QString &tag) const
{
    return QStringLiteral("tag_%1.html").arg(stringByURLEncodedString(siteSafeFileBase(tag)));
}

QString ORVSiteBuilder::setupPageTitle(const QString &title) const
{
    if (title.isEmpty())
        return m_dbCat.siteName();
    return QStringLiteral("%1 - %2").arg(title, m_dbCat.siteName());
}

MGTemplateList ORVSiteBuilder::catsVars(const Item &item) const
{
    MGTemplateList list;
    for (const qint64 uuid : item.catUUIDs) {
        const auto it = m_categoryIndex.constFind(uuid);
        if (it == m_categoryIndex.cend())
            continue;
        const ORVDBCat &cat = m_allCategories[*it];
        list.append(nameURLRecord(cat.name(), categoryURL(cat)));
    }
    return list;
}

MGTemplateList ORVSiteBuilder::tagsVars(const Item &item) const
{
    MGTemplateList list;
    for (const QString &tag : item.tags)
        list.append(nameURLRecord(tag, tagURL(tag)));
    return list;
}

MGTemplateMap ORVSiteBuilder::extensionValues(const QString &json) const
{
    MGTemplateMap map;
    if (json.isEmpty())
        return map;
    const QJsonDocument doc = QJsonDocument::fromJson(json.toUtf8());
    if (!doc.isObject())
        return map;
    const QJsonObject o = doc.object();
    for (auto it = o.begin(); it != o.end(); ++it)
        map.insert(QStringLiteral("ext_") + it.key(), jsonText(it.value()));
    return map;
}

// ---- Templates

QString ORVSiteBuilder::composed(const QString &body, bool withSidebar) const
{
    if (withSidebar)
        return QStringLiteral("%1 %2 %3 %4")
            .arg(m_templateHeaderString, body, m_templateSidebarString, m_templateFooterString);
    return QStringLiteral("%1 %2 %3").arg(m_templateHeaderString, body, m_templateFooterString);
}

void ORVSiteBuilder::setupDefaultTemplateString()
{
    m_templateHeaderString = m_theme.readSkinContentByFileName(QStringLiteral("header.html"));
    m_templateFooterString = m_theme.readSkinContentByFileName(QStringLiteral("footer.html"));
    m_templateCategoryString = m_theme.readSkinContentByFileName(QStringLiteral("category.html"));
    m_templateTagsString = m_theme.readSkinContentByFileName(QStringLiteral("tags.html"));
    m_templateSidebarString = m_theme.readSkinContentByFileName(QStringLiteral("sidebar.html"));
    m_templatePostString = m_theme.readSkinContentByFileName(QStringLiteral("post.html"));
    m_templatePageString = m_theme.readSkinContentByFileName(QStringLiteral("page.html"));
    m_templateArchivesString = m_theme.readSkinContentByFileName(QStringLiteral("archives.html"));
    m_templateATOMString = m_theme.readSkinContentByFileName(QStringLiteral("atom.xml"));
    m_templateSitemapString = m_theme.readSkinContentByFileName(QStringLiteral("sitemap.xml"));
    m_composedCache.clear();
}

QString ORVSiteBuilder::composedTemplate(const QStringList &overrides, const QString &defaultName,
                                        const QString &defaultBody, bool withSidebar, QString *templateName)
{
    // Each theme file is read and joined with the header and footer once a
    // build; "" stands for a missing or empty override.
    for (const QString &name : overrides) {
        auto cached = m_composedCache.constFind(name);
        if (cached == m_composedCache.cend()) {
            const QString body = m_theme.readSkinContentByFileName(name);
            cached = m_composedCache.insert(name, body.isEmpty() ? QString() : composed(body, withSidebar));
        }
        if (!cached->isEmpty()) {
            *templateName = name;
            return *cached;
        }
    }
    *templateName = defaultName;
    const QString key = QStringLiteral("default:") + defaultName;
    auto cached = m_composedCache.constFind(key);
    if (cached == m_composedCache.cend())
        cached = m_composedCache.insert(key, composed(defaultBody, withSidebar));
    return *cached;
}

QString ORVSiteBuilder::postTemplateString(const Item &item, QString *templateName)
{
    // The post's categories in order; the first with a docName and a
    // non-empty "post-<docName>.html" decides.
    QStringList overrides;
    for (const qint64 uuid : item.catUUIDs) {
        const auto it = m_categoryIndex.constFind(uuid);
        const QString docName = it != m_categoryIndex.cend() ? m_allCategories[*it].docName()
                                : uuid == m_dbCat.uuid()     ? m_dbCat.docName()
                                                             : QString();
        if (!docName.isEmpty())
            overrides.append(QStringLiteral("post-%1.html").arg(docName));
    }
    return composedTemplate(overrides, QStringLiteral("post.html"), m_templatePostString, true, templateName);
}

QString ORVSiteBuilder::categoryTemplateString(const ORVDBCat *cat, QString *templateName)
{
    QStringList overrides;
    if (cat && !cat->docName().isEmpty())
        overrides.append(QStringLiteral("category-%1.html").arg(cat->docName()));
    return composedTemplate(overrides, QStringLiteral("category.html"), m_templateCategoryString, true,
                            templateName);
}

QString ORVSiteBuilder::pageTemplateString(const Item &item, QString *templateName)
{
    QStringList overrides;
    if (!item.art.docName().isEmpty())
        overrides.append(QStringLiteral("page-%1.html").arg(item.art.docName()));
    return composedTemplate(overrides, QStringLiteral("page.html"), m_templatePageString, false, templateName);
}

// ---- Expanding and writing

std::optional<QString> ORVSiteBuilder::expand(const QString &templateString, const QString &templateName,
                                              const MGTemplateMap &vars, const QString &fileName)
{
    m_currentTemplateName = templateName;
    m_currentOutputName = fileName;
    const qsizetype before = m_errorArray.size();
    std::optional<QString> out = m_engine->processTemplateWithVariables(templateString, vars);
    if (m_errorArray.size() == before)
        return out;
    if (before == 0)
        blameFirstError(templateString, vars);
    return std::nullopt;
}

void ORVSiteBuilder::blameFirstError(const QString &templateString, const MGTemplateMap &vars)
{
    // Name the theme file that holds the fault: a page is header, body,
    // sidebar and footer joined, and the engine doesn't say where it was.
    if (m_errorArray.isEmpty() || templateString.size() <= m_templateHeaderString.size() ||
        !templateString.startsWith(m_templateHeaderString))
        return;
    const int code = m_errorArray.first().error.code;
    const std::pair<QString, QString> parts[] = {{QStringLiteral("header.html"), m_templateHeaderString},
                                                 {QStringLiteral("sidebar.html"), m_templateSidebarString},
                                                 {QStringLiteral("footer.html"), m_templateFooterString}};
    m_isBlaming = true;
    for (const auto &[name, text] : parts) {
        m_blameCodes.clear();
        m_engine->processTemplateWithVariables(text, vars);
        if (m_blameCodes.contains(code)) {
            for (BuildError &e : m_errorArray)
                e.templateName = name;
            break;
        }
    }
    m_isBlaming = false;
}

void ORVSiteBuilder::enqueuePage(const QString &templateString, const QString &templateName, MGTemplateMap vars,
                                 const QString &fileName)
{
    m_jobs.push_back(PageJob{templateString, templateName, std::move(vars), fileName, std::nullopt, {}});
    // Enough pages for every worker to keep busy, few enough to hold little
    // output in memory at once.
    if (m_jobs.size() >= 256)
        flushPages();
}

void ORVSiteBuilder::flushPages()
{
    if (m_jobs.empty())
        return;
    while (qsizetype(m_workers.size()) < workerCount())
        m_workers.push_back(std::make_unique<WorkerEngine>());
    parallelFor(qsizetype(m_jobs.size()), [this](qsizetype worker, qsizetype i) {
        PageJob &job = m_jobs[size_t(i)];
        WorkerEngine &w = *m_workers[size_t(worker)];
        w.sink = &job.errors;
        job.output = w.engine->processTemplateWithVariables(job.templateString, job.vars);
    });
    // The pages stand in build order: a page is written only when no page
    // before it, in this build, reported an error.
    qsizetype writable = m_errorArray.isEmpty() ? qsizetype(m_jobs.size()) : 0;
    for (qsizetype i = 0; i < qsizetype(m_jobs.size()); ++i) {
        const PageJob &job = m_jobs[size_t(i)];
        if (job.errors.isEmpty())
            continue;
        const bool first = m_errorArray.isEmpty();
        for (const MGTemplateError &e : job.errors)
            m_errorArray.append(BuildError{e, job.templateName, job.fileName});
        if (first)
            blameFirstError(job.templateString, job.vars);
        writable = std::min(writable, i);
    }
    m_writtenFiles += int(writable);
    // Of two pages of one name (documents sharing a docName) the later wins,
    // as it would written one after the other.
    QSet<QString> later;
    std::vector<bool> superseded(size_t(writable), false);
    for (qsizetype i = writable - 1; i >= 0; --i) {
        const QString &name = m_jobs[size_t(i)].fileName;
        superseded[size_t(i)] = later.contains(name);
        later.insert(name);
    }
    for (qsizetype i = 0; i < writable; ++i)
        m_writtenNames.insert(m_jobs[size_t(i)].fileName);
    parallelFor(writable, [this, &superseded](qsizetype, qsizetype i) {
        const PageJob &job = m_jobs[size_t(i)];
        if (superseded[size_t(i)])
            return;
        writeFileIfChanged(QDir(m_outputURL).filePath(job.fileName), job.output.value_or(QString()).toUtf8());
    });
    m_jobs.clear();
}

bool ORVSiteBuilder::expandAndWrite(const QString &templateString, const QString &templateName,
                                    const MGTemplateMap &vars, const QString &fileName, bool writeDespiteErrors)
{
    const std::optional<QString> out = expand(templateString, templateName, vars, fileName);
    if (!out && !writeDespiteErrors)
        return false;
    if (m_errorArray.isEmpty() || writeDespiteErrors) {
        if (out)
            writeOutputFile(fileName, *out);
        else if (const auto again = m_engine->processTemplateWithVariables(templateString, vars))
            writeOutputFile(fileName, *again);
    }
    return out.has_value();
}

bool ORVSiteBuilder::writeOutputFile(const QString &fileName, const QString &text)
{
    const QString path = QDir(m_outputURL).filePath(fileName);
    if (!sitePathIsInside(m_outputURL, path))
        return false;
    ++m_writtenFiles;
    m_writtenNames.insert(fileName);
    return writeFileIfChanged(path, text.toUtf8());
}

// ---- Documents

void ORVSiteBuilder::renderAll()
{
    // Every document is read and rendered once, up front and in parallel:
    // this is most of a build's work, it depends on nothing a template does,
    // and the lists then share the results.
    const QString docDir = m_markdownDocURL;
    const QHash<qint64, const Item *> &known = m_dicAllPostsAndPagesUUIDMap;
    const int textNum = m_dbCat.siteListTextNum() > 0 ? m_dbCat.siteListTextNum() : kDefaultListTextNum;
    // The preview's options, read once for the build rather than at every
    // render.
    MyPreferences *prefs = MyPreferences::sharedInstance();
    MarkdownWrap::Options options;
    options.smartypants = prefs->isSmartypants();
    options.toc = prefs->isRenderTOC();
    options.replaceTOC = options.toc;
    options.newlineToBR = prefs->isTranslateNewlineToBRtags();
    options.isMath = prefs->isEnableMath();
    options.renderType = ORVRenderTypePlain;
    parallelFor(qsizetype(m_items.size()), [&](qsizetype, qsizetype i) {
        Item &item = m_items[size_t(i)];
        const std::optional<QString> text =
            readSiteTextFile(QDir(docDir).filePath(QStringLiteral("%1.md").arg(item.art.uuid())));
        item.hasFile = text.has_value();
        if (!text)
            return;
        // The title: the first line, 150 characters at most, unmarked.
        const qsizetype eol = text->indexOf(QLatin1Char('\n'));
        QString firstLine = eol < 0 ? *text : text->left(eol);
        if (firstLine.endsWith(QLatin1Char('\r')))
            firstLine.chop(1);
        item.title = documentTitleRemoveMark(firstLine.left(150)).trimmed();

        QString source = replaceLibraryLinkToStaticWebsiteLink(*text, [&](qint64 uuid) -> QString {
            const Item *target = known.value(uuid);
            return target ? createPostURL(target->art, true) : QString();
        });
        if (!source.isEmpty()) {
            const qsizetype cut = source.indexOf(QLatin1Char('\n'));
            const QString body = cut < 0 ? QString() : source.mid(cut);
            MarkdownWrap::Options o = options;
            o.info = &item.info;
            item.html = MarkdownWrap::markdownToHtml(body, o);
        }
        item.textOnly = stringByStrippingHTML(item.html).left(textNum);
    });
}

const MGTemplateMap &ORVSiteBuilder::setupPostDictionary(const Item &item)
{
    const auto cached = m_postDicCaches.constFind(item.art.uuid());
    if (cached != m_postDicCaches.cend())
        return *cached;
    static const MGTemplateMap kEmpty;
    if (!item.hasFile)
        return kEmpty;

    const DateFormatter &siteFormat = m_formatters->site;
    const DateFormatter &gtm = m_formatters->gtm;
    MGTemplateMap dict = extensionValues(item.art.postExtValue());
    QString html = item.html;
    if (!m_dbCat.siteFavicon().isEmpty() && m_uploadedImagesReader)
        replaceLocalImagesWithUploaded(html, dict, m_uploadedImagesReader(item.art.uuid(), m_dbCat.siteFavicon()));

    const qsizetype more = html.indexOf(kMoreMark);
    QString desContent;
    if (more >= 0) {
        desContent = html.left(more);
        html.insert(more, QStringLiteral("<span id=\"more\"></span>"));
        dict.insert(QStringLiteral("readMore"), QStringLiteral("YES"));
    } else {
        desContent = html;
        dict.insert(QStringLiteral("readMore"), QString(QLatin1String("")));
    }
    dict.insert(QStringLiteral("title"), item.title);
    dict.insert(QStringLiteral("desContent"), desContent);
    dict.insert(QStringLiteral("desContentTextOnly"), item.textOnly);
    dict.insert(QStringLiteral("content"), html);
    dict.insert(QStringLiteral("date"), siteFormat.format(item.artMs));
    dict.insert(QStringLiteral("dateGTM"), gtm.format(item.artMs));
    dict.insert(QStringLiteral("artDate"), gtm.format(item.addMs));
    dict.insert(QStringLiteral("cats"), catsVars(item));
    dict.insert(QStringLiteral("tags"), tagsVars(item));
    dict.insert(QStringLiteral("url"), createPostURL(item.art, true));

    const ORVMarkdownToHTMLInfo &info = item.info;
    if (info.isChartOldFlowSeq || info.isChartVIZ || info.isChartECharts || info.isChartPlantUML ||
        info.isChartMermaid) {
        if (!m_chartScriptsRead) {
            m_chartScriptsRead = true;
            const std::optional<QString> driver =
                readSiteTextFile(QDir(m_previewAssetPath).filePath(QStringLiteral("orvojs/chart-driver.js")));
            m_chartScripts = QStringLiteral("<script>") + driver.value_or(QString()) + QStringLiteral("</script>");
        }
        dict.insert(QStringLiteral("chart_scripts"), m_chartScripts);
    }
    const QString y = QStringLiteral("y");
    if (info.isChartOldFlowSeq)
        dict.insert(QStringLiteral("chart_flowSeq"), y);
    if (info.isChartVIZ)
        dict.insert(QStringLiteral("chart_VIZ"), y);
    if (info.isChartECharts)
        dict.insert(QStringLiteral("chart_ECharts"), y);
    if (info.isChartMermaid)
        dict.insert(QStringLiteral("chart_mermaid"), y);
    if (info.isHaveCodeBlock)
        dict.insert(QStringLiteral("chart_codeblock"), y);
    if (info.isHaveLaTeX)
        dict.insert(QStringLiteral("chart_LaTeX"), y);
    return *m_postDicCaches.insert(item.art.uuid(), std::move(dict));
}

void ORVSiteBuilder::setupPostMedia(const ORVDBArticle &art)
{
    const QString id = QString::number(art.uuid());
    m_copiedMedia += copyMissingEntries(QDir(m_markdownDocMediaURL).filePath(id), QDir(m_outputMediaURL).filePath(id));
    if (art.otherMedia().isEmpty())
        return;
    for (const QString &relative : art.otherMediaPaths()) {
        const QString source = QDir(m_markdownDocURL).filePath(relative);
        const QString target = QDir(m_outputURL).filePath(relative);
        if (!sitePathIsInside(m_markdownDocURL, source) || !sitePathIsInside(m_outputURL, target))
            continue;
        if (!QFileInfo(source).isFile() || QFileInfo::exists(target))
            continue;
        QDir().mkpath(QFileInfo(target).absolutePath());
        if (QFile::copy(source, target))
            ++m_copiedMedia;
    }
}

// ---- Site variables

MGTemplateMap ORVSiteBuilder::baseSiteInfoDictionary() const
{
    MGTemplateMap site = extensionValues(m_dbCat.siteExtValue());
    QString siteURL = m_dbCat.siteURL();
    QString siteDomain;
    if (!siteURL.isEmpty()) {
        if (!siteURL.endsWith(QLatin1Char('/')))
            siteURL += QLatin1Char('/');
        siteDomain = siteURL;
        if (siteDomain.startsWith(QLatin1String("https://")))
            siteDomain.remove(0, 8);
        else if (siteDomain.startsWith(QLatin1String("http://")))
            siteDomain.remove(0, 7);
        siteDomain.chop(1);
    }
    const QString empty(QLatin1String(""));
    site.insert(QStringLiteral("siteURL"), siteURL.isEmpty() ? empty : siteURL);
    site.insert(QStringLiteral("siteDomain"), siteDomain.isEmpty() ? empty : siteDomain);
    site.insert(QStringLiteral("siteName"), m_dbCat.siteName());
    site.insert(QStringLiteral("pageTitle"), m_dbCat.siteName());
    site.insert(QStringLiteral("siteDes"), m_dbCat.siteDes());

    MGTemplateList menu;
    if (m_dbCat.siteMainMenuData().isEmpty()) {
        const auto item = [](const char *name, const char *url, const char *target) {
            MGTemplateMap m = nameURLRecord(QString::fromLatin1(name), QString::fromLatin1(url));
            m.insert(QStringLiteral("className"), QString(QLatin1String("")));
            m.insert(QStringLiteral("target"), QString::fromLatin1(target));
            return m;
        };
        // "self" without its underscore is how the first default has always
        // come out; themes that test for it rely on it.
        menu.append(item("Home", "index.html", "self"));
        menu.append(item("Archives", "archives.html", "_self"));
    } else {
        const QJsonDocument doc = QJsonDocument::fromJson(m_dbCat.siteMainMenuData().toUtf8());
        for (const QJsonValue &v : doc.array()) {
            const QJsonObject o = v.toObject();
            MGTemplateMap m = nameURLRecord(jsonText(o.value(QLatin1String("name"))),
                                            jsonText(o.value(QLatin1String("url"))));
            m.insert(QStringLiteral("className"), jsonText(o.value(QLatin1String("className"))));
            m.insert(QStringLiteral("target"), menuBoolean(o.value(QLatin1String("target"))) ? QStringLiteral("_blank")
                                                                                            : QStringLiteral("_self"));
            menu.append(m);
        }
    }
    site.insert(QStringLiteral("siteMenu"), menu);
    site.insert(QStringLiteral("mathJaxSupport"), m_dbCat.isEnableLaTeX() ? mathJaxOnlineScript() : empty);
    site.insert(QStringLiteral("seqAndFlowChartSupport"),
                m_dbCat.isEnableChart() ? seqAndFlowChartSupportScript() : empty);
    site.insert(QStringLiteral("commentAndShareCode"), m_dbCat.siteShareCode());
    site.insert(QStringLiteral("lastBuildDate"), m_formatters->gtm.format(m_lastBuildDate));
    site.insert(QStringLiteral("siteOther"), m_dbCat.siteOther());
    site.insert(QStringLiteral("recentPosts"), m_recentPostsArr);
    site.insert(QStringLiteral("categoriesTree"), m_categoriesTreeArr);
    if (m_config.isCreateTagsPages)
        site.insert(QStringLiteral("allTags"), m_allTagsVarsArr);
    if (m_config.isCreateCategoriesPages)
        site.insert(QStringLiteral("allCategories"), m_allCategoriesVarsArr);
    return site;
}

// ---- The build

void ORVSiteBuilder::clearOutputFolder(bool pagesToo)
{
    QDir dir(m_outputURL);
    const QFileInfoList entries =
        dir.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo &fi : entries) {
        const QString suffix = fi.suffix().toLower();
        const QString name = fi.fileName().toLower();
        const bool isPage = suffix == QLatin1String("xml") || suffix == QLatin1String("html");
        const bool isAssetOrMedia = name == QLatin1String("asset") || name == QLatin1String("media");
        const bool remove = pagesToo ? isPage && !m_writtenNames.contains(fi.fileName()) : isAssetOrMedia;
        if (!remove)
            continue;
        if (fi.isDir() && !fi.isSymLink())
            QDir(fi.filePath()).removeRecursively();
        else
            QFile::remove(fi.filePath());
    }
}

bool ORVSiteBuilder::buildSiteWithType(int type)
{
    if (!m_valid)
        return false;
    m_writtenNames.clear();
    const bool result = build(type);
    // A clearing build leaves no page of an earlier build: the pages and
    // feeds this build didn't write go now. They were left in place until
    // here so that a page written again with equal text is not deleted and
    // made anew (on a large site, most of them).
    if (m_isClearAndRebuildAll)
        clearOutputFolder(true);
    return result;
}

bool ORVSiteBuilder::build(int type)
{
    m_writtenFiles = 0;
    m_copiedMedia = 0;
    m_warnings.clear();
    // 1. Type and templates.
    m_isClearAndRebuildAll = type != 0;
    setupDefaultTemplateString();
    m_siteDateFormat = m_dbCat.siteDateFormat().isEmpty() ? kDefaultSiteDateFormat : m_dbCat.siteDateFormat();
    m_formatters = std::make_unique<Formatters>(m_siteDateFormat);
    // 2, 3. A missing folder makes a clearing build.
    if (!QFileInfo(m_outputURL).isDir())
        m_isClearAndRebuildAll = true;
    if (m_isClearAndRebuildAll) {
        if (!QFileInfo::exists(m_outputURL))
            QDir().mkpath(m_outputURL);
        else
            clearOutputFolder(false);
    }
    // 4. Media.
    QDir().mkpath(m_outputMediaURL);
    // 5. The theme's assets.
    const QString assetTarget = QDir(m_outputURL).filePath(QStringLiteral("asset"));
    if (m_isClearAndRebuildAll)
        copyDirectoryRecursively(QDir(m_skinURL).filePath(QStringLiteral("asset")), assetTarget);
    // 6. The chart bundle.
    if (m_dbCat.isEnableChart()) {
        const QString chartSource = QDir(m_previewAssetPath).filePath(QStringLiteral("chart"));
        const QString chartTarget = QDir(assetTarget).filePath(QStringLiteral("chart"));
        if (!QFileInfo(QDir(chartSource).filePath(QStringLiteral("all-min.js"))).isFile())
            m_warnings.append(QStringLiteral("the chart scripts are not installed (%1/all-min.js is missing; "
                                             "scripts/install-deps installs them): charts will not be drawn")
                                  .arg(chartSource));
        else if (!QFileInfo::exists(chartTarget))
            copyDirectoryRecursively(chartSource, chartTarget);
    }

    // 7. Documents, split into posts and pages.
    m_recentPostsArr = MGTemplateList();
    m_errorArray.clear();
    const QList<ORVDBArticle> arts = m_dbManager->getItemsDBArticleWithCatIDSort(m_dbCat.uuid(), m_dbCat.sortType());
    if (arts.isEmpty())
        return true;
    // 8. List items, posts first.
    const QHash<qint64, ORVDBManager::LinkRecord> catsMap = m_dbManager->dicArticleCatsMaps();
    const QHash<qint64, ORVDBManager::LinkRecord> tagsMap = m_dbManager->dicArticleTagsMaps();
    m_items.clear();
    m_items.reserve(size_t(arts.size()));
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    for (int pass = 0; pass < 2; ++pass) {
        for (const ORVDBArticle &art : arts) {
            if ((art.type() == 1) != (pass == 1))
                continue;
            Item item;
            item.art = art;
            const auto ms = [now](qint64 stored) { return stored < 1001 ? now : stored * 1000; };
            item.artMs = ms(art.dateArt());
            item.addMs = ms(art.dateAdd());
            item.modifMs = ms(art.dateModif());
            item.catUUIDs = catsMap.value(art.uuid()).uuids;
            item.tags = tagsMap.value(art.uuid()).names;
            m_items.push_back(std::move(item));
        }
    }
    for (const Item &item : m_items)
        m_dicAllPostsAndPagesUUIDMap.insert(item.art.uuid(), &item);
    renderAll();
    for (const Item &item : m_items)
        (item.isPage() ? m_pages : m_allArticlesPosts).append(&item);

    // 9. The posts in the site's order.
    const auto byAdd = [](const Item *a, const Item *b) {
        return a->artMs < b->artMs;
    };
    const auto byTitle = [](const Item *a, const Item *b) {
        return QString::compare(a->title, b->title, Qt::CaseInsensitive) < 0;
    };
    const auto byModif = [](const Item *a, const Item *b) {
        return a->modifMs < b->modifMs;
    };
    auto &posts = m_allArticlesPosts;
    switch (m_dbCat.sortType()) {
    case 1:
        std::stable_sort(posts.begin(), posts.end(), byAdd);
        break;
    case 2:
        std::stable_sort(posts.begin(), posts.end(),
                         [](const Item *a, const Item *b) { return a->art.sort() > b->art.sort(); });
        break;
    case 3:
        std::stable_sort(posts.begin(), posts.end(), byTitle);
        break;
    case 4:
        std::stable_sort(posts.begin(), posts.end(), [&](const Item *a, const Item *b) { return byTitle(b, a); });
        break;
    case 5:
        std::stable_sort(posts.begin(), posts.end(), [&](const Item *a, const Item *b) { return byModif(b, a); });
        break;
    case 6:
        std::stable_sort(posts.begin(), posts.end(), byModif);
        break;
    default:
        std::stable_sort(posts.begin(), posts.end(), [&](const Item *a, const Item *b) { return byAdd(b, a); });
        break;
    }
    for (qsizetype i = 0; i < posts.size(); ++i)
        m_postIndex.insert(posts[i]->art.uuid(), i);

    if (!posts.isEmpty()) {
        nameCategories();     // 11
        makeArchiveRecords(); // 12
        groupPosts();         // 13
        makeCategoryAndTagVars(); // 14, 15
        makeTree();           // 16
        // 17. Recent posts.
        for (qsizetype i = 0; i < std::min(kRecentPostsCount, posts.size()); ++i) {
            MGTemplateMap r;
            r.insert(QStringLiteral("title"), posts[i]->title);
            r.insert(QStringLiteral("url"), createPostURL(posts[i]->art, true));
            m_recentPostsArr.append(r);
        }
        m_baseSite = baseSiteInfoDictionary();
        // 18. Feeds.
        if (!m_dbCat.siteURL().isEmpty() && !writeFeeds())
            return false;
        // 19. Posts, the lists of all posts and the tag pages.
        if (m_config.isCreateCategoriesPages)
            createCategoriesHTML(posts, nullptr, nullptr, true);
        flushPages();
        if (m_config.isCreateTagsPages)
            createTagsPages();
        if (!m_config.isCreateCategoriesPages)
            for (const Item *item : posts)
                createArtPageFile(*item);
        flushPages();
        // 20. Archive.
        if (!writeArchive())
            return false;
        // 21. Sitemap, then the category pages.
        if (!m_dbCat.siteURL().isEmpty())
            writeSitemap();
        if (m_config.isCreateCategoriesPages) {
            for (const ORVDBCat &cat : std::as_const(m_allCategories)) {
                const auto list = m_categoryPosts.constFind(cat.uuid());
                if (list == m_categoryPosts.cend() || list->isEmpty())
                    continue;
                const auto tree = m_treeRecordByCat.constFind(cat.uuid());
                createCategoriesHTML(*list, &cat, tree == m_treeRecordByCat.cend() ? nullptr : &*tree, false);
            }
            flushPages();
        }
    } else {
        m_baseSite = baseSiteInfoDictionary();
    }

    // 22. Pages.
    if (m_isClearAndRebuildAll) {
        writePages(m_pages, true);
    } else {
        QList<const Item *> changed, unchanged;
        for (const Item *page : std::as_const(m_pages)) {
            if (page->modifMs > m_lastBuildDate ||
                page->art.docName().compare(QLatin1String("index"), Qt::CaseInsensitive) == 0)
                changed.append(page);
            else
                unchanged.append(page);
        }
        writePages(unchanged, false);
        writePages(changed, true);
    }
    return true;
}

void ORVSiteBuilder::nameCategories()
{
    QSet<QString> used;
    for (ORVDBCat &cat : m_allCategories) {
        if (!cat.docName().isEmpty()) {
            used.insert(cat.docName());
            if (m_theme.hasFile(QStringLiteral("%1-atom.xml").arg(cat.docName())))
                m_feedCategories.append(cat.uuid());
            continue;
        }
        if (cat.name().isEmpty())
            continue;
        QString candidate = cat.name();
        qint64 counter = 1;
        while (used.contains(candidate))
            candidate = QStringLiteral("%1-%2").arg(candidate).arg(counter++);
        cat.setDocName(candidate);
        used.insert(candidate);
    }
}

void ORVSiteBuilder::makeArchiveRecords()
{
    const DateFormatter &siteFormat = m_formatters->site;
    const DateFormatter &gtm = m_formatters->gtm;
    const DateFormatter &year = m_formatters->year;
    const DateFormatter &month = m_formatters->month;
    const DateFormatter &day = m_formatters->day;
    QList<const Item *> byDate = m_allArticlesPosts;
    std::stable_sort(byDate.begin(), byDate.end(), [](const Item *a, const Item *b) {
        return a->artMs > b->artMs;
    });
    QString previousYear;
    m_archivesArticlesDataArray = MGTemplateList();
    m_archivesArticlesDataArray.reserve(byDate.size());
    for (const Item *item : byDate) {
        const qint64 date = item->artMs;
        MGTemplateMap r = extensionValues(item->art.postExtValue());
        const QString y = year.format(date);
        r.insert(QStringLiteral("year"), y == previousYear ? QString(QLatin1String("")) : y);
        previousYear = y;
        r.insert(QStringLiteral("title"), item->title);
        r.insert(QStringLiteral("url"), createPostURL(item->art, true));
        r.insert(QStringLiteral("cats"), catsVars(*item));
        r.insert(QStringLiteral("tags"), tagsVars(*item));
        r.insert(QStringLiteral("date"), siteFormat.format(date));
        r.insert(QStringLiteral("dateMonth"), month.format(date));
        r.insert(QStringLiteral("dateDay"), day.format(date));
        r.insert(QStringLiteral("dateYear"), y);
        r.insert(QStringLiteral("dateGTM"), gtm.format(date));
        r.insert(QStringLiteral("artDate"), gtm.format(item->addMs));
        m_archiveRecordByUUID.insert(item->art.uuid(), r);
        m_archivesArticlesDataArray.append(std::move(r));
    }
}

void ORVSiteBuilder::groupPosts()
{
    // A category's parents inside the site, nearest first, the root left out.
    const auto parentsOf = [this](qint64 uuid) {
        QList<qint64> parents;
        for (int guard = 0; guard < 1000; ++guard) { // a cycle of pids must not hang the build
            const auto it = m_categoryIndex.constFind(uuid);
            if (it == m_categoryIndex.cend())
                break;
            uuid = m_allCategories[*it].pid();
            if (!m_categoryIndex.contains(uuid))
                break;
            parents.append(uuid);
        }
        return parents;
    };
    const auto addOnce = [](QList<const Item *> &list, const Item *item) {
        if (list.isEmpty() || list.last() != item)
            list.append(item);
    };
    for (const Item *item : std::as_const(m_allArticlesPosts)) {
        for (const QString &tag : item->tags) {
            auto it = m_tagPosts.find(tag);
            if (it == m_tagPosts.end()) {
                m_tagOrder.append(tag);
                it = m_tagPosts.insert(tag, {});
            }
            addOnce(*it, item);
        }
        QSet<qint64> seen; // a post in a category and its child joins the parent once
        for (const qint64 uuid : item->catUUIDs) {
            const bool isRoot = uuid == m_dbCat.uuid();
            if (!isRoot && !m_categoryIndex.contains(uuid))
                continue;
            MGTemplateList &records = m_categoryRecords[uuid];
            const MGTemplateValue record = m_archiveRecordByUUID.value(item->art.uuid());
            if (records.isEmpty() || !(records.at(records.size() - 1) == record))
                records.append(record);
            if (isRoot)
                continue;
            QList<qint64> targets{uuid};
            targets += parentsOf(uuid);
            for (const qint64 target : targets) {
                if (seen.contains(target))
                    continue;
                seen.insert(target);
                addOnce(m_categoryPosts[target], item);
            }
        }
    }
}

void ORVSiteBuilder::makeCategoryAndTagVars()
{
    m_allCategoriesVarsArr = MGTemplateList();
    for (const ORVDBCat &cat : std::as_const(m_allCategories)) {
        const qsizetype count = m_categoryPosts.value(cat.uuid()).size();
        if (count == 0)
            continue;
        MGTemplateMap r = nameURLRecord(cat.name(), categoryURL(cat));
        r.insert(QStringLiteral("count"), MGTemplateValue::integer(count));
        m_allCategoriesVarsArr.append(r);
    }
    QStringList names = m_tagOrder;
    std::sort(names.begin(), names.end());
    m_allTagsVarsArr = MGTemplateList();
    for (const QString &tag : names) {
        MGTemplateMap r = nameURLRecord(tag, tagURL(tag));
        r.insert(QStringLiteral("count"), MGTemplateValue::integer(m_tagPosts.value(tag).size()));
        m_allTagsVarsArr.append(r);
    }
}

void ORVSiteBuilder::makeTree()
{
    m_categoriesTreeArr = MGTemplateList();
    const auto childrenOf = [this](qint64 pid) {
        QList<const ORVDBCat *> children;
        for (const ORVDBCat &c : std::as_const(m_allCategories))
            if (c.pid() == pid)
                children.append(&c);
        std::stable_sort(children.begin(), children.end(),
                         [](const ORVDBCat *a, const ORVDBCat *b) { return a->sort() < b->sort(); });
        return children;
    };
    const auto record = [this](const ORVDBCat &cat) {
        MGTemplateMap r = nameURLRecord(cat.name(), categoryURL(cat));
        r.insert(QStringLiteral("count"), MGTemplateValue::integer(m_categoryPosts.value(cat.uuid()).size()));
        r.insert(QStringLiteral("posts"),
                 m_config.isCreateTreeVars ? m_categoryRecords.value(cat.uuid()) : MGTemplateList());
        return r;
    };
    for (const ORVDBCat *first : childrenOf(m_dbCat.uuid())) {
        if (m_categoryPosts.value(first->uuid()).isEmpty())
            continue;
        MGTemplateMap r = record(*first);
        MGTemplateList children;
        for (const ORVDBCat *second : childrenOf(first->uuid()))
            if (!m_categoryPosts.value(second->uuid()).isEmpty())
                children.append(record(*second));
        r.insert(QStringLiteral("children"), children);
        m_treeRecordByCat.insert(first->uuid(), r);
        m_categoriesTreeArr.append(r);
    }
}

bool ORVSiteBuilder::writeFeeds()
{
    MGTemplateList recent;
    for (qsizetype i = 0; i < std::min(kRecentPostsCount, m_allArticlesPosts.size()); ++i)
        recent.append(setupPostDictionary(*m_allArticlesPosts[i]));
    MGTemplateMap site = m_baseSite;
    site.insert(QStringLiteral("posts"), recent);
    if (!expandAndWrite(m_templateATOMString, QStringLiteral("atom.xml"), site, QStringLiteral("atom.xml")))
        return false;
    for (const qint64 uuid : std::as_const(m_feedCategories)) {
        const ORVDBCat &cat = m_allCategories[m_categoryIndex.value(uuid)];
        MGTemplateList dicts;
        for (const Item *item : m_categoryPosts.value(uuid))
            dicts.append(setupPostDictionary(*item));
        MGTemplateMap catSite = m_baseSite;
        catSite.insert(QStringLiteral("posts"), dicts);
        const QString name = QStringLiteral("%1-atom.xml").arg(cat.docName());
        if (!expandAndWrite(m_theme.readSkinContentByFileName(name), name, catSite,
                            siteSafeFileBase(cat.docName()) + QStringLiteral("-atom.xml")))
            return false;
    }
    return true;
}

bool ORVSiteBuilder::writeArchive()
{
    MGTemplateMap site = m_baseSite;
    site.insert(QStringLiteral("posts"), m_archivesArticlesDataArray);
    site.insert(QStringLiteral("pageTitle"), setupPageTitle(QStringLiteral("Archives")));
    return expandAndWrite(composed(m_templateArchivesString, true), QStringLiteral("archives.html"), site,
                          QStringLiteral("archives.html"));
}

void ORVSiteBuilder::writeSitemap()
{
    const DateFormatter &siteFormat = m_formatters->site;
    const DateFormatter &gtm = m_formatters->gtm;
    const DateFormatter &month = m_formatters->month;
    const DateFormatter &day = m_formatters->day;
    MGTemplateList pages;
    for (const Item *page : std::as_const(m_pages)) {
        if (page->art.docName().toLower() == QLatin1String("index"))
            continue;
        const qint64 date = page->artMs;
        MGTemplateMap r;
        r.insert(QStringLiteral("title"), page->title);
        r.insert(QStringLiteral("url"), createPostURL(page->art, true));
        r.insert(QStringLiteral("date"), siteFormat.format(date));
        r.insert(QStringLiteral("dateMonth"), month.format(date));
        r.insert(QStringLiteral("dateDay"), day.format(date));
        r.insert(QStringLiteral("dateGTM"), gtm.format(page->modifMs));
        r.insert(QStringLiteral("artDate"), gtm.format(page->addMs));
        pages.append(r);
    }
    MGTemplateMap site = m_baseSite;
    site.insert(QStringLiteral("archives"), m_archivesArticlesDataArray);
    site.insert(QStringLiteral("pages"), pages);
    site.insert(QStringLiteral("nowDateGTM"), gtm.format(QDateTime::currentMSecsSinceEpoch()));
    expandAndWrite(m_templateSitemapString, QStringLiteral("sitemap.xml"), site, QStringLiteral("sitemap.xml"),
                   true);
}

void ORVSiteBuilder::createArtPageFile(const Item &item)
{
    if (m_isClearAndRebuildAll || item.modifMs >= m_lastBuildDate)
        setupPostMedia(item.art);
    MGTemplateMap site = m_baseSite;
    site.insert(QStringLiteral("post"), setupPostDictionary(item));
    MGTemplateMap nav;
    const qsizetype index = m_postIndex.value(item.art.uuid(), -1);
    const auto neighbour = [this](const Item *other) {
        MGTemplateMap m;
        m.insert(QStringLiteral("title"), other->title);
        m.insert(QStringLiteral("url"), createPostURL(other->art, true));
        return m;
    };
    if (index >= 0 && index + 1 < m_allArticlesPosts.size())
        nav.insert(QStringLiteral("next"), neighbour(m_allArticlesPosts[index + 1]));
    if (index > 0)
        nav.insert(QStringLiteral("prev"), neighbour(m_allArticlesPosts[index - 1]));
    site.insert(QStringLiteral("postNav"), nav);
    site.insert(QStringLiteral("pageTitle"), setupPageTitle(item.title));
    QString templateName;
    const QString tpl = postTemplateString(item, &templateName);
    enqueuePage(tpl, templateName, std::move(site), createPostURL(item.art, false));
}

void ORVSiteBuilder::createCategoriesHTML(const QList<const Item *> &posts, const ORVDBCat *cat,
                                          const MGTemplateMap *tree, bool isCreatePostPage)
{
    if (posts.isEmpty())
        return;
    const qsizetype size = m_dbCat.sitePageSize() < 1 ? posts.size() : m_dbCat.sitePageSize();
    const qsizetype total = posts.size() / size + (posts.size() % size ? 1 : 0);
    for (qsizetype page = 0; page < total; ++page)
        createCategoryPage(cat, posts.mid(page * size, size), tree, page, total, isCreatePostPage);
}

void ORVSiteBuilder::createCategoryPage(const ORVDBCat *cat, const QList<const Item *> &posts,
                                        const MGTemplateMap *tree, qsizetype pageIndex, qsizetype totalPage,
                                        bool isCreatePostPage)
{
    MGTemplateList dicts;
    dicts.reserve(posts.size());
    for (const Item *item : posts) {
        dicts.append(setupPostDictionary(*item));
        if (isCreatePostPage)
            createArtPageFile(*item);
    }
    const QString base = cat ? categoryBaseName(*cat) : QStringLiteral("all");
    MGTemplateMap site = m_baseSite;
    site.insert(QStringLiteral("pageTitle"), setupPageTitle(cat ? cat->name() : QString()));
    const auto pageName = [&base](qsizetype n) {
        return n == 0 ? base + QStringLiteral(".html") : QStringLiteral("%1_%2.html").arg(base).arg(n);
    };
    const QString empty(QLatin1String(""));
    site.insert(QStringLiteral("prevPageUrl"), pageIndex == 0 ? empty : pageName(pageIndex - 1));
    site.insert(QStringLiteral("nextPageUrl"), pageIndex + 1 < totalPage ? pageName(pageIndex + 1) : empty);
    MGTemplateMap currentCat;
    if (tree)
        currentCat = *tree;
    else if (cat)
        currentCat = nameURLRecord(cat->name().isEmpty() ? QStringLiteral("untitled") : cat->name(),
                                   categoryURL(*cat));
    site.insert(QStringLiteral("currentCat"), currentCat);
    site.insert(QStringLiteral("posts"), dicts);
    QString templateName;
    const QString tpl = categoryTemplateString(cat, &templateName);
    enqueuePage(tpl, templateName, std::move(site), pageName(pageIndex));
}

void ORVSiteBuilder::createTagsPages()
{
    const QString tpl = composed(m_templateTagsString, true);
    for (const QString &tag : std::as_const(m_tagOrder)) {
        MGTemplateMap site = m_baseSite;
        site.insert(QStringLiteral("pageTitle"), setupPageTitle(tag));
        site.insert(QStringLiteral("prevPageUrl"), QString(QLatin1String("")));
        site.insert(QStringLiteral("nextPageUrl"), QString(QLatin1String("")));
        MGTemplateList dicts;
        for (const Item *item : m_tagPosts.value(tag))
            dicts.append(setupPostDictionary(*item));
        site.insert(QStringLiteral("posts"), dicts);
        const QString fileName = QStringLiteral("tag_%1.html").arg(siteSafeFileBase(tag));
        site.insert(QStringLiteral("currentTag"), nameURLRecord(tag, fileName));
        if (!expandAndWrite(tpl, QStringLiteral("tags.html"), site, fileName))
            break;
    }
}

void ORVSiteBuilder::writePages(const QList<const Item *> &pages, bool isCopyMedia)
{
    MGTemplateMap site = m_baseSite;
    MGTemplateList recent;
    for (qsizetype i = 0; i < std::min(kRecentPostsCount, m_allArticlesPosts.size()); ++i)
        recent.append(setupPostDictionary(*m_allArticlesPosts[i]));
    site.insert(QStringLiteral("posts"), recent);
    bool hadIndex = false;
    for (const Item *page : pages) {
        const QString fileName = createPostURL(page->art, false);
        if (fileName == QLatin1String("index.html")) {
            hadIndex = true;
            if (m_config.isCreateArchivesVarsToIndex)
                site.insert(QStringLiteral("archives"), m_archivesArticlesDataArray);
        }
        if (isCopyMedia)
            setupPostMedia(page->art);
        site.insert(QStringLiteral("post"), setupPostDictionary(*page));
        site.insert(QStringLiteral("pageTitle"), setupPageTitle(page->title));
        QString templateName;
        const QString tpl = pageTemplateString(*page, &templateName);
        if (!expandAndWrite(tpl, templateName, site, fileName))
            break;
    }
    if (hadIndex)
        return;
    // The home page falls back to the first list of posts, else the archive.
    for (const char *fallback : {"all.html", "archives.html"}) {
        // A clearing build has deleted every earlier page by now, as far as
        // this build can tell.
        if (m_isClearAndRebuildAll && !m_writtenNames.contains(QString::fromLatin1(fallback)))
            continue;
        QFile file(QDir(m_outputURL).filePath(QString::fromLatin1(fallback)));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        writeOutputFile(QStringLiteral("index.html"), QString::fromUtf8(file.readAll()));
        break;
    }
}
