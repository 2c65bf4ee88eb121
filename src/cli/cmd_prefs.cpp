#include "cli/CliCommand.h"
#include "core/MyPreferences.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace orvo::cli;

namespace {

QJsonValue jsonForKey(MyPreferences *prefs, const MyPreferences::KeyInfo &k)
{
    const QVariant v = prefs->value(k.name);
    switch (k.type) {
    case MyPreferences::Type::Integer: return QJsonValue(qint64(v.toLongLong()));
    case MyPreferences::Type::Boolean: return QJsonValue(v.toBool());
    case MyPreferences::Type::Dictionary: return QJsonObject::fromVariantMap(v.toMap());
    case MyPreferences::Type::Array: return QJsonArray::fromVariantList(v.toList());
    default: return QJsonValue(prefs->textForValue(k.name));
    }
}

int runPrefs(Context &ctx)
{
    const QString sub = ctx.words().value(0);
    MyPreferences *prefs = MyPreferences::sharedInstance();

    if (sub == QLatin1String("list")) {
        const auto args = ctx.parse({{QStringLiteral("json")}}, 0, 0, 1);
        if (!args)
            return Usage;
        if (args->isSet(QStringLiteral("json"))) {
            QJsonArray rows;
            for (const auto &k : MyPreferences::allKeys()) {
                rows.append(QJsonObject{{QStringLiteral("key"), k.name},
                                        {QStringLiteral("type"), MyPreferences::typeName(k.type)},
                                        {QStringLiteral("value"), jsonForKey(prefs, k)},
                                        {QStringLiteral("exported"), k.exported}});
            }
            ctx.out() << QJsonDocument(rows).toJson(QJsonDocument::Indented);
            return Success;
        }
        for (const auto &k : MyPreferences::allKeys())
            ctx.out() << k.name << " (" << MyPreferences::typeName(k.type) << ") = " << prefs->textForValue(k.name)
                      << '\n';
        return Success;
    }
    if (sub == QLatin1String("get")) {
        const auto args = ctx.parse({{QStringLiteral("json")}}, 1, 1, 1);
        if (!args)
            return Usage;
        const QString key = args->positional(0);
        const MyPreferences::KeyInfo *k = MyPreferences::keyInfo(key);
        if (!k)
            return ctx.fail(QStringLiteral("unknown preference \"%1\" (see 'orvo prefs list')").arg(key));
        if (args->isSet(QStringLiteral("json")))
            ctx.out() << QJsonDocument(QJsonArray{jsonForKey(prefs, *k)}).toJson(QJsonDocument::Compact).mid(1).chopped(1)
                      << '\n';
        else
            ctx.out() << prefs->textForValue(key) << '\n';
        return Success;
    }
    if (sub == QLatin1String("set")) {
        const auto args = ctx.parse({}, 2, 2, 1);
        if (!args)
            return Usage;
        QString error;
        if (!prefs->setValueFromText(args->positional(0), args->positional(1), &error))
            return ctx.fail(error);
        if (!prefs->synchronize())
            return ctx.fail(QStringLiteral("the settings could not be written to %1").arg(prefs->settingsFilePath()));
        return Success;
    }
    if (sub == QLatin1String("unset")) {
        const auto args = ctx.parse({}, 1, 1, 1);
        if (!args)
            return Usage;
        if (!MyPreferences::keyInfo(args->positional(0)))
            return ctx.fail(QStringLiteral("unknown preference \"%1\"").arg(args->positional(0)));
        prefs->removeValue(args->positional(0));
        // Keys that must never be empty come back at once.
        prefs->setupDataWhenFailInit();
        return prefs->synchronize() ? Success : Failure;
    }
    return ctx.usageError(sub.isEmpty() ? QStringLiteral("missing subcommand") : QStringLiteral("unknown subcommand \"%1\"").arg(sub));
}

} // namespace

ORVO_CLI_COMMAND({"prefs", "read and change preferences",
                  "orvo prefs list [--json]\n"
                  "orvo prefs get KEY [--json]\n"
                  "orvo prefs set KEY VALUE\n"
                  "orvo prefs unset KEY\n"
                  "\n"
                  "Preferences are typed. VALUE is read by the key's type: integers in decimal,\n"
                  "booleans as true/false (or yes/no, 1/0), dictionaries and arrays as JSON, binary\n"
                  "as base64, dates as ISO 8601. A value of the wrong type is refused and the\n"
                  "expected type named. 'unset' returns a key to never-written (0, false, empty);\n"
                  "keys that must never be empty get their default back.\n"
                  "The store is ~/.config/Orvo/Orvo.conf (it follows $XDG_CONFIG_HOME).",
                  &runPrefs});
