#include "ExternalTestSupport.h"
#include "core/ORVNotificationCenter.h"
#include "library/ORVDirWatchingController.h"
#include "library/ORVExternalSourceItemManager.h"
#include "library/ORVExternalTree.h"
#include "platform/ORVPathChangeBatcher.h"
#include "platform/SCEvents.h"
#include "support/TestEnv.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace externaltest;
using orvotest::writeFile; // an atomic replace (QSaveFile)

namespace {

// Every event of one stream, and questions about them.
struct Recorder {
    QList<SCEvent> events;
    QStringList errors;

    explicit Recorder(SCEvents &stream)
    {
        QObject::connect(&stream, &SCEvents::eventOccurred, &stream, [this](const SCEvent &e) { events.append(e); });
        QObject::connect(&stream, &SCEvents::watchError, &stream, [this](const QString &m) { errors.append(m); });
    }
    bool has(const QString &path, bool (*test)(std::uint32_t)) const
    {
        return std::any_of(events.begin(), events.end(),
                           [&](const SCEvent &e) { return e.eventPath == path && test(e.eventFlags); });
    }
    bool hasFlags(const QString &path, std::uint32_t flags) const
    {
        return std::any_of(events.begin(), events.end(),
                           [&](const SCEvent &e) { return e.eventPath == path && (e.eventFlags & flags) == flags; });
    }
    bool waitFor(const QString &path, bool (*test)(std::uint32_t))
    {
        return waitUntil([&] { return has(path, test); });
    }
    bool waitForFlags(const QString &path, std::uint32_t flags)
    {
        return waitUntil([&] { return hasFlags(path, flags); });
    }
};

constexpr auto isEdit = &SCEvent::isEditFileEvent;
constexpr auto isRenameOrDelete = &SCEvent::isRenameORDeleteFileEvent;
constexpr auto isNew = &SCEvent::isNewFileEvent;
constexpr auto isDir = &SCEvent::isDirChangedEvent;

class Watch : public ::testing::Test
{
protected:
    QTemporaryDir tmp;
    QString root;
    InotifyUsage before;

    void SetUp() override
    {
        before = inotifyUsage();
        root = tmp.filePath(QStringLiteral("notes"));
        ASSERT_TRUE(writeFile(root + "/a.md", "a"));
        ASSERT_TRUE(writeFile(root + "/b.md", "b"));
        ASSERT_TRUE(writeFile(root + "/c.md", "c"));
        ASSERT_TRUE(QDir().mkpath(root + "/sub/deeper"));
    }
    int watches() const { return inotifyUsage().watches - before.watches; }
};

} // namespace

TEST(SCEventFlags, ClassificationFollowsTheFlagBits)
{
    EXPECT_TRUE(SCEvent::isEditFileEvent(0x18800));
    EXPECT_FALSE(SCEvent::isEditFileEvent(0x10800));
    EXPECT_TRUE(SCEvent::isRenameORDeleteFileEvent(0x10800));
    EXPECT_TRUE(SCEvent::isRenameORDeleteFileEvent(0x10400));
    EXPECT_FALSE(SCEvent::isRenameORDeleteFileEvent(0x18800)); // extended attributes: an edit
    EXPECT_FALSE(SCEvent::isRenameORDeleteFileEvent(0x10200)); // neither renamed nor changed inode
    EXPECT_TRUE(SCEvent::isNewFileEvent(0x10100));
    EXPECT_FALSE(SCEvent::isNewFileEvent(0x20100));
    EXPECT_TRUE(SCEvent::isDirChangedEvent(0x20000));
    EXPECT_EQ(SCEvent::getFlags(0x10100 | 0x80000000), QStringLiteral("ItemCreated|ItemIsFile|0x80000000"));
}

TEST_F(Watch, FileChangesAreClassifiedWhicheverWayTheyAreMade)
{
    SCEvents stream;
    Recorder rec(stream);
    ASSERT_TRUE(stream.startWatchingPath(root));
    EXPECT_TRUE(stream.isRootPresent());

    ASSERT_TRUE(writeInPlace(root + "/new.md", "new"));  // a new file
    ASSERT_TRUE(writeFile(root + "/a.md", "replaced"));   // atomic save: temp file renamed over
    ASSERT_TRUE(writeInPlace(root + "/b.md", "rewritten")); // in-place save
    ASSERT_TRUE(QFile::rename(root + "/c.md", root + "/d.md"));
    ASSERT_TRUE(QFile::remove(root + "/new.md"));

    EXPECT_TRUE(rec.waitFor(root + "/new.md", isNew));
    EXPECT_TRUE(rec.waitFor(root + "/a.md", isEdit));
    EXPECT_TRUE(rec.waitFor(root + "/b.md", isEdit));
    EXPECT_TRUE(rec.waitFor(root + "/c.md", isRenameOrDelete));
    EXPECT_TRUE(rec.waitFor(root + "/d.md", isRenameOrDelete));
    EXPECT_TRUE(rec.waitForFlags(root + "/new.md", SCEvent::ItemRemoved | SCEvent::ItemIsFile));
    EXPECT_FALSE(rec.has(root + "/a.md", isNew)); // a replace is no new file
    EXPECT_TRUE(rec.errors.isEmpty());
}

TEST_F(Watch, NewFoldersAreWatchedAsTheyAppearAndFollowedWhenRenamed)
{
    SCEvents stream;
    Recorder rec(stream);
    ASSERT_TRUE(stream.startWatchingPath(root));
    EXPECT_EQ(watches(), 3);

    // Made faster than any watch can be set: the file is found by the scan.
    ASSERT_TRUE(QDir().mkpath(root + "/n1/n2"));
    ASSERT_TRUE(writeInPlace(root + "/n1/n2/deep.md", "x"));
    EXPECT_TRUE(rec.waitFor(root + "/n1", isDir));
    EXPECT_TRUE(rec.waitFor(root + "/n1/n2/deep.md", isNew));
    EXPECT_EQ(watches(), 5);
    ASSERT_TRUE(writeInPlace(root + "/n1/n2/later.md", "x"));
    EXPECT_TRUE(rec.waitFor(root + "/n1/n2/later.md", isEdit));

    // Renamed: events come under the new path, and the count of watches stays.
    ASSERT_TRUE(QDir().rename(root + "/n1", root + "/m1"));
    EXPECT_TRUE(rec.waitFor(root + "/m1", isDir));
    ASSERT_TRUE(writeInPlace(root + "/m1/n2/after.md", "x"));
    EXPECT_TRUE(rec.waitFor(root + "/m1/n2/after.md", isNew));
    EXPECT_EQ(watches(), 5);

    // Hidden folders are reported, not descended into.
    ASSERT_TRUE(QDir().mkpath(root + "/.git/objects"));
    EXPECT_TRUE(rec.waitFor(root + "/.git", isDir));
    EXPECT_EQ(watches(), 5);

    ASSERT_TRUE(QDir(root + "/m1").removeRecursively());
    EXPECT_TRUE(rec.waitForFlags(root + "/m1", SCEvent::ItemRemoved | SCEvent::ItemIsDir));
    EXPECT_TRUE(waitUntil([&] { return watches() == 3; }));
    EXPECT_EQ(stream.watchedFolderCount(), 3);
}

TEST_F(Watch, SurvivesTheWatchedFolderRenamedDeletedAndReplaced)
{
    SCEvents stream;
    Recorder rec(stream);
    ASSERT_TRUE(stream.startWatchingPath(root));
    const std::uint32_t lost = SCEvent::RootChanged | SCEvent::ItemIsDir;
    const std::uint32_t back = SCEvent::RootChanged | SCEvent::ItemCreated | SCEvent::MustScanSubDirs;

    // Renamed away: no watch may follow it; one waits on the parent.
    const QString moved = tmp.filePath(QStringLiteral("moved"));
    ASSERT_TRUE(QDir().rename(root, moved));
    EXPECT_TRUE(rec.waitForFlags(root, lost | SCEvent::ItemRenamed));
    EXPECT_FALSE(stream.isRootPresent());
    EXPECT_EQ(watches(), 1);
    ASSERT_TRUE(writeInPlace(moved + "/elsewhere.md", "x"));

    // Back under the same path.
    ASSERT_TRUE(QDir().mkpath(root));
    EXPECT_TRUE(rec.waitForFlags(root, back));
    ASSERT_TRUE(writeInPlace(root + "/here.md", "x"));
    EXPECT_TRUE(rec.waitFor(root + "/here.md", isNew));
    EXPECT_EQ(watches(), 1);
    for (const SCEvent &e : std::as_const(rec.events))
        EXPECT_FALSE(e.eventPath.startsWith(moved)) << qPrintable(e.eventPath);

    // Deleted.
    rec.events.clear();
    ASSERT_TRUE(QDir(root).removeRecursively());
    EXPECT_TRUE(rec.waitForFlags(root, lost | SCEvent::ItemRemoved));
    EXPECT_EQ(watches(), 1);

    // Replaced by another folder moved into its place, with its own tree.
    ASSERT_TRUE(writeFile(moved + "/s1/s2/x.md", "x"));
    ASSERT_TRUE(QDir().rename(moved, root));
    EXPECT_TRUE(rec.waitForFlags(root, back));
    EXPECT_EQ(watches(), 5); // root, sub, sub/deeper, s1, s2; the wait on the parent is gone
    ASSERT_TRUE(writeInPlace(root + "/s1/s2/y.md", "y"));
    EXPECT_TRUE(rec.waitFor(root + "/s1/s2/y.md", isNew));

    // Replaced while present: an empty folder renamed over an empty one.
    rec.events.clear();
    ASSERT_TRUE(QDir(root).removeRecursively() && QDir().mkpath(root));
    ASSERT_TRUE(rec.waitForFlags(root, back));
    ASSERT_TRUE(waitUntil([&] { return watches() == 1; }));
    const QString staging = tmp.filePath(QStringLiteral("staging"));
    ASSERT_TRUE(QDir().mkpath(staging));
    rec.events.clear();
    ASSERT_EQ(::rename(QFile::encodeName(staging).constData(), QFile::encodeName(root).constData()), 0);
    EXPECT_TRUE(rec.waitForFlags(root, back));
    ASSERT_TRUE(writeInPlace(root + "/fresh.md", "x"));
    EXPECT_TRUE(rec.waitFor(root + "/fresh.md", isNew));
    EXPECT_EQ(watches(), 1);

    stream.stopWatching();
    EXPECT_EQ(inotifyUsage().instances, before.instances);
    EXPECT_TRUE(rec.errors.isEmpty()) << qPrintable(rec.errors.join('\n'));
}

TEST_F(Watch, WaitsForAFolderThatDoesNotExistYet)
{
    const QString later = tmp.filePath(QStringLiteral("x/y/z"));
    SCEvents stream;
    Recorder rec(stream);
    ASSERT_TRUE(stream.startWatchingPath(later));
    EXPECT_FALSE(stream.isRootPresent());
    EXPECT_EQ(watches(), 1);
    ASSERT_TRUE(QDir().mkpath(tmp.filePath(QStringLiteral("x"))));
    ASSERT_TRUE(QDir().mkpath(later));
    EXPECT_TRUE(rec.waitForFlags(later, SCEvent::RootChanged | SCEvent::ItemCreated));
    ASSERT_TRUE(writeInPlace(later + "/first.md", "x"));
    EXPECT_TRUE(rec.waitFor(later + "/first.md", isNew));
    EXPECT_EQ(watches(), 1);
}

TEST_F(Watch, NothingLeaksThroughChurnAndTeardown)
{
    {
        SCEvents stream;
        Recorder rec(stream);
        ASSERT_TRUE(stream.startWatchingPath(root));
        for (int i = 0; i < 20; ++i) {
            const QString d = root + QStringLiteral("/churn%1").arg(i);
            ASSERT_TRUE(QDir().mkpath(d + "/a/b"));
            ASSERT_TRUE(rec.waitFor(d + "/a/b", isDir));
            ASSERT_TRUE(QDir(d).removeRecursively());
            ASSERT_TRUE(rec.waitForFlags(d, SCEvent::ItemRemoved | SCEvent::ItemIsDir));
        }
        EXPECT_TRUE(waitUntil([&] { return watches() == 3; }));
        EXPECT_EQ(stream.watchedFolderCount(), 3);
        EXPECT_EQ(stream.knownFileCount(), 3);
    }
    EXPECT_EQ(inotifyUsage().instances, before.instances);
    EXPECT_EQ(inotifyUsage().watches, before.watches);
}

TEST_F(Watch, UnreadableFolderIsReportedAndTheRestWatched)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "permissions do not apply to root";
    ASSERT_TRUE(QDir().mkpath(root + "/locked/inner"));
    ASSERT_TRUE(QFile::setPermissions(root + "/locked", QFileDevice::Permissions()));
    SCEvents stream;
    Recorder rec(stream);
    ASSERT_TRUE(stream.startWatchingPath(root));
    ASSERT_TRUE(QFile::setPermissions(root + "/locked", QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner));
    EXPECT_FALSE(rec.errors.isEmpty());
    ASSERT_TRUE(writeInPlace(root + "/ok.md", "x"));
    EXPECT_TRUE(rec.waitFor(root + "/ok.md", isNew));
}

TEST(PathChangeBatcher, BatchesAreDistinctSortedAndInOrder)
{
    EXPECT_EQ(ORVPathChangeBatcher::reduceChangedPaths({"/b", "/a", "/b", "/a/z"}), (QStringList{"/a", "/a/z", "/b"}));
    ORVPathChangeBatcher batcher(nullptr, 50);
    QList<QStringList> batches;
    QObject::connect(&batcher, &ORVPathChangeBatcher::batchReady, [&](const QStringList &p) { batches.append(p); });
    batcher.addPath("/z");
    batcher.addPath("/y");
    batcher.addPath("/z");
    EXPECT_EQ(batcher.arrChangeFiles(), (QStringList{"/z", "/y"}));
    ASSERT_TRUE(waitUntil([&] { return batches.size() == 1; }));
    batcher.addPath("/x");
    ASSERT_TRUE(waitUntil([&] { return batches.size() == 2; }));
    EXPECT_EQ(batches.at(0), (QStringList{"/y", "/z"}));
    EXPECT_EQ(batches.at(1), (QStringList{"/x"}));
    EXPECT_FALSE(batcher.isTimerRunning());
}

class WatchingController : public Watch
{
protected:
    QList<QStringList> batches;
    QList<QVariantMap> notices;
    QObject context;

    void listen(ORVDirWatchingController &controller)
    {
        QObject::connect(&controller, &ORVDirWatchingController::batchDispatched,
                         [this](const QStringList &p) { batches.append(p); });
        ORVNotificationCenter::defaultCenter()->addObserver(
            kORVExternalTreeViewControllerTreeControllerRearrangeObjectsNotification, &context,
            [this](const ORVNotification &n) { notices.append(n.userInfo); });
    }
};

TEST_F(WatchingController, BurstOf500ChangesIsOneBatch)
{
    ORVExternalSourceItemManager sources{QString()};
    sources.addItem(ORVExternalSourceItem::itemWithFolderPath(root));
    ORVDirWatchingController controller(&sources, nullptr);
    listen(controller);
    QStringList expected;
    ASSERT_TRUE(QDir().mkpath(root + "/burst"));
    for (int i = 0; i < 500; ++i) {
        const QString p = root + QStringLiteral("/burst/f%1.md").arg(i, 3, 10, QLatin1Char('0'));
        ASSERT_TRUE(writeInPlace(p, "x"));
        expected << p;
    }
    expected << root + "/burst";
    expected.sort();
    ASSERT_TRUE(waitUntil([&] { return !batches.isEmpty(); }));
    EXPECT_EQ(batches.at(0), expected);

    // The next change is a batch of its own (with the save's temporary
    // file): nothing of the burst was left over.
    ASSERT_TRUE(writeFile(root + "/a.md", "saved again"));
    ASSERT_TRUE(waitUntil([&] { return batches.size() >= 2; }));
    EXPECT_EQ(batches.size(), 2);
    EXPECT_TRUE(batches.at(1).contains(root + "/a.md"));
    for (const QString &p : batches.at(1))
        EXPECT_FALSE(p.contains(QStringLiteral("burst"))) << qPrintable(p);
}

TEST_F(WatchingController, TreeIsPatchedOncePerBatch)
{
    ORVExternalSourceItemManager sources{QString()};
    sources.addItem(ORVExternalSourceItem::itemWithFolderPath(root));
    ORVExternalTree tree;
    tree.updateExternalTreeDataTopItems(sources.items());
    ORVDirWatchingController controller(&sources, &tree);
    listen(controller);

    ASSERT_TRUE(writeFile(root + "/fresh/one.md", "x"));
    ASSERT_TRUE(QDir(root + "/sub").removeRecursively());
    ASSERT_TRUE(waitUntil([&] { return !batches.isEmpty(); }));
    ASSERT_EQ(notices.size(), 1);
    EXPECT_TRUE(notices.at(0).value("treeChanged").toBool());
    EXPECT_EQ(notices.at(0).value("paths").toStringList(), batches.at(0));
    const ORVExternalCategoryItem *entry = tree.foldersRootItem()->children.at(0).get();
    ASSERT_EQ(entry->children.size(), 1);
    EXPECT_EQ(entry->children.at(0)->name, QStringLiteral("fresh"));
    EXPECT_EQ(entry->children.at(0)->itemCount, 1);
}

TEST_F(WatchingController, StreamsFollowTheListOfSources)
{
    const QString other = tmp.filePath(QStringLiteral("other"));
    ASSERT_TRUE(QDir().mkpath(other));
    ORVExternalSourceItemManager sources{QString()};
    sources.addItem(ORVExternalSourceItem::itemWithFolderPath(root));
    ORVDirWatchingController controller(&sources, nullptr);
    SCEvents *first = controller.eventStreamForPath(root);
    ASSERT_TRUE(first);
    EXPECT_EQ(watches(), 3);

    sources.addItem(ORVExternalSourceItem::itemWithFolderPath(other));
    EXPECT_EQ(controller.eventStreamForPath(root), first); // a folder that stays keeps its stream
    EXPECT_TRUE(controller.eventStreamForPath(other));
    EXPECT_EQ(watches(), 4);
    EXPECT_EQ(controller.currentWatchingPaths(), (QStringList{root, other}));

    sources.removeItem(sources.itemWithPath(root));
    EXPECT_EQ(controller.eventStreamForPath(root), nullptr);
    EXPECT_EQ(watches(), 1);
    EXPECT_EQ(inotifyUsage().instances, before.instances + 1);
}
