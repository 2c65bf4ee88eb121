#pragma once

#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <memory>

class AppDelegate;
class ORVAppShell;
class ORVLibraryWindow;

namespace shelltest {

// Waits, events running, until `condition` holds; false after `timeoutMs`.
bool waitFor(const std::function<bool()> &condition, int timeoutMs = 15000);

// Answers every modal dialog that comes up with its default button (or
// closes it), and records its text, for as long as the object lives.
class DialogAnswerer
{
public:
    DialogAnswerer();
    ~DialogAnswerer();
    QStringList texts() const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

// A fresh main library in a temporary folder, made the app's library (as
// the first run would), with the state files of earlier tests gone. The
// process-wide application object and preferences are used, as the app
// does; the test main already moved HOME to a temporary folder.
struct LibraryFixture {
    LibraryFixture();
    ~LibraryFixture();
    QString libraryPath() const;
    QString docPath(qint64 uuid) const;
    // Writes docs/<uuid>.md and registers it (uncategorized).
    qint64 addDocument(const QString &text);
    // A new top category; its uuid.
    qint64 addCategory(const QString &name);

    QTemporaryDir dir;
    AppDelegate *app;
};

// Removes the state files the app writes (window states, positions, recent).
void removeStateFiles(AppDelegate *app);
// Closes every top-level window without the quitting path.
void closeAllWindows();

} // namespace shelltest
