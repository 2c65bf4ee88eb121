#pragma once

#include "site/MGTemplateFilter.h"

// The filters a site build adds to its engine beside the standard ones.
//
// `xml_escape`: the value's text with "&", "<", ">", '"' and "'" written as
// entities and the characters XML 1.0 can't hold (controls other than tab,
// line feed and carriage return) left out, so that feeds and sitemaps stay
// well-formed whatever a title holds, and titles can stand in attributes.
class ORVSiteTemplateFilters : public MGTemplateFilter
{
public:
    QStringList filters() const override;
    MGTemplateValue filterInvokedWithArgumentsOnValue(const QString &filter, const QStringList &arguments,
                                                      const MGTemplateValue &value) override;

    static QString xmlEscaped(const QString &text);
};
