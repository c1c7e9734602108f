#include "Interface/Look.h"

#include "Interface/Accessibility.h"
#include "Interface/ColorSchemeWatcher.h"
#include "Interface/FrenchTexts.h"
#include "Interface/InterfaceStyle.h"
#include "Interface/Symbol.h"

#include <QApplication>
#include <QDBusConnection>
#include <QFontDatabase>

#include <algorithm>
#include <array>

namespace stillwick {

namespace {

/// Where the desktop names no font of its own, the first of these that is there.
QFont interfaceFont(const QFont& desktopFont) {
    constexpr std::array<QStringView, 4> generic{u"Sans Serif", u"Sans", u"sans-serif",
                                                 u"DejaVu Sans"};
    if (std::ranges::find(generic, QStringView(desktopFont.family())) == generic.end())
        return desktopFont;
    const QStringList families = QFontDatabase::families();
    QFont font = desktopFont;
    constexpr std::array<QStringView, 4> preferred{u"Inter", u"Noto Sans", u"Open Sans",
                                                   u"Cantarell"};
    const auto found = std::ranges::find_if(
        preferred, [&families](QStringView family) { return families.contains(family); });
    if (found != preferred.end())
        font.setFamily(found->toString());
    return font;
}

void installAllButColors(QApplication& application) {
    installFrenchTexts(application);
    installAccessibility();
    QApplication::setStyle(new InterfaceStyle);
    QApplication::setFont(interfaceFont(QApplication::font()));
    QApplication::setWindowIcon(applicationIcon());
}

} // namespace

void installLook(QApplication& application) {
    // Before the palette is ours, it is the platform theme's.
    auto* watcher = new ColorSchemeWatcher(schemeOf(QApplication::palette()),
                                           QDBusConnection::sessionBus(), &application);
    installLook(application, watcher->scheme());
    QObject::connect(watcher, &ColorSchemeWatcher::schemeChanged, &application,
                     [](ColorScheme scheme) { QApplication::setPalette(themePalette(scheme)); });
}

void installLook(QApplication& application, ColorScheme scheme) {
    installAllButColors(application);
    QApplication::setPalette(themePalette(scheme));
}

} // namespace stillwick
