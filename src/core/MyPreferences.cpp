#include "core/MyPreferences.h"

#include "core/ORVNotificationCenter.h"

#include <QCoreApplication>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>

#include <cstdio>
#include <optional>

namespace {

QVariant zeroValue(MyPreferences::Type type)
{
    switch (type) {
    case MyPreferences::Type::Text: return QString();
    case MyPreferences::Type::Integer: return qint64(0);
    case MyPreferences::Type::Boolean: return false;
    case MyPreferences::Type::Dictionary: return QVariantMap();
    case MyPreferences::Type::Binary: return QByteArray();
    case MyPreferences::Type::Array: return QVariantList();
    case MyPreferences::Type::Date: return QDateTime();
    }
    return {};
}

const QHash<QString, int> &keyIndex()
{
    static const QHash<QString, int> index = [] {
        QHash<QString, int> h;
        const auto &keys = MyPreferences::allKeys();
        for (int i = 0; i < int(keys.size()); ++i)
            h.insert(keys[size_t(i)].name, i);
        return h;
    }();
    return index;
}

// Strict conversions: a stored value of the wrong type reads as the zero
// value of the key's type rather than as a guess.
bool toBool(const QVariant &v)
{
    if (v.typeId() == QMetaType::Bool)
        return v.toBool();
    const QString s = v.toString().trimmed().toLower();
    return s == QLatin1String("true") || s == QLatin1String("1") || s == QLatin1String("yes");
}

std::optional<QVariant> convertTo(MyPreferences::Type type, const QVariant &v)
{
    using T = MyPreferences::Type;
    switch (type) {
    case T::Text:
        if (v.canConvert<QString>() && v.typeId() != QMetaType::QVariantMap && v.typeId() != QMetaType::QVariantList)
            return v.toString();
        return std::nullopt;
    case T::Integer: {
        bool ok = false;
        const qint64 n = v.toLongLong(&ok);
        if (ok)
            return n;
        if (v.typeId() == QMetaType::Bool)
            return qint64(v.toBool() ? 1 : 0);
        return std::nullopt;
    }
    case T::Boolean: {
        if (v.typeId() == QMetaType::Bool)
            return v.toBool();
        const QString s = v.toString().trimmed().toLower();
        if (s == QLatin1String("true") || s == QLatin1String("yes") || s == QLatin1String("1"))
            return true;
        if (s == QLatin1String("false") || s == QLatin1String("no") || s == QLatin1String("0"))
            return false;
        return std::nullopt;
    }
    case T::Dictionary:
        if (v.typeId() == QMetaType::QVariantMap)
            return v;
        if (v.typeId() == QMetaType::QVariantHash) {
            QVariantMap m;
            const auto h = v.toHash();
            for (auto it = h.begin(); it != h.end(); ++it)
                m.insert(it.key(), it.value());
            return m;
        }
        return std::nullopt;
    case T::Binary:
        if (v.typeId() == QMetaType::QByteArray)
            return v;
        return std::nullopt;
    case T::Array:
        if (v.typeId() == QMetaType::QVariantList || v.typeId() == QMetaType::QStringList)
            return v.toList();
        return std::nullopt;
    case T::Date:
        if (v.typeId() == QMetaType::QDateTime)
            return v;
        if (v.typeId() == QMetaType::QString) {
            const QDateTime d = QDateTime::fromString(v.toString(), Qt::ISODateWithMs);
            if (d.isValid())
                return d;
        }
        return std::nullopt;
    }
    return std::nullopt;
}

QString applicationShortVersion()
{
    const QString v = QCoreApplication::applicationVersion();
    return v.isEmpty() ? QStringLiteral(ORVO_VERSION) : v;
}

} // namespace

const std::vector<MyPreferences::KeyInfo> &MyPreferences::allKeys()
{
    static const std::vector<KeyInfo> keys = {
#define ORVO_PREF(Ty, name, Setter, def, exported)                                                           \
    KeyInfo{QStringLiteral(#name), MyPreferences::Type::Ty, QVariant(def), exported},
#include "core/ORVPreferenceKeys.def"
#undef ORVO_PREF
    };
    return keys;
}

const MyPreferences::KeyInfo *MyPreferences::keyInfo(const QString &key)
{
    const auto it = keyIndex().constFind(key);
    return it == keyIndex().constEnd() ? nullptr : &allKeys()[size_t(*it)];
}

QString MyPreferences::typeName(Type type)
{
    switch (type) {
    case Type::Text: return QStringLiteral("text");
    case Type::Integer: return QStringLiteral("integer");
    case Type::Boolean: return QStringLiteral("boolean");
    case Type::Dictionary: return QStringLiteral("dictionary");
    case Type::Binary: return QStringLiteral("binary");
    case Type::Array: return QStringLiteral("array");
    case Type::Date: return QStringLiteral("date");
    }
    return {};
}

QStringList MyPreferences::fetchAllPreferencesKeys()
{
    QStringList names;
    for (const KeyInfo &k : allKeys()) {
        if (!k.exported)
            continue;
        // The fixed list spells this one with a leading space, so it never
        // matches a stored key and the value is never carried over.
        if (k.name == QLatin1String("isPublishToEvernoteWithAttachments"))
            names << QStringLiteral(" isPublishToEvernoteWithAttachments");
        else
            names << k.name;
    }
    return names;
}

MyPreferences *MyPreferences::sharedInstance()
{
    // Made on first use and kept until exit, like the application's other
    // shared objects; parented to nothing so it outlives every window.
    static MyPreferences *instance = new MyPreferences(QString());
    return instance;
}

MyPreferences::MyPreferences(const QString &settingsFilePath, QObject *parent) : QObject(parent)
{
    if (settingsFilePath.isEmpty())
        m_store = std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                              QStringLiteral("Orvo"), QStringLiteral("Orvo"));
    else
        m_store = std::make_unique<QSettings>(settingsFilePath, QSettings::IniFormat);
    openStore();
}

MyPreferences::~MyPreferences() = default;

void MyPreferences::openStore()
{
    // The presence of firstVersionInstalled marks a store that has been set up.
    const QString version = applicationShortVersion();
    if (firstVersionInstalled().isEmpty()) {
        setFirstVersionInstalled(version);
        loadDefaultPreferences();
    }
    // Written only when it changes: every start (each command of the
    // command line) would otherwise rewrite and sync the settings file.
    if (lastVersionInstalled() != version)
        setLastVersionInstalled(version);
    setupDataWhenFailInit();
}

void MyPreferences::loadDefaultPreferences()
{
    for (const KeyInfo &k : allKeys()) {
        if (k.firstRunValue.isValid())
            m_store->setValue(k.name, k.firstRunValue);
    }
    if (m_autoSync)
        m_store->sync();
    changed(QString());
}

void MyPreferences::setupDataWhenFailInit()
{
    // Settings that must never be empty get their default back.
    static const char *const mustHave[] = {"editorThemeName", "editorFontInfo", "previewCSSName",
                                           "editorDarkThemeName", "latexFontName", "previewDarkCSSName"};
    for (const char *name : mustHave) {
        const QString key = QString::fromLatin1(name);
        const QVariant v = m_store->value(key);
        const bool empty = !v.isValid() || v.isNull() ||
                           (keyInfo(key)->type == Type::Text && v.toString().isEmpty()) ||
                           (keyInfo(key)->type == Type::Dictionary && v.toMap().isEmpty());
        if (empty)
            setValue(key, keyInfo(key)->firstRunValue);
    }
    if (editorContentMaxWidth() == 0)
        setEditorContentMaxWidth(keyInfo(QStringLiteral("editorContentMaxWidth"))->firstRunValue.toLongLong());
}

QVariant MyPreferences::value(const QString &key) const
{
    const KeyInfo *k = keyInfo(key);
    if (!k)
        return {};
    const QVariant raw = m_store->value(key);
    if (!raw.isValid())
        return zeroValue(k->type);
    if (k->type == Type::Boolean)
        return toBool(raw);
    const auto v = convertTo(k->type, raw);
    return v ? *v : zeroValue(k->type);
}

bool MyPreferences::contains(const QString &key) const { return m_store->contains(key); }

bool MyPreferences::setValue(const QString &key, const QVariant &value, QString *error)
{
    const KeyInfo *k = keyInfo(key);
    if (!k) {
        if (error)
            *error = QStringLiteral("unknown preference \"%1\"").arg(key);
        return false;
    }
    const auto v = convertTo(k->type, value);
    if (!v) {
        if (error)
            *error = QStringLiteral("\"%1\" takes a value of type %2").arg(key, typeName(k->type));
        return false;
    }
    m_store->setValue(key, *v);
    changed(key);
    return true;
}

void MyPreferences::removeValue(const QString &key)
{
    m_store->remove(key);
    changed(key);
}

bool MyPreferences::setValueFromText(const QString &key, const QString &text, QString *error)
{
    const KeyInfo *k = keyInfo(key);
    if (!k) {
        if (error)
            *error = QStringLiteral("unknown preference \"%1\"").arg(key);
        return false;
    }
    const auto refuse = [&](const QString &expected) {
        if (error)
            *error = QStringLiteral("\"%1\" expects %2, not \"%3\"").arg(key, expected, text);
        return false;
    };
    switch (k->type) {
    case Type::Text:
        return setValue(key, text, error);
    case Type::Integer: {
        bool ok = false;
        const qint64 n = text.trimmed().toLongLong(&ok);
        return ok ? setValue(key, n, error) : refuse(QStringLiteral("an integer"));
    }
    case Type::Boolean: {
        const QString s = text.trimmed().toLower();
        if (s == QLatin1String("true") || s == QLatin1String("yes") || s == QLatin1String("1"))
            return setValue(key, true, error);
        if (s == QLatin1String("false") || s == QLatin1String("no") || s == QLatin1String("0"))
            return setValue(key, false, error);
        return refuse(QStringLiteral("a boolean (true or false)"));
    }
    case Type::Dictionary: {
        const QJsonDocument d = QJsonDocument::fromJson(text.toUtf8());
        return d.isObject() ? setValue(key, d.object().toVariantMap(), error)
                            : refuse(QStringLiteral("a dictionary (a JSON object)"));
    }
    case Type::Array: {
        const QJsonDocument d = QJsonDocument::fromJson(text.toUtf8());
        return d.isArray() ? setValue(key, d.array().toVariantList(), error)
                           : refuse(QStringLiteral("an array (a JSON array)"));
    }
    case Type::Binary: {
        const auto r = QByteArray::fromBase64Encoding(text.trimmed().toLatin1(),
                                                      QByteArray::AbortOnBase64DecodingErrors);
        return r ? setValue(key, *r, error) : refuse(QStringLiteral("binary data (base64)"));
    }
    case Type::Date: {
        const QDateTime d = QDateTime::fromString(text.trimmed(), Qt::ISODateWithMs);
        return d.isValid() ? setValue(key, d, error) : refuse(QStringLiteral("a date (ISO 8601)"));
    }
    }
    return false;
}

QString MyPreferences::textForValue(const QString &key) const
{
    const KeyInfo *k = keyInfo(key);
    if (!k)
        return {};
    const QVariant v = value(key);
    switch (k->type) {
    case Type::Text: return v.toString();
    case Type::Integer: return QString::number(v.toLongLong());
    case Type::Boolean: return v.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case Type::Dictionary:
        return QString::fromUtf8(QJsonDocument(QJsonObject::fromVariantMap(v.toMap())).toJson(QJsonDocument::Compact));
    case Type::Array:
        return QString::fromUtf8(QJsonDocument(QJsonArray::fromVariantList(v.toList())).toJson(QJsonDocument::Compact));
    case Type::Binary: return QString::fromLatin1(v.toByteArray().toBase64());
    case Type::Date: return v.toDateTime().isValid() ? v.toDateTime().toString(Qt::ISODateWithMs) : QString();
    }
    return {};
}

QVariantMap MyPreferences::dictionaryRepresentation() const
{
    QVariantMap all;
    for (const QString &key : m_store->allKeys())
        all.insert(key, m_store->value(key));
    return all;
}

QString MyPreferences::editorFontName() const { return editorFontInfo().value(QStringLiteral("name")).toString(); }

double MyPreferences::editorFontSize() const
{
    bool ok = false;
    const double size = editorFontInfo().value(QStringLiteral("size")).toDouble(&ok);
    return ok && size > 0 ? size : 16.0;
}

bool MyPreferences::synchronize()
{
    m_store->sync();
    if (m_store->status() != QSettings::NoError) {
        std::fputs("Warning - Failed to synchronise user defaults, some of the data may be stale.\n", stderr);
        return false;
    }
    return true;
}

QString MyPreferences::settingsFilePath() const { return m_store->fileName(); }

void MyPreferences::changed(const QString &key)
{
    if (m_autoSync)
        m_store->sync();
    ORVNotificationCenter::defaultCenter()->postNotification(PAPreferencesDidChangeNotification, this,
                                                             {{QStringLiteral("key"), key}});
}

// Typed accessors, one pair per key of the table.
#define ORVO_PREF_IMPL(CppType, Conv, name, Setter)                                                          \
    CppType MyPreferences::name() const { return value(QStringLiteral(#name)).Conv(); }                      \
    void MyPreferences::Setter(const CppType &v) { setValue(QStringLiteral(#name), QVariant::fromValue(v)); }
#define ORVO_PREF_IMPL_BY_VALUE(CppType, Conv, name, Setter)                                                 \
    CppType MyPreferences::name() const { return value(QStringLiteral(#name)).Conv(); }                      \
    void MyPreferences::Setter(CppType v) { setValue(QStringLiteral(#name), QVariant::fromValue(v)); }
#define ORVO_PREF_IMPL_Text(name, Setter) ORVO_PREF_IMPL(QString, toString, name, Setter)
#define ORVO_PREF_IMPL_Integer(name, Setter) ORVO_PREF_IMPL_BY_VALUE(qint64, toLongLong, name, Setter)
#define ORVO_PREF_IMPL_Boolean(name, Setter) ORVO_PREF_IMPL_BY_VALUE(bool, toBool, name, Setter)
#define ORVO_PREF_IMPL_Dictionary(name, Setter) ORVO_PREF_IMPL(QVariantMap, toMap, name, Setter)
#define ORVO_PREF_IMPL_Binary(name, Setter) ORVO_PREF_IMPL(QByteArray, toByteArray, name, Setter)
#define ORVO_PREF_IMPL_Array(name, Setter) ORVO_PREF_IMPL(QVariantList, toList, name, Setter)
#define ORVO_PREF_IMPL_Date(name, Setter) ORVO_PREF_IMPL(QDateTime, toDateTime, name, Setter)
#define ORVO_PREF(Type, name, Setter, def, exported) ORVO_PREF_IMPL_##Type(name, Setter)
#include "core/ORVPreferenceKeys.def"
#undef ORVO_PREF
