#include "Ffms2Grabs.h"

#include "Media/VideoDecoder.h"

#include <QFile>
#include <QString>

#include <array>
#include <stdexcept>
#include <string>
#include <utility>

namespace stillwick::benchmarks {

namespace {

using Source = std::unique_ptr<FFMS_VideoSource, Ffms2Deleter>;

/// FFMS2's way of telling what went wrong.
class ErrorText final {
public:
    ErrorText() {
        m_info.Buffer = m_text.data();
        m_info.BufferSize = int(m_text.size());
    }
    [[nodiscard]] FFMS_ErrorInfo* info() { return &m_info; }
    [[nodiscard]] std::runtime_error error() const {
        return std::runtime_error(std::string("FFMS2: ") + m_text.data());
    }

private:
    std::array<char, 512> m_text{};
    FFMS_ErrorInfo m_info{};
};

void convertToRgba(FFMS_VideoSource& source, const AVCodecParameters& size) {
    ErrorText text;
    const std::array<int, 2> formats{FFMS_GetPixFmt("rgba"), -1};
    if (FFMS_SetOutputFormatV2(&source, formats.data(), size.width, size.height,
                               FFMS_RESIZER_BICUBIC, text.info()) != 0)
        throw text.error();
}

const FFMS_Frame& frameOf(FFMS_VideoSource& source, std::size_t frame) {
    ErrorText text;
    const FFMS_Frame* result = FFMS_GetFrame(&source, int(frame), text.info());
    if (!result)
        throw text.error();
    return *result;
}

Source openSource(const QByteArray& path, FFMS_Index& index) {
    ErrorText text;
    const int track = FFMS_GetFirstTrackOfType(&index, FFMS_TYPE_VIDEO, text.info());
    Source source(FFMS_CreateVideoSource(path.constData(), track, &index, decoderThreadCount(),
                                         FFMS_SEEK_NORMAL, text.info()));
    if (!source)
        throw text.error();
    return source;
}

class Ffms2Grabs final : public GrabMethod {
public:
    /// Without an index, one is made for each grab.
    Ffms2Grabs(QString path, const Clip& clip, FFMS_Index* index, Opening opening)
        : m_path(std::move(path)), m_clip(clip), m_index(index), m_opening(opening) {
        if (opening == Opening::Once)
            open();
    }

    void grab(const Moment& moment) override {
        if (m_opening == Opening::EveryTime)
            open();
        m_frame = moment.frame;
        if (frameOf(*m_source, m_frame).Data[0] == nullptr)
            throw std::runtime_error("FFMS2: no picture");
    }

    std::optional<PictureHash> lastPicture() override {
        // Resetting the format shows the samples of the frame that is decoded already.
        FFMS_ResetOutputFormatV(m_source.get());
        const FFMS_Frame& frame = frameOf(*m_source, m_frame);
        const PictureHash hash =
            hashOf({frame.Data, frame.Linesize, frame.EncodedWidth, frame.EncodedHeight});
        convertToRgba(*m_source, *m_clip.stream().codecpar);
        return hash;
    }

private:
    void open() {
        m_source.reset();
        const Ffms2Index own = m_index ? nullptr : makeFfms2Index(m_path);
        m_source = openSource(m_path.toUtf8(), m_index ? *m_index : *own);
        convertToRgba(*m_source, *m_clip.stream().codecpar);
    }

    QString m_path;
    const Clip& m_clip;
    FFMS_Index* m_index;
    Opening m_opening;
    Source m_source;
    std::size_t m_frame = 0;
};

} // namespace

Ffms2Index makeFfms2Index(const QString& path) {
    FFMS_Init(0, 0);
    ErrorText text;
    FFMS_Indexer* indexer = FFMS_CreateIndexer(path.toUtf8().constData(), text.info());
    if (!indexer)
        throw text.error();
    FFMS_TrackTypeIndexSettings(indexer, FFMS_TYPE_VIDEO, 1, 0);
    Ffms2Index index(FFMS_DoIndexing2(indexer, FFMS_IEH_ABORT, text.info()));
    if (!index)
        throw text.error();
    return index;
}

std::unique_ptr<GrabMethod> makeFfms2Grabs(const QString& path, const Clip& clip, FFMS_Index& index,
                                           Opening opening) {
    return std::make_unique<Ffms2Grabs>(path, clip, &index, opening);
}

std::unique_ptr<GrabMethod> makeFfms2FirstGrabs(const QString& path, const Clip& clip) {
    return std::make_unique<Ffms2Grabs>(path, clip, nullptr, Opening::EveryTime);
}

} // namespace stillwick::benchmarks
