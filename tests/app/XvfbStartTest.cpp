// The real binary on a virtual X display: it starts, shows its library
// window with the list filled, and leaves a screenshot in the build folder.

#include "ShellTestSupport.h"

#include "core/AppDelegate.h"
#include "support/TestEnv.h"

#include <QDir>
#include <QImage>
#include <QStandardPaths>
#include <gtest/gtest.h>

using namespace shelltest;

TEST(XvfbStartTest, OrvoStartsAndShowsItsWindow)
{
    const QString xvfb = QStandardPaths::findExecutable(QStringLiteral("xvfb-run"));
    if (xvfb.isEmpty())
        GTEST_SKIP() << "xvfb-run is not installed";
    LibraryFixture fixture;
    for (int i = 0; i < 12; ++i)
        fixture.addDocument(QStringLiteral("# Note %1\n\nA few words of note number %1 for the list.\n").arg(i));
    const QString shots = QDir(orvotest::binDir()).filePath(QStringLiteral("../screenshots"));
    QDir().mkpath(shots);
    const QString png = QDir(shots).filePath(QStringLiteral("library-window.png"));
    QFile::remove(png);
    // The child draws on the X display, not offscreen as the tests do.
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    qputenv("QT_QPA_PLATFORM", "xcb");
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    QByteArray out, err;
    const int code = orvotest::runProcess(
        xvfb, {QStringLiteral("-a"), QStringLiteral("-s"), QStringLiteral("-screen 0 1600x1000x24"),
               QDir(orvotest::binDir()).filePath(QStringLiteral("orvo-app")), QStringLiteral("--screenshot"), png,
               QStringLiteral("--startup-report")},
        &out, &err, {}, 120000);
    qputenv("QT_QPA_PLATFORM", platform);
    ASSERT_EQ(code, 0) << err.toStdString();
    EXPECT_TRUE(out.contains("first_window_ms=")) << out.toStdString();
    const QImage shot(png);
    ASSERT_FALSE(shot.isNull());
    EXPECT_GT(shot.width(), 800);
    EXPECT_GT(shot.height(), 500);
}
