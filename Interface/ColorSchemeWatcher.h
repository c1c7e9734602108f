// Whether the desktop is light or dark, as its portal tells. Main thread.
#pragma once

#include "Interface/Theme.h"

#include <QDBusConnection>
#include <QObject>

class QDBusMessage;
class QDBusVariant;

namespace stillwick {

/// Knows the desktop's colour scheme and tells when it changes. Where no portal answers, or where
/// it has no preference, the scheme is the given one. *Source*: XDG Desktop Portal,
/// org.freedesktop.portal.Settings, "color-scheme": 0 none, 1 dark, 2 light.
class ColorSchemeWatcher final : public QObject {
    Q_OBJECT

public:
    /// Waits for the portal's answer a fifth of a second at most, so that the first picture of a
    /// window has the right colours; a later answer is followed as a change.
    ColorSchemeWatcher(ColorScheme withoutPreference, QDBusConnection bus,
                       QObject* parent = nullptr);

    [[nodiscard]] ColorScheme scheme() const { return m_scheme; }

signals:
    void schemeChanged(ColorScheme scheme);

private:
    Q_SLOT void onSettingChanged(const QString& group, const QString& key,
                                 const QDBusVariant& value);
    void askAtOnce();
    void askLater();
    void setPreference(const QVariant& value);

    QDBusConnection m_bus;
    ColorScheme m_withoutPreference;
    ColorScheme m_scheme;
};

} // namespace stillwick
