#include "platform/ORVSecretServiceKeyring.h"

#include <QEventLoop>
#include <QTimer>

#include <qt6keychain/keychain.h>

namespace {

// How long a call waits for the keyring. The desktop may show an unlock
// prompt, which the user answers at their own pace; past this the call gives
// up rather than hang a command forever on a keyring that never answers.
constexpr int kKeyringTimeoutMs = 120 * 1000;

// Runs a job to its end. False when it did not end in time.
bool runJob(QKeychain::Job &job)
{
    QEventLoop loop;
    bool finished = false;
    QObject::connect(&job, &QKeychain::Job::finished, &loop, [&] {
        finished = true;
        loop.quit();
    });
    QTimer::singleShot(kKeyringTimeoutMs, &loop, &QEventLoop::quit);
    job.setAutoDelete(false);
    job.start();
    if (!finished)
        loop.exec();
    return finished;
}

QString describe(const QKeychain::Job &job)
{
    return job.errorString().isEmpty() ? QStringLiteral("the keyring refused the request") : job.errorString();
}

} // namespace

std::optional<QString> ORVSecretServiceKeyring::passwordForServiceAccount(const QString &service,
                                                                          const QString &account, QString *error)
{
    if (error)
        error->clear();
    QKeychain::ReadPasswordJob job(service);
    job.setKey(account);
    if (!runJob(job)) {
        if (error)
            *error = QStringLiteral("the keyring did not answer");
        return std::nullopt;
    }
    if (job.error() == QKeychain::EntryNotFound)
        return std::nullopt;
    if (job.error() != QKeychain::NoError) {
        if (error)
            *error = describe(job);
        return std::nullopt;
    }
    return job.textData();
}

bool ORVSecretServiceKeyring::setPasswordForServiceAccount(const QString &password, const QString &service,
                                                           const QString &account, QString *error)
{
    if (error)
        error->clear();
    QKeychain::WritePasswordJob job(service);
    job.setKey(account);
    job.setTextData(password);
    if (!runJob(job)) {
        if (error)
            *error = QStringLiteral("the keyring did not answer");
        return false;
    }
    if (job.error() != QKeychain::NoError) {
        if (error)
            *error = describe(job);
        return false;
    }
    return true;
}

bool ORVSecretServiceKeyring::deletePasswordForServiceAccount(const QString &service, const QString &account,
                                                              QString *error)
{
    if (error)
        error->clear();
    QKeychain::DeletePasswordJob job(service);
    job.setKey(account);
    if (!runJob(job)) {
        if (error)
            *error = QStringLiteral("the keyring did not answer");
        return false;
    }
    if (job.error() != QKeychain::NoError && job.error() != QKeychain::EntryNotFound) {
        if (error)
            *error = describe(job);
        return false;
    }
    return true;
}
