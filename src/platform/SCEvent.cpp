#include "platform/SCEvent.h"

#include <QStringList>

#include <sys/inotify.h>

bool SCEvent::isEditFileEvent(std::uint32_t flags)
{
    constexpr std::uint32_t mask = ItemIsFile | ItemXattrMod | ItemRenamed; // 0x18800
    return (flags & mask) == mask;
}

bool SCEvent::isRenameORDeleteFileEvent(std::uint32_t flags)
{
    return (flags & ItemIsFile) && !(flags & ItemXattrMod) && (flags & (ItemInodeMetaMod | ItemRenamed));
}

bool SCEvent::isNewFileEvent(std::uint32_t flags)
{
    constexpr std::uint32_t mask = ItemIsFile | ItemCreated; // 0x10100
    return (flags & mask) == mask;
}

bool SCEvent::isDirChangedEvent(std::uint32_t flags) { return flags & ItemIsDir; }

namespace {

template <typename Table> QString joinNames(std::uint32_t bits, const Table &table)
{
    QStringList names;
    std::uint32_t known = 0;
    for (const auto &[bit, name] : table) {
        known |= bit;
        if (bits & bit)
            names << QLatin1String(name);
    }
    if (const std::uint32_t rest = bits & ~known)
        names << QStringLiteral("0x%1").arg(rest, 0, 16);
    return names.join(QLatin1Char('|'));
}

} // namespace

QString SCEvent::getFlags(std::uint32_t flags)
{
    static const std::pair<std::uint32_t, const char *> table[] = {
        {MustScanSubDirs, "MustScanSubDirs"}, {RootChanged, "RootChanged"},     {ItemCreated, "ItemCreated"},
        {ItemRemoved, "ItemRemoved"},         {ItemInodeMetaMod, "ItemInodeMetaMod"},
        {ItemRenamed, "ItemRenamed"},         {ItemModified, "ItemModified"},   {ItemXattrMod, "ItemXattrMod"},
        {ItemIsFile, "ItemIsFile"},           {ItemIsDir, "ItemIsDir"},
    };
    return joinNames(flags, table);
}

QString SCEvent::inotifyMaskNames(std::uint32_t mask)
{
    static const std::pair<std::uint32_t, const char *> table[] = {
        {IN_ACCESS, "IN_ACCESS"},         {IN_MODIFY, "IN_MODIFY"},         {IN_ATTRIB, "IN_ATTRIB"},
        {IN_CLOSE_WRITE, "IN_CLOSE_WRITE"}, {IN_CLOSE_NOWRITE, "IN_CLOSE_NOWRITE"}, {IN_OPEN, "IN_OPEN"},
        {IN_MOVED_FROM, "IN_MOVED_FROM"}, {IN_MOVED_TO, "IN_MOVED_TO"},     {IN_CREATE, "IN_CREATE"},
        {IN_DELETE, "IN_DELETE"},         {IN_DELETE_SELF, "IN_DELETE_SELF"}, {IN_MOVE_SELF, "IN_MOVE_SELF"},
        {IN_UNMOUNT, "IN_UNMOUNT"},       {IN_Q_OVERFLOW, "IN_Q_OVERFLOW"}, {IN_IGNORED, "IN_IGNORED"},
        {IN_ISDIR, "IN_ISDIR"},
    };
    return joinNames(mask, table);
}

QStringList SCEvent::kindNames(std::uint32_t flags)
{
    QStringList kinds;
    if (isEditFileEvent(flags))
        kinds << QStringLiteral("edit");
    if (isRenameORDeleteFileEvent(flags))
        kinds << QStringLiteral("rename-or-delete");
    if (isNewFileEvent(flags))
        kinds << QStringLiteral("new");
    if (isDirChangedEvent(flags))
        kinds << QStringLiteral("folder");
    return kinds;
}
