#pragma once

#include <QRect>
#include <QString>

#include <optional>

// Rectangles in window state records are text, "{{x, y}, {width, height}}",
// so that the records stay readable and portable between machines.
QString rectStringWithRect(const QRect &rect);
// nullopt for text that is not such a rectangle.
std::optional<QRect> rectWithRectString(const QString &text);
