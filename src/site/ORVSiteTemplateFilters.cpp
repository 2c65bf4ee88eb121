#include "site/ORVSiteTemplateFilters.h"

QStringList ORVSiteTemplateFilters::filters() const
{
    return {QStringLiteral("xml_escape")};
}

MGTemplateValue ORVSiteTemplateFilters::filterInvokedWithArgumentsOnValue(const QString &filter,
                                                                          const QStringList &,
                                                                          const MGTemplateValue &value)
{
    if (filter == u"xml_escape")
        return xmlEscaped(value.toText());
    return value;
}

QString ORVSiteTemplateFilters::xmlEscaped(const QString &text)
{
    QString out;
    out.reserve(text.size() + text.size() / 8);
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        switch (u) {
        case '&': out += QLatin1String("&amp;"); break;
        case '<': out += QLatin1String("&lt;"); break;
        case '>': out += QLatin1String("&gt;"); break;
        case '"': out += QLatin1String("&quot;"); break;
        case '\'': out += QLatin1String("&#39;"); break;
        default:
            if ((u < 0x20 && u != '\t' && u != '\n' && u != '\r') || u == 0xFFFE || u == 0xFFFF)
                break;
            out += c;
        }
    }
    return out;
}
