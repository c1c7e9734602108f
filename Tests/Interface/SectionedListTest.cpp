#include "Interface/SectionedListView.h"

#include "Interface/SectionedListDelegate.h"
#include "Interface/WindowHold.h"

#include "Shown.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QDragMoveEvent>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QSignalSpy>
#include <QUrl>

#include <algorithm>
#include <memory>
#include <random>

namespace {

using namespace stillwick;
using namespace stillwick::testing;

QUuid idOf(int number) {
    return {uint(number), 1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
}

/// Section `number` has the id 1000 + number.
ListSection section(int number, const QList<int>& rows) {
    ListSection result{idOf(1000 + number), {}};
    for (const int row : rows)
        result.rows.push_back(idOf(row));
    return result;
}

QSet<QUuid> ids(const QList<int>& rows) {
    QSet<QUuid> result;
    for (const int row : rows)
        result.insert(idOf(row));
    return result;
}

class SectionedListTest : public ::testing::Test {
protected:
    SectionedListTest() {
        list->setAccessibleName(QStringLiteral("Images capturées"));
        list->setSections({section(0, {1, 2, 3}), section(1, {4, 5})});
        QTest::qWait(1);
        list->setFocus(Qt::TabFocusReason);
    }

    void press(int row, Qt::KeyboardModifiers modifiers = {}) {
        const QRect rect = list->visualRect(list->listModel().indexOf(idOf(row)));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers, rect.center());
    }
    [[nodiscard]] QPoint inRow(int row, double part) const {
        const QRect rect = list->visualRect(list->listModel().indexOf(idOf(row)));
        return {rect.center().x(), rect.top() + int(part * rect.height())};
    }
    [[nodiscard]] QUuid current() const {
        return list->listModel().idOf(list->currentIndex().row());
    }

    int asked = 0; // how often a row's content was
    QHash<QUuid, QLineEdit*> fields;
    SectionedListView* list = new SectionedListView(
        [this](const QUuid& id) {
            ++asked;
            ListRow row;
            row.text = QStringLiteral("Image %1").arg(id.data1);
            row.accessibleText = QStringLiteral("Image numéro %1").arg(id.data1);
            return row;
        },
        [this](const QUuid& id) {
            auto* field = new QLineEdit;
            field->setAccessibleName(QStringLiteral("Nom du groupe"));
            fields.insert(id, field);
            return field;
        });
    ShownWindow window{{list}, QSize(320, 420)};
    QSignalSpy chosen{list, &SectionedListView::selectionChosen};
    QSignalSpy moves{list, &SectionedListView::moveRequested};
};

TEST_F(SectionedListTest, HeadersStandAboveTheirRowsAsWideAsTheList) {
    const auto* header = list->headerHost(0);
    ASSERT_NE(header, nullptr);
    EXPECT_EQ(header->width(), list->viewport()->width());
    EXPECT_EQ(header->geometry().bottom() + 1, inRow(1, 0).y());
    window.resize(500, 420);
    QTest::qWait(1);
    EXPECT_EQ(header->width(), list->viewport()->width());
    EXPECT_EQ(list->headerOf(idOf(1000)), fields.value(idOf(1000)));
}

TEST_F(SectionedListTest, AClickSelectsAndTells) {
    press(2);
    EXPECT_EQ(list->selectedRows(), ids({2}));
    EXPECT_EQ(chosen.count(), 1);
}

TEST_F(SectionedListTest, SelectionReachesAcrossSectionsButNotTheirHeaders) {
    press(3);
    press(4, Qt::ShiftModifier);
    EXPECT_EQ(list->selectedRows(), ids({3, 4}));
    press(1, Qt::ControlModifier);
    EXPECT_EQ(list->selectedRows(), ids({1, 3, 4}));
}

TEST_F(SectionedListTest, ArrowsSkipHeaders) {
    press(3);
    QTest::keyClick(list, Qt::Key_Down);
    EXPECT_EQ(current(), idOf(4));
    QTest::keyClick(list, Qt::Key_Up);
    EXPECT_EQ(current(), idOf(3));
    QTest::keyClick(list, Qt::Key_Home);
    EXPECT_EQ(current(), idOf(1));
    QTest::keyClick(list, Qt::Key_Up);
    EXPECT_EQ(current(), idOf(1));
    QTest::keyClick(list, Qt::Key_End);
    EXPECT_EQ(current(), idOf(5));
    QTest::keyClick(list, Qt::Key_PageUp);
    EXPECT_EQ(current(), idOf(1));
    QTest::keyClick(list, Qt::Key_PageDown, Qt::ShiftModifier);
    EXPECT_EQ(list->selectedRows(), ids({1, 2, 3, 4, 5}));
}

TEST_F(SectionedListTest, WhatTheProgramSelectsIsNotTold) {
    list->setSelectedRows(ids({2, 4, 77}));
    EXPECT_EQ(list->selectedRows(), ids({2, 4}));
    EXPECT_EQ(chosen.count(), 0);
}

TEST_F(SectionedListTest, SelectionAndHeadersSurviveEveryNewOrder) {
    list->setSelectedRows(ids({2, 5}));
    QLineEdit* field = fields.value(idOf(1001));
    list->setSections({section(1, {5, 2, 6}), section(2, {}), section(0, {3, 1})});
    EXPECT_EQ(list->selectedRows(), ids({2, 5}));
    EXPECT_EQ(list->headerOf(idOf(1001)), field);
    EXPECT_EQ(list->headerHost(0)->findChild<QLineEdit*>(), field);
    EXPECT_EQ(chosen.count(), 0);
    list->setSections({section(0, {3, 1})});
    EXPECT_TRUE(list->selectedRows().isEmpty());
    EXPECT_EQ(list->headerOf(idOf(1001)), nullptr);
}

TEST_F(SectionedListTest, RandomOrdersAreTakenExactly) {
    const QAbstractItemModelTester tester(list->model(),
                                          QAbstractItemModelTester::FailureReportingMode::Fatal);
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        QList<int> numbers;
        for (int number = 1; number <= 30; ++number) {
            if (random() % 3 != 0)
                numbers.push_back(number);
        }
        std::shuffle(numbers.begin(), numbers.end(), random);
        QList<ListSection> sections;
        QList<QUuid> expected;
        for (int number = 0; number < 4; ++number) {
            const auto count = std::min(numbers.size(), qsizetype(random() % 12));
            sections.push_back(section(number, numbers.mid(0, count)));
            numbers.remove(0, count);
            expected.push_back(sections.last().id);
            expected.append(sections.last().rows);
        }
        std::shuffle(sections.begin(), sections.end(), random);
        expected.clear();
        for (const ListSection& each : sections) {
            expected.push_back(each.id);
            expected.append(each.rows);
        }
        list->setSections(sections);
        ASSERT_EQ(list->listModel().rowCount(), int(expected.size()));
        for (int row = 0; row < int(expected.size()); ++row) {
            ASSERT_EQ(list->listModel().idOf(row), expected.at(row)) << round;
            const auto place = list->listModel().placeOf(row);
            const ListSection& holder = sections.at(place.section);
            ASSERT_EQ(place.offset < 0 ? holder.id : holder.rows.at(place.offset),
                      expected.at(row));
        }
    }
}

TEST_F(SectionedListTest, AltAndAnArrowAskForAMoveByOne) {
    press(1);
    QTest::keyClick(list, Qt::Key_Down, Qt::AltModifier);
    ASSERT_EQ(moves.count(), 1);
    EXPECT_EQ(moves.at(0).at(0).toUuid(), idOf(1000));
    EXPECT_EQ(moves.at(0).at(1).value<QList<int>>(), QList<int>{0});
    EXPECT_EQ(moves.at(0).at(2).toInt(), 2); // before the one that follows its successor
    QTest::keyClick(list, Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(moves.count(), 1); // it is the first
}

/// Rows on their way over the list, as the toolkit tells it of them.
class SectionedListDragTest : public SectionedListTest {
protected:
    void take(const QList<int>& rows) {
        QModelIndexList indexes;
        for (const int row : rows)
            indexes.push_back(list->listModel().indexOf(idOf(row)));
        data.reset(list->listModel().mimeData(indexes));
    }
    [[nodiscard]] bool isTakenAt(const QPoint& position) {
        QDragEnterEvent enter(position, Qt::MoveAction, data.get(), Qt::LeftButton, {});
        QApplication::sendEvent(list->viewport(), &enter);
        QDragMoveEvent move(position, Qt::MoveAction, data.get(), Qt::LeftButton, {});
        QApplication::sendEvent(list->viewport(), &move);
        return enter.isAccepted() && move.isAccepted();
    }
    void dropAt(const QPoint& position) {
        (void)isTakenAt(position); // a drop comes after a move
        QDropEvent drop(position, Qt::MoveAction, data.get(), Qt::LeftButton, {});
        QApplication::sendEvent(list->viewport(), &drop);
    }
    /// The last move asked for, as "section: offsets > destination".
    [[nodiscard]] std::string lastMove() const {
        if (moves.isEmpty())
            return "none";
        QStringList offsets;
        for (const int offset : moves.last().at(1).value<QList<int>>())
            offsets.push_back(QString::number(offset));
        return QStringLiteral("%1: %2 > %3")
            .arg(moves.last().at(0).toUuid().data1 - 1000)
            .arg(offsets.join(u','))
            .arg(moves.last().at(2).toInt())
            .toStdString();
    }

    std::unique_ptr<QMimeData> data;
};

TEST_F(SectionedListDragTest, ARowIsMovedBeforeTheOneInWhoseUpperHalfItIsDropped) {
    take({3});
    EXPECT_TRUE(isTakenAt(inRow(1, 0.2)));
    dropAt(inRow(1, 0.2));
    EXPECT_EQ(lastMove(), "0: 2 > 0");
}

TEST_F(SectionedListDragTest, AndBehindTheOneInWhoseLowerHalf) {
    take({1});
    dropAt(inRow(2, 0.8));
    EXPECT_EQ(lastMove(), "0: 0 > 2");
}

TEST_F(SectionedListDragTest, SeveralRowsAreMovedTogether) {
    take({1, 3});
    dropAt(inRow(2, 0.8));
    EXPECT_EQ(lastMove(), "0: 0,2 > 2");
}

TEST_F(SectionedListDragTest, BelowTheLastRowIsTheEndOfTheLastSectionOnly) {
    take({4});
    const QPoint below(40, list->viewport()->height() - 4);
    EXPECT_TRUE(isTakenAt(below));
    dropAt(below);
    EXPECT_EQ(lastMove(), "1: 0 > 2");
    take({1});
    EXPECT_FALSE(isTakenAt(below));
}

TEST_F(SectionedListDragTest, OtherSectionsRefuseIt) {
    take({1});
    EXPECT_FALSE(isTakenAt(inRow(5, 0.5)));
    dropAt(inRow(5, 0.5));
    EXPECT_EQ(lastMove(), "none");
}

TEST_F(SectionedListDragTest, WhereItStandsAlreadyNothingIsAskedFor) {
    take({2});
    dropAt(inRow(2, 0.2));
    dropAt(inRow(2, 0.8));
    dropAt(inRow(1, 0.8));
    EXPECT_EQ(lastMove(), "none");
}

TEST_F(SectionedListDragTest, WhatComesFromElsewhereIsLeftToTheWindow) {
    data = std::make_unique<QMimeData>();
    data->setUrls({QUrl(QStringLiteral("file:///film.mp4"))});
    EXPECT_FALSE(isTakenAt(inRow(1, 0.5)));
    SectionedListModel other([](const QUuid&) { return ListRow(); });
    other.setSections({section(0, {1, 2, 3})});
    data.reset(other.mimeData({other.indexOf(idOf(1))}));
    EXPECT_FALSE(isTakenAt(inRow(1, 0.5)));
}

TEST_F(SectionedListDragTest, TheLineAppearsWhereTheRowsWillStand) {
    take({3});
    const QImage before = list->viewport()->grab().toImage();
    ASSERT_TRUE(isTakenAt(inRow(1, 0.8)));
    const QImage during = list->viewport()->grab().toImage();
    const QPoint line(150, inRow(2, 0).y());
    EXPECT_NE(before.pixel(line), during.pixel(line));
    QDragLeaveEvent leave;
    QApplication::sendEvent(list->viewport(), &leave);
    EXPECT_EQ(differingPixels(before, list->viewport()->grab().toImage()), 0);
}

TEST_F(SectionedListTest, AMenuIsShownForTheRowUnderThePointerIfItIsFilled) {
    QUuid askedFor;
    QPointer<QMenu> shown;
    QObject::connect(list, &SectionedListView::menuRequested, list,
                     [&](const QUuid& row, QMenu* menu) {
                         askedFor = row;
                         shown = menu;
                         menu->addAction(QStringLiteral("Supprimer"));
                     });
    QContextMenuEvent event(QContextMenuEvent::Mouse, inRow(2, 0.5),
                            list->viewport()->mapToGlobal(inRow(2, 0.5)));
    QApplication::sendEvent(list->viewport(), &event);
    EXPECT_EQ(askedFor, idOf(2));
    EXPECT_EQ(list->selectedRows(), ids({2}));
    ASSERT_FALSE(shown.isNull());
    EXPECT_TRUE(shown->isVisible());
    shown->close();
    QContextMenuEvent byKey(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    QTest::keyClick(list, Qt::Key_Down);
    QApplication::sendEvent(list->viewport(), &byKey);
    EXPECT_EQ(askedFor, idOf(3));
}

TEST_F(SectionedListTest, ARightPressOnASelectionKeepsIt) {
    list->setSelectedRows(ids({1, 2}));
    QContextMenuEvent event(QContextMenuEvent::Mouse, inRow(2, 0.5),
                            list->viewport()->mapToGlobal(inRow(2, 0.5)));
    QApplication::sendEvent(list->viewport(), &event);
    EXPECT_EQ(list->selectedRows(), ids({1, 2}));
}

TEST_F(SectionedListTest, KeysInAHeadersFieldStayThere) {
    press(1);
    QLineEdit* field = fields.value(idOf(1000));
    field->setFocus();
    QTest::keyClicks(field, QStringLiteral("un deux"));
    QTest::keyClick(field, Qt::Key_Down);
    EXPECT_EQ(field->text(), u"un deux");
    EXPECT_EQ(current(), idOf(1));
}

TEST_F(SectionedListTest, TabLeavesTheRowsForTheHeadersInOrder) {
    list->setSections({section(2, {6}), section(0, {1, 2, 3}), section(1, {4, 5})});
    list->setFocus();
    for (const int number : {1002, 1000, 1001}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), fields.value(idOf(number))) << number;
    }
}

TEST_F(SectionedListTest, AHeaderThatGetsTheFocusIsScrolledIntoView) {
    QList<int> many;
    for (int number = 10; number < 60; ++number)
        many.push_back(number);
    list->setSections({section(0, many), section(1, {4, 5})});
    QTest::qWait(1);
    fields.value(idOf(1001))->setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(list->viewport()->rect().contains(
        list->headerHost(list->listModel().indexOf(idOf(1001)).row())->geometry()));
}

TEST_F(SectionedListTest, AScreenReaderFindsHeadersAndRowsInOrder) {
    QAccessibleInterface* reader = accessible(list);
    EXPECT_EQ(reader->role(), QAccessible::List);
    EXPECT_EQ(reader->text(QAccessible::Name), u"Images capturées");
    ASSERT_EQ(reader->childCount(), 7);
    EXPECT_EQ(reader->child(0)->object(), list->headerHost(0));
    EXPECT_EQ(reader->child(0)->parent(), reader);
    for (const int index : {1, 2, 3, 5, 6}) {
        QAccessibleInterface* row = reader->child(index);
        EXPECT_EQ(row->role(), QAccessible::ListItem);
        EXPECT_EQ(row->parent(), reader);
        EXPECT_EQ(reader->indexOfChild(row), index);
    }
    EXPECT_EQ(reader->child(5)->text(QAccessible::Name), u"Image numéro 4");
}

TEST_F(SectionedListTest, AScreenReaderSelectsAndKeepsItsRowThroughANewOrder) {
    QAccessibleInterface* row = accessible(list)->child(2);
    row->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(list->selectedRows(), ids({2}));
    EXPECT_TRUE(row->state().selected);
    EXPECT_TRUE(row->state().focused);
    list->setSections({section(0, {3, 1, 2}), section(1, {4, 5})});
    EXPECT_TRUE(row->isValid());
    EXPECT_EQ(accessible(list)->indexOfChild(row), 3);
    list->setSections({section(0, {3, 1}), section(1, {4, 5})});
    EXPECT_FALSE(row->isValid());
}

TEST_F(SectionedListTest, AScreenReaderOpensTheMenuOfARow) {
    QUuid asking;
    QObject::connect(list, &SectionedListView::menuRequested, list,
                     [&asking](const QUuid& row, QMenu* menu) {
                         asking = row;
                         menu->addAction(QStringLiteral("Supprimer"));
                     });
    QAccessibleInterface* row = accessible(list)->child(5);
    row->actionInterface()->doAction(QAccessibleActionInterface::showMenuAction());
    EXPECT_EQ(asking, idOf(4));
    auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->activeAction(), menu->actions().constFirst());
    menu->actions().constFirst()->trigger(); // as a reader does
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST(WindowHoldTest, AWindowThatIsClosedMeanwhileGoesAfterwards) {
    const QPointer<QWidget> closing(new QWidget);
    closing->setAttribute(Qt::WA_DeleteOnClose);
    auto* const part = new QWidget(closing);
    closing->show();
    {
        const WindowHold hold(*part);
        closing->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        ASSERT_FALSE(closing.isNull());
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(closing.isNull());
}

TEST(WindowHoldTest, AWindowThatStaysOpenStays) {
    QWidget window;
    window.setAttribute(Qt::WA_DeleteOnClose);
    window.show();
    { const WindowHold hold(window); }
    EXPECT_TRUE(window.testAttribute(Qt::WA_DeleteOnClose));
    EXPECT_TRUE(window.isVisible());
}

TEST_F(SectionedListTest, OfTenThousandRowsOnlyThoseInViewAreAskedFor) {
    QList<int> many;
    for (int number = 10; number < 10'010; ++number)
        many.push_back(number);
    asked = 0;
    list->setSections({section(0, many)});
    QTest::qWait(50);
    list->scrollToRow(idOf(9'000));
    (void)list->grab();
    const int inView = list->height() / SectionedListDelegate::rowHeight + 2;
    EXPECT_GT(asked, 0);
    EXPECT_LT(asked, 8 * inView); // a few paintings
    EXPECT_LT(list->findChildren<QWidget*>().size(), 20);
}

TEST_F(SectionedListTest, OneOfTenThousandRowsIsMovedWithinABlink) {
    QList<int> many;
    for (int number = 10; number < 10'010; ++number)
        many.push_back(number);
    list->setSections({section(0, many)});
    QTest::qWait(50);
    many.move(0, 9'999);
    QElapsedTimer clock;
    clock.start();
    list->setSections({section(0, many)});
    (void)list->grab();
    EXPECT_LT(clock.elapsed(), 1000); // tens of milliseconds; the rest is for slow machines
    EXPECT_EQ(list->listModel().idOf(10'000), idOf(10));
}

} // namespace
