// orvo-app: the desktop app. `orvo` with no command, or with files, folders
// and links, starts it (see src/cli/main.cpp).
//
//   orvo-app [FILE|FOLDER|URL...]   open them (in the running app if there is one)
//   orvo-app --library DIR          a window on another library
//   orvo-app --quick-search         the quick search window
//   orvo-app --screenshot FILE      save the first window as a PNG once it shows its list, then quit
//   orvo-app --startup-report       print start-up and category switch times and memory, then quit

#include "app/ORVAppShell.h"
#include "app/ORVLibraryListModel.h"
#include "app/ORVLibraryTreeModel.h"
#include "app/ORVLibraryWindow.h"
#include "app/ORVSingleInstance.h"
#include "core/AppDelegate.h"
#include "core/ORVAppPaths.h"

#include <QApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QListView>
#include <QTimer>
#include <QTreeView>

#include <cstdio>

#include <unistd.h>

namespace {

// How long a screenshot waits after the list is filled, for the preview's
// web page to load and draw.
constexpr int kScreenshotSettleMs = 2500;

struct Options {
    QString library;
    QString screenshot;
    bool startupReport = false;
    bool quickSearch = false;
    QStringList open;
};

Options parseOptions(const QStringList &args)
{
    Options o;
    for (int i = 1; i < args.size(); ++i) {
        const QString &a = args.at(i);
        if (a == QLatin1String("--library") && i + 1 < args.size())
            o.library = QFileInfo(args.at(++i)).absoluteFilePath();
        else if (a == QLatin1String("--screenshot") && i + 1 < args.size())
            o.screenshot = QFileInfo(args.at(++i)).absoluteFilePath();
        else if (a == QLatin1String("--startup-report"))
            o.startupReport = true;
        else if (a == QLatin1String("--quick-search"))
            o.quickSearch = true;
        else if (!a.startsWith(QLatin1String("--")))
            o.open << a;
    }
    return o;
}

// Resident memory of this process, in KiB (0 when unknown).
qint64 residentKiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong();
    return 0;
}

// Time to switch to each entry of the tree in turn, the list filled and
// painted each time: the mean and the slowest, in milliseconds.
QPair<double, double> measureCategorySwitching(ORVLibraryWindow *window)
{
    QList<QModelIndex> entries;
    std::function<void(const QModelIndex &)> walk = [&](const QModelIndex &parent) {
        for (int r = 0; r < window->treeModel()->rowCount(parent); ++r) {
            const QModelIndex i = window->treeModel()->index(r, 0, parent);
            if (window->treeModel()->flags(i) & Qt::ItemIsSelectable)
                entries << i;
            walk(i);
        }
    };
    walk({});
    double total = 0, slowest = 0;
    int count = 0;
    // Twice round, so that the first pass's cold file reads count once.
    for (int pass = 0; pass < 2; ++pass) {
        for (const QModelIndex &index : entries) {
            QElapsedTimer t;
            t.start();
            window->treeView()->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
            window->listView()->viewport()->repaint();
            const double ms = double(t.nsecsElapsed()) / 1e6;
            if (pass == 1) {
                total += ms;
                slowest = std::max(slowest, ms);
                ++count;
            }
        }
    }
    return {count ? total / count : 0, slowest};
}

} // namespace

int main(int argc, char **argv)
{
    QElapsedTimer sinceStart;
    sinceStart.start();
    // The preview's Chromium refuses to start sandboxed as root and would
    // take the whole app down; root gets the preview without the sandbox.
    if (::geteuid() == 0 && !qEnvironmentVariableIsSet("QTWEBENGINE_DISABLE_SANDBOX"))
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    ORVAppPaths::initApplicationIdentity();
    QApplication app(argc, argv);
    ORVAppPaths::initApplicationIdentity();
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("orvo"), QIcon(QStringLiteral(":/orvo/orvo.svg"))));
    QApplication::setDesktopFileName(QStringLiteral("orvo"));
    const Options options = parseOptions(app.arguments());

    AppDelegate *delegate = AppDelegate::sharedDelegate();
    const bool tooling = options.startupReport || !options.screenshot.isEmpty();
    ORVSingleInstance instance(delegate->applicationSupportURL());
    if (!tooling && options.library.isEmpty()) {
        QStringList forward = options.open;
        if (options.quickSearch)
            forward << QStringLiteral("--quick-search");
        if (instance.sendToRunningInstance(forward))
            return 0;
        instance.listen();
    }

    delegate->clearAndSetupLibrarySecurityScoped();
    ORVAppShell shell(delegate);
    QObject::connect(&app, &QGuiApplication::applicationStateChanged, delegate, [delegate](Qt::ApplicationState s) {
        if (s == Qt::ApplicationInactive)
            delegate->applicationDidResignActive();
    });
    QObject::connect(&instance, &ORVSingleInstance::argumentsReceived, &shell, [&shell](const QStringList &args) {
        QStringList open = args;
        if (open.removeAll(QStringLiteral("--quick-search")) > 0)
            shell.showQuickSearch();
        if (!open.isEmpty())
            shell.openArguments(open);
        else if (!shell.documentWindows().isEmpty())
            shell.documentWindows().last()->activateWindow();
    });
    // Ending by the session (logout) goes through the same saving.
    QObject::connect(&app, &QGuiApplication::commitDataRequest, &shell, [&shell](QSessionManager &) {
        shell.requestQuit(false);
    });

    if (!options.library.isEmpty()) {
        delegate->applicationDidFinishLaunching();
        auto *window = new ORVLibraryWindow(&shell, delegate, options.library);
        window->show();
    } else {
        shell.start(options.open);
    }
    if (options.quickSearch)
        shell.showQuickSearch();

    if (tooling) {
        // Once the first library window has its tree and its first list,
        // paint it and report.
        const auto whenReady = [&] {
            ORVLibraryWindow *window = shell.libraryWindows().value(0);
            if (!window) {
                for (QWidget *w : QApplication::topLevelWidgets())
                    if ((window = qobject_cast<ORVLibraryWindow *>(w)))
                        break;
            }
            return window;
        };
        auto *poll = new QTimer(&app);
        poll->setInterval(5);
        QObject::connect(poll, &QTimer::timeout, &app, [&, poll] {
            ORVLibraryWindow *window = whenReady();
            QWidget *any = window ? window : QApplication::activeWindow();
            if (!window && !any) {
                for (QWidget *w : QApplication::topLevelWidgets())
                    if (w->isVisible())
                        any = w;
            }
            const bool ready = window ? window->isTreeViewReady() && window->listModel()->rowCount() > 0
                                      : any != nullptr && sinceStart.elapsed() > 2000;
            if (!ready && sinceStart.elapsed() < 60000)
                return;
            poll->stop();
            if (any)
                any->repaint();
            const qint64 firstWindowMs = sinceStart.elapsed();
            const qint64 readyEpochMs = QDateTime::currentMSecsSinceEpoch();
            if (!options.screenshot.isEmpty() && any && !options.startupReport) {
                // A picture alone waits for the preview's page to draw.
                QTimer::singleShot(kScreenshotSettleMs, any, [any, path = options.screenshot] {
                    any->grab().save(path, "PNG");
                    QApplication::exit(0);
                });
                return;
            }
            if (!options.screenshot.isEmpty() && any)
                any->grab().save(options.screenshot, "PNG");
            if (options.startupReport) {
                const int firstListRows = window ? window->listModel()->rowCount() : 0;
                const auto switching = window ? measureCategorySwitching(window) : QPair<double, double>{0, 0};
                std::printf("first_window_ms=%lld\nfirst_window_epoch_ms=%lld\nlist_rows=%d\nswitch_mean_ms=%.1f\nswitch_max_ms=%.1f\nrss_kib=%lld\n",
                            firstWindowMs, readyEpochMs, firstListRows, switching.first,
                            switching.second, residentKiB());
                std::fflush(stdout);
            }
            QApplication::exit(0);
        });
        poll->start();
    }
    return app.exec();
}
