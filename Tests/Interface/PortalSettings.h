#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QTimer>

#include <utility>

namespace stillwick::testing {

/// The settings of a desktop portal: one preference, told after a delay. The names are the
/// interface's.
class PortalSettings final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    PortalSettings(QDBusConnection bus, uint preference, int delayMilliseconds)
        : m_bus(std::move(bus)), m_preference(preference), m_delay(delayMilliseconds) {}

    void setPreference(uint preference) {
        m_preference = preference;
        emit SettingChanged(QStringLiteral("org.freedesktop.appearance"),
                            QStringLiteral("color-scheme"), QDBusVariant(preference));
    }

    // NOLINTBEGIN(readability-identifier-naming)
    /// As the portal does: a variant within a variant.
    Q_SLOT QDBusVariant Read(const QString& group, const QString& key,
                             const QDBusMessage& message) {
        if (group != u"org.freedesktop.appearance" || key != u"color-scheme")
            return {};
        QDBusVariant answer(QVariant::fromValue(QDBusVariant(m_preference)));
        if (m_delay == 0)
            return answer;
        message.setDelayedReply(true);
        QTimer::singleShot(m_delay, this, [this, message, answer] {
            m_bus.send(message.createReply(QVariant::fromValue(answer)));
        });
        return {};
    }

    Q_SIGNAL void SettingChanged(const QString& group, const QString& key,
                                 const QDBusVariant& value);
    // NOLINTEND(readability-identifier-naming)

private:
    QDBusConnection m_bus;
    uint m_preference;
    int m_delay;
};

} // namespace stillwick::testing
