#include "site/MGTemplateStandardFilters.h"

#include "site/templatetext.h"

#include <unicode/udat.h>

#include <optional>

MGTemplateStandardFilters::MGTemplateStandardFilters() = default;

MGTemplateStandardFilters::~MGTemplateStandardFilters() = default;

QStringList MGTemplateStandardFilters::filters() const
{
    return {QStringLiteral("uppercase"), QStringLiteral("lowercase"), QStringLiteral("capitalized"),
            QStringLiteral("date_format"), QStringLiteral("color_format")};
}

namespace
{

QString capitalizedText(const QString &text)
{
    QString out;
    out.reserve(text.size());
    qsizetype i = 0;
    while (i < text.size()) {
        if (mgtemplate::isSpace(text[i].unicode())) {
            out += text[i++];
            continue;
        }
        qsizetype end = i;
        while (end < text.size() && !mgtemplate::isSpace(text[end].unicode()))
            ++end;
        char32_t first = text[i].unicode();
        qsizetype firstLength = 1;
        if (text[i].isHighSurrogate() && i + 1 < end && text[i + 1].isLowSurrogate()) {
            first = QChar::surrogateToUcs4(text[i], text[i + 1]);
            firstLength = 2;
        }
        const char32_t title = QChar::toTitleCase(first);
        out += QString::fromUcs4(&title, 1);
        out += QStringView(text).mid(i + firstLength, end - i - firstLength).toString().toLower();
        i = end;
    }
    return out;
}

} // namespace

std::optional<QString> MGTemplateStandardFilters::formattedDate(const QString &pattern,
                                                                MGTemplateValue::Date date)
{
    std::shared_ptr<void> formatter = m_formatters.value(pattern);
    if (!formatter) {
        UErrorCode status = U_ZERO_ERROR;
        UDateFormat *made =
            udat_open(UDAT_PATTERN, UDAT_PATTERN, nullptr, nullptr, 0,
                      reinterpret_cast<const UChar *>(pattern.utf16()), int32_t(pattern.size()), &status);
        if (U_FAILURE(status) || !made) {
            if (made)
                udat_close(made);
            return std::nullopt;
        }
        formatter.reset(made, [](void *f) { udat_close(static_cast<UDateFormat *>(f)); });
        if (m_formatters.size() >= kMaxCachedFormatters)
            m_formatters.clear();
        m_formatters.insert(pattern, formatter);
    }
    QString out(64, Qt::Uninitialized);
    for (int attempt = 0; attempt < 2; ++attempt) {
        UErrorCode status = U_ZERO_ERROR;
        const int32_t length =
            udat_format(static_cast<UDateFormat *>(formatter.get()), UDate(date.msecsSinceEpoch),
                        reinterpret_cast<UChar *>(out.data()), int32_t(out.size()), nullptr, &status);
        if (status == U_BUFFER_OVERFLOW_ERROR) {
            out.resize(length);
            continue;
        }
        if (U_FAILURE(status))
            return std::nullopt;
        out.resize(length);
        return out;
    }
    return std::nullopt;
}

MGTemplateValue MGTemplateStandardFilters::filterInvokedWithArgumentsOnValue(const QString &filter,
                                                                             const QStringList &arguments,
                                                                             const MGTemplateValue &value)
{
    if (mgtemplate::sameText(filter, u"uppercase"))
        return value.toText().toUpper();
    if (mgtemplate::sameText(filter, u"lowercase"))
        return value.toText().toLower();
    if (mgtemplate::sameText(filter, u"capitalized"))
        return capitalizedText(value.toText());
    if (mgtemplate::sameText(filter, u"date_format")) {
        const std::optional<MGTemplateValue::Date> date = value.date();
        if (arguments.size() != 1 || !date)
            return value;
        std::optional<QString> text = formattedDate(arguments.first(), *date);
        return text ? MGTemplateValue(std::move(*text)) : value;
    }
    if (mgtemplate::sameText(filter, u"color_format")) {
        const std::optional<MGTemplateValue::Colour> colour = value.colour();
        if (arguments.size() != 1 || arguments.first().compare(u"hex", Qt::CaseInsensitive) != 0 || !colour)
            return value;
        const auto rgb = colour->rgb8();
        if (!rgb)
            return QStringLiteral("000000");
        return QString::asprintf("%02x%02x%02x", (*rgb)[0], (*rgb)[1], (*rgb)[2]);
    }
    return value;
}
