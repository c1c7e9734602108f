// The symbols of the interface, drawn for this application. Main thread.
#pragma once

#include "Interface/Theme.h"

#include <QIcon>
#include <QStringList>
#include <QStringView>

namespace stillwick {

/// The symbol of that name in a colour of the theme, sharp at every size; it follows the
/// application's palette: faint where disabled, light where selected. An unknown name gives an
/// empty square and is a fault of the program.
[[nodiscard]] QIcon symbolIcon(QStringView name, ThemeColor color = ThemeColor::text);
/// As above, in a colour that stays as it is.
[[nodiscard]] QIcon symbolIcon(QStringView name, const QColor& color);

/// The names of all symbols, sorted.
[[nodiscard]] QStringList symbolNames();

/// The application's icon, at every size that desktops ask for.
[[nodiscard]] QIcon applicationIcon();

} // namespace stillwick
