#include "ShellTestSupport.h"

#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "core/date_uuid.h"
#include "library/ORVDBArticle.h"
#include "library/ORVDBCat.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryFolder.h"
#include "support/TestEnv.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDeadlineTimer>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

namespace shelltest {

bool waitFor(const std::function<bool()> &condition, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

struct DialogAnswerer::Impl {
    QTimer timer;
    QStringList texts;
};

DialogAnswerer::DialogAnswerer() : d(std::make_unique<Impl>())
{
    d->timer.setInterval(10);
    QObject::connect(&d->timer, &QTimer::timeout, [impl = d.get()] {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal)
            return;
        if (auto *box = qobject_cast<QMessageBox *>(modal)) {
            impl->texts << box->text();
            if (QAbstractButton *b = box->defaultButton())
                b->click();
            else
                box->reject();
            return;
        }
        if (auto *dialog = qobject_cast<QDialog *>(modal))
            dialog->reject();
    });
    d->timer.start();
}

DialogAnswerer::~DialogAnswerer() = default;

QStringList DialogAnswerer::texts() const { return d->texts; }

void removeStateFiles(AppDelegate *app)
{
    for (const char *name : {"AppStateData.data", "libraryLastWindowState.data", "externalLastWindowState.data",
                             "textViewStateData.data", "libraryRecentDocumentItemsV201.data",
                             "externalRecentDocumentItems.data", "externalSourceItems.data"})
        QFile::remove(QDir(app->applicationSupportURL()).filePath(QString::fromLatin1(name)));
}

void closeAllWindows()
{
    for (QWidget *w : QApplication::topLevelWidgets()) {
        w->setAttribute(Qt::WA_DeleteOnClose);
        w->hide();
        w->deleteLater();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

LibraryFixture::LibraryFixture() : app(AppDelegate::sharedDelegate())
{
    const QString lib = dir.filePath(QStringLiteral("lib"));
    QDir().mkpath(lib);
    ORVLibraryFolder::libraryModeSetupMainDatabase(lib, QStringLiteral("# Welcome\n\nThe first document."));
    app->setLibraryModeMainURL(lib);
    app->prfs()->setIsAppInstalled(true);
    app->prfs()->setIsLauchExternalModeFirst(false);
    app->prfs()->setEditorAreaViewState(1); // editor only: no web view needed
    app->prfs()->synchronize();
    removeStateFiles(app);
    app->readTextViewStateDataFromDisk();
}

LibraryFixture::~LibraryFixture()
{
    closeAllWindows();
    removeStateFiles(app);
}

QString LibraryFixture::libraryPath() const { return dir.filePath(QStringLiteral("lib")); }

QString LibraryFixture::docPath(qint64 uuid) const { return ORVLibraryFolder::documentPath(libraryPath(), uuid); }

qint64 LibraryFixture::addDocument(const QString &text)
{
    ORVDBArticle art = ORVDBArticle::newDocumentArticle();
    orvotest::writeFile(docPath(art.uuid()), text.toUtf8());
    app->libraryModeMainDBManager()->insertItemDBArticle(art);
    return art.uuid();
}

qint64 LibraryFixture::addCategory(const QString &name)
{
    ORVDBCat cat;
    cat.setUuid(nowDateUUID());
    cat.setName(name);
    cat.setCatType(ORVCatType::TopCategory);
    cat.setSort(20);
    app->libraryModeMainDBManager()->insertItemDBCat(cat);
    return cat.uuid();
}

} // namespace shelltest
