#pragma once

#include "markdown/ORVMarkdownToHTMLInfo.h"

#include <QString>

#include <cstdint>
#include <optional>

class ORVDocument;
class ORVPreviewScripts;

// What a document contributes to its page: where its media lives and how
// its newlines read (mediaSaveURL:floderType: and the external folder's
// newlinesToBR setting).
struct ORVPageDocumentContext {
    QString mediaFolderPath;              // "" when the document has none
    std::optional<std::uint64_t> folderType; // 10 and 11 are external folder types
    std::optional<bool> newlinesToBR;     // set by an external folder's setting; else the preference

    // The context of an open document. `fallbackMediaFolder` stands in for
    // a document with no media folder of its own (an ordinary file outside
    // any library or external folder: its own folder).
    static ORVPageDocumentContext fromDocument(ORVDocument *document, const QString &fallbackMediaFolder = QString());
};

// The preferences page assembly reads, taken at once (on the main thread)
// so that a page can be assembled on any thread.
struct ORVPagePreferences {
    bool isDarkThemes = false;
    QString previewCSSName;
    QString previewDarkCSSName;
    bool isTranslateNewlineToBRtags = false;
    bool isDebugCSSStyle = false;
    bool isUseWKWebView = false;
    bool isEnableMath = false;
    qint64 editorTextIndentVal = 0;
    QString latexFontName;

    static ORVPagePreferences fromPreferences();
};

// The arguments of makeHTMLWithString:title:info:isShowCode:renderType:isPreview:style:.
struct ORVMakeHTMLRequest {
    // Markdown when `info` is null; HTML already rendered when it is given.
    QString string;
    // Goes into the page's title element as it is.
    QString title;
    // The flags of a rendering already done (written to: render types 1 and 7
    // clear their diagram flags); null to have this routine render.
    ORVMarkdownToHTMLInfo *info = nullptr;
    // Printing or capturing: the page loses its margins.
    bool isShowCode = false;
    // 0 an ordinary page, 1 an Evernote page, 7 a WeChat page.
    int renderType = 0;
    // The page stays on this machine (preview, PDF, image); false when it is
    // written out or sent.
    bool isPreview = false;
    // A preview style sheet name over the preference's.
    QString style;
};

// Turns a rendered Markdown body into one complete HTML page: the style
// sheet, the scripts the page needs by the flags of its rendering, and the
// page template around it. Every page of the program (live preview, HTML
// export, PDF and image pages, Evernote and WeChat) is made here.
//
// The style sheet <name>.css comes from the shipped folder first, then the
// user's. A missing or unreadable sheet gives a page without style.
//
// Thread: any (page assembly for the preview runs off the main thread); the
// preferences and context are values taken beforehand.
class ORVHTMLPageAssembler
{
public:
    struct Folders {
        QString innerPreviewCSSFolder; // shipped preview style sheets
        QString userPreviewCSSFolder;  // the user's preview style sheets
        QString evernoteCSSPath;       // the style of Evernote pages
        // The installed folders (ORVAppPaths).
        static Folders installed();
    };

    ORVHTMLPageAssembler(const ORVPageDocumentContext &document, const ORVPagePreferences &preferences,
                         const ORVPreviewScripts &scripts, const Folders &folders = Folders::installed());

    // makeHTMLWithString:title:info:isShowCode:renderType:isPreview:style:
    QString makeHTMLWithString(const ORVMakeHTMLRequest &request) const;

    // The forwarding forms.
    QString makeHTMLWithStringTitleInfoIsShowCodeIsPreview(const QString &string, const QString &title,
                                                           ORVMarkdownToHTMLInfo *info, bool isShowCode,
                                                           bool isPreview) const;
    QString makePreviewHTMLStringWithMarkdown(const QString &markdown, const QString &title,
                                              ORVMarkdownToHTMLInfo *info, bool isShowCode,
                                              const QString &style) const;
    QString evernotePreviewTemplateHtmlWithString(const QString &string, ORVMarkdownToHTMLInfo *info) const;
    QString weChatPreviewTemplateHtmlWithString(const QString &string, ORVMarkdownToHTMLInfo *info) const;

    // The front matter of a page that stays here, shown as a YAML code block.
    static QString frontMatterAsYAMLBlock(const QString &markdown);
    // Local images of `html` as base64 data, from `mediaFolder`.
    static QString embedLocalImages(const QString &html, const QString &mediaFolder);
    // The style sheet part of the head, as step 10 of the assembly decides.
    QString styleSheetHeadText(const QString &styleName, int renderType, bool isPreview) const;

    // The page template: title, head text, body.
    static QString pageTemplate(const QString &title, const QString &head, const QString &body);

private:
    ORVPageDocumentContext m_document;
    ORVPagePreferences m_prefs;
    const ORVPreviewScripts &m_scripts;
    Folders m_folders;
};

// The document's preview page (markdownPreviewHtml): made from its whole
// text, kept on the document, and made again only when the cache is empty or
// isReRenderMarkdownPreviewHtml is set.
QString markdownPreviewHtmlForDocument(ORVDocument *document);
