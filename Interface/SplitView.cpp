#include "Interface/SplitView.h"

#include "Interface/StylePainting.h"
#include "Interface/Theme.h"

#include <QHash>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleOption>

#include <algorithm>
#include <numeric>

namespace stillwick {

namespace {

/// By the view's name, for as long as the program runs.
QHash<QString, QList<int>>& lastProportions() {
    static QHash<QString, QList<int>> proportions;
    return proportions;
}

} // namespace

SplitHandle::SplitHandle(Qt::Orientation orientation, QSplitter* parent)
    : QSplitterHandle(orientation, parent) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setAccessibleName(QStringLiteral("Séparateur"));
}

int SplitHandle::position() const {
    return orientation() == Qt::Horizontal ? x() : y();
}

QPair<int, int> SplitHandle::bounds() {
    int least = 0;
    int greatest = 0;
    splitter()->getRange(splitter()->indexOf(this), &least, &greatest);
    return {least, greatest};
}

void SplitHandle::moveTo(int position) {
    moveSplitter(position);
}

void SplitHandle::keyPressEvent(QKeyEvent* event) {
    constexpr int step = 16;
    const bool isHorizontal = orientation() == Qt::Horizontal;
    const int back = isHorizontal ? Qt::Key_Left : Qt::Key_Up;
    const int on = isHorizontal ? Qt::Key_Right : Qt::Key_Down;
    if (event->key() == back)
        moveTo(position() - step);
    else if (event->key() == on)
        moveTo(position() + step);
    else if (event->key() == Qt::Key_Home)
        moveTo(bounds().first);
    else if (event->key() == Qt::Key_End)
        moveTo(bounds().second);
    else
        QSplitterHandle::keyPressEvent(event);
}

void SplitHandle::mouseDoubleClickEvent(QMouseEvent* /*event*/) {
    static_cast<SplitView*>(splitter())->resetProportions();
}

void SplitHandle::focusInEvent(QFocusEvent* event) {
    QSplitterHandle::focusInEvent(event);
    update();
}

void SplitHandle::focusOutEvent(QFocusEvent* event) {
    QSplitterHandle::focusOutEvent(event);
    update();
}

void SplitHandle::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    const bool isFocused = showsFocus(option);
    const bool isMarked = isFocused || underMouse();
    const int thickness = isFocused ? 3 : 1;
    QRect line = rect();
    if (orientation() == Qt::Horizontal)
        line = QRect((width() - thickness) / 2, 0, thickness, height());
    else
        line = QRect(0, (height() - thickness) / 2, width(), thickness);
    const ThemeColor color = isMarked ? ThemeColor::accent : ThemeColor::separator;
    painter.fillRect(line, themeColor(color, palette()));
}

SplitView::SplitView(Qt::Orientation orientation, const QString& name, QWidget* parent)
    : QSplitter(orientation, parent) {
    setObjectName(name);
    setChildrenCollapsible(false);
    connect(this, &QSplitter::splitterMoved, this, &SplitView::remember);
}

QSplitterHandle* SplitView::createHandle() {
    return new SplitHandle(orientation(), this);
}

void SplitView::setProportions(const QList<int>& parts) {
    Q_ASSERT(parts.size() == count());
    m_parts = parts;
    m_currentParts = lastProportions().value(objectName(), parts);
    if (m_currentParts.size() != parts.size())
        m_currentParts = parts;
    apply(m_currentParts);
}

void SplitView::resetProportions() {
    m_currentParts = m_parts;
    lastProportions().remove(objectName());
    apply(m_parts);
}

void SplitView::apply(const QList<int>& parts) {
    const int extent = orientation() == Qt::Horizontal ? width() : height();
    const qint64 sum = std::max(1, std::accumulate(parts.begin(), parts.end(), 0));
    QList<int> pixels;
    for (const int part : parts)
        pixels.push_back(int(qint64(part) * extent / sum));
    setSizes(pixels);
}

void SplitView::remember() {
    m_currentParts = sizes();
    lastProportions()[objectName()] = m_currentParts;
}

void SplitView::resizeEvent(QResizeEvent* event) {
    QSplitter::resizeEvent(event);
    if (m_currentParts.size() == count())
        apply(m_currentParts);
}

} // namespace stillwick
