// DrawIcons FILE.svg SIZE=FILE.png …: a drawing as pictures, in the sizes that desktops without a
// reader of SVG ask for.
#include <QImage>
#include <QPainter>
#include <QString>
#include <QStringList>
#include <QSvgRenderer>

#include <cstdio>

namespace {

bool draw(QSvgRenderer& drawing, const QString& order) {
    const qsizetype sign = order.indexOf(u'=');
    const int size = order.first(qMax(sign, 0)).toInt();
    if (size < 1)
        return false;
    QImage picture(size, size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    drawing.render(&painter, picture.rect());
    painter.end();
    return picture.save(order.sliced(sign + 1), "PNG");
}

} // namespace

int main(int argc, char** argv) {
    QStringList words;
    for (int i = 1; i < argc; ++i)
        words.append(QString::fromLocal8Bit(argv[i]));
    QSvgRenderer drawing;
    if (words.isEmpty() || !drawing.load(words.takeFirst())) {
        std::fputs("DrawIcons: no drawing\n", stderr);
        return 1;
    }
    for (const QString& order : std::as_const(words)) {
        if (!draw(drawing, order)) {
            std::fprintf(stderr, "DrawIcons: not drawn: %s\n", order.toLocal8Bit().constData());
            return 1;
        }
    }
    return 0;
}
