#include "Interface/ColorSchemeWatcher.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <utility>

namespace stillwick {

namespace {

constexpr int patienceMilliseconds = 200;

QString service() {
    return QStringLiteral("org.freedesktop.portal.Desktop");
}

QString path() {
    return QStringLiteral("/org/freedesktop/portal/desktop");
}

QString interfaceName() {
    return QStringLiteral("org.freedesktop.portal.Settings");
}

QString settingGroup() {
    return QStringLiteral("org.freedesktop.appearance");
}

QString settingKey() {
    return QStringLiteral("color-scheme");
}

/// `Read` is older than `ReadOne` and every version has it; it wraps its answer once more.
QDBusMessage question() {
    QDBusMessage message =
        QDBusMessage::createMethodCall(service(), path(), interfaceName(), QStringLiteral("Read"));
    message << settingGroup() << settingKey();
    return message;
}

QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

ColorSchemeWatcher::ColorSchemeWatcher(ColorScheme withoutPreference, QDBusConnection bus,
                                       QObject* parent)
    : QObject(parent), m_bus(std::move(bus)), m_withoutPreference(withoutPreference),
      m_scheme(withoutPreference) {
    if (!m_bus.isConnected())
        return;
    // A slot is connected by its types' names; before the first message this one would be unknown.
    qRegisterMetaType<QDBusVariant>();
    m_bus.connect(service(), path(), interfaceName(), QStringLiteral("SettingChanged"), this,
                  SLOT(onSettingChanged(QString, QString, QDBusVariant)));
    auto* comings =
        new QDBusServiceWatcher(service(), m_bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(comings, &QDBusServiceWatcher::serviceRegistered, this, &ColorSchemeWatcher::askLater);
    askAtOnce();
}

void ColorSchemeWatcher::askAtOnce() {
    const QDBusMessage reply = m_bus.call(question(), QDBus::Block, patienceMilliseconds);
    if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty())
        setPreference(reply.arguments().constFirst());
    else if (reply.errorName() == QDBusError::errorString(QDBusError::NoReply))
        askLater();
}

void ColorSchemeWatcher::askLater() {
    auto* call = new QDBusPendingCallWatcher(m_bus.asyncCall(question()), this);
    connect(call, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* finished) {
                const QDBusPendingReply<QDBusVariant> reply = *finished;
                if (reply.isValid())
                    setPreference(reply.value().variant());
                finished->deleteLater();
            });
}

void ColorSchemeWatcher::onSettingChanged(const QString& group, const QString& key,
                                          const QDBusVariant& value) {
    if (group == settingGroup() && key == settingKey())
        setPreference(value.variant());
}

void ColorSchemeWatcher::setPreference(const QVariant& value) {
    constexpr uint preferDark = 1;
    constexpr uint preferLight = 2;
    ColorScheme scheme = m_withoutPreference;
    if (const uint preference = unwrapped(value).toUInt(); preference == preferDark)
        scheme = ColorScheme::dark;
    else if (preference == preferLight)
        scheme = ColorScheme::light;
    if (scheme == std::exchange(m_scheme, scheme))
        return;
    emit schemeChanged(scheme);
}

} // namespace stillwick
