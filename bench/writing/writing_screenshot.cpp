// writing-screenshot FILE OUT.png: opens FILE in the editor window, waits
// until the preview has drawn its math and diagrams, and saves the window's
// pixels as the screen shows them (run it under a display, e.g. xvfb-run).
#include "app/ORVEditorWindow.h"
#include "app/ORVLivePreviewView.h"
#include "core/AppDelegate.h"
#include "core/ORVAppPaths.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScreen>
#include <QWebEnginePage>

#include <cstdio>

namespace {

QVariant evaluate(QWebEnginePage *page, const QString &script)
{
    QVariant result;
    bool done = false;
    page->runJavaScript(script, [&](const QVariant &v) {
        result = v;
        done = true;
    });
    QElapsedTimer t;
    t.start();
    while (!done && t.elapsed() < 5000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return result;
}

void settle(int milliseconds)
{
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

} // namespace

int main(int argc, char **argv)
{
    ORVAppPaths::initApplicationIdentity();
    QApplication app(argc, argv);
    ORVAppPaths::initApplicationIdentity();
    if (argc < 3) {
        std::fprintf(stderr, "usage: writing-screenshot FILE OUT.png\n");
        return 2;
    }
    ORVEditorWindow window(AppDelegate::sharedDelegate(), QString::fromLocal8Bit(argv[1]));
    window.resize(1440, 900);
    window.show();
    QElapsedTimer t;
    t.start();
    bool drawn = false;
    while (!drawn && t.elapsed() < 60000) {
        settle(200);
        drawn = window.previewView()->isIdle() &&
                evaluate(window.previewView()->page(),
                         QStringLiteral("(typeof theOrvoMathJaxRenderIsReady !== 'function' || theOrvoMathJaxRenderIsReady('') === 'yes') "
                                        "&& document.querySelectorAll('.language-mermaid').length === 0 "
                                        "&& (document.querySelectorAll('.mermaid').length === document.querySelectorAll('.mermaid svg').length)"))
                    .toBool();
    }
    settle(800); // the last frames of the page reach the screen
    const QPixmap shot = window.screen()->grabWindow(window.winId());
    if (!shot.save(QString::fromLocal8Bit(argv[2]))) {
        std::fprintf(stderr, "writing-screenshot: cannot write %s\n", argv[2]);
        return 1;
    }
    std::printf("%s: %dx%d, page %s\n", argv[2], shot.width(), shot.height(), drawn ? "drawn" : "NOT fully drawn");
    return drawn ? 0 : 1;
}
