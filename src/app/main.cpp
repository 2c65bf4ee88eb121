#include "app/ORVMainWindow.h"
#include "core/ORVAppPaths.h"

#include <QApplication>

int main(int argc, char **argv)
{
    ORVAppPaths::initApplicationIdentity();
    QApplication app(argc, argv);
    ORVAppPaths::initApplicationIdentity();
    ORVMainWindow window;
    window.show();
    return app.exec();
}
