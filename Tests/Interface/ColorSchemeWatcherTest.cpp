#include "Interface/ColorSchemeWatcher.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QProcess>
#include <QSignalSpy>

#include <memory>

namespace {

using namespace stillwick;

/// A message bus of our own, and a portal on it when one is started.
class ColorSchemeWatcherTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_bus.start(QStringLiteral("dbus-daemon"),
                    {QStringLiteral("--session"), QStringLiteral("--nofork"),
                     QStringLiteral("--print-address=1")});
        ASSERT_TRUE(m_bus.waitForReadyRead(60'000)) << "dbus-daemon does not start";
        m_address = QString::fromUtf8(m_bus.readLine()).trimmed();
        m_name = QStringLiteral("test %1").arg(count++);
    }

    void TearDown() override {
        QDBusConnection::disconnectFromBus(m_name);
        for (QProcess* process : {m_portal.get(), &m_bus}) {
            if (process == nullptr)
                continue;
            process->terminate();
            process->waitForFinished(60'000);
        }
    }

    void startPortal(int preference, int delayMilliseconds = 0) {
        m_portal = std::make_unique<QProcess>();
        m_portal->start(QStringLiteral(FAKE_PORTAL), {m_address, QString::number(preference),
                                                      QString::number(delayMilliseconds)});
        ASSERT_TRUE(m_portal->waitForReadyRead(60'000));
        ASSERT_EQ(m_portal->readLine().trimmed(), "ready");
    }

    void prefer(char preference) { m_portal->write(&preference, 1); }

    [[nodiscard]] QDBusConnection bus() const {
        return QDBusConnection::connectToBus(m_address, m_name);
    }

private:
    static inline int count = 0;
    QProcess m_bus;
    std::unique_ptr<QProcess> m_portal;
    QString m_address;
    QString m_name;
};

TEST_F(ColorSchemeWatcherTest, ADarkDesktopIsDarkAtOnce) {
    startPortal(1);
    const ColorSchemeWatcher watcher(ColorScheme::light, bus());
    EXPECT_EQ(watcher.scheme(), ColorScheme::dark);
}

TEST_F(ColorSchemeWatcherTest, ALightDesktopIsLightWhateverThePaletteWas) {
    startPortal(2);
    const ColorSchemeWatcher watcher(ColorScheme::dark, bus());
    EXPECT_EQ(watcher.scheme(), ColorScheme::light);
}

TEST_F(ColorSchemeWatcherTest, WithoutAPreferenceThePaletteDecides) {
    startPortal(0);
    EXPECT_EQ(ColorSchemeWatcher(ColorScheme::dark, bus()).scheme(), ColorScheme::dark);
    EXPECT_EQ(ColorSchemeWatcher(ColorScheme::light, bus()).scheme(), ColorScheme::light);
}

TEST_F(ColorSchemeWatcherTest, WithoutAPortalThePaletteDecides) {
    EXPECT_EQ(ColorSchemeWatcher(ColorScheme::dark, bus()).scheme(), ColorScheme::dark);
}

TEST_F(ColorSchemeWatcherTest, WithoutABusThePaletteDecides) {
    const QDBusConnection none(QStringLiteral("no such connection"));
    EXPECT_EQ(ColorSchemeWatcher(ColorScheme::dark, none).scheme(), ColorScheme::dark);
}

TEST_F(ColorSchemeWatcherTest, ChangesOfTheDesktopAreFollowedBothWays) {
    startPortal(2);
    ColorSchemeWatcher watcher(ColorScheme::light, bus());
    QSignalSpy changes(&watcher, &ColorSchemeWatcher::schemeChanged);
    prefer('1');
    ASSERT_TRUE(changes.wait(60'000));
    EXPECT_EQ(watcher.scheme(), ColorScheme::dark);
    prefer('2');
    ASSERT_TRUE(changes.wait(60'000));
    EXPECT_EQ(watcher.scheme(), ColorScheme::light);
    EXPECT_EQ(changes.count(), 2);
}

TEST_F(ColorSchemeWatcherTest, APortalThatStartsLaterIsHeard) {
    ColorSchemeWatcher watcher(ColorScheme::light, bus());
    QSignalSpy changes(&watcher, &ColorSchemeWatcher::schemeChanged);
    startPortal(1);
    ASSERT_TRUE(changes.wait(60'000));
    EXPECT_EQ(watcher.scheme(), ColorScheme::dark);
}

TEST_F(ColorSchemeWatcherTest, ASlowPortalDoesNotHoldTheWindowUpAndIsHeardAllTheSame) {
    startPortal(1, 1500);
    QElapsedTimer clock;
    clock.start();
    ColorSchemeWatcher watcher(ColorScheme::light, bus());
    EXPECT_LT(clock.elapsed(), 1200);
    EXPECT_EQ(watcher.scheme(), ColorScheme::light);
    QSignalSpy changes(&watcher, &ColorSchemeWatcher::schemeChanged);
    ASSERT_TRUE(changes.wait(60'000));
    EXPECT_EQ(watcher.scheme(), ColorScheme::dark);
}

} // namespace
