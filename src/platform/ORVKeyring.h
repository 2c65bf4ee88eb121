#pragma once

#include <QString>

#include <optional>

// Secrets by service and account: the passwords and tokens of publishing
// targets and image hosts never enter a settings or service file, only the
// keyring. The account is as a rule the item's `serviceValue` (a UUID).
//
// The product talks to the desktop's Secret Service; with ORVO_KEYRING=memory
// in the environment (tests, scripted runs) secrets live in this process only.
//
// Thread: any; each call is synchronous. The Secret Service may ask the user
// to unlock the keyring, so a call can take as long as the user does.
class ORVKeyring
{
public:
    virtual ~ORVKeyring();

    // The keyring of this process (made on first use, kept until exit).
    static ORVKeyring *sharedKeyring();

    // passwordForService:account:. nullopt when there is no such secret or the
    // keyring cannot be reached; `error` then says which (empty when the entry
    // simply does not exist).
    virtual std::optional<QString> passwordForServiceAccount(const QString &service, const QString &account,
                                                             QString *error = nullptr) = 0;
    // setPassword:forService:account:. Replaces an existing secret.
    virtual bool setPasswordForServiceAccount(const QString &password, const QString &service, const QString &account,
                                              QString *error = nullptr) = 0;
    // deletePasswordForService:account:. Deleting a secret that does not exist succeeds.
    virtual bool deletePasswordForServiceAccount(const QString &service, const QString &account,
                                                 QString *error = nullptr) = 0;
};

// The two services of the keyring.
inline const QString kORVKeyringPublishingService = QStringLiteral("OrvoPublishingService");
inline const QString kORVKeyringImagesUploadService = QStringLiteral("OrvoImagesUploadService");
