#pragma once

// The library a command works on, for every command that reads or writes
// one: --library DIR when given, otherwise the main library. Opening checks
// the folder and its database first and changes nothing on disk when the
// library cannot be used; the error names the library and says why.
//
//   const auto lib = orvo::cli::openCommandLibrary(ctx);
//   if (!lib)
//       return Failure; // the message is printed already
//   lib->manager->getAllItemsDBArticleCount();

#include "cli/CliCommand.h"
#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "core/ORVBookmark.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <memory>
#include <optional>

namespace orvo::cli {

struct CommandLibrary {
    QString path; // absolute
    bool isMain = false;
    std::shared_ptr<ORVDBManager> manager;
};

// Why the folder cannot be used as a library, or nullopt when it can.
// Reads only.
inline std::optional<QString> commandLibraryProblem(const QString &path)
{
    const QFileInfo fi(path);
    if (!fi.exists())
        return QStringLiteral("the library %1 does not exist").arg(path);
    if (!fi.isDir())
        return QStringLiteral("%1 is not a folder, so not a library").arg(path);
    const QDir dir(path);
    if (!QFileInfo::exists(dir.filePath(QStringLiteral("mainlib.db"))))
        return QStringLiteral("%1 is not a library: it has no mainlib.db (make one with 'orvo library init %1')").arg(path);
    if (!QFileInfo(dir.filePath(QStringLiteral("docs"))).isDir())
        return QStringLiteral("the library %1 is unusable: it has no docs folder").arg(path);
    if (const auto problem = ORVLibraryFolder::checkLibraryDatabase(path))
        return QStringLiteral("the library %1 is unusable: %2").arg(path, *problem);
    return std::nullopt;
}

// The folder the command means: --library DIR, else the main library. ""
// with a reason when there is none.
inline QString commandLibraryPath(Context &ctx, bool *isMain, QString *why)
{
    AppDelegate *app = AppDelegate::sharedDelegate();
    const QString main = app->libraryModeMainURL();
    if (!ctx.libraryOverride().isEmpty()) {
        const QFileInfo fi(ctx.libraryOverride());
        const QString path = fi.canonicalFilePath().isEmpty() ? fi.absoluteFilePath() : fi.canonicalFilePath();
        *isMain = !main.isEmpty() && path == main;
        return path;
    }
    *isMain = true;
    if (!main.isEmpty())
        return main;
    // A main library was chosen once but is not where it was.
    QByteArray recorded = app->prfs()->bookmarkForMainLibrarySaveURL();
    if (recorded.isEmpty()) {
        QFile file(QDir(app->applicationSupportURL()).filePath(QStringLiteral("libraryLocationURL.data")));
        if (file.open(QIODevice::ReadOnly))
            recorded = file.readAll();
    }
    if (const auto gone = ORVBookmark::pathInBookmarkData(recorded))
        *why = QStringLiteral("the main library %1 does not exist (moved or removed?); choose one with "
                              "'orvo library init DIR' or name one with --library DIR")
                   .arg(*gone);
    else
        *why = QStringLiteral("there is no library yet: make one with 'orvo library init [DIR]', or name one "
                              "with --library DIR");
    return {};
}

// Opens the library for a command, or prints why it cannot and returns
// nullopt (the command then returns Failure).
inline std::optional<CommandLibrary> openCommandLibrary(Context &ctx)
{
    CommandLibrary lib;
    QString why;
    lib.path = commandLibraryPath(ctx, &lib.isMain, &why);
    if (lib.path.isEmpty()) {
        ctx.fail(why);
        return std::nullopt;
    }
    if (const auto problem = commandLibraryProblem(lib.path)) {
        ctx.fail(*problem);
        return std::nullopt;
    }
    AppDelegate *app = AppDelegate::sharedDelegate();
    app->libraryURLStartAccessingSecurityScopedResourceByURL(lib.path);
    lib.manager = app->libraryModeDBManagerByURL(lib.path);
    if (!lib.manager) {
        ctx.fail(QStringLiteral("the library %1 cannot be opened").arg(lib.path));
        return std::nullopt;
    }
    return lib;
}

} // namespace orvo::cli
