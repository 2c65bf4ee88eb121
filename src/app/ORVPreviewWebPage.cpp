#include "app/ORVPreviewWebPage.h"

#include "core/ORVNotificationCenter.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QPointer>

namespace {

// Takes the address a new window was asked for, hands it on, and goes.
class NewWindowCatcher : public QWebEnginePage
{
public:
    explicit NewWindowCatcher(ORVPreviewWebPage *owner) : QWebEnginePage(owner), m_owner(owner) {}

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType, bool) override
    {
        if (m_owner && !url.isEmpty() && url.scheme() != QLatin1String("about")) {
            QPointer<ORVPreviewWebPage> owner = m_owner;
            QMetaObject::invokeMethod(
                m_owner, [owner, url] {
                    if (owner)
                        owner->openLink(url);
                },
                Qt::QueuedConnection);
        }
        deleteLater();
        return false;
    }

private:
    QPointer<ORVPreviewWebPage> m_owner;
};

} // namespace

ORVPreviewWebPage::ORVPreviewWebPage(QObject *parent) : QWebEnginePage(parent) {}

ORVPreviewWebPage::LinkAction ORVPreviewWebPage::actionForLink(const QUrl &url, const QUrl &pageUrl)
{
    const QString scheme = url.scheme().toLower();
    if (scheme == QLatin1String("orvolib") || scheme == QLatin1String("orvoapp") || scheme == QLatin1String("orvo"))
        return LinkAction::OpenInOrvo;
    if (url.hasFragment() && url.adjusted(QUrl::RemoveFragment) == pageUrl.adjusted(QUrl::RemoveFragment))
        return LinkAction::FollowInPage;
    if (scheme == QLatin1String("http") || scheme == QLatin1String("https") || scheme == QLatin1String("mailto") ||
        scheme == QLatin1String("ftp") || scheme == QLatin1String("tel"))
        return LinkAction::OpenExternally;
    if (scheme == QLatin1String("file")) {
        const QString suffix = QFileInfo(url.toLocalFile()).suffix().toLower();
        if (suffix == QLatin1String("md") || suffix == QLatin1String("markdown") || suffix == QLatin1String("mdown") ||
            suffix == QLatin1String("txt"))
            return LinkAction::OpenDocument;
        return LinkAction::OpenExternally;
    }
    // javascript:, data: and the like go nowhere from a click.
    return LinkAction::Ignore;
}

void ORVPreviewWebPage::openLink(const QUrl &url)
{
    switch (actionForLink(url, this->url())) {
    case LinkAction::OpenInOrvo:
        emit linkToApplicationActivated(url);
        ORVNotificationCenter::defaultCenter()->postNotification(kORVPreviewOpenApplicationURLNotification, this,
                                                                 {{QStringLiteral("url"), url}});
        break;
    case LinkAction::OpenDocument:
        emit documentLinkActivated(url);
        break;
    case LinkAction::OpenExternally:
        emit externalLinkActivated(url);
        if (openExternalLinks)
            QDesktopServices::openUrl(url);
        break;
    case LinkAction::FollowInPage:
    case LinkAction::Ignore:
        break;
    }
}

bool ORVPreviewWebPage::acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame)
{
    if (type != NavigationTypeLinkClicked)
        return true; // the program's own loads, and frames of the page
    if (isMainFrame && actionForLink(url, this->url()) == LinkAction::FollowInPage)
        return true;
    openLink(url);
    return false;
}

void ORVPreviewWebPage::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message,
                                                 int lineNumber, const QString &sourceID)
{
    // The page's script reports clicks on links of the program's own schemes
    // this way: the web engine itself would hand them to the desktop as
    // unknown protocols.
    static const QString prefix = QStringLiteral("orvo-application-link:");
    if (level == InfoMessageLevel && message.startsWith(prefix)) {
        const QUrl url(message.mid(prefix.size()));
        if (actionForLink(url, this->url()) == LinkAction::OpenInOrvo)
            openLink(url);
        return;
    }
    QWebEnginePage::javaScriptConsoleMessage(level, message, lineNumber, sourceID);
}

QWebEnginePage *ORVPreviewWebPage::createWindow(WebWindowType)
{
    return new NewWindowCatcher(this);
}
