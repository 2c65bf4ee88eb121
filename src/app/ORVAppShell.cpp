#include "app/ORVAppShell.h"

#include "app/ORVEditorArea.h"
#include "app/ORVExternalWindow.h"
#include "app/ORVFirstRunWizard.h"
#include "app/ORVLibraryWindow.h"
#include "app/ORVPreferencesWindow.h"
#include "app/ORVQuickSearchWindow.h"
#include "app/window_state.h"
#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "core/ORVNotificationCenter.h"
#include "core/ORVExternalRecentDocumentManager.h"
#include "core/ORVLibraryRecentDocumentManager.h"
#include "library/ORVExternalSourceItem.h"
#include "library/ORVExternalSourceItemManager.h"
#include "library/ORVLibraryFolder.h"
#include "library/ORVLibraryNotifications.h"
#include "library/supportedDocumentExt.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QPalette>
#include <QSaveFile>
#include <QScreen>
#include <QUrl>

namespace {

// Library document files are named by their id, a time in 1/10000 s; a
// smaller number is an ordinary file that happens to be named by digits.
constexpr qint64 kLibraryFileNumberFloor = 99999;

void applyWindowRect(QMainWindow *window, const QVariantMap &record)
{
    const auto rect = rectWithRectString(record.value(QStringLiteral("winRect")).toString());
    if (!rect || rect->width() <= 0 || rect->height() <= 0)
        return;
    // A frame from a screen that is gone comes back on the present one.
    const QScreen *screen = QGuiApplication::screenAt(rect->center());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    QRect frame = *rect;
    if (screen && !screen->availableGeometry().intersects(frame))
        frame.moveTopLeft(screen->availableGeometry().topLeft());
    window->setGeometry(frame);
}

} // namespace

ORVAppShell::ORVAppShell(AppDelegate *app, QObject *parent) : QObject(parent), m_app(app)
{
    // Windows close one by one without quitting; the last one quits through
    // windowShouldClose, which saves first.
    QApplication::setQuitOnLastWindowClosed(false);
    applyInterfaceTheme(m_app->prfs()->isDarkThemes());
    ORVNotificationCenter::defaultCenter()->addObserver(PAPreferencesDidChangeNotification, this,
                                                        [this](const ORVNotification &n) {
        if (n.userInfo.value(QStringLiteral("key")).toString() == QLatin1String("isDarkThemes"))
            applyInterfaceTheme(m_app->prfs()->isDarkThemes());
    });
}

void ORVAppShell::applyInterfaceTheme(bool dark)
{
    static const QPalette original = QApplication::palette();
    if (!dark) {
        QApplication::setPalette(original);
        return;
    }
    QPalette p;
    const QColor window(0x2b, 0x2d, 0x31), base(0x1f, 0x21, 0x24), text(0xe6, 0xe6, 0xe6), mid(0x5a, 0x5d, 0x63);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, QColor(0x33, 0x36, 0x3b));
    p.setColor(QPalette::ToolTipBase, window);
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::PlaceholderText, QColor(0x9a, 0x9d, 0xa3));
    p.setColor(QPalette::Button, window);
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, Qt::white);
    p.setColor(QPalette::Highlight, QColor(0x3d, 0x7e, 0xd6));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Link, QColor(0x6a, 0xa8, 0xf0));
    p.setColor(QPalette::Mid, mid);
    p.setColor(QPalette::Dark, QColor(0x18, 0x19, 0x1b));
    p.setColor(QPalette::Light, QColor(0x45, 0x48, 0x4e));
    p.setColor(QPalette::Disabled, QPalette::Text, QColor(0x80, 0x80, 0x80));
    p.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x80, 0x80, 0x80));
    p.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x80, 0x80, 0x80));
    QApplication::setPalette(p);
}

ORVAppShell::~ORVAppShell() = default;

void ORVAppShell::registerWindow(QMainWindow *window)
{
    m_windows.removeAll(nullptr);
    m_windows << window;
}

QList<ORVLibraryWindow *> ORVAppShell::libraryWindows() const
{
    QList<ORVLibraryWindow *> list;
    for (const auto &w : m_windows)
        if (auto *lib = qobject_cast<ORVLibraryWindow *>(w.data()))
            list << lib;
    return list;
}

QList<ORVExternalWindow *> ORVAppShell::externalWindows() const
{
    QList<ORVExternalWindow *> list;
    for (const auto &w : m_windows)
        if (auto *ext = qobject_cast<ORVExternalWindow *>(w.data()))
            list << ext;
    return list;
}

QList<QMainWindow *> ORVAppShell::documentWindows() const
{
    QList<QMainWindow *> list;
    for (const auto &w : m_windows)
        if (w)
            list << w.data();
    return list;
}

void ORVAppShell::start(const QStringList &arguments)
{
    m_app->applicationDidFinishLaunching();
    if (!m_app->prfs()->isAppInstalled()) {
        ORVFirstRunWizard *wizard = showFirstRunWizard();
        if (!arguments.isEmpty())
            connect(wizard, &ORVFirstRunWizard::libraryReady, this, [this, arguments] { openArguments(arguments); });
        return;
    }
    showMainWindowWithRestoreState(true);
    if (!arguments.isEmpty())
        openArguments(arguments);
}

ORVFirstRunWizard *ORVAppShell::showFirstRunWizard()
{
    if (!m_wizard) {
        m_wizard = new ORVFirstRunWizard(m_app);
        m_wizard->setAttribute(Qt::WA_DeleteOnClose);
        connect(m_wizard, &ORVFirstRunWizard::libraryReady, this, [this] {
            // clearupOldLibraryAndShowNewLibrary
            closeLibraryWindowsForSwitch();
            showLibraryWindow();
        });
        connect(m_wizard, &QWizard::rejected, this, [this] {
            if (documentWindows().isEmpty())
                QApplication::quit();
        });
    }
    m_wizard->show();
    m_wizard->raise();
    m_wizard->activateWindow();
    return m_wizard;
}

bool ORVAppShell::checkTheLibraryIsOKdAndShowAlert()
{
    const QString main = m_app->libraryModeMainURL();
    if (!main.isEmpty() && AppDelegate::checkIsLibraryVaidWithURL(main))
        return true;
    // Nothing is made behind the user's back: the user picks a library or
    // makes a new one in the library pane.
    const QString where = main.isEmpty() ? QString() : main;
    showPreferences(QStringLiteral("library"),
                    where.isEmpty() ? tr("Orvo cannot find your library. Choose its folder, or make a new library.")
                                    : tr("The library at %1 cannot be found. It may have been moved, renamed or be on "
                                         "a disk that is not connected. Choose its new place, or make a new library.")
                                          .arg(QDir::toNativeSeparators(where)));
    return false;
}

void ORVAppShell::showMainWindowWithRestoreState(bool restore)
{
    const bool externalFirst = m_app->prfs()->isLauchExternalModeFirst();
    if (!externalFirst && !checkTheLibraryIsOKdAndShowAlert())
        return;
    bool opened = false;
    if (restore) {
        const std::optional<QVariantList> records = m_app->fetchAppStateData();
        if (records && !records->isEmpty())
            opened = launchWithAppStateData(*records);
    }
    if (!opened && !restore) {
        const QVariantMap last = externalFirst ? m_app->fetchExternalLastWindowState() : m_app->fetchLibraryLastWindowState();
        if (!last.isEmpty())
            opened = launchWithAppStateData({last});
    }
    if (!opened) {
        if (externalFirst)
            openExternalDefaultFile();
        else
            showLibraryWindow();
    }
    for (QMainWindow *w : documentWindows())
        w->raise();
}

bool ORVAppShell::launchWithAppStateData(const QVariantList &records)
{
    bool opened = false;
    for (const QVariant &v : records) {
        QVariantMap record = v.toMap();
        const QString type = record.value(QStringLiteral("type")).toString();
        if (type == QLatin1String("lib")) {
            const QString lib = record.value(QStringLiteral("libURL")).toString();
            const QString path = lib.isEmpty() ? m_app->libraryModeMainURL() : lib;
            if (!AppDelegate::checkIsLibraryVaidWithURL(path))
                continue;
            // The current document must still exist, else the first tab
            // that does; with none the record is skipped.
            const qint64 current = record.value(QStringLiteral("currentDocUUID")).toLongLong();
            if (current <= 0 || !QFileInfo::exists(ORVLibraryFolder::documentPath(path, current))) {
                qint64 found = 0;
                for (const QVariant &t : record.value(QStringLiteral("openedTabs")).toList()) {
                    const qint64 uuid = t.toMap().value(QStringLiteral("artUUID")).toLongLong();
                    if (uuid > 0 && QFileInfo::exists(ORVLibraryFolder::documentPath(path, uuid))) {
                        found = uuid;
                        break;
                    }
                }
                if (found == 0)
                    continue;
                record.insert(QStringLiteral("currentDocUUID"), found);
            }
            const bool isMain = lib.isEmpty() || QFileInfo(path).absoluteFilePath() ==
                                                     QFileInfo(m_app->libraryModeMainURL()).absoluteFilePath();
            ORVLibraryWindow *window = newLibraryWindow(isMain ? QString() : path);
            window->setupWindowStates(record, true);
            applyWindowRect(window, record);
            window->show();
            opened = true;
        } else if (type == QLatin1String("ext")) {
            QString current = AppDelegate::fileURLWithBase64DocPath(record.value(QStringLiteral("currentDocPath")).toString());
            if (current.isEmpty() || !QFileInfo::exists(current)) {
                current.clear();
                for (const QVariant &t : record.value(QStringLiteral("openedTabs")).toList()) {
                    const QString p = AppDelegate::fileURLWithBase64DocPath(t.toMap().value(QStringLiteral("fullPath")).toString());
                    if (!p.isEmpty() && QFileInfo::exists(p)) {
                        current = p;
                        break;
                    }
                }
                if (current.isEmpty())
                    continue;
                record.insert(QStringLiteral("currentDocPath"), current);
            }
            ORVExternalWindow *window = newExternalWindow();
            window->setupWindowStates(record, true);
            applyWindowRect(window, record);
            window->show();
            opened = true;
        }
    }
    return opened;
}

ORVLibraryWindow *ORVAppShell::newLibraryWindow(const QString &libraryPath)
{
    auto *window = new ORVLibraryWindow(this, m_app, libraryPath);
    registerWindow(window);
    return window;
}

ORVExternalWindow *ORVAppShell::newExternalWindow()
{
    auto *window = new ORVExternalWindow(this, m_app);
    registerWindow(window);
    return window;
}

ORVLibraryWindow *ORVAppShell::showLibraryWindow()
{
    if (const QList<ORVLibraryWindow *> open = libraryWindows(); !open.isEmpty()) {
        open.last()->show();
        open.last()->raise();
        open.last()->activateWindow();
        return open.last();
    }
    ORVLibraryWindow *window = newLibraryWindow();
    // A library with no document at all starts one, as a first page to
    // write on; the stray pass registers it with the list's first fetch.
    const QString first = m_app->libraryModeFirstDocumentURLByLibURL(QString());
    window->show();
    if (!first.isEmpty()) {
        connect(window, &ORVLibraryWindow::treeReady, window, [window, first] {
            if (!window->editorArea()->currentEditorTab())
                window->openDocumentPath(first);
        }, Qt::SingleShotConnection);
    }
    window->raise();
    window->activateWindow();
    return window;
}

ORVLibraryWindow *ORVAppShell::showLibraryModeAction()
{
    if (!checkTheLibraryIsOKdAndShowAlert())
        return nullptr;
    if (!libraryWindows().isEmpty())
        return showLibraryWindow();
    const QVariantMap last = m_app->fetchLibraryLastWindowState();
    if (!last.isEmpty() && launchWithAppStateData({last}) && !libraryWindows().isEmpty())
        return libraryWindows().last();
    return showLibraryWindow();
}

ORVExternalWindow *ORVAppShell::showExternalModeAction()
{
    if (const QList<ORVExternalWindow *> open = externalWindows(); !open.isEmpty()) {
        open.last()->show();
        open.last()->raise();
        open.last()->activateWindow();
        return open.last();
    }
    const QVariantMap last = m_app->fetchExternalLastWindowState();
    if (!last.isEmpty() && launchWithAppStateData({last}) && !externalWindows().isEmpty())
        return externalWindows().last();
    return openExternalDefaultFile();
}

ORVExternalWindow *ORVAppShell::openExternalDefaultFile()
{
    const QString readme = QDir(m_app->applicationSupportURL()).filePath(QStringLiteral("README.md"));
    if (!QFileInfo::exists(readme)) {
        QSaveFile file(readme);
        if (file.open(QIODevice::WriteOnly)) {
            file.write(AppDelegate::fetchWelcomeContent().toUtf8());
            file.commit();
        }
    }
    ORVExternalWindow *window = externalWindows().isEmpty() ? newExternalWindow() : externalWindows().last();
    window->openDocumentPath(readme);
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}

ORVPreferencesWindow *ORVAppShell::showPreferences(const QString &pane, const QString &message)
{
    if (!m_preferences) {
        m_preferences = new ORVPreferencesWindow(this, m_app);
        m_preferences->setAttribute(Qt::WA_DeleteOnClose);
    }
    if (!pane.isEmpty())
        m_preferences->showPane(pane);
    m_preferences->setMessage(message);
    m_preferences->show();
    m_preferences->raise();
    m_preferences->activateWindow();
    return m_preferences;
}

ORVQuickSearchWindow *ORVAppShell::showQuickSearch()
{
    if (!m_quickSearch) {
        m_quickSearch = new ORVQuickSearchWindow(this, m_app);
        m_quickSearch->setAttribute(Qt::WA_DeleteOnClose);
    }
    m_quickSearch->popUp();
    return m_quickSearch;
}

void ORVAppShell::openArguments(const QStringList &arguments)
{
    QStringList folders, files;
    for (const QString &argument : arguments) {
        const QUrl url(argument);
        if (!url.scheme().isEmpty() && url.scheme().size() > 1 && !url.isLocalFile()) {
            handleURL(argument);
            continue;
        }
        const QString path = url.isLocalFile() ? url.toLocalFile() : argument;
        const QFileInfo info(path);
        if (info.isDir())
            folders << info.absoluteFilePath();
        else if (info.isFile() && checkIsSupportedDocumentWithPath(path))
            files << info.absoluteFilePath();
        // Anything else, and anything missing, is dropped.
    }
    if (!folders.isEmpty()) {
        ORVExternalSourceItemManager *sources = m_app->externalSourceItemManager();
        bool added = false;
        for (const QString &folder : folders) {
            if (sources->itemWithPath(folder))
                continue;
            added = sources->addItem(ORVExternalSourceItem::itemWithFolderPath(folder)) || added;
        }
        if (added) {
            sources->saveItems(nullptr);
            m_app->updateExternalTreeDataTopItems();
        }
        if (files.isEmpty())
            showExternalModeAction();
    }
    for (const QString &file : files)
        openFile(file);
}

bool ORVAppShell::openFile(const QString &path)
{
    const QFileInfo info(path);
    if (!info.isFile())
        return false;
    bool isNumber = false;
    const qint64 number = info.completeBaseName().toLongLong(&isNumber);
    const QString library = isNumber && number > kLibraryFileNumberFloor ? m_app->libraryURLByFileURL(path) : QString();
    if (!library.isEmpty()) {
        // openLibraryDocumentWithURL: the last library window of that library.
        const QList<ORVLibraryWindow *> windows = libraryWindows();
        for (auto it = windows.rbegin(); it != windows.rend(); ++it) {
            if (QFileInfo((*it)->libraryPath()).absoluteFilePath() == QFileInfo(library).absoluteFilePath()) {
                (*it)->openDocumentPath(info.absoluteFilePath());
                (*it)->raise();
                (*it)->activateWindow();
                return true;
            }
        }
        ORVLibraryWindow *window = showLibraryModeAction();
        if (!window)
            return false;
        window->openDocumentPath(info.absoluteFilePath());
        return true;
    }
    ORVExternalWindow *window = showExternalModeAction();
    window->openDocumentPath(info.absoluteFilePath());
    window->raise();
    window->activateWindow();
    return true;
}

bool ORVAppShell::handleURL(const QString &text)
{
    const QUrl url(text);
    if (url.scheme().toLower() != QLatin1String("orvolib"))
        return false;
    bool ok = false;
    const qint64 uuid = url.host().toLongLong(&ok);
    const QString main = m_app->libraryModeMainURL();
    if (!ok || uuid <= kLibraryFileNumberFloor || main.isEmpty())
        return false;
    const QString path = ORVLibraryFolder::documentPath(main, uuid);
    if (!QFileInfo::exists(path))
        return false; // a link to a document that is gone does nothing
    return openFile(path);
}

QVariantMap ORVAppShell::windowStateOf(QMainWindow *window)
{
    if (auto *lib = qobject_cast<ORVLibraryWindow *>(window))
        return lib->theWindowStates();
    if (auto *ext = qobject_cast<ORVExternalWindow *>(window))
        return ext->theWindowStates();
    return {};
}

QVariantList ORVAppShell::windowStateRecords() const
{
    QVariantList records;
    for (QMainWindow *w : documentWindows())
        if (const QVariantMap state = windowStateOf(w); !state.isEmpty())
            records << state;
    return records;
}

bool ORVAppShell::saveAllDocuments(bool quiet)
{
    QStringList failures;
    for (QMainWindow *w : documentWindows()) {
        if (auto *lib = qobject_cast<ORVLibraryWindow *>(w))
            lib->saveAllDocuments(true, &failures);
        else if (auto *ext = qobject_cast<ORVExternalWindow *>(w))
            ext->saveAllDocuments(true, &failures);
    }
    if (!failures.isEmpty() && !quiet) {
        QMessageBox::warning(QApplication::activeWindow(), tr("Error:"),
                             tr("Orvo cannot quit: these documents could not be saved, and their text would be "
                                "lost.\n\n%1\n\nSave them somewhere else, or close their tabs, then quit again.")
                                 .arg(failures.join(QLatin1Char('\n'))));
    }
    return failures.isEmpty();
}

bool ORVAppShell::requestQuit(bool quitApplication)
{
    if (m_quitting)
        return true;
    if (!saveAllDocuments())
        return false;
    QVariantList records;
    for (QMainWindow *w : documentWindows()) {
        if (auto *lib = qobject_cast<ORVLibraryWindow *>(w))
            lib->editorArea()->storeAllTextViewStates();
        else if (auto *ext = qobject_cast<ORVExternalWindow *>(w))
            ext->editorArea()->storeAllTextViewStates();
        if (const QVariantMap state = windowStateOf(w); !state.isEmpty())
            records << state;
    }
    m_app->applicationWillTerminate(records);
    m_quitting = true;
    for (QMainWindow *w : documentWindows())
        w->close();
    if (m_preferences)
        m_preferences->close();
    if (m_quickSearch)
        m_quickSearch->close();
    if (quitApplication)
        QApplication::quit();
    return true;
}

bool ORVAppShell::windowShouldClose(QMainWindow *window)
{
    if (m_quitting)
        return true;
    m_windows.removeAll(nullptr);
    const bool isLast = !m_switchingLibrary && documentWindows().size() == 1 && documentWindows().first() == window;
    if (isLast) {
        if (auto *lib = qobject_cast<ORVLibraryWindow *>(window))
            m_app->saveLibraryLastWindowState(lib->theWindowStates());
        else if (auto *ext = qobject_cast<ORVExternalWindow *>(window))
            m_app->saveExternalLastWindowState(ext->theWindowStates());
        return requestQuit();
    }
    if (auto *lib = qobject_cast<ORVLibraryWindow *>(window)) {
        if (!lib->saveAllDocuments(false))
            return false;
        lib->editorArea()->storeAllTextViewStates();
        m_app->saveLibraryLastWindowState(lib->theWindowStates());
    } else if (auto *ext = qobject_cast<ORVExternalWindow *>(window)) {
        if (!ext->saveAllDocuments(false))
            return false;
        ext->editorArea()->storeAllTextViewStates();
        m_app->saveExternalLastWindowState(ext->theWindowStates());
    }
    m_windows.removeAll(window);
    return true;
}

bool ORVAppShell::closeLibraryWindowsForSwitch()
{
    m_switchingLibrary = true;
    bool closed = true;
    for (ORVLibraryWindow *w : libraryWindows())
        closed = w->close() && closed;
    m_switchingLibrary = false;
    return closed;
}
