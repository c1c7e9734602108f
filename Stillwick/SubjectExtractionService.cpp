#include "Stillwick/SubjectExtractionService.h"

#include "Stillwick/AppError.h"
#include "Vision/GenerateForegroundInstanceMaskRequest.h"
#include "Vision/ImageRequestHandler.h"

#include <QColorSpace>
#include <QCoroFuture>
#include <QtConcurrentRun>

#include <span>
#include <utility>

namespace stillwick {
namespace {

// An extraction of a very large picture takes hundreds of megabytes and threads of its own.
constexpr int mostAtOnce = 2;

using Segmenter = std::shared_ptr<const ForegroundSegmenter>;

const InstanceMaskObservation&
firstObservation(const GenerateForegroundInstanceMaskRequest& request) {
    if (request.results().empty() || request.results().front().allInstances().empty())
        throw AppError::noSubjectFound();
    return request.results().front();
}

std::vector<QImage> cutOuts(const Segmenter& segmenter, const QImage& image, ExportMode mode,
                            bool crop, std::stop_token stop) {
    if (segmenter == nullptr)
        throw AppError::subjectLiftingUnavailable();
    GenerateForegroundInstanceMaskRequest request(segmenter);
    const ImageRequestHandler handler(image);
    handler.perform(request, std::move(stop));
    const InstanceMaskObservation& observation = firstObservation(request);
    const std::span<const int> instances = observation.allInstances();
    const auto extent =
        crop ? MaskedImageExtent::CroppedToInstances : MaskedImageExtent::WholePicture;
    if (mode == ExportMode::merged)
        return {bitmapFromMask(observation.generateMaskedImage(instances, handler, extent))};
    std::vector<QImage> images;
    for (std::size_t i = 0; i < instances.size(); ++i)
        images.push_back(bitmapFromMask(
            observation.generateMaskedImage(instances.subspan(i, 1), handler, extent)));
    return images;
}

} // namespace

SubjectExtractionService::SubjectExtractionService(Segmenter segmenter)
    : m_segmenter(std::move(segmenter)) {
    m_pool.setObjectName(QStringLiteral("SubjectExtraction"));
    m_pool.setMaxThreadCount(mostAtOnce);
}

// Everything that is needed after the service may be gone is taken along by value.
QCoro::Task<std::vector<QImage>>
SubjectExtractionService::extract(QImage image, ExportMode mode, bool crop, std::stop_token stop) {
    QFuture<std::vector<QImage>> cut =
        QtConcurrent::run(&m_pool, cutOuts, m_segmenter, std::move(image), mode, crop, stop);
    co_return co_await cut;
}

std::vector<QImage> SubjectExtractionService::extractNow(const QImage& image, ExportMode mode,
                                                         bool crop, std::stop_token stop) const {
    return cutOuts(m_segmenter, image, mode, crop, std::move(stop));
}

QImage bitmapFromMask(QImage masked) {
    if (masked.isNull())
        throw AppError::exportFailed(QStringLiteral("Conversion du masque en image impossible."));
    if (!masked.colorSpace().isValid())
        masked.setColorSpace(QColorSpace(QColorSpace::SRgb));
    return masked;
}

} // namespace stillwick
