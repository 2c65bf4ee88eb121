#include "platform/ORVKeyring.h"

#include "platform/ORVMemoryKeyring.h"
#include "platform/ORVSecretServiceKeyring.h"

ORVKeyring::~ORVKeyring() = default;

ORVKeyring *ORVKeyring::sharedKeyring()
{
    static ORVKeyring *keyring = [] () -> ORVKeyring * {
        if (qEnvironmentVariable("ORVO_KEYRING") == QLatin1String("memory"))
            return new ORVMemoryKeyring;
        return new ORVSecretServiceKeyring;
    }();
    return keyring;
}
