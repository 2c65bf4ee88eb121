#include "platform/TABFileMonitor.h"
#include "support/TestEnv.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QSaveFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

// Collects what a monitor reports, and waits for a kind of change while the
// event loop runs (no sleeping: the wait ends as soon as it arrives).
struct Recorder {
    explicit Recorder(TABFileMonitor &m)
    {
        QObject::connect(&m, &TABFileMonitor::didSeeChange, &context,
                         [this](TABFileMonitor *, int change) { seen << change; });
    }
    bool waitFor(int change, int timeoutMs = 5000)
    {
        QDeadlineTimer deadline(timeoutMs);
        while (!seen.contains(change) && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        const bool found = seen.contains(change);
        seen.clear();
        return found;
    }
    QObject context;
    QList<int> seen;
};

bool append(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    return f.open(QIODevice::Append) && f.write(bytes) == bytes.size();
}

// A database file under watch.
class Watched : public ::testing::Test
{
protected:
    void SetUp() override
    {
        path = dir.filePath(QStringLiteral("mainlib.db"));
        ASSERT_TRUE(orvotest::writeFile(path, "one"));
        monitor = std::make_unique<TABFileMonitor>(path);
        recorder = std::make_unique<Recorder>(*monitor);
    }
    QTemporaryDir dir;
    QString path;
    std::unique_ptr<TABFileMonitor> monitor;
    std::unique_ptr<Recorder> recorder;
};

} // namespace

TEST_F(Watched, SeesWritesAndKeepsWatchingAcrossAnAtomicReplace)
{
    Recorder &r = *recorder;

    ASSERT_TRUE(append(path, "two"));
    EXPECT_TRUE(r.waitFor(TABFileMonitor::ContentChanged));

    QSaveFile replacement(path);
    ASSERT_TRUE(replacement.open(QIODevice::WriteOnly));
    replacement.write("a new file renamed over the old one");
    ASSERT_TRUE(replacement.commit());
    EXPECT_TRUE(r.waitFor(TABFileMonitor::ContentChanged));

    // The watch now follows the new file.
    ASSERT_TRUE(append(path, "three"));
    EXPECT_TRUE(r.waitFor(TABFileMonitor::ContentChanged));
}

TEST_F(Watched, AnAbsenceIsReportedAndTheReturnIsAChange)
{
    Recorder &r = *recorder;

    ASSERT_TRUE(QFile::remove(path));
    EXPECT_TRUE(r.waitFor(TABFileMonitor::FileDeleted));
    // Neighbours coming and going while the file is away say nothing.
    ASSERT_TRUE(orvotest::writeFile(dir.filePath(QStringLiteral("mainlib.db-journal")), "x"));
    ASSERT_TRUE(QFile::remove(dir.filePath(QStringLiteral("mainlib.db-journal"))));
    EXPECT_FALSE(r.waitFor(TABFileMonitor::ContentChanged, 300));

    ASSERT_TRUE(orvotest::writeFile(path, "back"));
    EXPECT_TRUE(r.waitFor(TABFileMonitor::ContentChanged));
    ASSERT_TRUE(append(path, "and written"));
    EXPECT_TRUE(r.waitFor(TABFileMonitor::ContentChanged));
}

TEST_F(Watched, PermissionsAloneAreNotAChangeOfContent)
{
    Recorder &r = *recorder;
    ASSERT_TRUE(QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup));
    EXPECT_TRUE(r.waitFor(TABFileMonitor::AttributesChanged));
}
