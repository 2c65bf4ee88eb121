#pragma once

#include <QObject>
#include <QStringList>

class QLocalServer;

// One running app per user and settings folder: a second start hands its
// files, folders and links to the first one and ends. The channel is a
// local socket named after the user's application support folder, so that
// separate homes (tests, other users) never meet.
class ORVSingleInstance : public QObject
{
    Q_OBJECT
public:
    explicit ORVSingleInstance(const QString &supportFolder, QObject *parent = nullptr);
    ~ORVSingleInstance() override;

    // True when another instance took the arguments (this one should end).
    bool sendToRunningInstance(const QStringList &arguments, int timeoutMs = 1500);
    // Starts listening; false when the name cannot be taken.
    bool listen();

signals:
    // Another start asked this one to open these (an empty list: just come
    // to the front).
    void argumentsReceived(const QStringList &arguments);

private:
    QString m_name;
    QLocalServer *m_server = nullptr;
};
