#pragma once

#include "site/MGTemplateRange.h"

#include <QString>
#include <QStringList>

// One marker or expression as the matcher found it in a template. An
// expression's words may point into the template itself
// (QString::fromRawData): they are valid as long as the record is, and a
// holder that keeps one longer copies its characters.
//
// `{% for p in posts %}` is a marker named "for" with the arguments "p", "in",
// "posts"; `{{ date | date_format: "yyyy" }}` is an expression named "date"
// with the filter "date_format" and the filter argument "yyyy".
struct MGTemplateMatch {
    enum class Type : quint8 { Marker, Expression };

    MGTemplateRange range; // the whole text, delimiters included
    Type type = Type::Expression;
    // The first word of the body; empty when the body holds no word, as in
    // `{{ }}`.
    QString name;
    QStringList args;       // the other words of the body
    QString filter;         // empty when there is none
    QStringList filterArgs; // the words after the filter's name
};
