#pragma once

#include "library/ORVDBArticle.h"
#include "library/ORVDBCat.h"
#include "markdown/ORVMarkdownToHTMLInfo.h"
#include "site/MGTemplateEngine.h"
#include "site/ORVSiteTheme.h"

#include <QDateTime>
#include <QHash>
#include <QSet>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class ORVDBManager;

// Turns one site category of a library (a top category of catType 11) into
// a folder of static files: post pages, category pages with paging, tag
// pages, an archive, a home page, feeds, a sitemap and the media the posts
// need. Every file is a theme template expanded by one MGTemplateEngine.
//
// A builder serves one build: make it, call buildSiteWithType once, read
// errorArray. It reads the library through the manager it is given and
// writes the category row twice at most (the build path when it is first
// decided); nothing else of the library changes.
//
// The output never leaves outputURL(): names that come from the library
// (docName, category and tag names, media paths) are made safe first (see
// siteSafeFileBase), and paths that would still climb out are skipped.
//
// Thread: any one thread at a time, and the manager's rules apply (the
// command line runs it on the main thread). Markdown renders run on worker
// threads of the builder's own while the build waits for them.
class ORVSiteBuilder : public MGTemplateEngineDelegate
{
public:
    // The cached list of a document's images that an image host took: the
    // seam to the upload cache. Given the document's id and the host key of
    // the site (siteFavicon), it answers pairs of local and remote URL. The
    // default answers nothing, which keeps local paths and relies on the
    // media copy.
    using UploadedImagesReader =
        std::function<QList<std::pair<QString, QString>>(qint64 docUUID, const QString &hostKey)>;

    // initWithCategory:libURL:. `libURL` is the library folder,
    // `outputBaseURL` the folder sites are built in. Decides the theme, the
    // theme's options and the build path (saving it in the row when the
    // row has none). isValid() is false when the category is missing.
    ORVSiteBuilder(std::shared_ptr<ORVDBManager> dbManager, QString libURL, qint64 catUUID,
                   QString outputBaseURL);
    ~ORVSiteBuilder() override;
    ORVSiteBuilder(const ORVSiteBuilder &) = delete;
    ORVSiteBuilder &operator=(const ORVSiteBuilder &) = delete;

    bool isValid() const { return m_valid; }

    void setUploadedImagesReader(UploadedImagesReader reader) { m_uploadedImagesReader = std::move(reader); }
    // Where the chart bundle and the chart driver come from (the PreviewAsset
    // folder); the installed one by default.
    void setPreviewAssetPath(const QString &path) { m_previewAssetPath = path; }

    // buildSiteWithType:. Type 0 updates, any other clears and rebuilds.
    // False when a template failed on the way to the feeds or the archive;
    // any template error also stops every later file from being written,
    // while the build runs on (see errorArray).
    bool buildSiteWithType(int type);

    // One engine error with the theme file it came from.
    struct BuildError {
        MGTemplateError error;
        QString templateName; // the theme file, as "post.html"
        QString outputName;   // the file that was being made, as "42.html"
        // "<file>: <engine message> (while making <output>)".
        QString description() const;
    };
    const QList<BuildError> &errorArray() const { return m_errorArray; }
    // Problems that don't fail the build (a chart bundle that isn't
    // installed), one sentence each.
    const QStringList &warnings() const { return m_warnings; }

    const ORVDBCat &dbCat() const { return m_dbCat; }
    const QString &skinURL() const { return m_skinURL; }
    const QString &outputURL() const { return m_outputURL; }
    const ORVSiteTheme::Config &themeConfig() const { return m_config; }
    // Files written by the last build, and media files copied.
    int writtenFileCount() const { return m_writtenFiles; }
    int copiedMediaCount() const { return m_copiedMedia; }

    // MGTemplateEngineDelegate: every error goes to errorArray.
    void templateEngineEncounteredErrorIsContinuing(MGTemplateEngine *engine, const MGTemplateError &error,
                                                    bool continuing) override;

    // The fixed script of the seqAndFlowChartSupport variable.
    static QString seqAndFlowChartSupportScript();
    // The online MathJax script of the mathJaxSupport variable.
    static QString mathJaxOnlineScript();

private:
    struct Item;
    struct Formatters;
    struct WorkerEngine;
    struct PageJob;

    void setupBuildPath();
    void setupDefaultTemplateString();
    bool build(int type);
    // Deletes the output's "asset" and "media" entries; with pagesToo, the
    // HTML and XML entries this build didn't write instead.
    void clearOutputFolder(bool pagesToo);
    void renderAll();
    void nameCategories();
    void makeArchiveRecords();
    void groupPosts();
    void makeCategoryAndTagVars();
    void makeTree();
    bool writeFeeds();
    bool writeArchive();
    void writeSitemap();
    void writePages(const QList<const Item *> &pages, bool isCopyMedia);

    MGTemplateMap baseSiteInfoDictionary() const;
    const MGTemplateMap &setupPostDictionary(const Item &item);
    MGTemplateMap extensionValues(const QString &json) const;
    QString createPostURL(const ORVDBArticle &art, bool isEscapes) const;
    QString categoryBaseName(const ORVDBCat &cat) const;
    QString categoryURL(const ORVDBCat &cat) const;
    QString tagURL(const QString &tag) const;
    QString setupPageTitle(const QString &title) const;
    MGTemplateList catsVars(const Item &item) const;
    MGTemplateList tagsVars(const Item &item) const;

    QString postTemplateString(const Item &item, QString *templateName);
    QString categoryTemplateString(const ORVDBCat *cat, QString *templateName);
    QString pageTemplateString(const Item &item, QString *templateName);
    QString composed(const QString &body, bool withSidebar) const;
    // The first non-empty override file composed, else the default body.
    QString composedTemplate(const QStringList &overrides, const QString &defaultName, const QString &defaultBody,
                             bool withSidebar, QString *templateName);

    // Expands and, when no error was ever reported in this build, writes.
    // False when this expansion reported an error.
    bool expandAndWrite(const QString &templateString, const QString &templateName, const MGTemplateMap &vars,
                        const QString &fileName, bool writeDespiteErrors = false);
    std::optional<QString> expand(const QString &templateString, const QString &templateName,
                                  const MGTemplateMap &vars, const QString &fileName);
    bool writeOutputFile(const QString &fileName, const QString &text);
    void blameFirstError(const QString &templateString, const MGTemplateMap &vars);
    // Post and category pages are expanded on worker threads, a batch at a
    // time, and written in order up to the first page that failed.
    void enqueuePage(const QString &templateString, const QString &templateName, MGTemplateMap vars,
                     const QString &fileName);
    void flushPages();

    void createArtPageFile(const Item &item);
    void createCategoriesHTML(const QList<const Item *> &posts, const ORVDBCat *cat, const MGTemplateMap *tree,
                              bool isCreatePostPage);
    void createCategoryPage(const ORVDBCat *cat, const QList<const Item *> &posts, const MGTemplateMap *tree,
                            qsizetype pageIndex, qsizetype totalPage, bool isCreatePostPage);
    void createTagsPages();
    void setupPostMedia(const ORVDBArticle &art);

    std::shared_ptr<ORVDBManager> m_dbManager;
    QString m_libURL;
    bool m_valid = false;

    QString m_skinURL;
    ORVSiteTheme m_theme{QString()};
    ORVSiteTheme::Config m_config;
    QString m_outputBaseURL;
    QString m_outputURL;
    QString m_outputMediaURL;
    QString m_markdownDocURL;
    QString m_markdownDocMediaURL;
    QString m_previewAssetPath;
    ORVDBCat m_dbCat;
    QList<ORVDBCat> m_allCategories; // below the site; docName set in memory by nameCategories
    QHash<qint64, qsizetype> m_categoryIndex;
    bool m_isClearAndRebuildAll = false;
    qint64 m_lastBuildDate = 0; // milliseconds since 1970
    std::unique_ptr<MGTemplateEngine> m_engine;
    std::vector<std::unique_ptr<WorkerEngine>> m_workers;
    std::vector<PageJob> m_jobs;
    std::unique_ptr<Formatters> m_formatters;
    UploadedImagesReader m_uploadedImagesReader;

    QString m_templateHeaderString, m_templateFooterString, m_templateCategoryString, m_templateTagsString,
        m_templateSidebarString, m_templatePostString, m_templatePageString, m_templateArchivesString,
        m_templateATOMString, m_templateSitemapString;
    QHash<QString, QString> m_composedCache;

    std::vector<Item> m_items;               // posts then pages
    QList<const Item *> m_allArticlesPosts;  // sorted by the site's order
    QList<const Item *> m_pages;             // in the library's order
    QHash<qint64, const Item *> m_dicAllPostsAndPagesUUIDMap;
    QHash<qint64, qsizetype> m_postIndex;    // position in m_allArticlesPosts
    QHash<qint64, MGTemplateMap> m_postDicCaches;
    QHash<qint64, MGTemplateMap> m_archiveRecordByUUID;
    MGTemplateList m_archivesArticlesDataArray;
    QHash<qint64, MGTemplateList> m_categoryRecords;       // category to archive records
    QHash<qint64, QList<const Item *>> m_categoryPosts;    // category to posts (with sub-categories')
    QStringList m_tagOrder;
    QHash<QString, QList<const Item *>> m_tagPosts;
    QList<qint64> m_feedCategories;
    MGTemplateList m_recentPostsArr, m_allCategoriesVarsArr, m_allTagsVarsArr, m_categoriesTreeArr;
    QHash<qint64, MGTemplateMap> m_treeRecordByCat;
    MGTemplateMap m_baseSite;
    QString m_siteDateFormat;
    QString m_chartScripts;
    bool m_chartScriptsRead = false;

    QSet<QString> m_writtenNames; // pages and feeds written by this build
    QList<BuildError> m_errorArray;
    QString m_currentTemplateName;
    QString m_currentOutputName;
    // While a failed page's parts are run alone to find the faulty file,
    // their errors go here instead of errorArray.
    bool m_isBlaming = false;
    QList<int> m_blameCodes;
    QStringList m_warnings;
    int m_writtenFiles = 0;
    int m_copiedMedia = 0;
};
