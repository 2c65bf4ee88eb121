#pragma once

#include <QString>

// One media file found in a folder (the scan for images that no document
// refers to). The thumbnail the desktop list shows is the view's business.
struct ORVLibraryMediaItem {
    bool isPicture = false; // its extension is one of the image types
    bool isInDoc = false;   // some document refers to it
    QString realPath;       // absolute
    QString fileName;       // relative to the folder scanned
    qint64 fileSize = 0;
    quint64 systemFileNumber = 0; // the file's number on its volume
};
