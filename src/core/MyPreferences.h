#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <QVariant>
#include <QVariantList>
#include <QVariantMap>

#include <memory>
#include <vector>

class QSettings;

// Posted (through ORVNotificationCenter) after every change of a preference;
// the sender is the MyPreferences object and userInfo holds "key".
inline const QString PAPreferencesDidChangeNotification = QStringLiteral("PAPreferencesDidChangeNotification");

// The program's settings: one typed property per key, the property's name
// being the key in the user's settings store (~/.config/Orvo/Orvo.conf).
// A key that was never written reads as 0, false, "" or an empty value.
//
// Thread: the main thread, like the rest of the application state. Reading
// from a worker is tolerated by QSettings but a worker should rather take the
// values it needs before it starts.
class MyPreferences : public QObject
{
    Q_OBJECT
public:
    enum class Type { Text, Integer, Boolean, Dictionary, Binary, Array, Date };

    struct KeyInfo {
        QString name;
        Type type;
        QVariant firstRunValue; // invalid: loadDefaultPreferences leaves the key unwritten
        bool exported;          // carried by the settings file
    };

    // The process's preferences over the user's store.
    static MyPreferences *sharedInstance();

    // Preferences over a given settings file (tests, tools). The same
    // opening sequence as the shared instance runs: defaults at first use,
    // repair of the keys that must never be empty.
    explicit MyPreferences(const QString &settingsFilePath, QObject *parent = nullptr);
    ~MyPreferences() override;

    // Every key, in the order of the preference table (87 of them).
    static const std::vector<KeyInfo> &allKeys();
    static const KeyInfo *keyInfo(const QString &key);
    static QString typeName(Type type);

    // The 70 names that travel in the settings file, in their fixed order,
    // " isPublishToEvernoteWithAttachments" (with its leading space) included.
    static QStringList fetchAllPreferencesKeys();

#define ORVO_PREF_DECL_Text(name, Setter) QString name() const; void Setter(const QString &v);
#define ORVO_PREF_DECL_Integer(name, Setter) qint64 name() const; void Setter(qint64 v);
#define ORVO_PREF_DECL_Boolean(name, Setter) bool name() const; void Setter(bool v);
#define ORVO_PREF_DECL_Dictionary(name, Setter) QVariantMap name() const; void Setter(const QVariantMap &v);
#define ORVO_PREF_DECL_Binary(name, Setter) QByteArray name() const; void Setter(const QByteArray &v);
#define ORVO_PREF_DECL_Array(name, Setter) QVariantList name() const; void Setter(const QVariantList &v);
#define ORVO_PREF_DECL_Date(name, Setter) QDateTime name() const; void Setter(const QDateTime &v);
#define ORVO_PREF(Type, name, Setter, def, exported) ORVO_PREF_DECL_##Type(name, Setter)
#include "core/ORVPreferenceKeys.def"
#undef ORVO_PREF

    // Generic access by key. value() of an unknown or unset key is an
    // invalid QVariant. setValue() converts to the key's type and refuses
    // (returning false, with a message) a value that does not convert.
    QVariant value(const QString &key) const;
    bool contains(const QString &key) const;
    bool setValue(const QString &key, const QVariant &value, QString *error = nullptr);
    void removeValue(const QString &key);

    // Parses text for a key of any type, as the command line gives it:
    // integers in decimal, booleans as true/false/yes/no/1/0, dictionaries
    // and arrays as JSON, binary as base64, dates as ISO 8601. Refuses a text
    // that is not of the key's type and names the expected type.
    bool setValueFromText(const QString &key, const QString &text, QString *error = nullptr);
    // The value as the command line prints it (JSON for containers, base64
    // for binary, ISO 8601 for dates).
    QString textForValue(const QString &key) const;

    // Every key present in the store with its value, ours or not.
    QVariantMap dictionaryRepresentation() const;

    // The font of the editor: editorFontInfo's "name", and "size" (16.0 when
    // missing). Turning the pair into a font is the GUI's business.
    QString editorFontName() const;
    double editorFontSize() const;

    void loadDefaultPreferences();
    void setupDataWhenFailInit();

    bool shouldAutomaticallySynchronize() const { return m_autoSync; }
    void setShouldAutomaticallySynchronize(bool on) { m_autoSync = on; }
    // Writes pending changes to disk; false (with a console warning) when the
    // store could not be written.
    bool synchronize();

    QString settingsFilePath() const;

private:
    void openStore();
    void changed(const QString &key);

    std::unique_ptr<QSettings> m_store;
    bool m_autoSync = true;
};
