#include "platform/ORVSystemTrash.h"
#include "support/TestEnv.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

TEST(ORVSystemTrash, MovesFilesAndFoldersWhereTheFileManagerFindsThem)
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("media/17000000001234"));
    ASSERT_TRUE(orvotest::writeFile(folder + QStringLiteral("/a.png"), "png"));
    QString inTrash, error;
    ASSERT_TRUE(ORVSystemTrash::moveFileOrDirToTrashWithPath(folder, &error, &inTrash)) << qPrintable(error);
    EXPECT_FALSE(QFileInfo::exists(folder));
    EXPECT_TRUE(inTrash.startsWith(qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/Trash/files/")));
    EXPECT_EQ(orvotest::readFile(inTrash + QStringLiteral("/a.png")), QByteArray("png"));
    // The trash remembers where it came from, for "restore".
    const QString info = qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/Trash/info/") +
                         QFileInfo(inTrash).fileName() + QStringLiteral(".trashinfo");
    EXPECT_TRUE(orvotest::readFile(info).contains("media/17000000001234"));

    EXPECT_FALSE(ORVSystemTrash::moveFileOrDirToTrashWithPath(folder, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("does not exist")));
}
