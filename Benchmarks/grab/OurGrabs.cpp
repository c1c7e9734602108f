#include "GrabMethod.h"

#include "Media/FrameSource.h"
#include "Media/PictureConverter.h"

#include <stdexcept>

namespace stillwick::benchmarks {

namespace {

class OurGrabs final : public GrabMethod {
public:
    OurGrabs(const QString& path, Opening opening) : m_path(path), m_opening(opening) {
        if (opening == Opening::Once)
            open();
    }

    void grab(const Moment& moment) override {
        m_frame.reset();
        if (m_opening == Opening::EveryTime)
            open();
        m_frame = m_source->frameAt(moment.time, {}, {});
        if (m_converter->convert(*m_frame).isNull())
            throw std::runtime_error("no bitmap");
    }

    std::optional<PictureHash> lastPicture() override { return hashOf(m_frame->avFrame()); }

private:
    void open() {
        m_source.reset();
        m_source = std::make_unique<FrameSource>(m_path, std::stop_token());
        m_converter = std::make_unique<PictureConverter>();
    }

    QString m_path;
    Opening m_opening;
    std::unique_ptr<FrameSource> m_source;
    std::unique_ptr<PictureConverter> m_converter;
    SharedFrame m_frame;
};

} // namespace

std::unique_ptr<GrabMethod> makeOurGrabs(const QString& path, Opening opening) {
    return std::make_unique<OurGrabs>(path, opening);
}

} // namespace stillwick::benchmarks
