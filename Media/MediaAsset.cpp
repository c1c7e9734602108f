#include "Media/MediaAsset.h"

#include "Media/FrameSource.h"

#include <utility>

namespace stillwick {

MediaAsset::MediaAsset(QString path) : m_path(std::move(path)) {}
MediaAsset::~MediaAsset() = default;

void MediaAsset::open(const std::stop_token& stop) const {
    const std::lock_guard lock(m_mutex);
    if (!m_opened)
        m_opened = std::make_unique<FrameSource>(m_path, stop);
}

std::unique_ptr<FrameSource> MediaAsset::takeFrameSource(const std::stop_token& stop) const {
    {
        const std::lock_guard lock(m_mutex);
        if (m_opened)
            return std::move(m_opened);
    }
    return std::make_unique<FrameSource>(m_path, stop);
}

} // namespace stillwick
