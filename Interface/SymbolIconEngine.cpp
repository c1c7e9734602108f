#include "Interface/SymbolIconEngine.h"

#include "Interface/SymbolFitting.h"

#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <algorithm>
#include <utility>

namespace stillwick {

namespace {

QByteArray drawing(const QString& name) {
    QFile file(symbolPath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// *Shape*: ARGB 8, premultiplied, `side` pixels square, in one colour.
QPixmap drawSymbol(const QString& name, int side, const QColor& color) {
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    QSvgRenderer renderer(fitSymbolToPixels(drawing(name), side));
    renderer.render(&painter, QRectF(image.rect()));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    painter.end();
    return QPixmap::fromImage(std::move(image));
}

} // namespace

QString symbolPath(QStringView name) {
    return QStringLiteral(":/symbols/%1.svg").arg(name);
}

SymbolIconEngine::SymbolIconEngine(QString name, Tint tint)
    : m_name(std::move(name)), m_tint(tint) {}

QColor SymbolIconEngine::colorFor(QIcon::Mode mode) const {
    const QPalette palette = QGuiApplication::palette();
    if (const QColor* fixed = std::get_if<QColor>(&m_tint); fixed != nullptr) {
        QColor color = *fixed;
        if (mode == QIcon::Disabled)
            color.setAlphaF(color.alphaF() * 0.4F);
        return color;
    }
    switch (mode) {
    case QIcon::Disabled:
        return themeColor(ThemeColor::disabledText, palette);
    case QIcon::Selected:
        return themeColor(ThemeColor::onAccent, palette);
    case QIcon::Normal:
    case QIcon::Active:
        break;
    }
    return themeColor(std::get<ThemeColor>(m_tint), palette);
}

QPixmap SymbolIconEngine::rendered(const QSize& pixels, const QColor& color) const {
    const int side = std::min(pixels.width(), pixels.height());
    if (side <= 0)
        return {};
    const QString cacheKey =
        QStringLiteral("symbol/%1/%2/%3").arg(m_name).arg(side).arg(color.rgba(), 8, 16);
    QPixmap pixmap;
    if (!QPixmapCache::find(cacheKey, &pixmap)) {
        pixmap = drawSymbol(m_name, side, color);
        QPixmapCache::insert(cacheKey, pixmap);
    }
    return pixmap;
}

void SymbolIconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
                             QIcon::State /*state*/) {
    const qreal ratio = painter->device()->devicePixelRatioF();
    const QPixmap pixmap = rendered((QSizeF(rect.size()) * ratio).toSize(), colorFor(mode));
    if (pixmap.isNull())
        return;
    const qreal side = pixmap.width() / ratio;
    const QPointF corner = QRectF(rect).center() - QPointF(side / 2, side / 2);
    painter->drawPixmap(QRectF(corner, QSizeF(side, side)), pixmap, QRectF(pixmap.rect()));
}

QPixmap SymbolIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State /*state*/) {
    return rendered(size, colorFor(mode));
}

QPixmap SymbolIconEngine::scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state,
                                       qreal scale) {
    QPixmap result = pixmap(size, mode, state); // the size is in pixels already
    result.setDevicePixelRatio(scale);
    return result;
}

QString SymbolIconEngine::key() const {
    return QStringLiteral("StillwickSymbol");
}

QIconEngine* SymbolIconEngine::clone() const {
    return new SymbolIconEngine(*this);
}

QString SymbolIconEngine::iconName() {
    return m_name;
}

bool SymbolIconEngine::isNull() {
    return !QFile::exists(symbolPath(m_name));
}

} // namespace stillwick
