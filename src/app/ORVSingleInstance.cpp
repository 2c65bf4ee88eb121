#include "app/ORVSingleInstance.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QLocalServer>
#include <QLocalSocket>

ORVSingleInstance::ORVSingleInstance(const QString &supportFolder, QObject *parent) : QObject(parent)
{
    m_name = QStringLiteral("orvo-") +
             QString::fromLatin1(QCryptographicHash::hash(supportFolder.toUtf8(), QCryptographicHash::Sha1).toHex().left(16));
}

ORVSingleInstance::~ORVSingleInstance() = default;

bool ORVSingleInstance::sendToRunningInstance(const QStringList &arguments, int timeoutMs)
{
    QLocalSocket socket;
    socket.connectToServer(m_name);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    QByteArray payload;
    QDataStream out(&payload, QIODevice::WriteOnly);
    out << arguments;
    socket.write(payload);
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    socket.disconnectFromServer();
    return true;
}

bool ORVSingleInstance::listen()
{
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server->listen(m_name)) {
        // A socket left by a crashed instance: nobody answered on it.
        QLocalServer::removeServer(m_name);
        if (!m_server->listen(m_name))
            return false;
    }
    connect(m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server->nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
                QDataStream in(socket);
                in.startTransaction();
                QStringList arguments;
                in >> arguments;
                if (!in.commitTransaction())
                    return; // more bytes to come
                emit argumentsReceived(arguments);
            });
        }
    });
    return true;
}
