// The editor and the live preview on one long document, as a writer types in
// its middle:
//   keystroke    main-thread time of one typed character: key handling,
//                the commands, the mirror and the document storage, layout
//                and a repaint (200 characters; p50, p99, max)
//   highlighted  from the last keystroke to the visible lines styled from a
//                parse of the final text (the wait of 0.15 s included)
//   preview      from an edit to the preview's page showing it
#include "app/ORVLivePreviewView.h"
#include "app/ORVMDTextView.h"
#include "core/AppDelegate.h"
#include "core/ORVAppPaths.h"
#include "editor/ORVDocument.h"
#include "highlight/HGMarkdownHighlighter.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QKeyEvent>
#include <QTextBlock>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

bool waitUntil(const std::function<bool()> &done, int timeoutMs)
{
    QElapsedTimer t;
    t.start();
    while (!done()) {
        if (t.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return true;
}

double percentile(std::vector<double> v, double p)
{
    std::sort(v.begin(), v.end());
    const size_t i = std::min(v.size() - 1, size_t(p * double(v.size() - 1) + 0.5));
    return v[i];
}

void typeCharacter(QWidget *w, QChar c)
{
    QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, QString(c));
    QKeyEvent release(QEvent::KeyRelease, Qt::Key_A, Qt::NoModifier, QString(c));
    QApplication::sendEvent(w, &press);
    QApplication::sendEvent(w, &release);
}

} // namespace

int main(int argc, char **argv)
{
    ORVAppPaths::initApplicationIdentity();
    QApplication app(argc, argv);
    ORVAppPaths::initApplicationIdentity();
    if (argc < 2) {
        std::fprintf(stderr, "usage: writing-bench BOOK.md\n");
        return 2;
    }
    QFile file(QString::fromLocal8Bit(argv[1]));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "writing-bench: cannot read %s\n", argv[1]);
        return 1;
    }
    const QString text = QString::fromUtf8(file.readAll());

    ORVDocument document(AppDelegate::sharedDelegate());
    document.textStorage()->setString(text);
    ORVMDTextView view;
    view.resize(1000, 800);
    view.show();
    view.bindDocument(&document);
    HGMarkdownHighlighter *h = view.highlighter();
    QElapsedTimer clock;
    clock.start();
    if (!waitUntil([&] { return h->isFirstPassDone() && !h->isParsing(); }, 60000)) {
        std::fprintf(stderr, "writing-bench: the first highlight did not finish\n");
        return 1;
    }
    const double firstPass = double(clock.elapsed());

    // The caret in the middle of the book, at the end of a paragraph line.
    QTextBlock block = view.document()->findBlock(int(text.size() / 2));
    while (block.isValid() && block.text().size() < 40)
        block = block.next();
    QTextCursor cursor(block);
    cursor.movePosition(QTextCursor::EndOfBlock);
    view.setTextCursor(cursor);
    view.ensureCursorVisible();
    view.setFocus();
    QCoreApplication::processEvents();

    const QString typed = QStringLiteral("The quick brown fox jumps over the lazy dog while a writer keeps typing. ");
    std::vector<double> keystrokes;
    qint64 lastKey = 0;
    int styledAfter = -1;
    qint64 parseStart = 0;
    std::vector<double> parses;
    QObject::connect(h, &HGMarkdownHighlighter::parsingStarted, &view, [&] { parseStart = clock.elapsed(); });
    QObject::connect(h, &HGMarkdownHighlighter::parsingFinished, &view,
                     [&] { parses.push_back(double(clock.elapsed() - parseStart)); });
    QObject::connect(h, &HGMarkdownHighlighter::didHighlightVisibleRange, &view, [&] {
        if (h->isCachedResultCurrent() && lastKey > 0 && styledAfter < 0)
            styledAfter = int(clock.elapsed() - lastKey);
    });
    for (int i = 0; i < 200; ++i) {
        QElapsedTimer k;
        k.start();
        typeCharacter(&view, typed.at(i % typed.size()));
        view.viewport()->repaint();
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        keystrokes.push_back(double(k.nsecsElapsed()) / 1e6);
        lastKey = clock.elapsed();
    }
    waitUntil([&] { return styledAfter >= 0; }, 10000);
    if (document.textStorage()->string() != view.markdownText()) {
        std::fprintf(stderr, "writing-bench: the document lost track of the text\n");
        return 1;
    }

    ORVLivePreviewView preview;
    preview.resize(900, 800);
    preview.show();
    const auto request = [&] {
        ORVPreviewRequest r;
        r.markdown = view.markdownText();
        r.preferences = ORVPagePreferences::fromPreferences();
        return r;
    };
    clock.restart();
    preview.updatePreview(request());
    if (!waitUntil([&] { return preview.isIdle(); }, 120000)) {
        std::fprintf(stderr, "writing-bench: the preview did not load\n");
        return 1;
    }
    const double previewFirst = double(clock.elapsed());
    std::vector<double> updates;
    std::vector<double> renders;
    for (int i = 0; i < 10; ++i) {
        typeCharacter(&view, QLatin1Char('x'));
        preview.updatePreview(request());
        waitUntil([&] { return preview.isIdle(); }, 30000);
        updates.push_back(preview.lastUpdateMilliseconds());
        renders.push_back(preview.currentPage().renderMilliseconds);
    }

    std::printf("document: %lld UTF-16 units, %d lines; first full highlight %.0f ms\n", qlonglong(text.size()),
                view.document()->blockCount(), firstPass);
    std::printf("keystroke main-thread ms: p50 %.2f  p99 %.2f  max %.2f  (target p99 < 16)\n", percentile(keystrokes, 0.5),
                percentile(keystrokes, 0.99), percentile(keystrokes, 1.0));
    std::printf("last keystroke to highlighted ms: %d  (target < 180: 150 wait + 30); worker parse ms: median %.0f\n",
                styledAfter, parses.empty() ? 0.0 : percentile(parses, 0.5));
    std::printf("preview first load ms: %.0f; update after an edit ms: median %.1f  max %.1f  (target < 150); "
                "of which off-thread page render: median %.1f; %d of %zu updates in part\n",
                previewFirst, percentile(updates, 0.5), percentile(updates, 1.0), percentile(renders, 0.5),
                preview.partialUpdateCount(), updates.size());
    return 0;
}
