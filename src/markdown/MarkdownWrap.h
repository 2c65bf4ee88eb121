#pragma once

#include "markdown/ORVMarkdownToHTMLInfo.h"
#include "markdown/ORVRenderType.h"

#include <QString>

// MarkdownWrap: the one way from Markdown text to an HTML fragment.
//
// A render picks the parser extensions, the HTML renderer flags and the slot
// overrides from a render type (ORVRenderType), renders, optionally applies
// typographic replacement, builds the table of contents and splices it where
// the text holds "[TOC]", and reports what the text held through an
// ORVMarkdownToHTMLInfo. Turning the fragment into a page is page assembly's
// business.
//
// Text goes in as a QString and is rendered as UTF-8; the result is read back
// from UTF-8, with any NUL character shown as U+FFFD so that no reader of the
// fragment stops short at it.
//
// Preferences: every form reads MyPreferences::sharedInstance() at the start
// of the render: isDisableAutolink, isEnableImgTagToFigureTag and
// isEnableCodeblockLineNumber always, and the convenience forms the values
// they document below.
//
// Threads: every function may run on any thread, at the same time as others.
// Each render makes and frees its own parser and renderers; the settings
// store serialises reads with the main thread's writes; the [TOC] pattern is
// compiled once, thread-safely. The process-wide render counter (see
// renderCounter) is shared: a lost count between concurrent renders only
// matters to PDF export, which renders one document at a time.
class MarkdownWrap
{
public:
    // The full form's arguments.
    struct Options {
        bool smartypants = false;   // typographic replacement (never for ORVRenderTypeTableOnly)
        bool toc = false;           // give headings ids and build the table of contents
        bool replaceTOC = false;    // put the table of contents where a paragraph holds only "[TOC]"
        bool newlineToBR = false;   // newlines inside paragraphs and list items become <br/>
        bool isMath = false;        // $...$, $$...$$, \\(...\\), \\[...\\] are math
        int renderType = ORVRenderTypePlain;
        QString *tocString = nullptr;          // out: the table of contents, when toc is on
        ORVMarkdownToHTMLInfo *info = nullptr; // out: what the text held (flags are only set)
    };

    // The full form. With toc, headings get ids "toc_N" (for ORVRenderTypePDF
    // "pP_toc_N" with the render counter P) and the table of contents links
    // to them. Evernote renders always splice the table of contents (wrapped
    // in <div class="orvo-toc">), and Evernote and math image renders come
    // wrapped in a padded <div>.
    static QString markdownToHtml(const QString &markdown, const Options &options);

    // markdownToHtmlSmartypants(markdown, true).
    static QString markdownToHtml(const QString &markdown);

    // The preview's render: typographic replacement from isSmartypants
    // (whatever `smartypants` says), table of contents and its splicing from
    // isRenderTOC, line breaks from isTranslateNewlineToBRtags, math from
    // isEnableMath; plain type, no out values.
    static QString markdownToHtmlSmartypants(const QString &markdown, bool smartypants);

    // As markdownToHtmlSmartypants, with a render type and an info.
    static QString markdownToHtmlRenderTypeInfo(const QString &markdown, int renderType, ORVMarkdownToHTMLInfo *info);

    // As markdownToHtmlRenderTypeInfo for ORVRenderTypeEvernote.
    static QString markdownToEvernotehHtmlInfo(const QString &markdown, ORVMarkdownToHTMLInfo *info);

    // Table of contents on and spliced; line breaks as given; typographic
    // replacement and math from the preferences.
    static QString markdownToHtmlIsNewlineBRRenderTypeInfo(const QString &markdown, bool isNewlineBR, int renderType,
                                                           ORVMarkdownToHTMLInfo *info);

    // Table of contents (and its splicing) and line breaks as given;
    // typographic replacement and math from the preferences.
    static QString markdownToHtmlIsNewlineBRIsTocRenderTypeInfo(const QString &markdown, bool isNewlineBR, bool isToc,
                                                                int renderType, ORVMarkdownToHTMLInfo *info);

    // Headings get ids and the table of contents goes to *toc (when toc is
    // not null); it is spliced into the body when isRenderTOC is on. Line
    // breaks as given, the rest from the preferences; plain type.
    static QString markdownToHtmlWithTOCIsNewlineBRToc(const QString &markdown, bool isNewlineBR, QString *toc);

    // The table of contents alone, with every extension on whatever the
    // preferences say (headings up to level 6).
    static QString markdownToHtmlTOC(const QString &markdown);

    // The number of full renders so far in this process (the last PDF id
    // prefix given out).
    static int renderCounter();
};
