#pragma once

#include "platform/ORVKeyring.h"

#include <QHash>
#include <QPair>

#include <mutex>

// A keyring that lives in this process only: for tests and for runs that must
// not touch the user's desktop keyring (ORVO_KEYRING=memory).
class ORVMemoryKeyring : public ORVKeyring
{
public:
    std::optional<QString> passwordForServiceAccount(const QString &service, const QString &account,
                                                     QString *error = nullptr) override;
    bool setPasswordForServiceAccount(const QString &password, const QString &service, const QString &account,
                                      QString *error = nullptr) override;
    bool deletePasswordForServiceAccount(const QString &service, const QString &account,
                                         QString *error = nullptr) override;

private:
    std::mutex m_lock;
    QHash<QPair<QString, QString>, QString> m_secrets;
};
