#include "Stillwick/StillPicture.h"

#include <utility>

namespace stillwick {

namespace {

/// A picture in memory.
class HeldPicture final : public PictureSource {
public:
    explicit HeldPicture(QImage image) : m_image(std::move(image)) {}

    [[nodiscard]] QImage image() const override { return m_image; }
    [[nodiscard]] QSize size() const override { return m_image.size(); }

private:
    QImage m_image;
};

} // namespace

StillPicture::StillPicture(const QImage& image) {
    if (image.isNull())
        return;
    m_picture = std::make_shared<HeldPicture>(image);
    m_small = std::make_shared<HeldPicture>(smallOf(image));
}

StillPicture::StillPicture(std::shared_ptr<const PictureSource> picture,
                           std::shared_ptr<const PictureSource> small)
    : m_picture(std::move(picture)), m_small(std::move(small)) {}

QSize StillPicture::size() const {
    return m_picture ? m_picture->size() : QSize();
}

QImage StillPicture::image() const {
    return m_picture ? m_picture->image() : QImage();
}

QImage StillPicture::small() const {
    return m_small ? m_small->image() : QImage();
}

QImage StillPicture::smallOf(const QImage& image) {
    const QSize fitted = image.size().scaled(smallSize, Qt::KeepAspectRatio);
    if (image.isNull() || fitted.width() >= image.width())
        return image;
    return image.convertToFormat(QImage::Format_RGBA8888_Premultiplied)
        .scaled(fitted.expandedTo(QSize(1, 1)), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace stillwick
