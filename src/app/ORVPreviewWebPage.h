#pragma once

#include <QUrl>
#include <QWebEnginePage>

// Posted through ORVNotificationCenter when an orvolib:// (or orvoapp://)
// link is clicked in a preview; userInfo "url" holds it. The application's
// URL handling opens it.
inline const QString kORVPreviewOpenApplicationURLNotification =
    QStringLiteral("kORVPreviewOpenApplicationURLNotification");

// The preview's web page: what a click on a link does.
//   web and mail links       the system's browser or mail program
//   orvolib:// and orvoapp:// Orvo itself (linkToApplicationActivated, and
//                            the notification above)
//   other local files        documentLinkActivated for Markdown files, the
//                            system's program for anything else
//   anchors in the page      followed in the page
// Links that ask for a new window go the same way. Loads the program makes
// (the page shell) are allowed.
class ORVPreviewWebPage : public QWebEnginePage
{
    Q_OBJECT
public:
    explicit ORVPreviewWebPage(QObject *parent = nullptr);

    // How a link click is handled; also used for new-window requests.
    enum class LinkAction { FollowInPage, OpenExternally, OpenInOrvo, OpenDocument, Ignore };
    static LinkAction actionForLink(const QUrl &url, const QUrl &pageUrl);

    // Does what a click on `url` does.
    void openLink(const QUrl &url);

    // When false, links are only reported (tests).
    bool openExternalLinks = true;

signals:
    void linkToApplicationActivated(const QUrl &url);
    void documentLinkActivated(const QUrl &url);
    void externalLinkActivated(const QUrl &url);

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame) override;
    QWebEnginePage *createWindow(WebWindowType type) override;
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message, int lineNumber,
                                  const QString &sourceID) override;
};
