#include "core/json_archive.h"

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cmath>

namespace {

const QString kData = QStringLiteral("$data");
const QString kDate = QStringLiteral("$date");

} // namespace

QJsonValue archiveValue(const QVariant &value)
{
    if (!value.isValid())
        return QJsonValue(QJsonValue::Null);
    switch (value.typeId()) {
    case QMetaType::QVariantMap: {
        QJsonObject o;
        const QVariantMap m = value.toMap();
        for (auto it = m.begin(); it != m.end(); ++it)
            o.insert(it.key(), archiveValue(it.value()));
        return o;
    }
    case QMetaType::QVariantHash: {
        QJsonObject o;
        const QVariantHash h = value.toHash();
        for (auto it = h.begin(); it != h.end(); ++it)
            o.insert(it.key(), archiveValue(it.value()));
        return o;
    }
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        QJsonArray a;
        for (const QVariant &v : value.toList())
            a.append(archiveValue(v));
        return a;
    }
    case QMetaType::QByteArray:
        return QJsonObject{{kData, QString::fromLatin1(value.toByteArray().toBase64())}};
    case QMetaType::QDateTime: {
        const QDateTime d = value.toDateTime();
        return QJsonObject{{kDate, d.isValid() ? d.toUTC().toString(Qt::ISODateWithMs) : QString()}};
    }
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return QJsonValue(value.toLongLong());
    case QMetaType::Double:
    case QMetaType::Float:
        return value.toDouble();
    default:
        return value.toString();
    }
}

QVariant unarchiveValue(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        return {};
    case QJsonValue::Bool:
        return value.toBool();
    case QJsonValue::Double: {
        const double d = value.toDouble();
        // Whole numbers within 2^53 are exact in JSON and come back as integers.
        if (std::trunc(d) == d && std::fabs(d) < 9007199254740992.0)
            return QVariant(qint64(d));
        return d;
    }
    case QJsonValue::String:
        return value.toString();
    case QJsonValue::Array: {
        QVariantList list;
        for (const QJsonValue &v : value.toArray())
            list << unarchiveValue(v);
        return list;
    }
    case QJsonValue::Object: {
        const QJsonObject o = value.toObject();
        if (o.size() == 1 && o.contains(kData) && o.value(kData).isString())
            return QByteArray::fromBase64(o.value(kData).toString().toLatin1());
        if (o.size() == 1 && o.contains(kDate) && o.value(kDate).isString())
            return QDateTime::fromString(o.value(kDate).toString(), Qt::ISODateWithMs);
        QVariantMap m;
        for (auto it = o.begin(); it != o.end(); ++it)
            m.insert(it.key(), unarchiveValue(it.value()));
        return m;
    }
    }
    return {};
}

QByteArray archivedDataWithRootObject(const QVariant &root)
{
    const QJsonValue v = archiveValue(root);
    const QJsonDocument doc = v.isArray() ? QJsonDocument(v.toArray()) : QJsonDocument(v.toObject());
    return doc.toJson(QJsonDocument::Compact);
}

std::optional<QVariant> unarchiveObjectWithData(const QByteArray &data)
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError || doc.isNull())
        return std::nullopt;
    return doc.isArray() ? unarchiveValue(doc.array()) : unarchiveValue(doc.object());
}

std::optional<QVariant> readArchiveFile(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return std::nullopt;
    return unarchiveObjectWithData(f.readAll());
}

bool writeArchiveFile(const QString &path, const QVariant &root)
{
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly))
        return false;
    f.write(archivedDataWithRootObject(root));
    return f.commit();
}
