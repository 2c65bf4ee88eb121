#pragma once

#include "site/MGTemplateRange.h"
#include "site/MGTemplateValue.h"

#include <QString>
#include <QStringList>

// A block that a marker opened and that is still open, such as the body of
// `{% for %}` ... `{% /for %}`.
struct MGTemplateBlock {
    QString name;                     // the marker that opened it
    QStringList endNames;             // the markers that may close it
    QStringList args;                 // the opening marker's arguments
    MGTemplateRange startMarkerRange; // where the opening marker stands
    MGTemplateMap vars;               // the block's own variables
};
