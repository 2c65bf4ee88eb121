#include "site/ORVLibraryExtensionItem.h"

#include "site/ORVSiteTheme.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

namespace
{

// One line of text in the settings form.
constexpr qint64 kMinimumInputFieldHeight = 22;

} // namespace

qint64 ORVLibraryExtensionItem::inputFieldHeight() const
{
    if (m_inputFieldHeight < kMinimumInputFieldHeight)
        m_inputFieldHeight = kMinimumInputFieldHeight;
    return m_inputFieldHeight;
}

std::optional<ORVLibraryExtensionItem> ORVLibraryExtensionItem::fromJson(const QJsonValue &json)
{
    if (!json.isObject())
        return std::nullopt;
    const QJsonObject o = json.toObject();
    ORVLibraryExtensionItem item;
    item.title = o.value(QLatin1String("title")).toString(QStringLiteral(""));
    item.variableName = o.value(QLatin1String("variableName")).toString(QStringLiteral(""));
    item.exampleText = o.value(QLatin1String("exampleText")).toString(QStringLiteral(""));
    item.extData = o.value(QLatin1String("extData")).toObject().toVariantMap();
    QJsonValue height = o.value(QLatin1String("inputFieldHeight"));
    if (!height.isDouble())
        height = o.value(QLatin1String("inputFieldHieghtNumber"));
    item.m_inputFieldHeight = height.isDouble() ? qint64(height.toDouble()) : 0;
    return item;
}

QJsonObject ORVLibraryExtensionItem::toJson() const
{
    return QJsonObject{{QStringLiteral("title"), title},
                       {QStringLiteral("variableName"), variableName},
                       {QStringLiteral("inputFieldHeight"), inputFieldHeight()},
                       {QStringLiteral("exampleText"), exampleText},
                       {QStringLiteral("extData"), QJsonObject::fromVariantMap(extData)},
                       {QStringLiteral("inputFieldHieghtNumber"), inputFieldHeight()}};
}

QList<ORVLibraryExtensionItem> ORVLibraryExtensionItem::itemsFromJsonText(const QString &text)
{
    QList<ORVLibraryExtensionItem> items;
    const QJsonDocument doc = QJsonDocument::fromJson(text.toUtf8());
    for (const QJsonValue &v : doc.array())
        if (auto item = fromJson(v))
            items.append(*item);
    return items;
}

QString ORVLibraryExtensionItem::jsonTextFromItems(const QList<ORVLibraryExtensionItem> &items)
{
    QJsonArray array;
    for (const ORVLibraryExtensionItem &item : items)
        array.append(item.toJson());
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

bool ORVLibraryExtensionItem::operator==(const ORVLibraryExtensionItem &other) const
{
    return title == other.title && variableName == other.variableName && exampleText == other.exampleText &&
           extData == other.extData && inputFieldHeight() == other.inputFieldHeight();
}

QList<ORVLibraryExtensionItem> ORVLibraryExtensionItem::mergedWithFile(const QString &path,
                                                                       const QList<ORVLibraryExtensionItem> &userItems)
{
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return userItems;
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError || !doc.isArray())
        return userItems;
    QSet<QString> seen;
    QList<ORVLibraryExtensionItem> theme;
    for (const QJsonValue &v : doc.array()) {
        std::optional<ORVLibraryExtensionItem> item = fromJson(v);
        if (!item || seen.contains(item->variableName))
            continue;
        seen.insert(item->variableName);
        item->isThemeExtension = true;
        theme.append(*item);
    }
    QList<ORVLibraryExtensionItem> result;
    for (const ORVLibraryExtensionItem &item : userItems) {
        if (seen.contains(item.variableName))
            continue;
        seen.insert(item.variableName);
        result.append(item);
    }
    result += theme;
    return result;
}

static QList<ORVLibraryExtensionItem> mergedWithThemeFile(const QString &themeName, const char *file,
                                                          const QList<ORVLibraryExtensionItem> &userItems)
{
    const QString theme = ORVSiteTheme::themePathWithName(themeName);
    if (theme.isEmpty())
        return userItems;
    return ORVLibraryExtensionItem::mergedWithFile(QDir(theme).filePath(QString::fromLatin1(file)), userItems);
}

QList<ORVLibraryExtensionItem> ORVLibraryExtensionItem::siteExtensionWithThemeName(
    const QString &themeName, const QList<ORVLibraryExtensionItem> &userItems)
{
    return mergedWithThemeFile(themeName, "extensions/site.json", userItems);
}

QList<ORVLibraryExtensionItem> ORVLibraryExtensionItem::documentExtensionWithThemeName(
    const QString &themeName, const QList<ORVLibraryExtensionItem> &userItems)
{
    return mergedWithThemeFile(themeName, "extensions/document.json", userItems);
}

bool ORVLibraryExtensionItem::checkVariableNameIsExsit(const QList<ORVLibraryExtensionItem> &items,
                                                       const QString &name)
{
    for (const ORVLibraryExtensionItem &item : items)
        if (item.variableName == name)
            return true;
    return false;
}

std::optional<QString> ORVLibraryExtensionItem::validationErrorForItem(const ORVLibraryExtensionItem &item,
                                                                       const QList<ORVLibraryExtensionItem> &shown,
                                                                       const QString &previousName)
{
    if (item.title.isEmpty())
        return QStringLiteral("Please fill Title!");
    if (item.variableName.isEmpty())
        return QStringLiteral("Please Fill Template Variables Name!");
    if (item.variableName != previousName && checkVariableNameIsExsit(shown, item.variableName))
        return QStringLiteral("This Template Variables Name is used!");
    return std::nullopt;
}
