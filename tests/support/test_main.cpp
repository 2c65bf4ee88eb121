// gtest main shared by all test binaries.
//
// Before Qt starts, HOME and the XDG folders move into a temporary directory
// of this process, so QSettings, QStandardPaths and every child `orvo` run by
// the test see a fresh user. The directory is removed at exit unless
// ORVO_KEEP_TEST_HOME is set.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>

#ifdef ORVO_TEST_WIDGETS
#include <QApplication>
#endif

int main(int argc, char **argv)
{
    QTemporaryDir home(QDir::tempPath() + QStringLiteral("/orvo-test-XXXXXX"));
    if (!home.isValid())
        return 2;
    home.setAutoRemove(qEnvironmentVariableIsEmpty("ORVO_KEEP_TEST_HOME"));
    const QByteArray h = home.path().toUtf8();
    const auto sub = [&](const char *name) {
        const QByteArray p = h + "/" + name;
        QDir().mkpath(QString::fromUtf8(p));
        return p;
    };
    setenv("ORVO_TEST_HOME", h.constData(), 1);
    setenv("HOME", h.constData(), 1);
    setenv("XDG_CONFIG_HOME", sub(".config").constData(), 1);
    setenv("XDG_DATA_HOME", sub(".local/share").constData(), 1);
    setenv("XDG_CACHE_HOME", sub(".cache").constData(), 1);
    setenv("XDG_RUNTIME_DIR", sub("runtime").constData(), 1);
    sub("Documents");
    // The tests never talk to the desktop's keyring.
    setenv("ORVO_KEYRING", "memory", 1);
    if (!getenv("QT_QPA_PLATFORM"))
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QFile::setPermissions(QString::fromUtf8(h + "/runtime"), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);

    ::testing::InitGoogleTest(&argc, argv);
#ifdef ORVO_TEST_WIDGETS
    QApplication app(argc, argv);
#else
    QCoreApplication app(argc, argv);
#endif
    QCoreApplication::setOrganizationName(QString());
    QCoreApplication::setApplicationName(QStringLiteral("Orvo"));
    return RUN_ALL_TESTS();
}
