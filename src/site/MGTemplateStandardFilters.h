#pragma once

#include "site/MGTemplateFilter.h"

#include <QHash>

#include <memory>
#include <optional>

// The standard filters:
//
//   uppercase, lowercase     the value's text form in upper or lower case
//   capitalized              each word (a run between white space) with its
//                            first letter in title case and the rest in lower case
//   date_format: "pattern"   a date in a Unicode date pattern ("yyyy-MM-dd"),
//                            in the system's locale and time zone
//   color_format: "hex"      a colour as "rrggbb"
//
// date_format and color_format leave other values, and calls with another
// number of arguments, unchanged. Used on one engine's thread.
class MGTemplateStandardFilters : public MGTemplateFilter
{
public:
    MGTemplateStandardFilters();
    ~MGTemplateStandardFilters() override;

    QStringList filters() const override;
    MGTemplateValue filterInvokedWithArgumentsOnValue(const QString &filter, const QStringList &arguments,
                                                      const MGTemplateValue &value) override;

    // The text of a date in a Unicode date pattern, in the default locale and
    // time zone; nothing when ICU refuses the pattern.
    std::optional<QString> formattedDate(const QString &pattern, MGTemplateValue::Date date);

private:
    // Formatters by pattern: making one costs far more than formatting. Kept
    // to a few dozen patterns (a theme uses a handful), then started afresh.
    static constexpr qsizetype kMaxCachedFormatters = 32;
    QHash<QString, std::shared_ptr<void>> m_formatters; // ICU UDateFormat objects
};
