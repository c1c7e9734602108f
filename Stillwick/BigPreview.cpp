#include "Stillwick/BigPreview.h"

#include "Interface/Accessibility.h"
#include "Interface/Checkerboard.h"
#include "Interface/EmptyPanel.h"
#include "Interface/ProgressIndicator.h"
#include "Interface/StylePainting.h"
#include "Interface/Theme.h"
#include "Interface/WindowHold.h"
#include "Stillwick/AnnotationCanvas.h"

#include <QAction>
#include <QDrag>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOption>

#include <initializer_list>

namespace stillwick {

namespace {

constexpr int leastHeight = 160;
constexpr int padding = 8;
constexpr double radius = 8;
constexpr double squareSize = 12;
constexpr int roughly = 2; // times the size wanted

} // namespace

BigPreview::BigPreview(QWidget* parent)
    : QWidget(parent), m_canvas(new AnnotationCanvas(this)),
      m_empty(new EmptyPanel(u"photo", QStringLiteral("Aucun aperçu"),
                             QStringLiteral("Capturez une image pour prévisualiser les rendus."),
                             this)),
      m_progress(new ProgressIndicator(this)) {
    setMinimumHeight(leastHeight);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAccessibleRole(this, QAccessible::Graphic);
    setAccessibleName(QStringLiteral("Aperçu du détourage"));
    setFocusPolicy(Qt::StrongFocus);
    m_canvas->setFocusPolicy(Qt::ClickFocus);
    m_canvas->setFocusProxy(this);
    connect(m_canvas, &AnnotationCanvas::pictureDragged, this, &BigPreview::dragRequested);
    makeCopyAction();
    showNothing();
}

void BigPreview::makeCopyAction() {
    m_copy = new QAction(QStringLiteral("Copier l'image"), this);
    m_copy->setShortcut(QKeySequence::Copy);
    m_copy->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(m_copy, &QAction::triggered, this, &BigPreview::copyRequested);
    addAction(m_copy);
    setContextMenuPolicy(Qt::ActionsContextMenu);
}

void BigPreview::startDrag(QMimeData* content) {
    constexpr int side = 128;
    const WindowHold hold(*this); // dragging runs a loop, in which the window may be closed
    QPixmap picture = QPixmap::fromImage(scaledImage().scaled(
        QSize(side, side) * devicePixelRatioF(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
    picture.setDevicePixelRatio(devicePixelRatioF());
    auto* const drag = new QDrag(this); // goes by itself, when the data were fetched
    drag->setMimeData(content);
    drag->setPixmap(picture);
    drag->setHotSpot(QRectF(QPointF(), picture.deviceIndependentSize()).center().toPoint());
    drag->exec(Qt::CopyAction);
}

void BigPreview::showImage(const QImage& image) {
    if (image.cacheKey() != m_image.cacheKey())
        showOnly(*m_canvas, image);
}

void BigPreview::showNothing() {
    showOnly(*m_empty, {});
}

void BigPreview::showProgress() {
    showOnly(*m_progress, {});
}

void BigPreview::showOnly(const QWidget& part, const QImage& image) {
    m_image = image;
    m_scaled = {};
    m_copy->setEnabled(!image.isNull());
    for (QWidget* const each : std::initializer_list<QWidget*>{m_canvas, m_empty, m_progress})
        each->setVisible(each == &part);
    place();
    update();
}

QSize BigPreview::minimumSizeHint() const {
    return {leastHeight, leastHeight};
}

QRect BigPreview::imageRect() const {
    if (m_image.isNull())
        return {};
    const QRect room = rect().adjusted(padding, padding, -padding, -padding);
    QRect fitted(QPoint(), m_image.size().scaled(room.size(), Qt::KeepAspectRatio));
    fitted.moveCenter(room.center());
    return fitted;
}

void BigPreview::place() {
    m_empty->setGeometry(rect());
    QRect middle(QPoint(), m_progress->sizeHint());
    middle.moveCenter(rect().center());
    m_progress->setGeometry(middle);
    m_canvas->setGeometry(imageRect());
}

void BigPreview::resizeEvent(QResizeEvent* /*event*/) {
    m_scaled = {};
    place();
}

// A first step by whole pixels keeps the smooth one cheap for large pictures.
const QImage& BigPreview::scaledImage() {
    const QSize target = (QSizeF(imageRect().size()) * devicePixelRatioF()).toSize();
    if (m_scaled.size() == target)
        return m_scaled;
    const bool isMuchLarger = m_image.width() > 2 * roughly * target.width();
    const QImage rough = isMuchLarger ? m_image.scaled(target * roughly) : m_image;
    m_scaled = rough.convertToFormat(QImage::Format_ARGB32_Premultiplied)
                   .scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return m_scaled;
}

void BigPreview::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    constexpr double halfLine = 0.5;
    QPainterPath outline;
    outline.addRoundedRect(QRectF(rect()).adjusted(halfLine, halfLine, -halfLine, -halfLine),
                           radius, radius);
    painter.setClipPath(outline);
    if (m_image.isNull()) {
        painter.fillRect(rect(), themeColor(ThemeColor::controlBackground, palette()));
    } else {
        paintCheckerboard(painter, rect(), squareSize);
        painter.drawImage(imageRect(), scaledImage());
    }
    painter.setClipping(false);
    painter.setPen(themeColor(ThemeColor::separator, palette()));
    painter.drawPath(outline);
    QStyleOption option;
    option.initFrom(this);
    if (showsFocus(option))
        paintFocusRing(painter, QRectF(rect()), radius, palette());
}

} // namespace stillwick
