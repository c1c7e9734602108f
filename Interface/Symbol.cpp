#include "Interface/Symbol.h"

#include "Interface/SymbolIconEngine.h"

#include <QDir>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace stillwick {

namespace {

QPixmap drawApplicationIcon(int side) {
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QSvgRenderer renderer(QStringLiteral(":/stillwick.svg"));
    renderer.render(&painter, QRectF(0, 0, side, side));
    return pixmap;
}

} // namespace

QIcon symbolIcon(QStringView name, ThemeColor color) {
    Q_ASSERT(QFile::exists(symbolPath(name)));
    return QIcon(new SymbolIconEngine(name.toString(), color));
}

QIcon symbolIcon(QStringView name, const QColor& color) {
    Q_ASSERT(QFile::exists(symbolPath(name)));
    return QIcon(new SymbolIconEngine(name.toString(), color));
}

QStringList symbolNames() {
    QStringList names = QDir(QStringLiteral(":/symbols")).entryList(QDir::Files, QDir::Name);
    for (QString& name : names)
        name.chop(int(qstrlen(".svg")));
    return names;
}

QIcon applicationIcon() {
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64, 128, 256})
        icon.addPixmap(drawApplicationIcon(side));
    return icon;
}

} // namespace stillwick
