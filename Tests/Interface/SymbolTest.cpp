#include "Interface/Symbol.h"
#include "Interface/SymbolFitting.h"
#include "Interface/SymbolIconEngine.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QPainter>
#include <QRegularExpression>

#include <algorithm>
#include <set>

namespace {

using namespace stillwick;

/// The names that the window asks for.
const QStringList& namesOfTheWindow() {
    static const QStringList names =
        QStringLiteral(
            "arrow.right arrow.up.right backward.frame.fill camera.fill circle cursorarrow "
            "exclamationmark.triangle.fill film film.stack folder folder.badge.plus "
            "forward.frame.fill gobackward goforward largecircle.fill.circle line.diagonal "
            "pause.fill person.slash photo photo.on.rectangle photo.stack play.fill "
            "scribble.variable square.and.arrow.down square.and.arrow.up square.on.square "
            "text.alignleft text.badge.checkmark trash wand.and.stars")
            .split(u' ');
    return names;
}

QImage painted(const QString& name, int side, double ratio = 1, QIcon::Mode mode = QIcon::Normal) {
    QImage image(QSize(side, side) * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    symbolIcon(name).paint(&painter, QRect(0, 0, side, side), Qt::AlignCenter, mode);
    return image;
}

/// The colours of the pixels that are covered whole.
std::set<QRgb> inks(const QImage& image) {
    std::set<QRgb> colors;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) == 255)
                colors.insert(image.pixel(x, y));
        }
    }
    return colors;
}

bool isEmpty(const QImage& image) {
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) > 127)
                return false;
        }
    }
    return true;
}

/// The part of what is inked that is inked whole.
double sharpness(const QImage& image) {
    double whole = 0;
    double any = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            whole += qAlpha(image.pixel(x, y)) == 255 ? 1 : 0;
            any += qAlpha(image.pixel(x, y)) > 0 ? 1 : 0;
        }
    }
    return any > 0 ? whole / any : 0;
}

TEST(Symbol, EverySymbolOfTheWindowIsDrawn) {
    const QStringList names = symbolNames();
    for (const QString& name : namesOfTheWindow())
        EXPECT_TRUE(names.contains(name)) << name.toStdString();
}

TEST(Symbol, NoSymbolIsEmptyOrCutOffAtAnySize) {
    for (const QString& name : symbolNames()) {
        for (const int side : {16, 20, 44}) {
            for (const double ratio : {1.0, 1.25, 2.0, 3.0}) {
                const QImage image = painted(name, side, ratio);
                EXPECT_FALSE(isEmpty(image)) << name.toStdString() << " at " << side;
                for (int i = 0; i < image.width(); ++i) {
                    const int last = image.width() - 1;
                    EXPECT_EQ(qAlpha(image.pixel(i, 0)) + qAlpha(image.pixel(i, last)) +
                                  qAlpha(image.pixel(0, i)) + qAlpha(image.pixel(last, i)),
                              0)
                        << name.toStdString() << " touches the edge at " << side << "×" << ratio;
                }
            }
        }
    }
}

TEST(Symbol, EverySymbolHasOneStrokeWeight) {
    static const QRegularExpression width(QStringLiteral("stroke-width=\"([^\"]*)\""));
    for (const QString& name : symbolNames()) {
        QFile file(symbolPath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        auto found = width.globalMatch(QString::fromUtf8(file.readAll()));
        ASSERT_TRUE(found.hasNext()) << name.toStdString();
        EXPECT_EQ(found.next().captured(1), u"1.5");
        EXPECT_FALSE(found.hasNext()) << name.toStdString();
    }
}

TEST(Symbol, LevelLinesAreSharpAtSmallSizes) {
    // Level lines with round ends: where no edge falls within a pixel, most of the ink is whole.
    for (const int side : {16, 20, 32, 40, 44, 88}) {
        const QByteArray lines =
            "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 20 20' fill='none' stroke='#000' "
            "stroke-width='1.5'><path d='M3 5.3 H17'/><path d='M3 13.1 H17'/></svg>";
        const QString fitted = QString::fromUtf8(fitSymbolToPixels(lines, side));
        static const QRegularExpression height(QStringLiteral("M [0-9.]+ ([0-9.]+)"));
        auto found = height.globalMatch(fitted);
        const double half = 1.5 * side / 20 / 2;
        int count = 0;
        for (; found.hasNext(); ++count) {
            const double y = found.next().captured(1).toDouble();
            const double toEdge = std::min(std::abs(y - half - std::round(y - half)),
                                           std::abs(y + half - std::round(y + half)));
            EXPECT_LT(toEdge, 0.01) << side;
        }
        EXPECT_EQ(count, 2);
    }
}

TEST(Symbol, FittingMovesNothingByMoreThanHalfAPixel) {
    const QByteArray lines =
        "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 20 20' fill='none' stroke='#000' "
        "stroke-width='1.5'><path d='M3 4.1 H17 V9.7'/></svg>";
    for (int side = 12; side < 96; ++side) {
        const QString fitted = QString::fromUtf8(fitSymbolToPixels(lines, side));
        static const QRegularExpression path(
            QStringLiteral("M ([0-9.]+) ([0-9.]+) H ([0-9.]+) V ([0-9.]+)"));
        const QRegularExpressionMatch match = path.match(fitted);
        ASSERT_TRUE(match.hasMatch()) << fitted.toStdString();
        const double scale = side / 20.0;
        EXPECT_NEAR(match.captured(1).toDouble(), 3 * scale, 0.51);
        EXPECT_NEAR(match.captured(2).toDouble(), 4.1 * scale, 0.51);
        EXPECT_NEAR(match.captured(3).toDouble(), 17 * scale, 0.51);
        EXPECT_NEAR(match.captured(4).toDouble(), 9.7 * scale, 0.51);
    }
}

TEST(Symbol, TheDrawingsOfLinesAreMostlyWholePixels) {
    EXPECT_GT(sharpness(painted(QStringLiteral("pause.fill"), 16)), 0.7);
    EXPECT_GT(sharpness(painted(QStringLiteral("pause.fill"), 20)), 0.7);
    EXPECT_GT(sharpness(painted(QStringLiteral("text.alignleft"), 20, 2)), 0.7);
}

TEST(Symbol, TheTwoBarsOfAPauseMirrorEachOtherAtEverySize) {
    for (int side = 12; side <= 64; side += 2) {
        const QImage image = painted(QStringLiteral("pause.fill"), side);
        for (int x = 0; x < side / 2; ++x)
            EXPECT_NEAR(qAlpha(image.pixel(x, side / 2)),
                        qAlpha(image.pixel(side - 1 - x, side / 2)), 2)
                << side;
    }
}

TEST(Symbol, ItsColourIsTheTextsAndFollowsTheTheme) {
    const QString name = QStringLiteral("pause.fill");
    for (const auto scheme : {ColorScheme::dark, ColorScheme::light}) {
        QApplication::setPalette(themePalette(scheme));
        EXPECT_EQ(inks(painted(name, 20)), std::set{themeColor(ThemeColor::text, scheme).rgba()});
    }
}

TEST(Symbol, ItIsFaintWhereDisabledAndLightWhereSelected) {
    const QString name = QStringLiteral("pause.fill");
    const ColorScheme scheme = schemeOf(QApplication::palette());
    EXPECT_EQ(inks(painted(name, 20, 1, QIcon::Disabled)),
              std::set{themeColor(ThemeColor::disabledText, scheme).rgba()});
    EXPECT_EQ(inks(painted(name, 20, 1, QIcon::Selected)),
              std::set{themeColor(ThemeColor::onAccent, scheme).rgba()});
}

TEST(Symbol, APixmapForADenseScreenHasItsPixels) {
    const QPixmap pixmap = symbolIcon(u"folder").pixmap(QSize(20, 20), 2.0);
    EXPECT_EQ(pixmap.size(), QSize(40, 40));
    EXPECT_EQ(pixmap.devicePixelRatio(), 2.0);
}

TEST(Symbol, TheApplicationHasAnIconAtEverySize) {
    for (const int side : {16, 32, 48, 128, 256}) {
        const QImage image = applicationIcon().pixmap(QSize(side, side), 1.0).toImage();
        EXPECT_EQ(image.width(), side);
        EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
        EXPECT_EQ(qAlpha(image.pixel(side / 2, side / 2)), 255);
    }
}

} // namespace
