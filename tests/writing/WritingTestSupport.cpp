#include "WritingTestSupport.h"

#include "core/ORVAppPaths.h"
#include "support/TestEnv.h"

#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QTest>
#include <QTimer>
#include <QWebEnginePage>

namespace writingtest {

QVariant runJavaScript(QWebEnginePage *page, const QString &script, int timeoutMs)
{
    QEventLoop loop;
    QVariant result;
    bool done = false;
    page->runJavaScript(script, [&](const QVariant &v) {
        result = v;
        done = true;
        loop.quit();
    });
    QTimer::singleShot(timeoutMs, &loop, &QEventLoop::quit);
    if (!done)
        loop.exec();
    return result;
}

bool waitFor(const std::function<bool()> &condition, int timeoutMs)
{
    return QTest::qWaitFor(condition, timeoutMs);
}

bool previewLibrariesInstalled()
{
    return QFileInfo::exists(ORVAppPaths::previewAssetFullPath() + QStringLiteral("/MathJax/MathJax.js"));
}

QString joinedRustBook()
{
    const QString corpus = orvotest::corpusDir();
    if (corpus.isEmpty())
        return {};
    QDir book(corpus + QStringLiteral("/rust-book/src"));
    QString all;
    for (const QString &f : book.entryList({QStringLiteral("*.md")}, QDir::Files, QDir::Name))
        all += QString::fromUtf8(orvotest::readFile(book.filePath(f)));
    return all;
}

} // namespace writingtest
