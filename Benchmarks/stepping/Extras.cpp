#include "Extras.h"

#include "../Memory.h"
#include "../Report.h"
#include "../Timings.h"
#include "../grab/Ffms2Grabs.h"
#include "OurSession.h"

#include "Media/FrameCache.h"
#include "Media/FrameSource.h"
#include "Media/PictureConverter.h"
#include "Media/VideoDecoder.h"

#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <array>
#include <random>
#include <stdexcept>

namespace stillwick::benchmarks {

void addHeldMemory(Report& report, const QString& film, OurSession& session) {
    session.rest(2000);
    constexpr double mebibyte = 1 << 20;
    report.add(film, QStringLiteral("frames held"),
               double(session.asset().frameCache()->size()) / mebibyte, QStringLiteral("MiB"));
    report.add(film, QStringLiteral("process resident"), residentMemory(), QStringLiteral("MiB"));
}

void addScroll(Report& report, const QString& film, OurSession& session, double rate,
               double seconds) {
    constexpr double interval = 1000.0 / 30;
    session.seek(seconds - 0.5 / rate);
    session.rest(3000);
    std::vector<double> late;
    QElapsedTimer timer;
    timer.start();
    const int steps = int(seconds * rate) - 1;
    double due = 0;
    for (int i = 0; i < steps; ++i) {
        const double took = session.stepBack();
        if (took > interval)
            late.push_back(took);
        due = std::max(due + interval, milliseconds(timer));
        while (milliseconds(timer) < due)
            session.rest(int(due - milliseconds(timer)) + 1);
    }
    report.add(film, QStringLiteral("scroll back: steps"), steps, QStringLiteral("pictures"));
    report.add(film, QStringLiteral("scroll back: late steps"), double(late.size()),
               QStringLiteral("pictures"));
    report.add(film, QStringLiteral("scroll back: worst step"),
               late.empty() ? 0 : *std::max_element(late.begin(), late.end()),
               QStringLiteral("ms"));
}

void addDrag(Report& report, const QString& film, OurSession& session, double seconds) {
    constexpr int moves = 180;
    constexpr double dragMilliseconds = 3000;
    session.seek(0);
    session.rest(1000);
    int shown = 0;
    const QMetaObject::Connection counting = QObject::connect(
        &session.player(), &MediaPlayer::pictureChanged, &session.player(), [&shown] { ++shown; });
    QElapsedTimer timer;
    timer.start();
    for (int i = 1; i <= moves; ++i) {
        session.player().seek(CMTime::fromSeconds((seconds - 0.5) * i / moves, 600), CMTime::zero(),
                              CMTime::zero());
        const double due = dragMilliseconds * i / moves;
        while (milliseconds(timer) < due)
            session.rest(std::max(1, int(due - milliseconds(timer))));
    }
    report.add(film, QStringLiteral("drag: pictures a second"), shown / milliseconds(timer) * 1000,
               QStringLiteral("/s"));
    timer.start();
    session.settle();
    report.add(film, QStringLiteral("drag: exact after the release"), milliseconds(timer),
               QStringLiteral("ms"));
    QObject::disconnect(counting);
}

void addPlaying(Report& report, const QString& film, OurSession& session, double rate) {
    constexpr double playSeconds = 10;
    session.seek(0);
    session.rest(1500);
    const std::int64_t before = session.player().droppedPictures();
    session.player().play();
    QElapsedTimer timer;
    timer.start();
    while (session.player().currentTime().seconds() < playSeconds && timer.elapsed() < 30'000)
        session.rest(20);
    session.player().pause();
    const double dropped = double(session.player().droppedPictures() - before);
    report.add(film, QStringLiteral("playing: pictures left out"),
               100 * dropped / (playSeconds * rate), QStringLiteral("%"));
}

void addBreakdown(Report& report, const QString& film, const QString& path, double seconds,
                  int count) {
    FrameSource source(path, {});
    PictureConverter converter;
    std::mt19937 random(5);
    std::uniform_real_distribution<double> anywhere(0, seconds - 1);
    std::vector<double> decoding;
    std::vector<double> converting;
    for (int i = 0; i < count; ++i) {
        QElapsedTimer timer;
        timer.start();
        const SharedFrame frame =
            source.frameAt(CMTime::fromSeconds(anywhere(random), 1'000'000), {}, {});
        decoding.push_back(milliseconds(timer));
        timer.start();
        (void)converter.convert(*frame);
        converting.push_back(milliseconds(timer));
    }
    report.add(film, QStringLiteral("exact seek, of that decoding"), median(decoding),
               QStringLiteral("ms"));
    report.add(film, QStringLiteral("exact seek, of that converting"), median(converting),
               QStringLiteral("ms"));
}

void addSeekFloor(Report& report, const QString& film, const QString& path, double rate,
                  double seconds, int count, double ours) {
    const Clip clip(path, Clip::Hashes::LeftOut);
    const std::unique_ptr<GrabMethod> floor = makeDecodeFloor(clip);
    std::mt19937 random(5);
    std::uniform_real_distribution<double> anywhere(0, seconds - 1);
    std::vector<double> samples;
    for (int i = 0; i < count; ++i) {
        const Moment moment = clip.momentIn(std::size_t(anywhere(random) * rate), 0);
        QElapsedTimer timer;
        timer.start();
        floor->grab(moment);
        samples.push_back(milliseconds(timer));
    }
    report.add(film, QStringLiteral("exact seek, floor (libavcodec alone)"), median(samples),
               QStringLiteral("ms"));
    report.add(film, QStringLiteral("exact seek, ours / floor"), ours / median(samples),
               QStringLiteral("x"));
}

std::vector<double> stepBackWithFfms2(const QString& path, double rate, double seconds, int count) {
    std::array<char, 512> text{};
    FFMS_ErrorInfo error{};
    error.Buffer = text.data();
    error.BufferSize = int(text.size());
    const Ffms2Index index = makeFfms2Index(path);
    const int track = FFMS_GetFirstTrackOfType(index.get(), FFMS_TYPE_VIDEO, &error);
    const std::unique_ptr<FFMS_VideoSource, Ffms2Deleter> source(
        FFMS_CreateVideoSource(path.toUtf8().constData(), track, index.get(), decoderThreadCount(),
                               FFMS_SEEK_NORMAL, &error));
    if (!source)
        throw std::runtime_error(text.data());
    const int start = int(seconds * rate / 2) + count / 2;
    const FFMS_Frame* frame = FFMS_GetFrame(source.get(), start, &error);
    if (!frame)
        throw std::runtime_error(text.data());
    const std::array<int, 2> formats{FFMS_GetPixFmt("rgba"), -1};
    if (FFMS_SetOutputFormatV2(source.get(), formats.data(), frame->EncodedWidth,
                               frame->EncodedHeight, FFMS_RESIZER_BICUBIC, &error) != 0)
        throw std::runtime_error(text.data());
    std::vector<double> samples;
    for (int i = 1; i <= count; ++i) {
        QElapsedTimer timer;
        timer.start();
        if (!FFMS_GetFrame(source.get(), start - i, &error))
            throw std::runtime_error(text.data());
        samples.push_back(milliseconds(timer));
    }
    return samples;
}

} // namespace stillwick::benchmarks
