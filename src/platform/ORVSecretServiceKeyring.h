#pragma once

#include "platform/ORVKeyring.h"

// The desktop keyring (Secret Service over D-Bus) through QtKeychain.
// QtKeychain's jobs are asynchronous; each call here runs a local event loop
// until its job ends, so it needs a QCoreApplication but no running loop.
class ORVSecretServiceKeyring : public ORVKeyring
{
public:
    std::optional<QString> passwordForServiceAccount(const QString &service, const QString &account,
                                                     QString *error = nullptr) override;
    bool setPasswordForServiceAccount(const QString &password, const QString &service, const QString &account,
                                      QString *error = nullptr) override;
    bool deletePasswordForServiceAccount(const QString &service, const QString &account,
                                         QString *error = nullptr) override;
};
