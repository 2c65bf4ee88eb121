// `orvo watch`: reports the changes other programs make in folders, in the
// batches the desktop app reacts to.
#include "cli/CliCommand.h"
#include "library/ORVDirWatchingController.h"
#include "library/ORVExternalSourceItemManager.h"
#include "library/ORVExternalTree.h"
#include "platform/SCEvents.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

using namespace orvo::cli;

namespace {

int g_signalPipe[2] = {-1, -1};

void onTerminationSignal(int)
{
    const char byte = 1;
    // Nothing to do on failure: the pipe is full, so a wake-up is pending.
    [[maybe_unused]] const ssize_t n = ::write(g_signalPipe[1], &byte, 1);
}

QString jsonLine(const QJsonObject &o) { return QString::fromUtf8(QJsonDocument(o).toJson(QJsonDocument::Compact)); }

int runWatch(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("json")}, {QStringLiteral("events")}}, 1, -1);
    if (!args)
        return Usage;
    const bool json = args->isSet(QStringLiteral("json"));
    const bool events = args->isSet(QStringLiteral("events"));

    // The folders as a list of its own, in memory: the user's sources are
    // left alone.
    ORVExternalSourceItemManager sources(QString{});
    for (const QString &arg : args->positionals()) {
        const QString path = ORVExternalSourceItem::normalizedFolderPath(arg);
        if (!QFileInfo(path).isDir())
            return ctx.fail(QStringLiteral("no such folder: %1").arg(path));
        sources.addItem(ORVExternalSourceItem::itemWithFolderPath(path));
    }
    ORVExternalTree tree;
    tree.updateExternalTreeDataTopItems(sources.items());

    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, g_signalPipe) != 0)
        return ctx.fail(QStringLiteral("cannot set up signal handling"));
    QSocketNotifier wake(g_signalPipe[0], QSocketNotifier::Read);
    QObject::connect(&wake, &QSocketNotifier::activated, [] { QCoreApplication::quit(); });
    struct sigaction sa = {};
    sa.sa_handler = onTerminationSignal;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_RESTART;
    sigaction(SIGINT, &sa, nullptr);
    sigaction(SIGTERM, &sa, nullptr);

    ORVDirWatchingController controller(&sources, &tree);
    QObject::connect(&controller, &ORVDirWatchingController::watchError, [&](const QString &message) {
        ctx.err() << "orvo: " << message << Qt::endl;
    });
    quint64 batchNumber = 0;
    QObject::connect(&controller, &ORVDirWatchingController::batchDispatched, [&](const QStringList &paths) {
        ++batchNumber;
        if (json) {
            ctx.out() << jsonLine(QJsonObject{{QStringLiteral("batch"), qint64(batchNumber)},
                                              {QStringLiteral("paths"), QJsonArray::fromStringList(paths)}})
                      << Qt::endl;
        } else {
            for (const QString &p : paths)
                ctx.out() << p << '\n';
            ctx.out() << Qt::endl; // a blank line ends a batch
        }
    });
    if (events) {
        QObject::connect(&controller, &ORVDirWatchingController::eventOccurred, [&](const SCEvent &e) {
            const QStringList kinds = SCEvent::kindNames(e.eventFlags);
            if (json)
                ctx.out() << jsonLine(QJsonObject{{QStringLiteral("event"), e.eventPath},
                                                  {QStringLiteral("kinds"), QJsonArray::fromStringList(kinds)},
                                                  {QStringLiteral("flags"), SCEvent::getFlags(e.eventFlags)},
                                                  {QStringLiteral("inotify"), SCEvent::inotifyMaskNames(e.inotifyMask)}})
                          << Qt::endl;
            else
                ctx.out() << "event " << e.eventPath << '\t' << (kinds.isEmpty() ? QStringLiteral("-") : kinds.join(QLatin1Char(',')))
                          << '\t' << SCEvent::getFlags(e.eventFlags) << Qt::endl;
        });
    }
    for (const QString &path : controller.currentWatchingPaths()) {
        const SCEvents *stream = controller.eventStreamForPath(path);
        ctx.err() << "watching " << path << " (" << (stream ? stream->watchedFolderCount() : 0) << " folders)" << Qt::endl;
    }
    QCoreApplication::exec();
    sa.sa_handler = SIG_DFL;
    sigaction(SIGINT, &sa, nullptr);
    sigaction(SIGTERM, &sa, nullptr);
    ::close(g_signalPipe[0]);
    ::close(g_signalPipe[1]);
    return Success;
}

} // namespace

ORVO_CLI_COMMAND({"watch", "print the changes made in folders, batch by batch",
                  "orvo watch FOLDER... [--json] [--events]\n"
                  "\n"
                  "Watches the folders and everything below them (new sub-folders included) and\n"
                  "prints each batch of changed paths as the desktop app gets it: the changes of\n"
                  "1.3 seconds after the first one, each path once, sorted, then a blank line.\n"
                  "With --json each batch is one line {\"batch\": N, \"paths\": [...]}. --events also\n"
                  "prints every single event as it comes, with its kinds (edit, rename-or-delete,\n"
                  "new, folder) and flags. A watched folder may be renamed, deleted or replaced:\n"
                  "watching resumes when a folder of that path is back. Runs until interrupted\n"
                  "(Ctrl-C or SIGTERM). \"watching FOLDER (N folders)\" on stderr says when it is ready.",
                  &runWatch});
