// Preferences controls write their keys at once and follow changes made
// elsewhere; the library pane switches libraries.

#include "ShellTestSupport.h"

#include "app/ORVAppShell.h"
#include "app/ORVLibraryWindow.h"
#include "app/ORVPreferencesWindow.h"
#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "library/ORVLibraryFolder.h"

#include <QCheckBox>
#include <QComboBox>
#include <QSpinBox>
#include <gtest/gtest.h>

using namespace shelltest;

TEST(PreferencesTest, ControlsAreBoundBothWays)
{
    LibraryFixture fixture;
    MyPreferences *prefs = fixture.app->prfs();
    ORVAppShell shell(fixture.app);
    ORVPreferencesWindow *window = shell.showPreferences(QStringLiteral("markdown"));
    EXPECT_EQ(window->currentPane(), QStringLiteral("markdown"));
    EXPECT_FALSE(window->showPane(QStringLiteral("nonsense")));

    auto *smart = qobject_cast<QCheckBox *>(window->controlForKey(QStringLiteral("isSmartypants")));
    ASSERT_NE(smart, nullptr);
    const bool was = prefs->isSmartypants();
    smart->setChecked(!was);
    EXPECT_EQ(prefs->isSmartypants(), !was);
    prefs->setIsSmartypants(was);
    EXPECT_EQ(smart->isChecked(), was);

    auto *spacing = qobject_cast<QSpinBox *>(window->controlForKey(QStringLiteral("editorLineSpacing")));
    ASSERT_NE(spacing, nullptr);
    spacing->setValue(9);
    EXPECT_EQ(prefs->editorLineSpacing(), 9);

    auto *display = qobject_cast<QComboBox *>(window->controlForKey(QStringLiteral("documentListDisplayType")));
    ASSERT_NE(display, nullptr);
    display->setCurrentIndex(1);
    EXPECT_EQ(prefs->documentListDisplayType(), 1);
    prefs->setDocumentListDisplayType(0);
    EXPECT_EQ(display->currentIndex(), 0);
}

TEST(PreferencesTest, LibraryPaneSwitchesOrMakesLibraries)
{
    LibraryFixture fixture;
    ORVAppShell shell(fixture.app);
    ORVPreferencesWindow *window = shell.showPreferences(QStringLiteral("library"), QStringLiteral("Gone"));
    EXPECT_EQ(window->message(), QStringLiteral("Gone"));
    const QString empty = fixture.dir.filePath(QStringLiteral("empty"));
    QDir().mkpath(empty);
    QString error;
    EXPECT_FALSE(window->switchLibrary(empty, false, &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(ORVLibraryFolder::checkIsLibraryWithURL(empty));
    ASSERT_TRUE(window->switchLibrary(empty, true, &error)) << error.toStdString();
    EXPECT_TRUE(ORVLibraryFolder::checkIsLibraryWithURL(empty));
    EXPECT_EQ(QFileInfo(fixture.app->libraryModeMainURL()).absoluteFilePath(), QFileInfo(empty).absoluteFilePath());
    EXPECT_TRUE(window->message().isEmpty());
    ASSERT_EQ(shell.libraryWindows().size(), 1);
    EXPECT_EQ(shell.libraryWindows().first()->libraryPath(), fixture.app->libraryModeMainURL());
}
