#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

// A site's publish script: a shell script that runs in the built site's
// folder. It is kept apart from the category row, as an archive of the keys
// "beforeAction", "sh" and "isShow" in the library's metadata folder, file
// "publish-sh-<category id>.data".
struct ORVSitePublishScript {
    // What runs first: below 2 the script at once; 2 an update build, then
    // the script; 3 a clearing build, then the script.
    qint64 beforeAction = 0;
    QString sh;
    bool isShow = false; // open the site's URL when the script has run

    static QString fileNameForCategory(qint64 catUUID);
    // nullopt when the file is missing or not an archive of a dictionary.
    static std::optional<ORVSitePublishScript> readFromMetadataFolder(const QString &metadataFolder, qint64 catUUID);
    // Atomically; false when it couldn't be written.
    bool writeToMetadataFolder(const QString &metadataFolder, qint64 catUUID) const;

    // The script text with "{{year}}", "{{month}}", "{{day}}" and
    // "{{time}}" ("yyyy", "MM", "dd", "HH:mm:ss" of `now`) and "{{input}}"
    // replaced: plain text replacement, no template engine.
    static QString scriptByReplacingPlaceholders(const QString &script, const QDateTime &now, const QString &input);

    // The sample script the settings can load.
    static QString sampleScript();
};
