#include "Interface/Alert.h"

#include "Shown.h"

#include <gtest/gtest.h>

#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

#include <memory>

namespace {

using namespace stillwick;
using namespace stillwick::testing;

QPushButton* button(const QMessageBox* alert, const QString& text) {
    for (auto* found : alert->findChildren<QPushButton*>()) {
        if (found->text() == text)
            return found;
    }
    return nullptr;
}

class AlertTest : public ::testing::Test {
protected:
    std::unique_ptr<ShownWindow> window =
        std::make_unique<ShownWindow>(std::initializer_list<QWidget*>{});
    int dismissals = 0;
    int actions = 0;
};

TEST_F(AlertTest, AnErrorHasItsTitleItsTextAndOneButton) {
    const QMessageBox* alert =
        openErrorAlert(window.get(), QStringLiteral("Aucune vidéo chargée."));
    EXPECT_EQ(alert->windowTitle(), u"Erreur");
    EXPECT_EQ(alert->text(), u"Erreur");
    EXPECT_EQ(alert->informativeText(), u"Aucune vidéo chargée.");
    EXPECT_EQ(alert->buttons().size(), 1);
    EXPECT_NE(button(alert, QStringLiteral("OK")), nullptr);
    EXPECT_TRUE(alert->isVisible());
}

TEST_F(AlertTest, ItsButtonDismissesItOnce) {
    const QPointer<QMessageBox> alert =
        openErrorAlert(window.get(), QStringLiteral("Échec."), [this] { ++dismissals; });
    QTest::mouseClick(button(alert, QStringLiteral("OK")), Qt::LeftButton);
    EXPECT_EQ(dismissals, 1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(alert.isNull());
}

TEST_F(AlertTest, EscapeDismissesItToo) {
    QMessageBox* alert =
        openErrorAlert(window.get(), QStringLiteral("Échec."), [this] { ++dismissals; });
    QTest::keyClick(alert, Qt::Key_Escape);
    EXPECT_EQ(dismissals, 1);
}

TEST_F(AlertTest, GoesWithItsWindowAndCallsNobody) {
    const QPointer<QMessageBox> alert =
        openErrorAlert(window.get(), QStringLiteral("Échec."), [this] { ++dismissals; });
    window.reset();
    EXPECT_TRUE(alert.isNull());
    EXPECT_EQ(dismissals, 0);
}

TEST_F(AlertTest, NoticesShareOnePictureOfTheIcon) {
    const auto icon = [this] {
        return openAlert(window.get(), QStringLiteral("Export terminé"), {},
                         QStringLiteral("Ouvrir"), [] {})
            ->iconPixmap();
    };
    const QPixmap first = icon();
    EXPECT_FALSE(first.isNull());
    EXPECT_EQ(icon().cacheKey(), first.cacheKey());
}

TEST_F(AlertTest, TheOtherButtonActsAndOkDoesNot) {
    const auto open = [this] {
        return openAlert(window.get(), QStringLiteral("Export terminé"),
                         QStringLiteral("3 image(s) exportée(s)."),
                         QStringLiteral("Ouvrir le dossier"), [this] { ++actions; });
    };
    QTest::mouseClick(button(open(), QStringLiteral("OK")), Qt::LeftButton);
    EXPECT_EQ(actions, 0);
    QTest::mouseClick(button(open(), QStringLiteral("Ouvrir le dossier")), Qt::LeftButton);
    EXPECT_EQ(actions, 1);
}

} // namespace
