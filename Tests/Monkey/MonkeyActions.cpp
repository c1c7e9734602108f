// What the monkey does.
#include "Monkey.h"

#include "Interface/ContinuousSlider.h"
#include "Interface/SectionedListView.h"
#include "Interface/Theme.h"
#include "Stillwick/AnnotationCanvas.h"
#include "Stillwick/AppState.h"
#include "Stillwick/StillwickWindow.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>

#include <array>

namespace stillwick::monkey {

namespace {

constexpr int mostWindows = 3;
constexpr int mostCaptures = 40;

struct Key {
    int key;
    Qt::KeyboardModifiers modifiers;
    const char* text;
};

const QString& projectName() {
    static const QString name = QStringLiteral("projet %1.stillwick");
    return name;
}

} // namespace

void Monkey::capture() {
    StillwickWindow* const window = anyWindow();
    if (window->state().frameCount() < mostCaptures)
        m_hands.key(frontWindow(), Qt::Key_C, {}, QStringLiteral("c"));
    else
        window->state().deleteFrame(window->state().allFrames().at(upTo(mostCaptures - 1)).id());
}

void Monkey::pressShortcut() {
    static const std::array keys{
        Key{Qt::Key_Left, {}, ""},
        Key{Qt::Key_Right, {}, ""},
        Key{Qt::Key_Left, Qt::ShiftModifier, ""},
        Key{Qt::Key_Right, Qt::ShiftModifier, ""},
        Key{Qt::Key_Space, {}, " "},
        Key{Qt::Key_C, {}, "c"},
        Key{Qt::Key_S, Qt::ControlModifier, ""},
        Key{Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier, ""},
        Key{Qt::Key_O, Qt::ControlModifier, ""},
        Key{Qt::Key_E, Qt::ControlModifier, ""},
        Key{Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier, ""},
        Key{Qt::Key_N, Qt::ControlModifier, ""},
        Key{Qt::Key_W, Qt::ControlModifier, ""},
    };
    const Key& key = oneOf(keys);
    if (key.key == Qt::Key_N && windows().size() >= mostWindows)
        return;
    if (key.key == Qt::Key_W && !in(3))
        return;
    m_hands.key(frontWindow(), key.key, key.modifiers, QString::fromUtf8(key.text));
}

void Monkey::pressNavigationKey() {
    static const std::array keys{
        Key{Qt::Key_Tab, {}, "\t"},
        Key{Qt::Key_Backtab, Qt::ShiftModifier, ""},
        Key{Qt::Key_Return, {}, "\r"},
        Key{Qt::Key_Escape, {}, ""},
        Key{Qt::Key_Up, {}, ""},
        Key{Qt::Key_Down, {}, ""},
        Key{Qt::Key_Up, Qt::ShiftModifier, ""},
        Key{Qt::Key_Down, Qt::ShiftModifier, ""},
        Key{Qt::Key_Up, Qt::AltModifier, ""},
        Key{Qt::Key_Down, Qt::AltModifier, ""},
        Key{Qt::Key_Home, {}, ""},
        Key{Qt::Key_End, {}, ""},
        Key{Qt::Key_PageUp, {}, ""},
        Key{Qt::Key_PageDown, {}, ""},
        Key{Qt::Key_A, Qt::ControlModifier, ""},
        Key{Qt::Key_Z, Qt::ControlModifier, ""},
        Key{Qt::Key_X, Qt::ControlModifier, ""},
        Key{Qt::Key_V, Qt::ControlModifier, ""},
        Key{Qt::Key_Delete, {}, ""},
        Key{Qt::Key_Backspace, {}, "\b"},
        Key{Qt::Key_F, Qt::AltModifier, ""},
        Key{Qt::Key_Menu, {}, ""},
        Key{Qt::Key_Space, {}, " "},
    };
    const Key& key = oneOf(keys);
    const int times = in(5) ? 1 + upTo(20) : 1;
    for (int i = 0; i < times; ++i)
        if (QWindow* const window = frontWindow())
            m_hands.key(window, key.key, key.modifiers, QString::fromUtf8(key.text));
}

QString Monkey::anyText() {
    static const std::array texts{
        QStringLiteral("Plan A"),
        QStringLiteral("é à ç ï œ"),
        QStringLiteral(" "),
        QStringLiteral("a & b && c"),
        QStringLiteral("../../ailleurs"),
        QStringLiteral("ligne 1\nligne 2\n"),
        QStringLiteral("日本語 🙂"),
        QStringLiteral("<b>gras</b>"),
        QStringLiteral("ccc   ccc"),
        QString(300, u'm'),
    };
    return oneOf(texts);
}

void Monkey::typeText() {
    const QWidget* const editor = anyWidget(in(2) ? "QLineEdit" : "QPlainTextEdit");
    if (editor != nullptr) {
        const Spot spot = spotIn(*editor);
        m_hands.click(spot.window, spot.at);
    }
    if (QWindow* const window = frontWindow(); window != nullptr && !in(4))
        m_hands.type(window, anyText());
}

void Monkey::click() {
    static const std::array modifiers{
        Qt::KeyboardModifiers(), Qt::KeyboardModifiers(), Qt::KeyboardModifiers(),
        Qt::KeyboardModifiers(Qt::ControlModifier), Qt::KeyboardModifiers(Qt::ShiftModifier)};
    const QWidget* const button = in(2) ? anyWidget("QAbstractButton") : nullptr;
    const Spot spot = button != nullptr ? spotIn(*button) : anySpot();
    m_hands.click(spot.window, spot.at, Qt::LeftButton, oneOf(modifiers));
}

void Monkey::clickOther() {
    const QWidget* const list = in(2) ? anyWidget("stillwick::SectionedListView") : nullptr;
    const Spot spot = list != nullptr ? spotIn(*list) : anySpot();
    m_hands.click(spot.window, spot.at, in(4) ? Qt::MiddleButton : Qt::RightButton);
}

void Monkey::doubleClick() {
    const Spot spot = anySpot();
    m_hands.doubleClick(spot.window, spot.at);
}

void Monkey::turnWheel() {
    const Spot spot = anySpot();
    static const std::array turns{-1200, -120, -8, 8, 120, 1200};
    m_hands.wheel(spot.window, spot.at, oneOf(turns), in(5) ? Qt::ControlModifier : Qt::NoModifier);
}

/// Step by step; a step may begin a loop of its own, in which other things happen.
void Monkey::dragBetween(const Spot& from, const Spot& to, Qt::MouseButton button) {
    const QPointer<QWindow> window(from.window);
    m_dragged = window;
    m_hands.moveTo(window, from.at);
    m_hands.press(window, from.at, button);
    const int steps = 2 + upTo(10);
    for (int i = 1; i <= steps && window; ++i)
        m_hands.moveTo(window, from.at + (to.at - from.at) * i / steps);
    m_hands.release(window, to.at, button);
    m_dragged = nullptr;
}

void Monkey::drag() {
    dragBetween(anySpot(), anySpot(), in(5) ? Qt::RightButton : Qt::LeftButton);
}

void Monkey::dragRow() {
    const QWidget* const list = anyWidget("stillwick::SectionedListView");
    if (list != nullptr)
        dragBetween(spotIn(*list), in(4) ? anySpot() : spotIn(*list), Qt::LeftButton);
}

void Monkey::dragSlider() {
    const QWidget* const slider = anyWidget("stillwick::ContinuousSlider");
    if (slider == nullptr)
        return;
    const Spot from = spotIn(*slider);
    const int times = 1 + upTo(4);
    for (int i = 0; i < times; ++i)
        dragBetween(from, {from.window, from.at + QPoint(upTo(400) - 200, upTo(20) - 10)},
                    Qt::LeftButton);
}

void Monkey::drawMark() {
    if (in(2)) {
        if (const QWidget* const tools = anyWidget("stillwick::SegmentedPicker")) {
            const Spot spot = spotIn(*tools);
            m_hands.click(spot.window, spot.at);
        }
    }
    const QWidget* const canvas = anyWidget("stillwick::AnnotationCanvas");
    if (canvas != nullptr)
        dragBetween(spotIn(*canvas), in(4) ? anySpot() : spotIn(*canvas), Qt::LeftButton);
}

void Monkey::hover() {
    const Spot spot = anySpot();
    m_hands.moveTo(spot.window, spot.at);
}

QUrl Monkey::anyFile() {
    if (in(3))
        return QUrl::fromLocalFile(QDir(m_places.folder).filePath(projectName().arg(upTo(2))));
    if (in(12))
        return QUrl::fromLocalFile(QDir(m_places.folder).filePath(QStringLiteral("absent.mp4")));
    return QUrl::fromLocalFile(in(2) ? m_places.films.front() : oneOf(m_places.films));
}

void Monkey::dropSomething() {
    const Spot spot = anySpot();
    QList<QUrl> urls{anyFile()};
    if (in(3))
        urls.prepend(QUrl(QStringLiteral("https://example.org/a.mp4")));
    if (in(3))
        urls.append(anyFile());
    m_hands.dropFiles(spot.window, spot.at, urls, !in(4));
}

void Monkey::resize() {
    constexpr int widest = 1'900;
    constexpr int highest = 1'200;
    anyWindow()->resize(upTo(widest), upTo(highest));
}

void Monkey::activate() {
    anyWindow()->activateWindow();
}

void Monkey::closeWindow() {
    StillwickWindow* const window = anyWindow();
    // What a modal dialog covers is not closed by the windowing system either.
    if (window != nullptr && QApplication::activeModalWidget() == nullptr)
        window->windowHandle()->close();
}

void Monkey::openWindow() {
    if (windows().size() >= mostWindows)
        return;
    static int number = 0;
    StillwickWindow* const window = StillwickWindow::openNew();
    window->setProperty("number", ++number);
    window->activateWindow();
    if (!in(4))
        window->openFile(m_places.films.front());
}

void Monkey::openFile() {
    anyWindow()->openFile(anyFile().toLocalFile());
}

void Monkey::startExport() {
    AppState& state = anyWindow()->state();
    if (state.outputFolder().isEmpty() || in(5))
        state.setOutputFolder(QUrl::fromLocalFile(
            QDir(m_places.folder).filePath(QStringLiteral("export %1").arg(upTo(2)))));
    if (QWindow* const window = frontWindow())
        m_hands.key(window, Qt::Key_E,
                    in(2) ? Qt::KeyboardModifiers(Qt::ControlModifier)
                          : Qt::ControlModifier | Qt::ShiftModifier);
}

void Monkey::editGroups() {
    const QWidget* const header = in(3) ? nullptr : anyWidget("stillwick::SectionHeaderHost");
    const QWidget* const list = anyWidget("stillwick::CapturedFramesListView");
    if (header == nullptr && list == nullptr)
        return;
    QList<QAbstractButton*> buttons;
    for (auto* const button : (header != nullptr ? header : list)->findChildren<QAbstractButton*>())
        if (button->isVisible() && button->window()->windowHandle() != nullptr)
            buttons.append(button);
    if (buttons.isEmpty())
        return;
    const Spot spot = spotIn(*oneOf(buttons));
    m_hands.click(spot.window, spot.at);
}

namespace {

/// The accessible objects of a window, itself first.
void collect(QAccessibleInterface* from, QList<QAccessibleInterface*>& all) {
    if (from == nullptr || !from->isValid())
        return;
    all.append(from);
    for (int i = 0; i < from->childCount(); ++i)
        collect(from->child(i), all);
}

QList<QAccessibleInterface*> accessiblesOf(QWidget* window) {
    QList<QAccessibleInterface*> all;
    collect(QAccessible::queryAccessibleInterface(window), all);
    return all;
}

} // namespace

void Monkey::readAloud() {
    const QList<QAccessibleInterface*> all = accessiblesOf(anyWindow());
    for (QAccessibleInterface* const each : all) {
        (void)each->role();
        (void)each->state();
        (void)each->rect();
        (void)each->text(QAccessible::Name);
        (void)each->text(QAccessible::Description);
        (void)each->text(QAccessible::Value);
        if (auto* const value = each->valueInterface())
            (void)value->currentValue();
        if (const QAccessibleInterface* const parent = each->parent())
            (void)parent->indexOfChild(each);
    }
}

void Monkey::actThroughAccessibility() {
    if (QApplication::activeModalWidget() != nullptr)
        return;
    const QList<QAccessibleInterface*> all = accessiblesOf(anyWindow());
    QAccessibleInterface* const chosen = oneOf(all);
    // A menu opened this way has no end of its own.
    const auto role = chosen->role();
    if (role == QAccessible::MenuItem || role == QAccessible::PopupMenu)
        return;
    if (auto* const value = chosen->valueInterface(); value != nullptr && in(2)) {
        const double least = value->minimumValue().toDouble();
        const double most = value->maximumValue().toDouble();
        value->setCurrentValue(least + (most - least) * upTo(100) / 100);
    } else if (auto* const action = chosen->actionInterface()) {
        const QStringList names = action->actionNames();
        if (!names.isEmpty())
            action->doAction(oneOf(names));
    }
}

void Monkey::takePicture() {
    (void)anyWindow()->grab();
}

void Monkey::changeColours() {
    QApplication::setPalette(themePalette(in(2) ? ColorScheme::dark : ColorScheme::light));
}

void Monkey::useTheMenuBar() {
    const auto* const bar = anyWindow()->findChild<QMenuBar*>();
    QAction* const entry = oneOf(bar->actions());
    const QPoint at = bar->mapTo(bar->window(), bar->actionGeometry(entry).center());
    m_hands.click(bar->window()->windowHandle(), at);
}

void Monkey::answerPopup() {
    QWidget* const popup = QApplication::activePopupWidget();
    const auto* const menu = qobject_cast<QMenu*>(popup);
    QWindow* const window = popup->windowHandle();
    if (window == nullptr || menu == nullptr || menu->actions().isEmpty() || in(4)) {
        popup->close();
        return;
    }
    if (in(3)) {
        static const std::array keys{Qt::Key_Up,     Qt::Key_Down,   Qt::Key_Left, Qt::Key_Right,
                                     Qt::Key_Return, Qt::Key_Escape, Qt::Key_Space};
        m_hands.key(window, oneOf(keys));
        return;
    }
    const QPoint at = menu->actionGeometry(oneOf(menu->actions())).center();
    m_hands.click(window, at);
}

void Monkey::answerMessage(QMessageBox& box) {
    const QPointer<QWindow> window(box.windowHandle());
    if (in(3)) {
        m_hands.key(window, in(2) ? Qt::Key_Escape : Qt::Key_Return);
        return;
    }
    const QAbstractButton* const button = oneOf(box.buttons());
    m_hands.click(window, button->mapTo(&box, button->rect().center()));
}

/// A file dialog is only told a name: what can be done in it besides could reach any file.
void Monkey::answerDialog() {
    QWidget* const modal = QApplication::activeModalWidget();
    if (auto* const box = qobject_cast<QMessageBox*>(modal)) {
        answerMessage(*box);
        return;
    }
    auto* const dialog = qobject_cast<QFileDialog*>(modal);
    if (dialog == nullptr || in(3)) {
        m_hands.key(modal->windowHandle(), Qt::Key_Escape);
        return;
    }
    QUrl file = anyFile();
    if (dialog->acceptMode() == QFileDialog::AcceptSave)
        file = QUrl::fromLocalFile(QDir(m_places.folder).filePath(projectName().arg(upTo(2))));
    else if (dialog->fileMode() == QFileDialog::Directory)
        file = QUrl::fromLocalFile(
            QDir(m_places.folder).filePath(QStringLiteral("export %1").arg(upTo(2))));
    dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(file.toLocalFile());
    m_hands.key(modal->windowHandle(), Qt::Key_Return, {}, QStringLiteral("\r"));
}

} // namespace stillwick::monkey
