#pragma once

#include "export/ORVHTMLPageAssembler.h"

#include <QFutureWatcher>
#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>

// One request for the preview's page: the text and what it is assembled
// with, all values, so that it can be made on another thread.
struct ORVPreviewRequest {
    QString markdown;
    QString title;
    QString style;
    ORVPageDocumentContext document;
    ORVPagePreferences preferences;
};

// A preview page split where the live preview needs it: the shell (the page
// with an empty body, loaded once) and the body pushed into it.
struct ORVPreviewPage {
    QString page;
    QString shell;
    QString body;
    // The body cut into its top-level blocks (joined, they are the body), so
    // that an update sends only the blocks that changed.
    QStringList blocks;
    quint64 generation = 0;   // which request it answers; later requests have larger numbers
    double renderMilliseconds = 0;

    // Splits an assembled page; nullopt if it is not one of page assembly's.
    static std::optional<ORVPreviewPage> split(const QString &page);
    // Cuts HTML after each line end that stands outside every element, and
    // after blank lines (which end raw HTML in Markdown) outside <pre>,
    // scripts and styles. Joined, the blocks are `html`.
    static QStringList topLevelBlocks(const QString &html);
    // Whether `html` closes every element it opens and no other: a block
    // that does not can only be shown as part of the whole body.
    static bool isBalanced(const QString &html);
};

// Renders preview pages off the main thread. At most one render runs; a
// request made meanwhile waits, and a newer one replaces it, so a burst of
// keystrokes costs one render after the one running, and a result is never
// older than one already delivered.
//
// Thread: the object lives on the main thread; pageReady comes there.
class ORVPreviewRenderer : public QObject
{
    Q_OBJECT
public:
    explicit ORVPreviewRenderer(QObject *parent = nullptr);
    ~ORVPreviewRenderer() override;

    // Asks for the page of `request`; returns its generation.
    quint64 requestRender(const ORVPreviewRequest &request);
    bool isRendering() const { return m_running; }
    bool hasPendingRequest() const { return m_pending.has_value(); }

    // The assembly itself, as the worker runs it.
    static ORVPreviewPage renderPage(const ORVPreviewRequest &request, quint64 generation);

signals:
    void pageReady(const ORVPreviewPage &page);

private:
    void start(const ORVPreviewRequest &request, quint64 generation);
    void finished();

    QFutureWatcher<ORVPreviewPage> m_watcher;
    bool m_running = false;
    std::optional<std::pair<ORVPreviewRequest, quint64>> m_pending;
    quint64 m_nextGeneration = 1;
};
