#include "Media/FileOpening.h"

#include "Media/MediaError.h"

#include <QFile>
#include <QFileInfo>
#include <QString>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace stillwick {

namespace {

using Category = MediaError::Category;

// Demuxers of films. Play lists, image sequences, devices and text are not among them: the first
// three could open other files, the last makes a "film" of any text.
constexpr const char* filmFormats =
    "mov,mp4,m4a,3gp,3g2,mj2,matroska,webm,avi,mpegts,mpeg,mpegvideo,flv,live_flv,kux,ogg,asf,asf_"
    "o,"
    "h264,hevc,m4v,h261,h263,vc1,vc1test,obu,av1,ivf,mjpeg,mjpeg_2000,dv,gif,apng,mxf,nut,rm,wtv,"
    "nsv,"
    "yuv4mpegpipe,gxf,dirac,cavsvideo,avs,avs2,avs3,swf,smjpeg,mpegtsraw,vob,roq,bink,smk,nuv,mpl2,"
    "mp3,aac,wav,flac,aiff,w64,caf,ac3,eac3,dts,amr,ape,tta,wv,au,truehd";

int isStopRequested(void* opaque) {
    return static_cast<const std::stop_token*>(opaque)->stop_requested() ? 1 : 0;
}

void throwUnlessReadableFile(const QString& path) {
    const QFileInfo info(path);
    if (path.isEmpty() || path.contains(QChar::Null) || !info.exists())
        throw MediaError::make(Category::NotFound);
    if (!info.isFile())
        throw MediaError::make(Category::NotAFile);
    if (!info.isReadable())
        throw MediaError::make(Category::NoPermission);
    if (info.size() == 0)
        throw MediaError::make(Category::EmptyFile);
}

bool isPictureFormat(const AVInputFormat& format) {
    const QByteArrayView name(format.name);
    return name.endsWith("_pipe") || name.startsWith("image2") || name == QByteArrayView("ico");
}

bool isFilmFormat(const AVInputFormat& format) {
    const QByteArray name = QByteArray(format.name).split(',').front();
    return av_match_name(name.constData(), filmFormats) > 0;
}

/// The container that the bytes at the file's head tell; null where they tell none.
const AVInputFormat* probedFormat(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw MediaError::make(Category::ReadFailed, file.errorString());
    constexpr qint64 headSize = 64 * 1024;
    QByteArray head = file.read(headSize);
    const auto size = int(head.size());
    head.append(AVPROBE_PADDING_SIZE, '\0');
    AVProbeData data{};
    data.filename = "";
    data.buf = reinterpret_cast<unsigned char*>(head.data());
    data.buf_size = size;
    int score = 0;
    return av_probe_input_format3(&data, 1, &score);
}

/// True where what the file holds made a call fail, not the system.
bool isFaultOfFile(int code) {
    constexpr auto codes = std::to_array(
        {AVERROR_INVALIDDATA, AVERROR(EINVAL), AVERROR_EOF, AVERROR(ERANGE), AVERROR(ENOMEM)});
    return std::ranges::find(codes, code) != codes.end() && !libav::isOutOfMemory(code);
}

/// Why libav* refused a readable file: told by the bytes at its head.
[[noreturn]] void throwWhyRefused(const QString& path, int code) {
    if (!isFaultOfFile(code))
        throw MediaError::fromLibav(code);
    const AVInputFormat* format = probedFormat(path);
    if (!format)
        throw MediaError::make(Category::NotMedia);
    if (isPictureFormat(*format))
        throw MediaError::make(Category::StillPicture, QString::fromUtf8(format->name));
    throw MediaError::make(isFilmFormat(*format) ? Category::Damaged : Category::NotMedia,
                           QString::fromUtf8(format->name));
}

libav::FormatContext allocateContext(const std::stop_token& stop) {
    libav::FormatContext format = libav::checked(libav::FormatContext(avformat_alloc_context()));
    format->interrupt_callback = {isStopRequested, const_cast<std::stop_token*>(&stop)};
    format->format_whitelist = av_strdup(filmFormats);
    format->protocol_whitelist = av_strdup("file");
    return format;
}

/// The system's error where it did not let the file be read on, else what the demuxer made of it.
int whoseFault(int code, int readError) {
    if (readError != 0)
        return readError;
    return code == AVERROR(EIO) ? AVERROR_INVALIDDATA : code;
}

/// Opens the file as `container`, or as what libav* takes it for where that is null.
int openAs(libav::FormatContext& format, const QString& path, const AVInputFormat* container) {
    const QByteArray url = "file:" + QFile::encodeName(path);
    AVIOContext* rawFile = nullptr;
    const int opened =
        avio_open2(&rawFile, url.constData(), AVIO_FLAG_READ, &format->interrupt_callback, nullptr);
    if (opened < 0)
        return opened;
    libav::File file(rawFile); // stays where the film is refused
    format->pb = rawFile;
    AVFormatContext* raw = format.release();
    const int code =
        avformat_open_input(&raw, url.constData(), container, nullptr); // frees on failure
    format.reset(raw);
    if (code < 0)
        return whoseFault(code, file->error);
    (void)file.release(); // goes with the context
    return code;
}

bool isCandidate(const AVStream& stream) {
    constexpr int pictures = AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS;
    return stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
           (stream.disposition & pictures) == 0;
}

/// True for a track whose container says that it holds no picture at all.
bool isEmpty(const AVFormatContext& format, const AVStream& stream) {
    const bool hasTables = std::strncmp(format.iformat->name, "mov,", 4) == 0;
    return hasTables && stream.nb_frames == 0 && stream.duration <= 0 &&
           avformat_index_get_entries_count(&stream) == 0;
}

/// True where a track's parameter sets say all that is asked of it: libav* would otherwise decode
/// whole pictures on one thread to learn their pixel format, which the decoder finds anyway.
bool headersSuffice(const AVFormatContext& format, const AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    return std::strncmp(format.iformat->name, "mov,", 4) == 0 &&
           parameters.codec_id == AV_CODEC_ID_H264 && parameters.extradata_size > 0 &&
           parameters.width > 0 && parameters.height > 0;
}

bool isProtected(const AVStream& stream) {
    return stream.codecpar->codec_tag == MKTAG('e', 'n', 'c', 'v') ||
           av_stream_get_side_data(&stream, AV_PKT_DATA_ENCRYPTION_INIT_INFO, nullptr) != nullptr;
}

void throwUnlessPlayable(const AVStream& stream) {
    if (isProtected(stream))
        throw MediaError::make(Category::Protected);
    const AVCodecParameters& parameters = *stream.codecpar;
    if (!decoderFor(stream)) {
        const AVCodecDescriptor* descriptor = avcodec_descriptor_get(parameters.codec_id);
        if (!descriptor)
            throw MediaError::make(Category::Unsupported);
        const QString name =
            QString::fromUtf8(descriptor->long_name ? descriptor->long_name : descriptor->name);
        throw MediaError(
            Category::Unsupported,
            QStringLiteral("Le format vidéo « %1 » n'est pas pris en charge.").arg(name));
    }
    if (std::int64_t(parameters.width) * parameters.height > maximumPixels) {
        throw MediaError(Category::TooLarge,
                         QStringLiteral("L'image de cette vidéo est trop grande (%1 × %2).")
                             .arg(parameters.width)
                             .arg(parameters.height));
    }
}

/// Completes what the container's head says of its streams by reading on.
int readStreamInformation(AVFormatContext& format) {
    std::vector<AVDictionary*> options(format.nb_streams, nullptr);
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        if (headersSuffice(format, *format.streams[i]))
            av_dict_set(&options[i], "skip_frame", "all", 0);
    }
    const int code = avformat_find_stream_info(&format, options.empty() ? nullptr : options.data());
    for (AVDictionary*& dictionary : options)
        av_dict_free(&dictionary);
    return code;
}

} // namespace

libav::FormatContext openContainer(const QString& path, const std::stop_token& stop) {
    throwUnlessReadableFile(path);
    av_log_set_level(AV_LOG_QUIET); // the application keeps no log
    libav::FormatContext format = allocateContext(stop);
    int opened = openAs(format, path, nullptr);
    if (opened == AVERROR(EINVAL) && !stop.stop_requested()) {
        // Taken for a format that is refused, by its name perhaps: what do the bytes say?
        const AVInputFormat* container = probedFormat(path);
        if (container && isFilmFormat(*container)) {
            format = allocateContext(stop);
            opened = openAs(format, path, container);
        }
    }
    if (stop.stop_requested())
        throw MediaError::make(Category::Cancelled);
    if (opened < 0)
        throwWhyRefused(path, opened);
    const int known = readStreamInformation(*format);
    if (stop.stop_requested())
        throw MediaError::make(Category::Cancelled);
    if (known < 0)
        throwWhyRefused(path, whoseFault(known, libav::readError(*format)));
    return format;
}

AVStream& chooseVideoTrack(AVFormatContext& format) {
    AVStream* first = nullptr;
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        AVStream& stream = *format.streams[i];
        if (!isCandidate(stream))
            continue;
        if (!isEmpty(format, stream)) {
            throwUnlessPlayable(stream);
            return stream;
        }
        if (!first)
            first = &stream;
    }
    throw MediaError::make(first ? Category::NoPicture : Category::NoVideo);
}

const AVCodec* decoderFor(const AVStream& stream) {
    const AVCodecID codec = stream.codecpar->codec_id;
    const AVDictionaryEntry* alpha = av_dict_get(stream.metadata, "alpha_mode", nullptr, 0);
    if (alpha && std::strcmp(alpha->value, "1") == 0) {
        // FFmpeg's own VP8 and VP9 decoders drop the second, transparent layer.
        const char* name = codec == AV_CODEC_ID_VP8   ? "libvpx"
                           : codec == AV_CODEC_ID_VP9 ? "libvpx-vp9"
                                                      : nullptr;
        if (const AVCodec* decoder = name ? avcodec_find_decoder_by_name(name) : nullptr)
            return decoder;
    }
    return avcodec_find_decoder(codec);
}

} // namespace stillwick
