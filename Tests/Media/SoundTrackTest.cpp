#include "SoundClip.h"

#include "Media/MediaError.h"
#include "Media/SoundTrack.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

constexpr int channels = 2;
constexpr float roundingOfMp2 = 1e-4F; // of its 16 bits, which depends on what came before

// Six seconds in which the pitch rises, in each channel another: any shift shows.
const QString sweep = QStringLiteral(
    "-f lavfi -i aevalsrc=0.5*sin(2*PI*(150*t+60*t*t))|0.4*sin(2*PI*(400*t+45*t*t)):s=%1:d=6");
const QString picture = QStringLiteral("-f lavfi -i testsrc2=s=64x48:r=25:d=6 ");

/// A film and how exactly its sound must come out.
struct Film {
    const char* name;
    int rate;
    const char* options;
    float tolerance; ///< a lossy decoder may end a settling time a little elsewhere
    bool hasOwnTimeline = false;
};

std::ostream& operator<<(std::ostream& out, const Film& film) {
    return out << film.name;
}

class SoundTrackTest : public ::testing::Test {
protected:
    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }

    QString make(const Film& film) const {
        QString file = path(QString::fromUtf8(film.name));
        ffmpeg(picture + sweep.arg(film.rate) + QStringLiteral(" -c:v mpeg4 ") +
               QString::fromUtf8(film.options) + QLatin1Char(' ') + file);
        return file;
    }

    QTemporaryDir m_folder;
};

/// The sound of a film at film times, by the ffmpeg program.
struct Reference {
    std::vector<float> samples;
    std::int64_t start = 0; ///< of the first sample, counted from the film's zero
    nanoseconds zero{0};

    Reference(const QString& path, int rate, bool hasOwnTimeline)
        : samples(linearDecode(path, rate, channels)) {
        const double first = firstFrameTime(path, QStringLiteral("a:0"));
        const double seconds = hasOwnTimeline ? 0 : firstFrameTime(path, QStringLiteral("v:0"));
        zero = nanoseconds(std::llround(seconds * 1e9));
        start = std::llround((first - seconds) * rate);
    }

    /// The value of one channel at a place, silence outside.
    [[nodiscard]] float at(std::int64_t frame, int channel) const {
        const std::int64_t index = (frame - start) * channels + channel;
        return index < 0 || index >= std::int64_t(samples.size()) ? 0.0F
                                                                  : samples[std::size_t(index)];
    }
};

/// The largest difference between what was read from `frame` on and the reference.
float largestError(const std::vector<float>& read, std::int64_t frame, const Reference& reference) {
    float largest = 0;
    for (std::size_t i = 0; i < read.size(); ++i) {
        const float expected = reference.at(frame + std::int64_t(i / channels), int(i % channels));
        largest = std::max(largest, std::abs(read[i] - expected));
    }
    return largest;
}

std::vector<float> readFrom(SoundTrack& track, int frames) {
    std::vector<float> samples(std::size_t(frames) * channels, 9.0F);
    track.read(samples.data(), frames);
    return samples;
}

/// The time of the sample `frame`, so that it is the one nearest to it.
nanoseconds timeOf(std::int64_t frame, int rate) {
    return nanoseconds(frame * 1'000'000'000 / rate);
}

class SoundOfFilm : public SoundTrackTest, public ::testing::WithParamInterface<Film> {};

TEST_P(SoundOfFilm, IsReadAsItIsDecodedFromTheStart) {
    const Film& film = GetParam();
    const QString file = make(film);
    const Reference reference(file, film.rate, film.hasOwnTimeline);
    const auto track = SoundTrack::open(file, film.rate, channels, reference.zero, {});
    ASSERT_TRUE(track);
    std::vector<float> all;
    std::mt19937 random(7);
    while (std::int64_t(all.size()) < std::int64_t(film.rate) * 7 * channels) {
        const auto part = readFrom(*track, 1 + int(random() % 3000));
        all.insert(all.end(), part.begin(), part.end());
    }
    EXPECT_LE(largestError(all, 0, reference), film.tolerance);
}

TEST_P(SoundOfFilm, IsTheSameAfterEverySeek) {
    const Film& film = GetParam();
    const QString file = make(film);
    const Reference reference(file, film.rate, film.hasOwnTimeline);
    const auto track = SoundTrack::open(file, film.rate, channels, reference.zero, {});
    ASSERT_TRUE(track);
    std::mt19937 random(11);
    std::vector<std::int64_t> places{film.rate * 6LL, 0, film.rate * 3LL, film.rate * 5LL, 1, 0};
    for (int i = 0; i < 30; ++i)
        places.push_back(std::int64_t(random() % unsigned(film.rate * 6)));
    for (const std::int64_t place : places) {
        track->seek(timeOf(place, film.rate) + 1ns);
        const auto samples = readFrom(*track, film.rate / 4);
        ASSERT_LE(largestError(samples, place, reference), film.tolerance) << "from " << place;
    }
}

INSTANTIATE_TEST_SUITE_P(
    , SoundOfFilm,
    ::testing::Values(Film{"aac.mp4", 44100, "-c:a aac -aac_pns 0", 1e-4F, true},
                      Film{"aac.mkv", 44100, "-c:a aac -aac_pns 0", 1e-4F},
                      Film{"aac.ts", 44100, "-c:a aac -aac_pns 0", 1e-4F},
                      Film{"aac.flv", 44100, "-c:v flv -c:a aac -aac_pns 0", 1e-4F},
                      Film{"opus.mkv", 48000, "-c:a libopus -b:a 128k", 1e-3F},
                      Film{"opus.mp4", 48000, "-c:a libopus -b:a 128k", 1e-3F, true},
                      Film{"vorbis.mkv", 44100, "-c:a libvorbis", 1e-4F},
                      Film{"mp3.mp4", 44100, "-c:a libmp3lame", 1e-3F, true},
                      Film{"mp3.avi", 44100, "-c:a libmp3lame", 1e-3F},
                      Film{"ac3.ts", 48000, "-c:a ac3", 1e-3F},
                      Film{"mp2.ts", 48000, "-c:a mp2", 1e-4F},
                      Film{"flac.mkv", 44100, "-c:a flac", 0.0F},
                      Film{"pcm.avi", 44100, "-c:a pcm_s16le", 0.0F},
                      Film{"pcm.mov", 48000, "-c:a pcm_s24le", 0.0F, true},
                      Film{"pcm.mkv", 44100, "-c:a pcm_s16le", 0.0F}),
    [](const auto& test) {
        return QString::fromUtf8(test.param.name)
            .replace(QLatin1Char('.'), QLatin1String("In"))
            .toStdString();
    });

TEST_F(SoundTrackTest, StartsWithTheFilmInATransportStreamThatStartsLate) {
    const QString file = make({"late.ts", 48000, "-c:a mp2", 0});
    const Reference reference(file, 48000, false);
    ASSERT_GE(reference.zero, 1400ms) << "what this case is about";
    const auto track = SoundTrack::open(file, 48000, channels, reference.zero, {});
    ASSERT_TRUE(track);
    EXPECT_LE(largestError(readFrom(*track, 48000), 0, reference), roundingOfMp2);
}

TEST_F(SoundTrackTest, IsSilentUntilSoundThatComesLaterBegins) {
    const QString file = path(QStringLiteral("later.mkv"));
    ffmpeg(picture + QStringLiteral("-itsoffset 2 ") + sweep.arg(48000) +
           QStringLiteral(" -c:v mpeg4 -c:a pcm_s16le ") + file);
    const auto track = SoundTrack::open(file, 48000, channels, 0ns, {});
    ASSERT_TRUE(track);
    const auto samples = readFrom(*track, 3 * 48000);
    const auto firstSound =
        std::find_if(samples.begin(), samples.end(), [](float value) { return value != 0; });
    // The sweep begins with sin(0) = 0: its second sample is the first that is not silence.
    EXPECT_EQ((firstSound - samples.begin()) / channels, 2 * 48000 + 1);
    track->seek(1s);
    EXPECT_EQ(readFrom(*track, 48000), std::vector<float>(48000 * channels, 0.0F));
}

TEST_F(SoundTrackTest, IsSilentInAGapAndInTimeAfterIt) {
    const QString whole = make({"whole.mkv", 48000, "-c:a pcm_s16le", 0});
    const QString file = path(QStringLiteral("gap.mkv"));
    // Leaves out the packets of the third second.
    ffmpeg(QStringLiteral("-i ") + whole +
           QStringLiteral(" -c copy -bsf:a noise=amount=0:drop=gte(pts*tb\\,2)*lt(pts*tb\\,3) ") +
           file);
    const Reference reference(whole, 48000, false);
    const QByteArray times =
        outputOf(QStringLiteral("ffprobe"),
                 QStringLiteral("-v error -select_streams a -show_entries packet=pts_time -of "
                                "csv=p=0 %1")
                     .arg(file)
                     .split(QLatin1Char(' ')));
    double gapEnd = 0; // the first packet that is there again
    for (const QByteArray& line : times.split('\n')) {
        if (gapEnd == 0 && line.toDouble() >= 2.5)
            gapEnd = line.toDouble();
    }
    ASSERT_GT(gapEnd, 2.9);
    const auto track = SoundTrack::open(file, 48000, channels, reference.zero, {});
    ASSERT_TRUE(track);
    for (const int seekTo : {-1, 2, 1}) { // in one go, from within the gap, from before it
        if (seekTo >= 0)
            track->seek(std::chrono::seconds(seekTo));
        const int from = std::max(seekTo, 0);
        const auto samples = readFrom(*track, (6 - from) * 48000);
        const auto second = [&](double time) {
            return samples.begin() + std::ptrdiff_t((time - from) * 48000) * channels;
        };
        if (from < 2) {
            EXPECT_LE(largestError({samples.begin(), second(1.95)}, from * 48000LL, reference), 0);
        }
        EXPECT_EQ(std::count(second(2.1), second(gapEnd - 0.01), 0.0F),
                  second(gapEnd - 0.01) - second(2.1))
            << "silence";
        // Times in Matroska are rounded to 1 ms.
        const auto sound = std::find_if(second(2.1), samples.end(), [](float v) { return v != 0; });
        const double soundTime = double(sound - samples.begin()) / channels / 48000 + from;
        EXPECT_NEAR(soundTime, gapEnd, 0.0011);
        const auto place = std::int64_t(gapEnd * 48000) + 480;
        float least = 9;
        for (int shift = -48; shift <= 48; ++shift) {
            const std::vector<float> after(second(gapEnd + 0.01), samples.end());
            least = std::min(least, largestError(after, place + shift, reference));
        }
        EXPECT_LE(least, 0) << "the sweep goes on where it would be";
    }
}

TEST_F(SoundTrackTest, ComesBackInTimeAfterADamagedStretch) {
    const QString file = make({"damaged.ts", 48000, "-c:a mp2", 0});
    const Reference reference(file, 48000, false);
    QFile bytes(file);
    ASSERT_TRUE(bytes.open(QIODevice::ReadWrite));
    const qint64 size = bytes.size();
    ASSERT_TRUE(bytes.seek(size * 2 / 5));
    std::mt19937 random(3);
    QByteArray rubbish(qsizetype(size / 10), '\0');
    std::generate(rubbish.begin(), rubbish.end(), [&] { return char(random()); });
    ASSERT_EQ(bytes.write(rubbish), rubbish.size());
    bytes.close();
    const auto track = SoundTrack::open(file, 48000, channels, reference.zero, {});
    ASSERT_TRUE(track);
    const auto samples = readFrom(*track, 6 * 48000);
    const auto part = [&](int from, int to) {
        return std::vector<float>(samples.begin() + from * channels,
                                  samples.begin() + to * channels);
    };
    EXPECT_LE(largestError(part(0, 2 * 48000), 0, reference), roundingOfMp2);
    EXPECT_LE(largestError(part(4 * 48000, 6 * 48000), 4 * 48000, reference), roundingOfMp2);
    EXPECT_GT(largestError(samples, 0, reference), 0.1F) << "the damage is to be heard of";
}

TEST_F(SoundTrackTest, IsSilentAfterItsEnd) {
    const QString file = make({"end.mkv", 48000, "-c:a flac", 0});
    const auto track = SoundTrack::open(file, 48000, channels, 0ns, {});
    ASSERT_TRUE(track);
    for (const nanoseconds place : {nanoseconds(7s), nanoseconds(1h)}) {
        track->seek(place);
        EXPECT_EQ(readFrom(*track, 1000), std::vector<float>(1000 * channels, 0.0F));
    }
    track->seek(5s);
    EXPECT_NE(readFrom(*track, 1000), std::vector<float>(1000 * channels, 0.0F)) << "sound again";
}

TEST_F(SoundTrackTest, IsResampledInTime) {
    // Another rate, another number of channels: the same formula at other times.
    const QString file = make({"rate.mkv", 44100, "-c:a pcm_f32le", 0});
    const auto track = SoundTrack::open(file, 48000, 1, 0ns, {});
    ASSERT_TRUE(track);
    const auto formula = [](double t) {
        const double left = 0.5 * std::sin(2 * M_PI * (150 * t + 60 * t * t));
        const double right = 0.4 * std::sin(2 * M_PI * (400 * t + 45 * t * t));
        return (left + right) / 2;
    };
    for (const int second : {1, 4, 2}) {
        track->seek(std::chrono::seconds(second));
        std::vector<float> samples(48000);
        track->read(samples.data(), 48000);
        double largest = 0;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const double expected = formula(second + double(i) / 48000);
            largest = std::max(largest, std::abs(double(samples[i]) - expected));
        }
        // Half a sample off, at 900 Hz and half of full scale, is 0.03; the filter ripples less.
        EXPECT_LE(largest, 0.035) << "from second " << second;
    }
}

TEST_F(SoundTrackTest, IsAsLoudFromTwoSidesAsFromOne) {
    const QString file = path(QStringLiteral("mono.mkv"));
    ffmpeg(picture +
           QStringLiteral("-f lavfi -i aevalsrc=0.5*sin(2*PI*440*t):s=48000:d=2 "
                          "-c:v mpeg4 -c:a pcm_f32le ") +
           file);
    const auto track = SoundTrack::open(file, 48000, channels, 0ns, {});
    ASSERT_TRUE(track);
    const auto samples = readFrom(*track, 48000);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::size_t frame = i / channels;
        const double t = double(frame) / 48000;
        ASSERT_NEAR(samples[i], 0.5 * std::sin(2 * M_PI * 440 * t), 1e-6);
    }
}

TEST_F(SoundTrackTest, IsNoneInASilentFilm) {
    const QString file = path(QStringLiteral("silent.mp4"));
    ffmpeg(picture + QStringLiteral("-c:v mpeg4 ") + file);
    EXPECT_FALSE(SoundTrack::open(file, 48000, channels, 0ns, {}));
}

TEST_F(SoundTrackTest, IsNoneWhereNoneOfItCanBeDecoded) {
    const QString file = make({"rubbish.mkv", 48000, "-c:a flac", 0});
    QFile bytes(file);
    ASSERT_TRUE(bytes.open(QIODevice::ReadWrite));
    QByteArray all = bytes.readAll();
    const auto codec = all.indexOf("A_FLAC");
    ASSERT_GT(codec, 0);
    all.replace(codec, 6, "A_NONE");
    ASSERT_TRUE(bytes.seek(0));
    ASSERT_EQ(bytes.write(all), all.size());
    bytes.close();
    EXPECT_FALSE(SoundTrack::open(file, 48000, channels, 0ns, {}));
}

TEST_F(SoundTrackTest, TellsWhyAFileCannotBeOpened) {
    try {
        (void)SoundTrack::open(path(QStringLiteral("nowhere.mp4")), 48000, channels, 0ns, {});
        FAIL() << "no error";
    } catch (const MediaError& error) {
        EXPECT_EQ(error.category(), MediaError::Category::NotFound);
    }
}

TEST_F(SoundTrackTest, IsNotOpenedOnceItIsWithdrawn) {
    const QString file = make({"stopped.mkv", 48000, "-c:a flac", 0});
    std::stop_source stop;
    stop.request_stop();
    try {
        (void)SoundTrack::open(file, 48000, channels, 0ns, stop.get_token());
        FAIL() << "no error";
    } catch (const MediaError& error) {
        EXPECT_EQ(error.category(), MediaError::Category::Cancelled);
    }
}

TEST_F(SoundTrackTest, IsSilentOnceItIsWithdrawn) {
    const QString file = make({"withdrawn.mkv", 48000, "-c:a flac", 0});
    std::stop_source stop;
    const auto track = SoundTrack::open(file, 48000, channels, 0ns, stop.get_token());
    ASSERT_TRUE(track);
    stop.request_stop();
    track->seek(4s);
    EXPECT_EQ(readFrom(*track, 96000), std::vector<float>(96000 * channels, 0.0F));
}

} // namespace

} // namespace stillwick::testing
