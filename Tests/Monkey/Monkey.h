// Someone who does anything at all to the application's windows. Main thread.
#pragma once

#include "Hands.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <iterator>
#include <random>

class QMessageBox;
class QWidget;

namespace stillwick {
class StillwickWindow;
}

namespace stillwick::monkey {

/// Does one thing after the other, chosen at random by its seed, for as long as it is told to; also
/// within the loops that dialogs and drags run. Looks after each thing whether all rules still
/// hold.
class Monkey final : public QObject {
    Q_OBJECT

public:
    struct Places {
        QString folder;    ///< everything is written there
        QStringList films; ///< at least one; they are only read
    };

    Monkey(std::uint64_t seed, Places places, bool isTelling);

    void start(std::chrono::seconds span);
    [[nodiscard]] int actions() const noexcept { return m_actions; }
    /// Why it stopped early; empty where it did not.
    [[nodiscard]] const QString& complaint() const noexcept { return m_complaint; }

signals:
    void acted();
    void finished();

private:
    struct Action {
        int weight;
        const char* name;
        void (Monkey::*act)();
    };
    struct Spot {
        QWindow* window;
        QPoint at;
    };

    void tick();
    void actOnce();
    void actWithinALoop();
    void judge();
    void wait();

    [[nodiscard]] const Action& chosen();
    [[nodiscard]] int upTo(int greatest);
    [[nodiscard]] bool in(int chances) { return upTo(chances - 1) == 0; }
    template <typename List>
    [[nodiscard]] const auto& oneOf(const List& list) {
        return *std::next(std::begin(list), upTo(int(std::size(list)) - 1));
    }
    [[nodiscard]] static QList<StillwickWindow*> windows();
    [[nodiscard]] StillwickWindow* anyWindow();
    [[nodiscard]] QWindow* frontWindow();
    [[nodiscard]] QWidget* anyWidget(const char* className);
    [[nodiscard]] Spot anySpot();
    [[nodiscard]] Spot spotIn(const QWidget& widget);
    [[nodiscard]] QString anyText();
    [[nodiscard]] QUrl anyFile();
    void dragBetween(const Spot& from, const Spot& to, Qt::MouseButton button);

    void capture();
    void pressShortcut();
    void pressNavigationKey();
    void typeText();
    void click();
    void clickOther();
    void doubleClick();
    void turnWheel();
    void drag();
    void dragRow();
    void dragSlider();
    void drawMark();
    void hover();
    void dropSomething();
    void resize();
    void activate();
    void closeWindow();
    void openWindow();
    void openFile();
    void startExport();
    void editGroups();
    void readAloud();
    void actThroughAccessibility();
    void takePicture();
    void changeColours();
    void useTheMenuBar();
    void answerDialog();
    void answerMessage(QMessageBox& box);
    void answerPopup();

    std::mt19937_64 m_random;
    Places m_places;
    bool m_isTelling;
    Hands m_hands;
    QTimer m_timer;
    std::chrono::steady_clock::time_point m_end;
    QString m_complaint;
    int m_actions = 0;
    int m_depth = 0; ///< loops within loops
    QPointer<QWindow> m_dragged;
};

} // namespace stillwick::monkey
