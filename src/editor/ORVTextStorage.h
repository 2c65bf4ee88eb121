#pragma once

#include <QObject>
#include <QString>

// The editing text of one document, shared by every view of it. Offsets and
// lengths are in UTF-16 units, as the editor counts.
//
// Edits between beginEditing() and endEditing() are reported once, at the
// end, as one edited range; an edit outside such a pair is reported at once.
//
// Thread: the main thread. A worker that needs the text takes a copy of
// string() first.
class ORVTextStorage : public QObject
{
    Q_OBJECT
public:
    explicit ORVTextStorage(QObject *parent = nullptr) : QObject(parent) {}

    const QString &string() const { return m_string; }
    qsizetype length() const { return m_string.size(); }

    // Replaces [location, location + length) with `text`; the range is
    // clamped to the text.
    void replaceCharactersInRange(qsizetype location, qsizetype length, const QString &text);
    void setString(const QString &text) { replaceCharactersInRange(0, m_string.size(), text); }

    void beginEditing();
    void endEditing();

    // The one attribute the whole text carries: the editor's font.
    QString fontName;
    double fontSize = 0;

signals:
    // The range edited, in the new text, and by how much the length changed.
    void didProcessEditing(qsizetype location, qsizetype length, qsizetype changeInLength);

private:
    QString m_string;
    int m_editingDepth = 0;
    bool m_pending = false;
    qsizetype m_editStart = 0;
    qsizetype m_editEnd = 0;
    qsizetype m_delta = 0;
};
