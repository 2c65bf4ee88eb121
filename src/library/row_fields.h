#pragma once

// Field declarations shared by the row objects (ORVDBCat, ORVDBArticle).
// Each macro declares a getter and a setter, and leaves the class in the
// private section where the field itself is stored.
#include <QString>

namespace orvo::rows {

// A text field never reads as null: a null field becomes "" on first read,
// and stays "" in the object, so that saving the object writes "" as well.
inline const QString &nonNull(QString &field)
{
    if (field.isNull())
        field = QStringLiteral("");
    return field;
}

} // namespace orvo::rows

#define ORVO_ROW_TEXT(name, Setter)                                                                          \
public:                                                                                                      \
    const QString &name() const { return orvo::rows::nonNull(m_##name); }                                   \
    void Setter(const QString &value) { m_##name = value; }                                                  \
                                                                                                             \
private:                                                                                                     \
    mutable QString m_##name;

#define ORVO_ROW_VALUE(Type, name, Setter)                                                                   \
public:                                                                                                      \
    Type name() const { return m_##name; }                                                                   \
    void Setter(Type value) { m_##name = value; }                                                            \
                                                                                                             \
private:                                                                                                     \
    Type m_##name{};
