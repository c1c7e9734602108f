#include "Interface/SectionedListView.h"

#include "Interface/ProgressIndicator.h"
#include "Interface/SectionedListDelegate.h"
#include "Interface/StylePainting.h"
#include "Interface/Theme.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace stillwick {

SectionHeaderHost::SectionHeaderHost(QWidget* header, QWidget* parent) : QWidget(parent) {
    auto* layout = new QHBoxLayout(this);
    constexpr int side = 10;
    layout->setContentsMargins(side, 6, side, 2);
    layout->addWidget(header);
}

void SectionHeaderHost::keyPressEvent(QKeyEvent* event) {
    event->accept(); // what a field within has no use for is not meant for the list
}

void SectionHeaderHost::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void SectionHeaderHost::contextMenuEvent(QContextMenuEvent* event) {
    event->accept();
}

SectionedListView::SectionedListView(SectionedListModel::RowSource rowSource,
                                     HeaderFactory headerFactory, QWidget* parent)
    : QListView(parent), m_model(new SectionedListModel(std::move(rowSource), this)),
      m_headerFactory(std::move(headerFactory)) {
    setModel(m_model);
    setItemDelegate(new SectionedListDelegate(*this));
    setFrameShape(QFrame::NoFrame);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setTabKeyNavigation(false);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(false); // ours is drawn between rows of one section only
    setMouseTracking(true);
    viewport()->setBackgroundRole(QPalette::Window);
    viewport()->setAttribute(Qt::WA_Hover);
    verticalScrollBar()->setSingleStep(SectionedListDelegate::rowHeight / 2);
    connect(this, &QListView::activated, this,
            [this](const QModelIndex& index) { emit rowActivated(m_model->idOf(index.row())); });
    m_progressTimer.setSingleShot(true);
    m_progressTimer.setInterval(progressIntervalMilliseconds);
    connect(&m_progressTimer, &QTimer::timeout, this,
            [this] { viewport()->update(std::exchange(m_progressRegion, {})); });
    m_progressClock.start();
}

void SectionedListView::setSections(const QList<ListSection>& sections) {
    const QScopedValueRollback<bool> showing(m_isShowing, true);
    m_model->setSections(sections);
    makeHeaders();
}

void SectionedListView::makeHeaders() {
    QHash<QUuid, QWidget*> headers;
    bool isNew = headers.size() != m_headers.size();
    for (const ListSection& section : m_model->sections()) {
        QWidget* header = m_headers.value(section.id);
        if (header == nullptr) {
            header = m_headerFactory(section.id);
            auto* host = new SectionHeaderHost(header, viewport());
            setIndexWidget(m_model->indexOf(section.id), host);
            for (QWidget* part : host->findChildren<QWidget*>())
                part->installEventFilter(this);
            isNew = true;
        }
        headers.insert(section.id, header);
    }
    m_headers = headers; // those of sections that went are gone with their rows
    if (isNew)
        scheduleDelayedItemsLayout();
    orderTabs();
}

void SectionedListView::orderTabs() {
    QWidget* last = this;
    for (const ListSection& section : m_model->sections()) {
        const QWidget* host = m_headers.value(section.id)->parentWidget();
        for (QWidget* part : host->findChildren<QWidget*>()) {
            if (part->focusPolicy() == Qt::NoFocus)
                continue;
            setTabOrder(last, part);
            last = part;
        }
    }
}

QWidget* SectionedListView::headerOf(const QUuid& section) const {
    return m_headers.value(section);
}

SectionHeaderHost* SectionedListView::headerHost(int row) const {
    return qobject_cast<SectionHeaderHost*>(indexWidget(m_model->index(row)));
}

bool SectionedListView::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn) {
        const auto* part = qobject_cast<QWidget*>(watched);
        for (auto header = m_headers.cbegin(); header != m_headers.cend(); ++header) {
            if (part != nullptr && (*header == part || (*header)->isAncestorOf(part)))
                scrollTo(m_model->indexOf(header.key()));
        }
    }
    return QListView::eventFilter(watched, event);
}

QSet<QUuid> SectionedListView::selectedRows() const {
    QSet<QUuid> rows;
    for (const QModelIndex& index : selectionModel()->selectedIndexes())
        rows.insert(m_model->idOf(index.row()));
    return rows;
}

void SectionedListView::setSelectedRows(const QSet<QUuid>& rows) {
    if (rows == selectedRows())
        return;
    const QScopedValueRollback<bool> showing(m_isShowing, true);
    QItemSelection selection;
    QModelIndex first;
    for (const QUuid& row : rows) {
        const QModelIndex index = m_model->indexOf(row);
        if (!index.isValid() || m_model->isHeader(index.row()))
            continue;
        selection.select(index, index);
        if (!first.isValid() || index.row() < first.row())
            first = index;
    }
    if (first.isValid() && !selection.contains(currentIndex()))
        selectionModel()->setCurrentIndex(first, QItemSelectionModel::NoUpdate);
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

void SectionedListView::scrollToRow(const QUuid& row) {
    executeDelayedItemsLayout();
    scrollTo(m_model->indexOf(row));
}

QRect SectionedListView::visualRect(const QModelIndex& index) const {
    QRect rect = QListView::visualRect(index);
    rect.setWidth(
        viewport()->width()); // the toolkit keeps the greatest width that the list has had
    return rect;
}

void SectionedListView::selectionChanged(const QItemSelection& selected,
                                         const QItemSelection& deselected) {
    QListView::selectionChanged(selected, deselected);
    if (!m_isShowing)
        emit selectionChosen(selectedRows());
}

int SectionedListView::neighbour(int row, int direction) const {
    for (int next = row + direction; next >= 0 && next < m_model->rowCount(); next += direction) {
        if (!m_model->isHeader(next))
            return next;
    }
    return row;
}

QModelIndex SectionedListView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    const int count = m_model->rowCount();
    if (count == 0)
        return {};
    const int current = currentIndex().isValid() ? currentIndex().row() : -1;
    const int page = std::max(1, viewport()->height() / SectionedListDelegate::rowHeight - 1);
    int row = -1;
    switch (action) {
    case MoveUp:
        row = neighbour(current < 0 ? count : current, -1);
        break;
    case MoveDown:
        row = neighbour(current, 1);
        break;
    case MoveHome:
        row = neighbour(-1, 1);
        break;
    case MoveEnd:
        row = neighbour(count, -1);
        break;
    case MovePageUp:
        row = neighbour(std::max(-1, current - page - 1), 1);
        break;
    case MovePageDown:
        row = neighbour(std::min(count, current + page + 1), -1);
        break;
    default:
        return QListView::moveCursor(action, modifiers);
    }
    return row >= 0 && row < count && !m_model->isHeader(row) ? m_model->index(row) : QModelIndex();
}

void SectionedListView::keyboardSearch(const QString& /*search*/) {
    // Letters are the window's shortcuts.
}

void SectionedListView::keyPressEvent(QKeyEvent* event) {
    const bool isUp = event->key() == Qt::Key_Up;
    const bool isDown = event->key() == Qt::Key_Down;
    if ((event->modifiers() & Qt::AltModifier) != 0 && (isUp || isDown))
        moveByOne(isDown);
    else
        QListView::keyPressEvent(event);
}

void SectionedListView::contextMenuEvent(QContextMenuEvent* event) {
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex index = isByKey ? currentIndex() : indexAt(event->pos());
    if (!index.isValid() || m_model->isHeader(index.row()))
        return;
    if (!selectionModel()->isSelected(index))
        selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    emit menuRequested(m_model->idOf(index.row()), menu);
    if (menu->isEmpty()) {
        delete menu;
        return;
    }
    // A screen reader triggers an action without closing the menu.
    connect(menu, &QMenu::triggered, menu, &QWidget::close);
    const QPoint place = isByKey ? visualRect(index).center() : event->pos();
    menu->popup(viewport()->mapToGlobal(place));
    if (isByKey) // so that the arrows, and readers, begin somewhere
        menu->setActiveAction(menu->actions().constFirst());
}

int SectionedListView::progressStep() const {
    return int(m_progressClock.elapsed() / progressIntervalMilliseconds % progressSpokes);
}

void SectionedListView::paintEvent(QPaintEvent* event) {
    QListView::paintEvent(event);
    if (!m_progressRegion.isEmpty() && !m_progressTimer.isActive())
        m_progressTimer.start();
    if (!m_destination)
        return;
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor color = themeColor(ThemeColor::accent, palette());
    const double y = lineAt(*m_destination);
    constexpr double left = 14;
    constexpr double radius = 3;
    painter.setPen(QPen(color, 2));
    painter.drawLine(QPointF(left + radius, y), QPointF(viewport()->width() - left, y));
    painter.drawEllipse(QPointF(left, y), radius, radius);
}

} // namespace stillwick
