#pragma once

#include <QString>

// One row of `tag`. Its identity is the row id, which the program calls
// `uuid`; tag ids start at 1. An unknown tag reads as an empty ORVDBTag
// (uuid 0, name "").
class ORVDBTag
{
public:
    ORVDBTag() = default;
    ORVDBTag(qint64 uuid, QString name) : m_uuid(uuid), m_name(std::move(name)) {}

    qint64 uuid() const { return m_uuid; }
    void setUuid(qint64 uuid) { m_uuid = uuid; }
    const QString &name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }

    bool operator==(const ORVDBTag &) const = default;

private:
    qint64 m_uuid = 0;
    QString m_name = QStringLiteral("");
};
