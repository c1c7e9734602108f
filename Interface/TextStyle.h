// The sizes and weights of text. Main thread.
#pragma once

#include <QFont>

class QWidget;

namespace stillwick {

/// From the largest to the smallest.
enum class TextStyle { title2, headline, body, callout, subheadline, caption, caption2 };

/// The application's font in that style.
[[nodiscard]] QFont styledFont(TextStyle style);

/// Gives the widget that font, now and whenever the application's own changes.
void setTextStyle(QWidget* widget, TextStyle style);

} // namespace stillwick
