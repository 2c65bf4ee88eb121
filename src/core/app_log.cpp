#include "core/app_log.h"

#include "core/ORVAppPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

bool writeLogStringToLogFile(const QString &fileName, const QString &logString, const QString &folder)
{
    const QString dir = folder.isEmpty() ? ORVAppPaths::applicationCacheDirURL() : folder;
    if (dir.isEmpty())
        return false;
    const QString path = QDir(dir).filePath(fileName);
    if (!QFileInfo::exists(path)) {
        QSaveFile first(path);
        if (!first.open(QIODevice::WriteOnly))
            return false;
        first.write("Orvo log\n");
        if (!first.commit())
            return false;
    }
    QFile log(path);
    if (!log.open(QIODevice::Append))
        return false;
    const QByteArray line = logString.toUtf8() + '\n';
    return log.write(line) == line.size();
}

bool writeApplicationLogWithLogString(const QString &logString)
{
    return writeLogStringToLogFile(QStringLiteral("orvo-log.txt"), logString);
}
