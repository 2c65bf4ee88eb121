#pragma once

#include <QString>
#include <QStringList>

#include <memory>

class ORVDBManager;

// Drives one build of a site the way the tree's build commands do
// (buildSiteByType:completion:): finds the site of a category, refuses a
// category that isn't in a site and a site that is being built already,
// marks the site as building, runs the builder, then stores the present
// time in whole seconds as siteLastBuildDate, failed build or not, and
// clears the mark.
//
// The building mark holds across processes: a lock file per site in the
// cache folder, so two `orvo site build` of one site can't overlap and the
// application sees a command line build.
class ORVSiteBuildController
{
public:
    struct Result {
        bool started = false;   // false: nothing was built (see message)
        bool succeeded = false; // started, the builder returned true and no template failed
        QString message;        // why it didn't start, or the first error's description
        QString outputURL;      // the site's folder
        QStringList warnings;
        int writtenFiles = 0;
        int copiedMedia = 0;
    };

    // The folder sites of a library are built in
    // (libraryModeBuildSiteURLByLibURL:): the one the user chose in the
    // preferences, else the default Site folder in the themes folder.
    static QString libraryModeBuildSiteURLByLibURL(const QString &libURL);

    // Type 0 updates, any other value clears and rebuilds. `outputBaseURL`
    // "" means libraryModeBuildSiteURLByLibURL.
    static Result buildSiteByType(const std::shared_ptr<ORVDBManager> &dbManager, const QString &libURL,
                                  qint64 catUUID, int type, const QString &outputBaseURL = QString());

    // siteIsBuilding: whether a build of the site runs now (in any process).
    static bool siteIsBuilding(qint64 catUUID);
};
