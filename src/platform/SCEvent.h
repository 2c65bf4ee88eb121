#pragma once

#include <QMetaType>
#include <QString>

#include <cstdint>

// One change seen by an SCEvents stream: the path it concerns and item-level
// flags saying what happened to it.
//
// The flag bits are those of a file system event stream with item-level
// flags, and the classification tests below are defined on them. The inotify
// stream maps kernel events onto these bits (see SCEvents.h for the mapping);
// `inotifyMask` keeps the kernel's own bits for diagnostics.
struct SCEvent {
    enum Flag : std::uint32_t {
        MustScanSubDirs = 0x00001, // events were lost; rescan everything below eventPath
        RootChanged = 0x00020,     // the watched folder itself went away or came back
        ItemCreated = 0x00100,
        ItemRemoved = 0x00200,
        ItemInodeMetaMod = 0x00400,
        ItemRenamed = 0x00800,
        ItemModified = 0x01000,
        ItemXattrMod = 0x08000,
        ItemIsFile = 0x10000,
        ItemIsDir = 0x20000,
    };

    QString eventPath;
    std::uint32_t eventFlags = 0;
    std::uint32_t inotifyMask = 0; // 0 for events the stream made up itself (scans, root changes)

    // A file whose content changed: "a file, renamed" with extended
    // attributes changed (bits 0x18800 all set).
    static bool isEditFileEvent(std::uint32_t flags);
    // A file renamed away or to, or removed: bit 0x10000 set, 0x8000 clear,
    // and 0x400/0x800 not both clear.
    static bool isRenameORDeleteFileEvent(std::uint32_t flags);
    // A file that appeared (bits 0x10100 all set).
    static bool isNewFileEvent(std::uint32_t flags);
    // Anything that happened to a folder (bit 0x20000).
    static bool isDirChangedEvent(std::uint32_t flags);

    // The flag names joined by "|" (ItemCreated|ItemIsFile), for diagnostics.
    static QString getFlags(std::uint32_t flags);
    // The kernel's names of inotify mask bits (IN_CREATE|IN_ISDIR).
    static QString inotifyMaskNames(std::uint32_t mask);
    // The classes the flags fall in, as short words: "edit", "rename-or-delete",
    // "new", "folder". Empty when none applies.
    static QStringList kindNames(std::uint32_t flags);
};
Q_DECLARE_METATYPE(SCEvent)
