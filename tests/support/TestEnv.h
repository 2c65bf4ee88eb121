#pragma once

#include <QByteArray>
#include <QString>

// Helpers for tests. The gtest main (test_main.cpp) has already pointed HOME
// and the XDG folders at a temporary directory that lives for the process, so
// nothing a test does touches the real user's settings or libraries.
namespace orvotest {

// The per-process temporary home made by the test main.
QString tempHome();

// tests/data under the source tree.
QString dataDir();

// ../shared/corpus beside the checkout (may be absent on a bare machine:
// tests that need it call GTEST_SKIP when corpusDir() is empty).
QString corpusDir();

// Folder of the built binaries (the `orvo` command line among them).
QString binDir();

QByteArray readFile(const QString &path);
bool writeFile(const QString &path, const QByteArray &bytes);

// Runs a program to completion with the test's environment; returns its exit
// code, and fills stdout and stderr when asked. A program that does not end
// within timeoutMs is killed and reported as -1.
int runProcess(const QString &program, const QStringList &args, QByteArray *out = nullptr,
               QByteArray *err = nullptr, const QByteArray &stdinBytes = {}, int timeoutMs = 60000);

// Runs build/bin/orvo with the given arguments, as runProcess.
int runOrvo(const QStringList &args, QByteArray *out = nullptr, QByteArray *err = nullptr,
            const QByteArray &stdinBytes = {}, int timeoutMs = 60000);

} // namespace orvotest
