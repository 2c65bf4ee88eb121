// `orvo`: the command line over the core, and the way into the desktop app.
//
//   orvo                        start the desktop app
//   orvo FILE|FOLDER|URL...     open them in the desktop app
//   orvo COMMAND ...            run a command headless
//   orvo help [COMMAND]
//
// The desktop app is a separate binary, orvo-app, beside this one, so that
// headless commands start fast and need no display libraries.
#include "cli/CliCommand.h"
#include "core/ORVAppPaths.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>
#include <unistd.h>
#include <vector>

using namespace orvo::cli;

namespace {

void printOverview(QTextStream &out)
{
    out << "usage: orvo [--library DIR] COMMAND [ARGS]\n"
           "       orvo [FILE|FOLDER|URL...]   (the desktop app)\n\n"
           "Commands:\n";
    for (const Command *c : allCommands())
        out << "  " << QString::fromUtf8(c->name).leftJustified(12) << ' ' << QString::fromUtf8(c->summary) << '\n';
    out << "\nRun 'orvo help COMMAND' for the details of one command.\n"
           "--library DIR works with any command that reads a library (default: the main library).\n";
    out.flush();
}

int launchDesktopApp(const QStringList &args, const QString &libraryOverride)
{
    const QString app = QCoreApplication::applicationDirPath() + QStringLiteral("/orvo-app");
    if (!QFileInfo(app).isExecutable()) {
        std::fprintf(stderr, "orvo: the desktop app is not installed beside this program (%s)\n", qPrintable(app));
        return Failure;
    }
    QList<QByteArray> storage;
    storage << app.toLocal8Bit();
    if (!libraryOverride.isEmpty())
        storage << QByteArray("--library") << libraryOverride.toLocal8Bit();
    for (const QString &a : args)
        storage << a.toLocal8Bit();
    std::vector<char *> argv;
    for (QByteArray &b : storage)
        argv.push_back(b.data());
    argv.push_back(nullptr);
    std::fflush(stdout);
    execv(argv[0], argv.data());
    std::perror("orvo: cannot start the desktop app");
    return Failure;
}

} // namespace

int main(int argc, char **argv)
{
    ORVAppPaths::initApplicationIdentity();
    QCoreApplication app(argc, argv);
    ORVAppPaths::initApplicationIdentity();

    QStringList words = app.arguments().mid(1);

    // --library DIR may stand anywhere before "--".
    QString libraryOverride;
    for (int i = 0; i < words.size(); ++i) {
        if (words.at(i) == QLatin1String("--"))
            break;
        if (words.at(i) == QLatin1String("--library") || words.at(i).startsWith(QLatin1String("--library="))) {
            if (words.at(i).contains(QLatin1Char('='))) {
                libraryOverride = words.at(i).section(QLatin1Char('='), 1);
                words.removeAt(i);
            } else if (i + 1 < words.size()) {
                libraryOverride = words.at(i + 1);
                words.remove(i, 2);
            } else {
                std::fputs("orvo: --library needs a folder\n", stderr);
                return Usage;
            }
            --i;
        }
    }
    if (!libraryOverride.isEmpty())
        libraryOverride = QFileInfo(libraryOverride).absoluteFilePath();

    QTextStream out(stdout);
    if (words.isEmpty())
        return launchDesktopApp({}, libraryOverride);

    const QString first = words.first();
    if (first == QLatin1String("--help") || first == QLatin1String("-h")) {
        printOverview(out);
        return Success;
    }
    if (first == QLatin1String("--version")) {
        out << "orvo " << QCoreApplication::applicationVersion() << Qt::endl;
        return Success;
    }
    if (first == QLatin1String("help")) {
        if (words.size() < 2) {
            printOverview(out);
            return Success;
        }
        const Command *c = findCommand(words.at(1));
        if (!c) {
            std::fprintf(stderr, "orvo: no command \"%s\" (see 'orvo help')\n", qPrintable(words.at(1)));
            return Usage;
        }
        out << QString::fromUtf8(c->help) << Qt::endl;
        return Success;
    }
    if (const Command *c = findCommand(first)) {
        Context ctx(*c, words.mid(1), libraryOverride);
        const int code = c->run(ctx);
        ctx.out().flush();
        ctx.err().flush();
        return code;
    }
    if (first.startsWith(QLatin1Char('-'))) {
        std::fprintf(stderr, "orvo: unknown option %s (see 'orvo help')\n", qPrintable(first));
        return Usage;
    }
    // Anything else is a file, folder or URL for the desktop app. A word that
    // is neither an existing path nor a URL is most likely a mistyped command.
    if (!QFileInfo::exists(first) && !first.contains(QLatin1String(":"))) {
        std::fprintf(stderr, "orvo: no command or file \"%s\" (see 'orvo help')\n", qPrintable(first));
        return Usage;
    }
    return launchDesktopApp(words, libraryOverride);
}
