#pragma once

#include <QString>

// The script fragments that pages carry for math, diagrams and code
// colouring, each in a local form (files of the PreviewAsset folder, for
// pages that stay on this machine) and an online form (a public script
// delivery network, for pages that leave it).
//
// The local forms name files by the absolute path of the asset folder given
// at construction. Reading files (the code highlighter, the chart driver,
// the Evernote and WeChat helpers) happens once per object; an unreadable
// file gives an empty script, never an error.
//
// Thread: any; an object is read-only after construction apart from its
// caches, which it fills under a lock.
class ORVPreviewScripts
{
public:
    // The public script delivery endpoint of the online forms.
    static constexpr const char *kOnlineScriptBase = "https://cdnjs.cloudflare.com";

    // `assetPath` is the PreviewAsset folder (ORVAppPaths::previewAssetFullPath()).
    explicit ORVPreviewScripts(const QString &assetPath);
    ~ORVPreviewScripts();
    ORVPreviewScripts(const ORVPreviewScripts &) = delete;
    ORVPreviewScripts &operator=(const ORVPreviewScripts &) = delete;

    // The process's scripts, over the installed asset folder.
    static const ORVPreviewScripts &shared();

    QString assetPath() const { return m_assetPath; }

    // MathJax 2 with SVG output. The local form defines the page function
    // theOrvoMathJaxRenderIsReady, "no" until MathJax's startup has ended
    // and "yes" after, and sets the SVG font (Latin-Modern when `fontName`
    // is empty). The online form has neither.
    QString mathJaxSupportScriptString(bool isOnline, const QString &fontName = QString()) const;
    QString seqAndFlowChartScriptString(bool isOnline) const;
    QString mermaidChartScriptString(bool isOnline) const;
    QString vizChartScriptString(bool isOnline) const;
    QString echartsChartScriptString(bool isOnline) const;
    // Prism in both forms: a script tag locally, the script itself inline.
    QString codeBlockHighlightChartScriptString(bool isOnline) const;
    // prism/prism.js of the asset folder, read once.
    QString highlightjsContent() const;

    // The chart driver: draws PlantUML, sequence, flow, mermaid, Graphviz
    // and ECharts blocks once the page has loaded (also the site variable
    // chart_scripts). It also leaves window.orvoChartDraw(root) for pages
    // whose content changes after load.
    QString chartDriverScriptString() const;

    // Scripts that turn a rendered page into note (ENML) or WeChat HTML;
    // both define theOrvoToEvernoteHtmlString.
    QString evernoteHTML2ENMLScriptString() const;
    QString weChatStyleHTMLScriptString() const;

private:
    QString cachedFile(int slot, const QString &relativePath) const;

    QString m_assetPath;
    struct Cache;
    Cache *m_cache;
};
