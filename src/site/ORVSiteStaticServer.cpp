#include "site/ORVSiteStaticServer.h"

#include "site/site_files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

namespace
{

// A request line and headers longer than this are not from a browser
// looking at a static site; refusing them keeps memory bounded.
constexpr qsizetype kMaxRequestHeader = 16 * 1024;

} // namespace

ORVSiteStaticServer::ORVSiteStaticServer(QString rootFolder, QObject *parent)
    : QObject(parent), m_root(std::move(rootFolder)), m_server(new QTcpServer(this))
{
    connect(m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = m_server->nextPendingConnection()) {
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { readRequest(socket); });
        }
    });
}

ORVSiteStaticServer::~ORVSiteStaticServer() = default;

bool ORVSiteStaticServer::listen(quint16 port, QString *error)
{
    if (m_server->listen(QHostAddress::LocalHost, port))
        return true;
    if (error)
        *error = QStringLiteral("can't listen on 127.0.0.1:%1: %2").arg(port).arg(m_server->errorString());
    return false;
}

quint16 ORVSiteStaticServer::port() const
{
    return m_server->serverPort();
}

QByteArray ORVSiteStaticServer::contentTypeForFileName(const QString &fileName)
{
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    static const QHash<QString, QByteArray> types{
        {QStringLiteral("html"), "text/html; charset=utf-8"},
        {QStringLiteral("htm"), "text/html; charset=utf-8"},
        {QStringLiteral("css"), "text/css; charset=utf-8"},
        {QStringLiteral("js"), "text/javascript; charset=utf-8"},
        {QStringLiteral("json"), "application/json"},
        {QStringLiteral("xml"), "application/xml; charset=utf-8"},
        {QStringLiteral("txt"), "text/plain; charset=utf-8"},
        {QStringLiteral("md"), "text/plain; charset=utf-8"},
        {QStringLiteral("png"), "image/png"},
        {QStringLiteral("jpg"), "image/jpeg"},
        {QStringLiteral("jpeg"), "image/jpeg"},
        {QStringLiteral("gif"), "image/gif"},
        {QStringLiteral("svg"), "image/svg+xml"},
        {QStringLiteral("webp"), "image/webp"},
        {QStringLiteral("ico"), "image/x-icon"},
        {QStringLiteral("pdf"), "application/pdf"},
        {QStringLiteral("woff"), "font/woff"},
        {QStringLiteral("woff2"), "font/woff2"},
        {QStringLiteral("mp4"), "video/mp4"},
        {QStringLiteral("mp3"), "audio/mpeg"},
    };
    return types.value(suffix, QByteArrayLiteral("application/octet-stream"));
}

void ORVSiteStaticServer::readRequest(QTcpSocket *socket)
{
    QByteArray request = socket->property("orvoRequest").toByteArray() + socket->readAll();
    const qsizetype end = request.indexOf("\r\n\r\n");
    if (end < 0) {
        if (request.size() > kMaxRequestHeader)
            respond(socket, 431, "Request Header Fields Too Large", "text/plain", "too large\n", true);
        else
            socket->setProperty("orvoRequest", request);
        return;
    }
    socket->setProperty("orvoRequest", QVariant());
    const QList<QByteArray> line = request.left(request.indexOf("\r\n")).split(' ');
    if (line.size() != 3 || !line[2].startsWith("HTTP/")) {
        respond(socket, 400, "Bad Request", "text/plain", "bad request\n", true);
        return;
    }
    const bool isHead = line[0] == "HEAD";
    if (line[0] != "GET" && !isHead) {
        respond(socket, 405, "Method Not Allowed", "text/plain", "only GET and HEAD\n", true);
        return;
    }
    QByteArray target = line[1];
    const qsizetype query = target.indexOf('?');
    if (query >= 0)
        target.truncate(query);
    const qsizetype fragment = target.indexOf('#');
    if (fragment >= 0)
        target.truncate(fragment);
    const QString relative = QUrl::fromPercentEncoding(target);
    QString path = QDir(m_root).filePath(relative.mid(1));
    if (!relative.startsWith(QLatin1Char('/')) || relative.contains(QChar(0)) || !sitePathIsInside(m_root, path)) {
        respond(socket, 404, "Not Found", "text/plain", "not found\n", !isHead);
        return;
    }
    if (QFileInfo(path).isDir())
        path = QDir(path).filePath(QStringLiteral("index.html"));
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        respond(socket, 404, "Not Found", "text/html; charset=utf-8",
                "<!DOCTYPE html><title>Not found</title><p>Not found.</p>\n", !isHead);
        return;
    }
    respond(socket, 200, "OK", contentTypeForFileName(path), file.readAll(), !isHead);
}

void ORVSiteStaticServer::respond(QTcpSocket *socket, int status, const QByteArray &reason, const QByteArray &type,
                                  const QByteArray &body, bool withBody)
{
    QByteArray head = "HTTP/1.1 " + QByteArray::number(status) + ' ' + reason + "\r\nContent-Type: " + type +
                      "\r\nContent-Length: " + QByteArray::number(body.size()) +
                      "\r\nCache-Control: no-cache\r\nConnection: close\r\n\r\n";
    socket->write(head);
    if (withBody)
        socket->write(body);
    socket->disconnectFromHost();
}
