#pragma once

#include <QObject>
#include <QString>

class QTcpServer;
class QTcpSocket;

// A small static file server over a built site's folder, so that a writer
// can look at the site in a browser before uploading it. It listens on the
// loopback address 127.0.0.1 only and answers GET and HEAD with the files
// below its folder ("/" and folders give their index.html), one request per
// connection. Paths that would leave the folder get 404, as missing files
// do. Runs on the thread that made it, driven by its event loop.
class ORVSiteStaticServer : public QObject
{
    Q_OBJECT
public:
    explicit ORVSiteStaticServer(QString rootFolder, QObject *parent = nullptr);
    ~ORVSiteStaticServer() override;

    // Port 0 picks a free port. False with the reason when it can't listen.
    bool listen(quint16 port, QString *error);
    quint16 port() const;

    // The MIME type the server sends for a file name.
    static QByteArray contentTypeForFileName(const QString &fileName);

private:
    void readRequest(QTcpSocket *socket);
    void respond(QTcpSocket *socket, int status, const QByteArray &reason, const QByteArray &type,
                 const QByteArray &body, bool withBody);

    QString m_root;
    QTcpServer *m_server;
};
