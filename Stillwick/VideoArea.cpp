#include "Stillwick/VideoArea.h"

#include "Interface/Theme.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QPainter>
#include <QStackedWidget>

#include <utility>

namespace stillwick {

namespace {

/// Lies over the pages; lets everything through.
class DropOutline final : public QWidget {
public:
    explicit DropOutline(QWidget* parent) : QWidget(parent) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        hide();
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        constexpr double lineWidth = 3;
        constexpr double inset = 4 + lineWidth / 2;
        constexpr double radius = 8;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(themeColor(ThemeColor::accent, palette()), lineWidth));
        painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), radius,
                                radius);
    }
};

} // namespace

VideoArea::VideoArea(std::function<bool(const QList<QUrl>&)> takes, QWidget* parent)
    : QWidget(parent), m_takes(std::move(takes)), m_pages(new QStackedWidget(this)),
      m_outline(new DropOutline(this)) {
    setAcceptDrops(true);
    QPalette black = palette();
    black.setColor(QPalette::Window, Qt::black);
    setPalette(black);
    setAutoFillBackground(true);
}

void VideoArea::resizeEvent(QResizeEvent* /*event*/) {
    m_pages->setGeometry(rect());
    m_outline->setGeometry(rect());
}

void VideoArea::dragEnterEvent(QDragEnterEvent* event) {
    const bool isFromHere = event->source() != nullptr;
    if (isFromHere || !event->mimeData()->hasUrls() || !m_takes(event->mimeData()->urls()))
        return;
    event->acceptProposedAction();
    m_outline->show();
    m_outline->raise();
}

void VideoArea::dragLeaveEvent(QDragLeaveEvent* /*event*/) {
    m_outline->hide();
}

void VideoArea::dropEvent(QDropEvent* event) {
    m_outline->hide();
    event->acceptProposedAction();
    emit urlsDropped(event->mimeData()->urls());
}

} // namespace stillwick
