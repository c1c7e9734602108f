// contact-sheet OUT.jpg WIDTH CUT-OUT.png…: each cut-out in every style, a row for each, on soft
// grey; each cell is WIDTH pixels wide.
#include "Stillwick/ImageFilterService.h"

#include <QCoreApplication>
#include <QImage>
#include <QPainter>
#include <QStringList>

#include <cstdio>

using namespace stillwick;

namespace {

constexpr int gap = 8;
constexpr int quality = 85;

void drawRow(QPainter& painter, const QImage& cutOut, QRect cell) {
    const ImageFilterService filter;
    for (const FilterStyle style : allFilterStyles) {
        const QImage fitted = filter.apply(style, cutOut)
                                  .scaled(cell.size() - QSize(2 * gap, 2 * gap),
                                          Qt::KeepAspectRatio, Qt::SmoothTransformation);
        QRect place(QPoint(), fitted.size());
        place.moveCenter(cell.center());
        painter.drawImage(place.topLeft(), fitted);
        cell.translate(cell.width(), 0);
    }
}

QImage sheetOf(const QStringList& files, QSize cell) {
    QImage sheet(int(allFilterStyles.size()) * cell.width(), int(files.size()) * cell.height(),
                 QImage::Format_RGB32);
    sheet.fill(QColor(222, 222, 218));
    QPainter painter(&sheet);
    for (int row = 0; row < files.size(); ++row) {
        const QImage cutOut(files[row]);
        if (cutOut.isNull())
            return {};
        drawRow(painter, cutOut, {QPoint(0, row * cell.height()), cell});
    }
    return sheet;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int width = arguments.value(2).toInt();
    if (arguments.size() < 4 || width < 40) {
        std::fprintf(stderr, "usage: contact-sheet OUT.jpg WIDTH CUT-OUT.png…\n");
        return 2;
    }
    const QImage sheet = sheetOf(arguments.mid(3), QSize(width, width * 3 / 4));
    if (sheet.isNull() || !sheet.save(arguments[1], nullptr, quality)) {
        std::fprintf(stderr, "contact-sheet: a cut-out cannot be read, or the sheet not written\n");
        return 1;
    }
    return 0;
}
