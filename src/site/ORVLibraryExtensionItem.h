#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QVariantMap>

#include <optional>

// One extension definition: a named text field of a site or of its
// documents, whose value reaches the templates as `ext_<variableName>`.
// A plain value. Its JSON form (the theme's extensions/*.json and the
// site's siteExtDef and sitePostExtDef) is an object with the keys
// "title", "variableName", "inputFieldHeight", "exampleText", "extData"
// and "inputFieldHieghtNumber".
class ORVLibraryExtensionItem
{
public:
    QString title;
    QString variableName;
    QString exampleText;
    QVariantMap extData;
    // Set on definitions that came from the theme: they can't be edited or
    // deleted, and are never stored with the site.
    bool isThemeExtension = false;

    // The input field's height in points. Reading raises any value below
    // 22 (one line) to 22 and keeps it so.
    qint64 inputFieldHeight() const;
    void setInputFieldHeight(qint64 height) { m_inputFieldHeight = height; }

    // Reads an object; missing or null texts are "". Nothing when the JSON
    // value isn't an object.
    static std::optional<ORVLibraryExtensionItem> fromJson(const QJsonValue &json);
    QJsonObject toJson() const;

    // A JSON array of definitions, skipping elements that aren't objects;
    // an empty list when the text doesn't parse as an array.
    static QList<ORVLibraryExtensionItem> itemsFromJsonText(const QString &text);
    static QString jsonTextFromItems(const QList<ORVLibraryExtensionItem> &items);

    // Equal in the archived keys (isThemeExtension is not one of them).
    bool operator==(const ORVLibraryExtensionItem &other) const;

    // siteExtensionWithPath:mergeArray:. The definitions of a theme's file
    // merged with the user's: the user's first, in order, then the theme's;
    // a theme definition hides a user definition of the same name, and a
    // later duplicate in the file is dropped. The theme's come marked. When
    // the file is missing or doesn't parse, the user's list as it is.
    static QList<ORVLibraryExtensionItem> mergedWithFile(const QString &path,
                                                         const QList<ORVLibraryExtensionItem> &userItems);
    // siteExtensionWithThemeName:mergeArray: and
    // documentExtensionWithThemeName:mergeArray:: the same for
    // extensions/site.json or extensions/document.json of the named theme;
    // the user's list as it is when the name is empty or no such theme exists.
    static QList<ORVLibraryExtensionItem> siteExtensionWithThemeName(const QString &themeName,
                                                                     const QList<ORVLibraryExtensionItem> &userItems);
    static QList<ORVLibraryExtensionItem> documentExtensionWithThemeName(
        const QString &themeName, const QList<ORVLibraryExtensionItem> &userItems);

    // checkVariableNameIsExsit:. Whether a definition of the list has the name.
    static bool checkVariableNameIsExsit(const QList<ORVLibraryExtensionItem> &items, const QString &name);
    // The checks of the definition editor, in order: "Please fill Title!",
    // "Please Fill Template Variables Name!", "This Template Variables Name
    // is used!" (against `shown`, the merged list, when the name is new or
    // changed from `previousName`). nullopt when the definition may be saved.
    static std::optional<QString> validationErrorForItem(const ORVLibraryExtensionItem &item,
                                                         const QList<ORVLibraryExtensionItem> &shown,
                                                         const QString &previousName = QString());

private:
    mutable qint64 m_inputFieldHeight = 22;
};
