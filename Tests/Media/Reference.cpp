#include "Reference.h"

#include "Media/Libav.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QProcess>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdarg>
#include <cstring>

namespace stillwick::testing {

namespace {

QList<QByteArray> linesOf(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(120'000) || process.exitStatus() != QProcess::NormalExit)
        return {};
    QList<QByteArray> lines = process.readAllStandardOutput().split('\n');
    lines.removeAll(QByteArray());
    return lines;
}

/// The index of the first video stream that is not an attached picture, by ffprobe.
int trackIndex(const QString& path, ReferenceFilm& film) {
    const auto lines =
        linesOf(QStringLiteral("ffprobe"),
                {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-select_streams"),
                 QStringLiteral("v"), QStringLiteral("-show_entries"),
                 QStringLiteral("stream=index,time_base:stream_disposition=attached_pic"),
                 QStringLiteral("-of"), QStringLiteral("csv=p=0"), path});
    for (const QByteArray& line : lines) {
        const auto fields = line.split(',');
        if (fields.size() < 3 || fields[2] == "1")
            continue;
        const auto base = fields[1].split('/');
        film.timeBaseNumerator = base.value(0).toInt();
        film.timeBaseDenominator = base.value(1).toInt();
        return fields[0].toInt();
    }
    return -1;
}

struct Probed {
    bool hasTime = false;
    std::int64_t time = 0;
    std::int64_t duration = 0;
};

std::vector<Probed> probedFrames(const QString& path, int track) {
    const auto lines =
        linesOf(QStringLiteral("ffprobe"),
                {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-select_streams"),
                 QString::number(track), QStringLiteral("-show_entries"),
                 QStringLiteral("frame=pts,best_effort_timestamp,pkt_duration"),
                 QStringLiteral("-of"), QStringLiteral("compact=p=0"), path});
    std::vector<Probed> frames;
    for (const QByteArray& line : lines) {
        if (!line.startsWith("pts="))
            continue;
        Probed frame;
        for (const QByteArray& field : line.split('|')) {
            const QByteArray value = field.mid(field.indexOf('=') + 1);
            bool isNumber = false;
            const std::int64_t number = value.toLongLong(&isNumber);
            if (!isNumber)
                continue;
            const bool isTime = field.startsWith("pts=") ||
                                (field.startsWith("best_effort_timestamp=") && !frame.hasTime);
            if (isTime) {
                frame.hasTime = true;
                frame.time = number;
            } else if (field.startsWith("pkt_duration=")) {
                frame.duration = number;
            }
        }
        frames.push_back(frame);
    }
    return frames;
}

std::atomic<int> libraryErrors = 0;

void countErrors(void* /*context*/, int level, const char* /*format*/, va_list /*arguments*/) {
    if (level <= AV_LOG_ERROR)
        ++libraryErrors;
}

/// What the decoder is given to write into is filled with this first, so that samples that it
/// leaves unwritten show as a difference between two decodes with different fillings.
int getFilledBuffer(AVCodecContext* context, AVFrame* frame, int flags) {
    const int code = avcodec_default_get_buffer2(context, frame, flags);
    for (AVBufferRef* buffer : frame->buf) {
        if (code >= 0 && buffer)
            std::memset(buffer->data, *static_cast<int*>(context->opaque),
                        std::size_t(buffer->size));
    }
    return code;
}

struct LinearDecode {
    std::vector<QByteArray> hashes;
    bool isDamaged = false;
    int pixels = 0;
    double frameTicks = 0;
    QByteArray container;
};

/// A plain loop over the file with one thread: no seeking, no skipping.
LinearDecode decodeLinearly(const QString& path, int track, int filling) {
    LinearDecode result;
    AVFormatContext* raw = nullptr;
    if (avformat_open_input(&raw, QFile::encodeName(path).constData(), nullptr, nullptr) < 0)
        return result;
    const libav::FormatContext format(raw);
    avformat_find_stream_info(raw, nullptr);
    result.container = raw->iformat->name;
    result.pixels = raw->streams[track]->codecpar->width * raw->streams[track]->codecpar->height;
    const AVStream& stream = *raw->streams[track];
    result.frameTicks = 1.0 / (av_q2d(stream.r_frame_rate) * av_q2d(stream.time_base));
    const AVDictionaryEntry* alpha = av_dict_get(stream.metadata, "alpha_mode", nullptr, 0);
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (alpha && std::strcmp(alpha->value, "1") == 0)
        codec = avcodec_find_decoder_by_name(
            stream.codecpar->codec_id == AV_CODEC_ID_VP8 ? "libvpx" : "libvpx-vp9");
    const libav::CodecContext context(avcodec_alloc_context3(codec));
    avcodec_parameters_to_context(context.get(), stream.codecpar);
    context->pkt_timebase = stream.time_base;
    context->thread_count = 1;
    context->flags |= AV_CODEC_FLAG_UNALIGNED;
    context->get_buffer2 = getFilledBuffer;
    context->opaque = &filling;
    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        return result;
    const libav::Packet packet = libav::makePacket();
    const libav::Frame frame = libav::makeFrame();
    libraryErrors = 0;
    for (bool isAtEnd = false; !isAtEnd;) {
        isAtEnd = av_read_frame(raw, packet.get()) < 0;
        if (!isAtEnd && packet->stream_index != track) {
            av_packet_unref(packet.get());
            continue;
        }
        // What an edit list hides may lean on pictures that were cut away.
        const bool isHidden = !isAtEnd && (packet->flags & AV_PKT_FLAG_DISCARD) != 0;
        const int errorsBefore = libraryErrors;
        if (avcodec_send_packet(context.get(), isAtEnd ? nullptr : packet.get()) < 0)
            result.isDamaged = true;
        if (isHidden)
            libraryErrors = errorsBefore;
        av_packet_unref(packet.get());
        for (;;) {
            const int code = avcodec_receive_frame(context.get(), frame.get());
            if (code == AVERROR(EAGAIN) || code == AVERROR_EOF)
                break;
            if (code < 0 || frame->decode_error_flags != 0 ||
                (frame->flags & AV_FRAME_FLAG_CORRUPT) != 0)
                result.isDamaged = true;
            if (code >= 0)
                result.hashes.push_back(hashOfPlanes(frame.get()));
        }
    }
    result.isDamaged = result.isDamaged || libraryErrors > 0;
    return result;
}

/// True where the pictures lie on an even grid, since the container does not tell their times.
bool isOnGrid(const std::vector<Probed>& probed, const QByteArray& container) {
    const auto hasTime = [](const Probed& frame) {
        return frame.hasTime;
    };
    if (std::none_of(probed.begin(), probed.end(), hasTime))
        return true;
    return container == "avi" && !std::all_of(probed.begin(), probed.end(), hasTime);
}

void layOut(const std::vector<Probed>& probed, const LinearDecode& decode, ReferenceFilm& film) {
    const bool isGrid = isOnGrid(probed, decode.container);
    const std::int64_t second = film.timeBaseDenominator / film.timeBaseNumerator;
    std::int64_t offset = 0;
    std::int64_t previous = 0;
    std::int64_t spacing = 0;
    for (std::size_t i = 0; i < probed.size(); ++i) {
        const bool isTold = isGrid || probed[i].hasTime;
        if (!isTold && film.frames.empty())
            continue;
        std::int64_t time = isGrid   ? std::llround(double(i) * decode.frameTicks)
                            : isTold ? probed[i].time + offset
                                     : previous + spacing;
        if (!film.frames.empty()) {
            if (time < previous - second) {
                offset += previous + spacing - time;
                time = previous + spacing;
            }
            spacing = time - previous;
        }
        // Where time steps back a little, what comes later hides what came before.
        while (!film.frames.empty() && film.frames.back().time >= time)
            film.frames.pop_back();
        previous = time;
        film.frames.push_back({time, decode.hashes[i]});
        film.lastDuration = probed[i].duration;
    }
    if (decode.container.startsWith("mov,") || film.frames.empty())
        return;
    const std::int64_t zero = film.frames.front().time;
    for (ReferenceFrame& frame : film.frames)
        frame.time -= zero;
}

} // namespace

QByteArray hashOfPlanes(const void* opaque) {
    const auto& frame = *static_cast<const AVFrame*>(opaque);
    const auto format = AVPixelFormat(frame.format);
    const int size = av_image_get_buffer_size(format, frame.width, frame.height, 1);
    QByteArray bytes(size, Qt::Uninitialized);
    av_image_copy_to_buffer(reinterpret_cast<std::uint8_t*>(bytes.data()), size, frame.data,
                            frame.linesize, format, frame.width, frame.height, 1);
    return QCryptographicHash::hash(bytes, QCryptographicHash::Md5);
}

ReferenceFilm referenceFor(const QString& path) {
    av_log_set_level(AV_LOG_QUIET);
    ReferenceFilm film;
    const int track = trackIndex(path, film);
    if (track < 0) {
        film.problem = QStringLiteral("no video track");
        return film;
    }
    const auto probed = probedFrames(path, track);
    av_log_set_callback(countErrors);
    const LinearDecode decode = decodeLinearly(path, track, 0x00);
    // A second decode costs as much again: only small films are asked for undefined samples.
    const bool isSmall = decode.pixels <= 640 * 480;
    film.isDamaged =
        decode.isDamaged || (isSmall && decodeLinearly(path, track, 0xff).hashes != decode.hashes);
    av_log_set_callback(av_log_default_callback);
    if (probed.empty() || probed.size() != decode.hashes.size()) {
        film.problem = QStringLiteral("ffprobe lists %1 frames, the linear decode gave %2")
                           .arg(probed.size())
                           .arg(decode.hashes.size());
        return film;
    }
    layOut(probed, decode, film);
    return film;
}

std::vector<QString> filmsIn(const QString& folder) {
    std::vector<QString> films;
    for (const QFileInfo& file : QDir(folder).entryInfoList(QDir::Files, QDir::Name)) {
        if (file.suffix() != QStringLiteral("sh") && file.suffix() != QStringLiteral("jpg"))
            films.push_back(file.filePath());
    }
    return films;
}

} // namespace stillwick::testing
