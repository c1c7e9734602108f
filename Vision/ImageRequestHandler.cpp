#include "Vision/ImageRequestHandler.h"

#include "Vision/GenerateForegroundInstanceMaskRequest.h"
#include "Vision/VisionError.h"

#include <utility>

namespace stillwick {

ImageRequestHandler::ImageRequestHandler(const QImage& picture)
    : m_picture(picture.convertToFormat(QImage::Format_RGBA8888_Premultiplied)) {}

void ImageRequestHandler::perform(GenerateForegroundInstanceMaskRequest& request,
                                  std::stop_token stop) const {
    request.m_results.clear();
    if (m_picture.isNull())
        throw VisionError(VisionError::Category::EmptyPicture);
    if (stop.stop_requested())
        throw VisionError(VisionError::Category::Cancelled);
    Foreground foreground = request.m_segmenter->segment(m_picture, std::move(stop));
    if (foreground.instanceCount > 0)
        request.m_results.emplace_back(std::move(foreground));
}

} // namespace stillwick
