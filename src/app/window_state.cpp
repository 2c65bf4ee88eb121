#include "app/window_state.h"

#include <QRegularExpression>

QString rectStringWithRect(const QRect &rect)
{
    return QStringLiteral("{{%1, %2}, {%3, %4}}").arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
}

std::optional<QRect> rectWithRectString(const QString &text)
{
    static const QRegularExpression re(QStringLiteral(
        R"(^\s*\{\s*\{\s*(-?[\d.]+)\s*,\s*(-?[\d.]+)\s*\}\s*,\s*\{\s*(-?[\d.]+)\s*,\s*(-?[\d.]+)\s*\}\s*\}\s*$)"));
    const QRegularExpressionMatch m = re.match(text);
    if (!m.hasMatch())
        return std::nullopt;
    return QRect(qRound(m.captured(1).toDouble()), qRound(m.captured(2).toDouble()), qRound(m.captured(3).toDouble()),
                 qRound(m.captured(4).toDouble()));
}
