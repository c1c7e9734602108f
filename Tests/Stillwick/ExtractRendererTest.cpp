#include "Stillwick/ExtractRenderer.h"

#include "Stillwick/EdgeProcessingService.h"
#include "Stillwick/ImageFilterService.h"

#include <gtest/gtest.h>

#include <QFuture>
#include <QPainter>
#include <QtConcurrentRun>

namespace stillwick {
namespace {

/// A disc in two colours.
QImage cutOut() {
    QImage image(120, 90, QImage::Format_RGBA8888_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(220, 120, 40));
    painter.drawEllipse(QPointF(60, 45), 36, 36);
    painter.setBrush(QColor(20, 40, 90));
    painter.drawEllipse(QPointF(60, 45), 14, 14);
    painter.end();
    return image.convertToFormat(QImage::Format_RGBA8888);
}

const ExtractRenderer renderer = ExtractRenderer::make();

TEST(ExtractRendererTest, WithoutStyleAndEdgeTheVeryPictureComesBack) {
    const QImage image = cutOut();
    EXPECT_EQ(renderer.render(image, FilterStyle::none, EdgeParams::identity()).cacheKey(),
              image.cacheKey());
}

TEST(ExtractRendererTest, AFullyTransparentCutOutStaysSoInEveryStyle) {
    QImage image(50, 40, QImage::Format_RGBA8888);
    image.fill(Qt::transparent);
    for (const FilterStyle style : allFilterStyles)
        EXPECT_EQ(renderer.render(image, style, EdgeParams::identity()), image);
}

TEST(ExtractRendererTest, TheOrderIsEdgeThenStyleThenOutline) {
    const EdgeParams params{1.5, 2, true, 5, 0.2, 0.4, 0.6, 1};
    for (const FilterStyle style : allFilterStyles) {
        const QImage cleaned = renderer.edge->cleanEdges(cutOut(), 1.5, 2);
        const QImage styled = renderer.filter->apply(style, cleaned);
        EXPECT_EQ(renderer.render(cutOut(), style, params),
                  renderer.edge->addOutline(styled, 5, QColor(51, 102, 153)));
    }
}

TEST(ExtractRendererTest, InEveryStyleTheRingKeepsTheOutlineColourExactly) {
    const EdgeParams params{0, 0, true, 6, 1, 0, 0.2, 1};
    for (const FilterStyle style : allFilterStyles) {
        const QImage result = renderer.render(cutOut(), style, params);
        ASSERT_EQ(result.size(), QSize(136, 106));
        // The disc ends 36 from its middle at (68, 53); the ring lies beyond.
        for (const QPoint at : {QPoint(68 + 39, 53), QPoint(68, 53 - 40), QPoint(68 - 28, 53 + 28)})
            EXPECT_EQ(result.pixelColor(at), QColor(255, 0, 51));
    }
}

TEST(ExtractRendererTest, OneRendererServesSeveralThreadsAtOnce) {
    const EdgeParams params{1, 1, true, 4, 1, 1, 1, 1};
    const QImage image = cutOut();
    const auto renderIn = [&](FilterStyle style) {
        return renderer.render(image, style, params);
    };
    QList<QFuture<QImage>> futures;
    for (int round = 0; round < 5; ++round)
        for (const FilterStyle style : allFilterStyles)
            futures.append(QtConcurrent::run(renderIn, style));
    for (qsizetype i = 0; i < futures.size(); ++i)
        EXPECT_EQ(futures[i].result(), renderIn(allFilterStyles.at(std::size_t(i) % 4)));
}

TEST(ExtractRendererTest, EdgesBeyondAllMeasureGiveAPictureAllTheSame) {
    constexpr double huge = 1e300;
    for (const FilterStyle style : allFilterStyles) {
        const QImage image =
            renderer.render(cutOut(), style, {huge, huge, true, huge, huge, -huge, huge, huge});
        EXPECT_GE(image.width(), 120);
        EXPECT_GE(image.height(), 90);
    }
}

} // namespace
} // namespace stillwick
