#include "Stillwick/VideoFrameExtractorService.h"

#include "Media/ImageGenerator.h"
#include "Media/MediaAsset.h"
#include "Stillwick/AppError.h"

#include <QCoroFuture>
#include <QPromise>

#include <utility>

namespace stillwick {

namespace {

QCoro::Task<QImage> grab(std::shared_ptr<const ImageGenerator> generator, CMTime time,
                         std::stop_token stop) {
    if (!generator)
        throw AppError::noVideoLoaded();
    auto promise = std::make_shared<QPromise<ImageGenerator::Result>>();
    promise->start();
    const QFuture<ImageGenerator::Result> future = promise->future();
    generator->generateImageAsynchronously(
        time,
        [promise](ImageGenerator::Result result) {
            promise->addResult(std::move(result));
            promise->finish();
        },
        std::move(stop));
    const ImageGenerator::Result result = co_await future;
    if (result.image.isNull()) {
        throw AppError::frameExtractionFailed(result.error ? result.error->description()
                                                           : QStringLiteral("inconnu"));
    }
    co_return result.image;
}

} // namespace

void VideoFrameExtractorService::prepare(std::shared_ptr<const MediaAsset> asset) {
    auto generator = std::make_shared<ImageGenerator>(std::move(asset));
    generator->setAppliesPreferredTrackTransform(true);
    generator->setRequestedTimeToleranceBefore(CMTime::zero());
    generator->setRequestedTimeToleranceAfter(CMTime::zero());
    m_generator = std::move(generator);
}

QCoro::Task<QImage> VideoFrameExtractorService::image(CMTime time, std::stop_token stop) {
    return grab(m_generator, time, std::move(stop));
}

QImage VideoFrameExtractorService::imageNow(CMTime time) const {
    return m_generator ? m_generator->generateImage(time).image : QImage();
}

} // namespace stillwick
