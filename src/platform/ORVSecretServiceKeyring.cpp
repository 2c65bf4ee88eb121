#include "platform/ORVSecretServiceKeyring.h"

#include <QEventLoop>
#include <QTimer>

#include <qt6keychain/keychain.h>

namespace {

// How long a call waits for the keyring. The desktop may show an unlock
// prompt, which the user answers at their own pace; past this the call gives
// up rather than hang a command forever on a keyring that never answers.
constexpr int kKeyringTimeoutMs = 120 * 1000;

// Runs a job to its end. The job's error, or NoError; an error text in
// `error` unless the entry simply does not exist.
QKeychain::Error runJob(QKeychain::Job &job, QString *error)
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
    QString why;
    QKeychain::Error code = QKeychain::NoError;
    if (!finished) {
        why = QStringLiteral("the keyring did not answer");
        code = QKeychain::OtherError;
    } else if (job.error() != QKeychain::NoError && job.error() != QKeychain::EntryNotFound) {
        why = job.errorString().isEmpty() ? QStringLiteral("the keyring refused the request") : job.errorString();
        code = job.error();
    } else {
        code = job.error();
    }
    if (error)
        *error = why;
    return code;
}

} // namespace

std::optional<QString> ORVSecretServiceKeyring::passwordForServiceAccount(const QString &service,
                                                                          const QString &account, QString *error)
{
    QKeychain::ReadPasswordJob job(service);
    job.setKey(account);
    if (runJob(job, error) != QKeychain::NoError)
        return std::nullopt;
    return job.textData();
}

bool ORVSecretServiceKeyring::setPasswordForServiceAccount(const QString &password, const QString &service,
                                                           const QString &account, QString *error)
{
    QKeychain::WritePasswordJob job(service);
    job.setKey(account);
    job.setTextData(password);
    return runJob(job, error) == QKeychain::NoError;
}

bool ORVSecretServiceKeyring::deletePasswordForServiceAccount(const QString &service, const QString &account,
                                                              QString *error)
{
    QKeychain::DeletePasswordJob job(service);
    job.setKey(account);
    const QKeychain::Error code = runJob(job, error);
    return code == QKeychain::NoError || code == QKeychain::EntryNotFound;
}
