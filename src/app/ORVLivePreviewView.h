#pragma once

#include "export/ORVPreviewRenderer.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QUrl>
#include <QWebEngineView>

class ORVPreviewWebPage;

// The live preview: the rendered page of the text being edited.
//
// The page shell (head, style sheet and scripts) is loaded once; as the
// text changes, pages are rendered off the main thread (bursts coalesce to
// one render after the running one) and only the body goes into the loaded
// page, where only the blocks that changed are replaced and decorated (code
// colouring, diagrams, math). The reader keeps their place. When the page
// needs other scripts or another style sheet (a first formula, a first
// diagram, a new theme) the shell is loaded again and the scroll position
// carried over.
//
// Diagrams, math and code colouring run from the local PreviewAsset folder.
// Links: see ORVPreviewWebPage.
//
// Thread: the main thread.
class ORVLivePreviewView : public QWebEngineView
{
    Q_OBJECT
public:
    explicit ORVLivePreviewView(QWidget *parent = nullptr);
    ~ORVLivePreviewView() override;

    ORVPreviewWebPage *previewPage() const { return m_page; }

    // Folder that relative links and images of the page resolve against
    // (the document's media folder); the asset folder when empty.
    void setBaseFolder(const QString &folder);
    QUrl baseUrl() const { return m_baseUrl; }

    // Shows `request`'s text, soon. Requests made while one is on its way
    // coalesce into the newest.
    void updatePreview(const ORVPreviewRequest &request);

    // Scrolls to a place of the editor: section `index` (-1 before the first
    // heading), `fraction` into it; `documentFraction` of the whole when the
    // page's headings are not `headingCount`.
    void syncScroll(int index, double fraction, double documentFraction, int headingCount);

    // Nothing is being rendered or pushed, and the page shows the newest text.
    bool isIdle() const;
    // The newest page delivered into the view.
    const ORVPreviewPage &currentPage() const { return m_current; }
    // Time from the request to the body being in the page, of the last update.
    double lastUpdateMilliseconds() const { return m_lastUpdateMs; }
    // Shell loads so far (the first included).
    int shellLoadCount() const { return m_shellLoads; }
    // Updates that replaced only the blocks that changed, so far.
    int partialUpdateCount() const { return m_partialUpdates; }

signals:
    // The page shows the text of the request `generation`.
    void previewUpdated(quint64 generation);

private:
    void pageReady(const ORVPreviewPage &page);
    void loadShell(const ORVPreviewPage &page);
    void shellLoaded(bool ok);
    void pushBody();

    ORVPreviewWebPage *m_page = nullptr;
    ORVPreviewRenderer m_renderer;
    QUrl m_baseUrl;
    QString m_loadedShell;
    bool m_shellLoading = false;
    bool m_pushing = false;
    bool m_blocksInPage = false; // the page keeps m_current's blocks apart: updates may be partial
    double m_savedScroll = 0;
    std::optional<ORVPreviewPage> m_waiting; // rendered, not yet in the page
    ORVPreviewPage m_current;
    quint64 m_requested = 0;
    QHash<quint64, qint64> m_requestTimes;    // generation -> ms on m_clock
    QElapsedTimer m_clock;
    double m_lastUpdateMs = 0;
    int m_shellLoads = 0;
    int m_partialUpdates = 0;
};
