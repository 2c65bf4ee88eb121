#include "export/ORVPreviewScripts.h"

#include "core/ORVAppPaths.h"

#include <QFile>
#include <QMutex>

namespace {

QString onlineScript(const char *path)
{
    return QStringLiteral("<script src=\"%1%2\"></script>")
        .arg(QLatin1String(ORVPreviewScripts::kOnlineScriptBase), QLatin1String(path));
}

// Shared by the Evernote and WeChat scripts: the readiness flag, the helper
// object and the page function the publishing code polls.
const char kEvernoteCommon[] = R"JS(
var isOrvoToEvernoteHtmlReady = false;
var h2e = new html2enml();
function theOrvoToEvernoteHtmlString(withKey) {
    if (!isOrvoToEvernoteHtmlReady) { return ""; }
    var body = document.body;
    var html = '<div style="' + (body.getAttribute("style") || "") + '">' + body.innerHTML + '</div>';
    var doc = new DOMParser().parseFromString(html, "text/html");
    return new XMLSerializer().serializeToString(doc);
}
function orvoRemoveBodyScripts() {
    var scripts = document.body.getElementsByTagName("script");
    for (var i = scripts.length - 1; i >= 0; i--) { scripts[i].parentNode.removeChild(scripts[i]); }
}
)JS";

const char kEvernoteScript[] = R"JS(
function orvoEvernoteMathCanvasSVGToImg() {
    h2e.transCanvas2Background();
    h2e.transCssByAllStyle();
    $(".orvolatextohtml img").removeAttr("style");
    h2e.clearAllClass();
    h2e.transId2Name();
    h2e.transCheck2Todo();
    $("svg").each(function () {
        var svg = this;
        var width = svg.getBoundingClientRect().width;
        var source = new XMLSerializer().serializeToString(svg);
        var img = document.createElement("img");
        img.src = "data:image/svg+xml;charset=utf8," + encodeURIComponent(source);
        if (width > 0) { img.setAttribute("width", Math.round(width)); }
        var parent = svg.parentNode;
        parent.replaceChild(img, svg);
        if (parent.removeAttribute) { parent.removeAttribute("data-processed"); }
    });
    $("div").removeAttr("_echarts_instance_");
    orvoRemoveBodyScripts();
    isOrvoToEvernoteHtmlReady = true;
}
$(document).ready(function () {
    if ($(".orvolatextohtml").length > 0 && typeof MathJax !== "undefined") {
        MathJax.Hub.Queue(function () {
            setTimeout(function () { h2e.transHtml2Canvas(".orvolatextohtml", orvoEvernoteMathCanvasSVGToImg); }, 200);
        });
    } else {
        setTimeout(orvoEvernoteMathCanvasSVGToImg, 400);
    }
});
)JS";

const char kWeChatScript[] = R"JS(
function orvoEvernoteMathCanvasSVGToImg() {
    h2e.transCanvas2Background();
    h2e.transCssByAllStyle();
    h2e.clearAllClass();
    h2e.transId2Name();
    orvoRemoveBodyScripts();
    isOrvoToEvernoteHtmlReady = true;
}
$(document).ready(function () { setTimeout(orvoEvernoteMathCanvasSVGToImg, 400); });
)JS";

const char kMarkdownBodyNoMargin[] = "<style>.markdown-body{margin:0;padding:0;}</style>";

} // namespace

struct ORVPreviewScripts::Cache {
    QMutex lock;
    QString files[3];
    bool loaded[3] = {false, false, false};
};

ORVPreviewScripts::ORVPreviewScripts(const QString &assetPath) : m_assetPath(assetPath), m_cache(new Cache) {}

ORVPreviewScripts::~ORVPreviewScripts() { delete m_cache; }

const ORVPreviewScripts &ORVPreviewScripts::shared()
{
    static const ORVPreviewScripts scripts(ORVAppPaths::previewAssetFullPath());
    return scripts;
}

QString ORVPreviewScripts::cachedFile(int slot, const QString &relativePath) const
{
    QMutexLocker locker(&m_cache->lock);
    if (!m_cache->loaded[slot]) {
        QFile f(m_assetPath + QLatin1Char('/') + relativePath);
        if (f.open(QIODevice::ReadOnly))
            m_cache->files[slot] = QString::fromUtf8(f.readAll());
        m_cache->loaded[slot] = true;
    }
    return m_cache->files[slot];
}

QString ORVPreviewScripts::mathJaxSupportScriptString(bool isOnline, const QString &fontName) const
{
    if (isOnline) {
        return onlineScript("/ajax/libs/mathjax/2.7.7/MathJax.js?config=TeX-AMS_SVG-full") +
               QStringLiteral("<script type=\"text/x-mathjax-config\">MathJax.Hub.Config({TeX: { equationNumbers: { "
                              "autoNumber: \"AMS\" } }});</script>");
    }
    return QStringLiteral("<script type=\"text/x-mathjax-config\">var isOrvoMathJaxRenderReady = 'no'; function "
                          "theOrvoMathJaxRenderIsReady(key){ return isOrvoMathJaxRenderReady; }; "
                          "MathJax.Hub.Register.StartupHook('End', function () { isOrvoMathJaxRenderReady = 'yes'; }); "
                          "</script><script type=\"text/javascript\" src=\"") +
           m_assetPath +
           QStringLiteral("/MathJax/MathJax.js?config=TeX-AMS_SVG-full\"></script><script>MathJax.Hub.Config({"
                          "showProcessingMessages: false,messageStyle: \"none\",SVG: { font: \"") +
           (fontName.isEmpty() ? QStringLiteral("Latin-Modern") : fontName) +
           QStringLiteral("\" },TeX: { equationNumbers: { autoNumber: \"AMS\" } } });</script>");
}

QString ORVPreviewScripts::seqAndFlowChartScriptString(bool isOnline) const
{
    if (isOnline) {
        // The sequence script stands before flowchart here, unlike the local form.
        return onlineScript("/ajax/libs/raphael/2.2.7/raphael.min.js") +
               onlineScript("/ajax/libs/underscore.js/1.9.0/underscore-min.js") +
               onlineScript("/ajax/libs/js-sequence-diagrams/1.0.6/sequence-diagram-min.js") +
               onlineScript("/ajax/libs/flowchart/1.11.0/flowchart.min.js");
    }
    return QStringLiteral("<script src=\"%1/flowseq/raphael.min.js\"></script><script "
                          "src=\"%1/flowseq/underscore-min.js\"></script><script "
                          "src=\"%1/flowseq/flowchart.min.js\"></script><script "
                          "src=\"%1/flowseq/sequence-diagram-min.js\"></script>")
        .arg(m_assetPath);
}

QString ORVPreviewScripts::mermaidChartScriptString(bool isOnline) const
{
    if (isOnline) {
        return QStringLiteral("<link rel=\"stylesheet\" type=\"text/css\" href=\"%1/ajax/libs/font-awesome/4.7.0/css/"
                              "font-awesome.min.css\" />")
                   .arg(QLatin1String(kOnlineScriptBase)) +
               onlineScript("/ajax/libs/mermaid/8.5.0/mermaid.min.js");
    }
    return QStringLiteral("<link rel=\"stylesheet\" type=\"text/css\" href=\"%1/font-awesome/css/font-awesome.min.css\" "
                          "/><script src=\"%1/mermaid/mermaid.min.js\"></script>")
        .arg(m_assetPath);
}

QString ORVPreviewScripts::vizChartScriptString(bool isOnline) const
{
    if (isOnline)
        return onlineScript("/ajax/libs/viz.js/2.0.0/viz.js") + onlineScript("/ajax/libs/viz.js/2.0.0/full.render.js");
    return QStringLiteral("<script src=\"%1/viz/viz.js\"></script><script src=\"%1/viz/full.render.js\"></script>")
        .arg(m_assetPath);
}

QString ORVPreviewScripts::echartsChartScriptString(bool isOnline) const
{
    if (isOnline)
        return onlineScript("/ajax/libs/echarts/4.1.0/echarts.min.js");
    return QStringLiteral("<script src=\"%1/echarts/echarts.min.js\"></script>").arg(m_assetPath);
}

QString ORVPreviewScripts::codeBlockHighlightChartScriptString(bool isOnline) const
{
    if (isOnline)
        return QStringLiteral("<script>%1</script>").arg(highlightjsContent());
    return QStringLiteral("<script src=\"%1/prism/prism.js\"></script>").arg(m_assetPath);
}

QString ORVPreviewScripts::highlightjsContent() const { return cachedFile(0, QStringLiteral("prism/prism.js")); }

QString ORVPreviewScripts::chartDriverScriptString() const
{
    return QStringLiteral("<script>") + cachedFile(1, QStringLiteral("orvojs/chart-driver.js")) +
           QStringLiteral("</script>");
}

QString ORVPreviewScripts::evernoteHTML2ENMLScriptString() const
{
    return QStringLiteral("<script>") + QString::fromUtf8(kEvernoteCommon) + QString::fromUtf8(kEvernoteScript) +
           QStringLiteral("</script>") + QString::fromLatin1(kMarkdownBodyNoMargin);
}

QString ORVPreviewScripts::weChatStyleHTMLScriptString() const
{
    return QStringLiteral("<script>") + QString::fromUtf8(kEvernoteCommon) + QString::fromUtf8(kWeChatScript) +
           QStringLiteral("</script>") + QString::fromLatin1(kMarkdownBodyNoMargin);
}
