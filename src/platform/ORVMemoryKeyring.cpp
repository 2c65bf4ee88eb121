#include "platform/ORVMemoryKeyring.h"

std::optional<QString> ORVMemoryKeyring::passwordForServiceAccount(const QString &service, const QString &account,
                                                                   QString *error)
{
    std::lock_guard guard(m_lock);
    if (error)
        error->clear();
    const auto it = m_secrets.constFind({service, account});
    if (it == m_secrets.constEnd())
        return std::nullopt;
    return *it;
}

bool ORVMemoryKeyring::setPasswordForServiceAccount(const QString &password, const QString &service,
                                                    const QString &account, QString *error)
{
    std::lock_guard guard(m_lock);
    if (error)
        error->clear();
    m_secrets.insert({service, account}, password);
    return true;
}

bool ORVMemoryKeyring::deletePasswordForServiceAccount(const QString &service, const QString &account,
                                                       QString *error)
{
    std::lock_guard guard(m_lock);
    if (error)
        error->clear();
    m_secrets.remove({service, account});
    return true;
}
