#include "support/TestEnv.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSaveFile>
#include <QStringList>

namespace orvotest {

QString tempHome() { return qEnvironmentVariable("ORVO_TEST_HOME"); }

QString dataDir() { return qEnvironmentVariable("ORVO_TEST_DATA_DIR"); }

QString corpusDir()
{
    const QString dir = qEnvironmentVariable("ORVO_CORPUS_DIR");
    return QDir(dir).exists() ? dir : QString();
}

QString binDir() { return qEnvironmentVariable("ORVO_BIN_DIR"); }

QByteArray readFile(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return f.readAll();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly))
        return false;
    f.write(bytes);
    return f.commit();
}

int runProcess(const QString &program, const QStringList &args, QByteArray *out, QByteArray *err,
               const QByteArray &stdinBytes, int timeoutMs)
{
    QProcess p;
    p.start(program, args);
    if (!p.waitForStarted(timeoutMs))
        return -1;
    if (!stdinBytes.isEmpty())
        p.write(stdinBytes);
    p.closeWriteChannel();
    if (!p.waitForFinished(timeoutMs)) {
        p.kill();
        p.waitForFinished();
        return -1;
    }
    if (out)
        *out = p.readAllStandardOutput();
    if (err)
        *err = p.readAllStandardError();
    return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
}

int runOrvo(const QStringList &args, QByteArray *out, QByteArray *err, const QByteArray &stdinBytes,
            int timeoutMs)
{
    return runProcess(binDir() + QStringLiteral("/orvo"), args, out, err, stdinBytes, timeoutMs);
}

} // namespace orvotest
