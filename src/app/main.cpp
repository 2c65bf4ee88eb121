#include "app/ORVEditorWindow.h"
#include "app/ORVMainWindow.h"
#include "core/AppDelegate.h"
#include "core/ORVAppPaths.h"

#include <QApplication>
#include <QFileInfo>

int main(int argc, char **argv)
{
    ORVAppPaths::initApplicationIdentity();
    QApplication app(argc, argv);
    ORVAppPaths::initApplicationIdentity();

    // `orvo --library DIR` passes the folder on.
    QString library;
    const QStringList args = app.arguments();
    const qsizetype at = args.indexOf(QStringLiteral("--library"));
    if (at > 0 && at + 1 < args.size())
        library = QFileInfo(args.at(at + 1)).absoluteFilePath();

    AppDelegate *delegate = AppDelegate::sharedDelegate();
    delegate->clearAndSetupLibrarySecurityScoped();
    delegate->applicationDidFinishLaunching();
    QObject::connect(&app, &QGuiApplication::applicationStateChanged, delegate, [delegate](Qt::ApplicationState s) {
        if (s == Qt::ApplicationInactive)
            delegate->applicationDidResignActive();
    });
    QObject::connect(&app, &QCoreApplication::aboutToQuit, delegate, [delegate] { delegate->applicationWillTerminate({}); });

    // Files named on the command line open in editor windows of their own.
    QStringList files;
    for (int i = 1; i < args.size(); ++i) {
        if (args.at(i) == QLatin1String("--library")) {
            ++i;
            continue;
        }
        if (QFileInfo(args.at(i)).isFile())
            files << args.at(i);
    }
    if (!files.isEmpty()) {
        for (const QString &f : files) {
            auto *editor = new ORVEditorWindow(delegate, f);
            editor->setAttribute(Qt::WA_DeleteOnClose);
            editor->show();
        }
        return app.exec();
    }

    ORVMainWindow window(delegate, library);
    window.show();
    return app.exec();
}
