#pragma once

#include "site/MGTemplateValue.h"

#include <QString>
#include <QStringList>

// A filter handler: a plug-in that serves one or more filter names, as
// `{{ title | uppercase }}`. Called on the run's thread, with a value that is
// never null.
class MGTemplateFilter
{
public:
    virtual ~MGTemplateFilter() = default;

    virtual QStringList filters() const = 0;
    // The value after the filter; a filter that doesn't apply returns the
    // value unchanged.
    virtual MGTemplateValue filterInvokedWithArgumentsOnValue(const QString &filter,
                                                              const QStringList &arguments,
                                                              const MGTemplateValue &value) = 0;
};
