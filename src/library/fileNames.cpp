#include "library/fileNames.h"

namespace {

QString lastComponent(const QString &path)
{
    QString p = path;
    while (p.size() > 1 && p.endsWith(QLatin1Char('/')))
        p.chop(1);
    return p.mid(p.lastIndexOf(QLatin1Char('/')) + 1);
}

qsizetype extensionDot(const QString &name)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return (dot > 0 && dot < name.size() - 1) ? dot : -1;
}

} // namespace

QString pathExtension(const QString &path)
{
    const QString name = lastComponent(path);
    const qsizetype dot = extensionDot(name);
    return dot < 0 ? QString() : name.mid(dot + 1);
}

QString fileNameDeletingPathExtension(const QString &path)
{
    const QString name = lastComponent(path);
    const qsizetype dot = extensionDot(name);
    return dot < 0 ? name : name.left(dot);
}
