#include "DocumentTestSupport.h"
#include "core/ORVExternalRecentDocumentManager.h"
#include "core/ORVNotificationCenter.h"
#include "library/textEncoding.h"
#include "support/TestEnv.h"

#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <sys/resource.h>

using orvotest::readFile;
using orvotest::writeFile;
using namespace ORVStringEncoding;

namespace {

const QString kText = QString::fromUtf8("# Caf\xC3\xA9\r\n\r\nemoji \xF0\x9F\x98\x80 and\ttabs\n");

bool makeReadOnly(const QString &p) { return QFile::setPermissions(p, QFileDevice::ReadOwner | QFileDevice::ReadGroup); }

} // namespace

TEST_F(DocumentTest, EveryEncodingIsReadAndWrittenBackByteForByte)
{
    const struct {
        std::uint32_t encoding;
        bool bom;
    } cases[] = {{UTF8, false}, {UTF8, true}, {UTF16LittleEndian, true}, {UTF16BigEndian, true},
                 {UTF32LittleEndian, true}, {UTF32BigEndian, true}};
    for (const auto &c : cases) {
        SCOPED_TRACE(ORVStringEncoding::name(c.encoding).toStdString() + (c.bom ? " with BOM" : ""));
        const QString file = path(QStringLiteral("enc.md"));
        const QByteArray original = *encodeStringWithEncoding(kText, c.encoding, c.bom);
        ASSERT_TRUE(writeFile(file, original));
        auto doc = open(file);
        EXPECT_EQ(doc->textStorage()->string(), kText);
        EXPECT_EQ(doc->documentStringEncoding(), c.encoding);
        EXPECT_FALSE(doc->hasUnautosavedChanges());
        ASSERT_TRUE(doc->saveDocument());
        EXPECT_EQ(readFile(file), original); // untouched text, same bytes

        type(*doc, QStringLiteral("\u00e9"));
        EXPECT_TRUE(doc->hasUnautosavedChanges());
        ASSERT_TRUE(doc->saveDocument());
        EXPECT_EQ(readFile(file), *encodeStringWithEncoding(kText + QStringLiteral("\u00e9"), c.encoding, c.bom));
        EXPECT_FALSE(doc->hasUnautosavedChanges());
    }
}

TEST_F(DocumentTest, BytesThatDoNotDecodeAreNeverSavedOver)
{
    const QString latin1 = path(QStringLiteral("latin1.md"));
    const QByteArray bytes = "caf\xE9 au lait\n";
    ASSERT_TRUE(writeFile(latin1, bytes));
    auto doc = open(latin1); // succeeds, as the data form does
    EXPECT_TRUE(doc->isUndecodedDocument());
    EXPECT_TRUE(doc->textStorage()->string().isEmpty());
    EXPECT_EQ(doc->documentStringEncoding(), UTF8);
    type(*doc, QStringLiteral("typed anyway"));
    QString error;
    EXPECT_FALSE(doc->saveDocument(&error));
    EXPECT_TRUE(error.contains(QStringLiteral("not saved"))) << error.toStdString();
    EXPECT_EQ(readFile(latin1), bytes);
    doc->saveCurrentDocument(); // the autosave path is refused the same way
    EXPECT_EQ(readFile(latin1), bytes);
    EXPECT_TRUE(doc->hasUnautosavedChanges());
    // Elsewhere it may go: nothing of the original is lost there.
    ASSERT_TRUE(doc->saveToURL(path(QStringLiteral("copy.md")), &error)) << error.toStdString();
    EXPECT_EQ(readFile(path(QStringLiteral("copy.md"))), QByteArray("typed anyway"));

    // Bad bytes beyond the first 200 are found only at conversion.
    const QString late = path(QStringLiteral("late.md"));
    ASSERT_TRUE(writeFile(late, QByteArray(300, 'a') + "\xFF"));
    EXPECT_TRUE(open(late)->isUndecodedDocument());

    // An empty file is an empty UTF-8 text.
    const QString empty = path(QStringLiteral("empty.md"));
    ASSERT_TRUE(writeFile(empty, QByteArray()));
    auto e = open(empty);
    EXPECT_FALSE(e->isUndecodedDocument());
    EXPECT_EQ(e->documentStringEncoding(), UTF8);
}

TEST_F(DocumentTest, AttachmentMarksNeverReachTheFile)
{
    const QString file = path(QStringLiteral("images.md"));
    ASSERT_TRUE(writeFile(file, "text"));
    auto doc = open(file);
    type(*doc, QStringLiteral("\n\uFFFC![](a.png)\uFFFC"));
    EXPECT_EQ(ORVDocument::removeUnkownCharWithString(QStringLiteral("a\uFFFCb")), QStringLiteral("ab"));
    ASSERT_TRUE(doc->saveDocument());
    EXPECT_EQ(readFile(file), QByteArray("text\n![](a.png)"));
    EXPECT_TRUE(doc->textStorage()->string().contains(QChar(0xFFFC))); // the editor keeps them
}

TEST_F(DocumentTest, FailedSavesLeaveTheOldFileAndKeepTheText)
{
    const QString file = path(QStringLiteral("keep.md"));
    ASSERT_TRUE(writeFile(file, "old content"));
    auto doc = open(file);
    int failures = 0;
    QObject::connect(doc.get(), &ORVDocument::documentDidSave, [&](bool ok, const QString &) { failures += !ok; });

    // A read-only file is the user's "keep this".
    ASSERT_TRUE(makeReadOnly(file));
    type(*doc, QStringLiteral(" and more"));
    QString error;
    EXPECT_FALSE(doc->saveDocument(&error));
    EXPECT_TRUE(error.contains(QStringLiteral("Permission denied"))) << error.toStdString();
    EXPECT_EQ(readFile(file), QByteArray("old content"));
    EXPECT_EQ(doc->textStorage()->string(), QStringLiteral("old content and more"));
    ASSERT_TRUE(QFile::setPermissions(file, QFileDevice::ReadOwner | QFileDevice::WriteOwner));

    // A disk that fills up in the middle of the write (a file size limit
    // stands in for it): the old file stays whole.
    type(*doc, QString(64 * 1024, QLatin1Char('x')));
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    rlimit small = old;
    small.rlim_cur = 4096;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool saved = doc->saveDocument(&error);
    setrlimit(RLIMIT_FSIZE, &old);
    EXPECT_FALSE(saved);
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(readFile(file), QByteArray("old content"));
    EXPECT_EQ(QDir(home.path()).entryList({QStringLiteral("keep.md*")}, QDir::Files), QStringList{"keep.md"});
    EXPECT_TRUE(doc->hasUnautosavedChanges());
    EXPECT_EQ(failures, 2);
    ASSERT_TRUE(doc->saveDocument());
    EXPECT_EQ(readFile(file).size(), 20 + 64 * 1024);
}

TEST_F(DocumentTest, SavingThroughALinkKeepsTheLink)
{
    const QString real = path(QStringLiteral("real.md"));
    const QString link = path(QStringLiteral("link.md"));
    ASSERT_TRUE(writeFile(real, "one"));
    ASSERT_TRUE(QFile::link(real, link));
    auto doc = open(link);
    type(*doc, QStringLiteral(" two"));
    ASSERT_TRUE(doc->saveDocument());
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_EQ(readFile(real), QByteArray("one two"));
}

TEST_F(DocumentTest, AutosaveSavesOnlyChangedDocumentsWithAFile)
{
    ORVDocument untitled(app.get());
    EXPECT_TRUE(untitled.isAutosaveTimerActive());
    type(untitled, QStringLiteral("no file yet"));
    untitled.autoSaveDocumentIntervalHandler(); // nothing to save to: no error, no file
    EXPECT_TRUE(untitled.hasUnautosavedChanges());

    const QString file = path(QStringLiteral("auto.md"));
    ASSERT_TRUE(writeFile(file, "a"));
    auto doc = open(file);
    int saves = 0;
    QObject::connect(doc.get(), &ORVDocument::documentDidSave, [&](bool, const QString &) { ++saves; });
    doc->autoSaveDocumentIntervalHandler();
    EXPECT_EQ(saves, 0);
    type(*doc, QStringLiteral("b"));
    doc->autoSaveDocumentIntervalHandler();
    EXPECT_EQ(saves, 1);
    EXPECT_EQ(readFile(file), QByteArray("ab"));
}

TEST_F(DocumentTest, ReloadFromDiskTakesTheNewTextOrKeepsTheOld)
{
    const QString file = path(QStringLiteral("reload.md"));
    ASSERT_TRUE(writeFile(file, "first"));
    auto doc = open(file);
    int highlights = 0;
    QObject::connect(doc.get(), &ORVDocument::highlightAllDocumentWindowControllers, [&] { ++highlights; });
    ASSERT_TRUE(writeFile(file, *encodeStringWithEncoding(QStringLiteral("second"), UTF16BigEndian, true)));
    ASSERT_TRUE(doc->reloadDocumentFromDisk());
    EXPECT_EQ(doc->textStorage()->string(), QStringLiteral("second"));
    EXPECT_EQ(doc->documentStringEncoding(), UTF16BigEndian);
    EXPECT_EQ(doc->textStorage()->fontSize, prefs->editorFontSize());
    EXPECT_EQ(highlights, 1);
    EXPECT_FALSE(doc->hasUnautosavedChanges());

    ASSERT_TRUE(writeFile(file, "caf\xE9"));
    QString error;
    EXPECT_FALSE(doc->reloadDocumentFromDisk(&error));
    EXPECT_EQ(doc->textStorage()->string(), QStringLiteral("second"));
    EXPECT_EQ(highlights, 1);

    type(*doc, QStringLiteral("!"));
    ASSERT_TRUE(writeFile(file, "third"));
    ASSERT_TRUE(doc->revertDocumentToSaved());
    EXPECT_EQ(doc->textStorage()->string(), QStringLiteral("third"));
    EXPECT_FALSE(doc->hasUnautosavedChanges());
}

TEST_F(DocumentTest, ReadingRecordsRecentAndTheEditingPosition)
{
    const QString file = path(QStringLiteral("notes/recent.md"));
    ASSERT_TRUE(writeFile(file, "x"));
    ORVTextViewStateData state(QRectF(0, 40, 300, 200), {3, 1}, {2, 10});
    state.activeNumber = 12;
    app->addTextViewStateDataStateData(file, state);
    auto doc = open(file);
    EXPECT_TRUE(app->externalRecentDocumentManager()->items().contains(file));
    ASSERT_TRUE(doc->textViewStateData());
    EXPECT_EQ(doc->textViewStateData()->activeNumber, 0); // opening resets its age
    EXPECT_EQ(doc->textViewStateData()->selectedRange, (ORVTextRange{3, 1}));

    QString error;
    EXPECT_FALSE(ORVDocument(app.get()).readFromURL(path(QStringLiteral("missing.md")), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("missing.md")));
}

TEST_F(DocumentTest, SaveOfAFileOutsideTheLibraryIsAnnounced)
{
    const QString file = path(QStringLiteral("tab.md"));
    ASSERT_TRUE(writeFile(file, "x"));
    auto doc = open(file);
    QObject context;
    QObject *announced = nullptr;
    ORVNotificationCenter::defaultCenter()->addObserver(
        kORVExternalTabsControlRearrageDataNotification, &context,
        [&](const ORVNotification &n) { announced = n.userInfo.value(QStringLiteral("doc")).value<QObject *>(); });
    ASSERT_TRUE(doc->saveDocument());
    EXPECT_EQ(announced, doc.get());
}

TEST_F(DocumentTest, RenameKeepsTheFolderAndAddsTheExtension)
{
    const QString file = path(QStringLiteral("draft.md"));
    ASSERT_TRUE(writeFile(file, "x"));
    ASSERT_TRUE(writeFile(path(QStringLiteral("taken.md")), "y"));
    auto doc = open(file);
    QString error;
    ASSERT_TRUE(doc->renameDocumentWithName(QStringLiteral("final version"), &error)) << error.toStdString();
    EXPECT_EQ(doc->fileURL(), path(QStringLiteral("final version.md")));
    EXPECT_EQ(doc->documentTitleRemoveMark(), QStringLiteral("final version"));
    EXPECT_FALSE(QFileInfo::exists(file));
    EXPECT_FALSE(doc->renameDocumentWithName(QStringLiteral("taken.md"), &error));
    EXPECT_FALSE(doc->renameDocumentWithName(QStringLiteral("../up"), &error));
    EXPECT_EQ(ORVDocument::renameSelectionLengthForName(QStringLiteral("notes.md")), 5);
    EXPECT_EQ(ORVDocument::renameSelectionLengthForName(QStringLiteral("notes.c")), 7);
}

TEST(TextStorage, GroupedEditsAreReportedOnceAsOneRange)
{
    ORVTextStorage storage;
    QList<std::tuple<qsizetype, qsizetype, qsizetype>> edits;
    QObject::connect(&storage, &ORVTextStorage::didProcessEditing,
                     [&](qsizetype loc, qsizetype len, qsizetype delta) { edits.append({loc, len, delta}); });
    storage.setString(QStringLiteral("hello world"));
    storage.beginEditing();
    storage.replaceCharactersInRange(6, 5, QStringLiteral("there")); // "hello there"
    storage.replaceCharactersInRange(0, 1, QStringLiteral("Oh, h"));  // "Oh, hello there"
    storage.replaceCharactersInRange(100, 3, QStringLiteral("!"));    // clamped to the end
    EXPECT_EQ(edits.size(), 1);
    storage.endEditing();
    EXPECT_EQ(storage.string(), QStringLiteral("Oh, hello there!"));
    ASSERT_EQ(edits.size(), 2);
    EXPECT_EQ(edits.at(0), std::make_tuple(qsizetype(0), qsizetype(11), qsizetype(11)));
    EXPECT_EQ(edits.at(1), std::make_tuple(qsizetype(0), qsizetype(16), qsizetype(5)));
}
