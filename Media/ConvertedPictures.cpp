#include "Media/ConvertedPictures.h"

#include <algorithm>

namespace stillwick {

namespace {

constexpr std::size_t picturesKept = 3;

} // namespace

bool ConvertedPictures::has(const VideoFrame& frame) const {
    return std::any_of(m_pictures.begin(), m_pictures.end(),
                       [&frame](const Picture& picture) { return picture.frame.get() == &frame; });
}

const QImage& ConvertedPictures::of(const SharedFrame& frame) {
    const auto known = std::find_if(m_pictures.begin(), m_pictures.end(),
                                    [&frame](const Picture& p) { return p.frame == frame; });
    if (known != m_pictures.end()) {
        std::rotate(known, known + 1, m_pictures.end());
        return m_pictures.back().image;
    }
    if (m_pictures.size() >= picturesKept)
        m_pictures.pop_front();
    m_pictures.push_back({frame, m_converter.convert(*frame)});
    return m_pictures.back().image;
}

} // namespace stillwick
