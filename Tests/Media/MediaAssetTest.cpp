#include "ReadingPosition.h"
#include "Reference.h"

#include "Media/FrameSource.h"
#include "Media/MediaAsset.h"
#include "Media/MediaError.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <ostream>
#include <random>
#include <set>
#include <string>
#include <thread>

namespace stillwick::testing {

namespace {

using Category = MediaError::Category;

const QString films = QStringLiteral(STILLWICK_CLIPS "/films/");
const QString refused = QStringLiteral(STILLWICK_CLIPS "/refused/");

// A file that takes longer than this to be refused counts as a hang.
constexpr std::chrono::seconds patience{10};

/// What opening a film and taking a picture ended with, in plain words for comparison.
struct Ending {
    Category category = Category::Cancelled;
    std::string sentence = "opened";
    [[nodiscard]] bool isOpened() const { return sentence == "opened"; }
};

Ending endingOf(const QString& path, const std::stop_token& stop = {},
                const CMTime& time = CMTime::zero()) {
    try {
        const MediaAsset asset(path);
        asset.open(stop);
        (void)asset.takeFrameSource(stop)->frameAt(time, {}, stop);
        return {};
    } catch (const MediaError& error) {
        return {error.category(), error.description().toStdString()};
    }
}

struct Refusal {
    const char* file;
    Category category;
    const char* sentence;
};

std::ostream& operator<<(std::ostream& stream, const Refusal& refusal) {
    return stream << refusal.file;
}

constexpr const char* notSupported = "Ce type de fichier n'est pas pris en charge.";
constexpr const char* damaged = "Ce fichier est endommagé ou incomplet et ne peut pas être lu.";
constexpr const char* noVideo = "Ce fichier ne contient pas de vidéo.";
constexpr const char* still = "Ce fichier est une image fixe, pas une vidéo.";

constexpr std::array refusals = {
    Refusal{"nothing.mp4", Category::EmptyFile, "Le fichier est vide."},
    Refusal{"missing.mp4", Category::NotFound, "Le fichier est introuvable."},
    Refusal{"folder.mp4", Category::NotAFile,
            "Ce n'est pas un fichier, mais un dossier ou un périphérique."},
    Refusal{"text.mp4", Category::NotMedia, notSupported},
    Refusal{"play_list.m3u8", Category::NotMedia, notSupported},
    Refusal{"play_list.mp4", Category::NotMedia, notSupported},
    Refusal{"tables_lost.mp4", Category::Damaged, damaged},
    Refusal{"no_picture_left.mp4", Category::NoPicture,
            "Aucune image n'a pu être lue dans cette vidéo."},
    Refusal{"sound_only.m4a", Category::NoVideo, noVideo},
    Refusal{"sound_only.mp3", Category::NoVideo, noVideo},
    Refusal{"sound_only.wav", Category::NoVideo, noVideo},
    Refusal{"cover_only.m4a", Category::NoVideo, noVideo},
    Refusal{"cover_only.mp3", Category::NoVideo, noVideo},
    Refusal{"jpeg_picture.mp4", Category::StillPicture, still},
    Refusal{"png_picture.mp4", Category::StillPicture, still},
};

class RefusalTest : public ::testing::TestWithParam<Refusal> {};

TEST_P(RefusalTest, TellsWhyInFrench) {
    const auto& [file, category, sentence] = GetParam();
    const auto start = std::chrono::steady_clock::now();
    const Ending ending = endingOf(refused + QString::fromUtf8(file));
    EXPECT_LT(std::chrono::steady_clock::now() - start, patience);
    ASSERT_FALSE(ending.isOpened());
    EXPECT_EQ(ending.category, category) << ending.sentence;
    EXPECT_EQ(ending.sentence, sentence);
}

std::string nameOf(const ::testing::TestParamInfo<Refusal>& info) {
    std::string name = info.param.file;
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(MediaAssetTest, RefusalTest, ::testing::ValuesIn(refusals), nameOf);

TEST(MediaAssetTest, OddPathsAreNotFound) {
    for (const QString& path :
         {QString(), QStringLiteral("/no/such/film.mp4"), QStringLiteral("concat:a.ts|b.ts"),
          QStringLiteral("http://localhost/film.mp4"), QString(QChar(QChar::Null))}) {
        const Ending ending = endingOf(path);
        ASSERT_FALSE(ending.isOpened());
        EXPECT_EQ(ending.category, Category::NotFound) << path.toStdString();
    }
}

TEST(MediaAssetTest, ADeviceIsNotAFile) {
    const Ending ending = endingOf(QStringLiteral("/dev/zero"));
    ASSERT_FALSE(ending.isOpened());
    EXPECT_EQ(ending.category, Category::NotAFile);
}

TEST(MediaAssetTest, APipeIsRefusedWithoutWaitingForAWriter) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("pipe.mp4"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    const Ending ending = endingOf(path);
    ASSERT_FALSE(ending.isOpened());
    EXPECT_EQ(ending.category, Category::NotAFile);
}

TEST(MediaAssetTest, NamesWithSpacesAccentsAndPercentSignsOpen) {
    const QTemporaryDir folder;
    for (const QString& name : {QStringLiteral("l'été 100 %.mp4"), QStringLiteral("%03d.mp4"),
                                QStringLiteral("file:x.mp4"), QStringLiteral("a|b?.mp4")}) {
        const QString path = folder.filePath(name);
        ASSERT_TRUE(QFile::copy(films + QStringLiteral("one_picture.mp4"), path));
        const Ending ending = endingOf(path);
        EXPECT_TRUE(ending.isOpened()) << name.toStdString() << ' ' << ending.sentence;
    }
}

/// What a child process meets at `path` that has been prepared; -1 where it meets nothing.
int categoryInChild(const QString& path, bool (*prepare)()) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (!prepare())
            ::_exit(254);
        const Ending ending = endingOf(path);
        ::_exit(ending.isOpened() ? 255 : int(ending.category));
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

bool becomeNobody() {
    constexpr uid_t nobody = 65534;
    return ::setresuid(nobody, nobody, nobody) == 0;
}

TEST(MediaAssetTest, AFileThatMayNotBeReadSaysSo) {
    const QTemporaryDir folder;
    ASSERT_TRUE(QFile::setPermissions(folder.path(), QFile::Permissions(0x7755)));
    const QString path = folder.filePath(QStringLiteral("private.mp4"));
    ASSERT_TRUE(QFile::copy(films + QStringLiteral("one_picture.mp4"), path));
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0), 0);
    if (::geteuid() == 0) {
        EXPECT_EQ(categoryInChild(path, becomeNobody), int(Category::NoPermission));
    } else {
        const Ending ending = endingOf(path);
        ASSERT_FALSE(ending.isOpened());
        EXPECT_EQ(ending.category, Category::NoPermission);
    }
    EXPECT_EQ(MediaError::make(Category::NoPermission).description(),
              QStringLiteral("La lecture du fichier n'est pas autorisée."));
}

const QString found = QStringLiteral(STILLWICK_SOURCE_DIR "/Fuzz/crashes/");

// Of damaged films: what libav* makes of their tables sounds like a fault of the system.
TEST(MediaAssetTest, TablesThatAskForTooMuchAreDamageNotWantOfMemory) {
    for (const char* name : {"memory-beyond-bound.mp4", "number-out-of-range.mp4"}) {
        const Ending ending = endingOf(found + QString::fromUtf8(name));
        EXPECT_EQ(ending.sentence, damaged) << name;
    }
}

TEST(MediaAssetTest, AFilmThatEndsInItsHeadIsDamageNotARefusalToRead) {
    EXPECT_EQ(endingOf(found + QStringLiteral("ends-in-its-head.mkv")).sentence, damaged);
}

[[maybe_unused]] bool haveLittleMemory() {
    constexpr rlim_t little = rlim_t(900) << 20;
    const rlimit limit{little, little};
    return ::setrlimit(RLIMIT_AS, &limit) == 0;
}

TEST(MediaAssetTest, WantOfMemorySaysSo) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer needs much room of its own";
#else
    EXPECT_EQ(categoryInChild(found + QStringLiteral("memory-beyond-bound.mp4"), haveLittleMemory),
              int(Category::OutOfMemory));
#endif
}

/// A copy of a clip, its bytes changed; no path where that fails.
QString patched(const QString& clip, const QTemporaryDir& folder,
                const std::function<void(QByteArray&)>& patch) {
    QFile film(films + clip);
    if (!film.open(QIODevice::ReadOnly))
        return {};
    QByteArray bytes = film.readAll();
    patch(bytes);
    const QString path = folder.filePath(clip);
    QFile copy(path);
    return copy.open(QIODevice::WriteOnly) && copy.write(bytes) == bytes.size() ? path : QString();
}

/// A copy whose sample entry in the track's table has another name.
QString withSampleEntry(const char* name, const QTemporaryDir& folder) {
    return patched(QStringLiteral("one_picture.mp4"), folder, [name](QByteArray& bytes) {
        bytes.replace(bytes.indexOf("avc1", bytes.indexOf("stsd")), 4, name);
    });
}

// ISO/IEC 23001-7: the sample entry of an encrypted track.
TEST(MediaAssetTest, AProtectedTrackSaysSo) {
    const QTemporaryDir folder;
    const Ending ending = endingOf(withSampleEntry("encv", folder));
    ASSERT_FALSE(ending.isOpened());
    EXPECT_EQ(ending.category, Category::Protected);
    EXPECT_EQ(ending.sentence, "Cette vidéo est protégée et ne peut pas être ouverte.");
}

TEST(MediaAssetTest, AnUnknownCodecSaysSo) {
    const QTemporaryDir folder;
    const Ending ending = endingOf(withSampleEntry("zzzz", folder));
    ASSERT_FALSE(ending.isOpened());
    EXPECT_EQ(ending.category, Category::Unsupported);
    EXPECT_EQ(ending.sentence, "Le format de cette vidéo n'est pas pris en charge.");
}

// GIF: the width and the height, little-endian, after the six bytes of the signature.
TEST(MediaAssetTest, APictureTooLargeToHoldSaysHowLarge) {
    const QTemporaryDir folder;
    const Ending ending =
        endingOf(patched(QStringLiteral("animated.gif"), folder, [](QByteArray& bytes) {
            constexpr std::array<char, 4> size = {0x74, 0x40, 0x08, 0x20};
            bytes.replace(6, 4, QByteArray(size.data(), 4));
        }));
    ASSERT_FALSE(ending.isOpened());
    EXPECT_EQ(ending.category, Category::TooLarge) << ending.sentence;
    EXPECT_EQ(ending.sentence, "L'image de cette vidéo est trop grande (16500 × 8200).");
}

TEST(MediaAssetTest, RealFilmsWithoutPicturesAreRefused) {
    const QString real = QStringLiteral(STILLWICK_SHARED_DATA "/films/sound_only.mp4");
    if (!QFileInfo::exists(real))
        GTEST_SKIP() << "no films in " STILLWICK_SHARED_DATA "/films";
    const Ending ending = endingOf(real);
    ASSERT_FALSE(ending.isOpened());
    EXPECT_EQ(ending.category, Category::NoVideo);
}

TEST(MediaAssetTest, EveryCategoryHasASentenceOfItsOwn) {
    std::set<QString> sentences;
    for (int category = 0; category <= int(Category::Cancelled); ++category) {
        const QString sentence = MediaError::make(Category(category)).description();
        EXPECT_TRUE(sentence.endsWith(u'.')) << sentence.toStdString();
        sentences.insert(sentence);
    }
    EXPECT_EQ(sentences.size(), std::size_t(Category::Cancelled) + 1);
}

TEST(MediaAssetTest, AWithdrawnOpeningEndsAsCancelled) {
    std::stop_source source;
    source.request_stop();
    for (const QString& film : {QStringLiteral("closed_h264.mp4"), QStringLiteral("open_raw.hevc"),
                                QStringLiteral("restarting_times.ts")}) {
        const Ending ending = endingOf(films + film, source.get_token());
        ASSERT_FALSE(ending.isOpened()) << film.toStdString();
        EXPECT_EQ(ending.category, Category::Cancelled) << ending.sentence;
        EXPECT_EQ(ending.sentence, "La demande a été abandonnée.");
    }
}

TEST(MediaAssetTest, AnOpeningUnderWayStopsSoon) {
    // Long enough to be caught reading: its times restart, so that it is read to its end.
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("long.ts"));
    QFile piece(films + QStringLiteral("restarting_times.ts"));
    ASSERT_TRUE(piece.open(QIODevice::ReadOnly));
    const QByteArray bytes = piece.readAll();
    QFile film(path);
    ASSERT_TRUE(film.open(QIODevice::WriteOnly));
    constexpr int pieces = 300; // 60 MB
    for (int i = 0; i < pieces; ++i)
        ASSERT_EQ(film.write(bytes), bytes.size());
    film.close();
    Ending ending;
    std::chrono::steady_clock::duration taken{};
    // Tried again where it ended before it was seen reading.
    for (int attempt = 0; attempt < 20 && ending.isOpened(); ++attempt) {
        std::stop_source source;
        std::atomic<bool> hasEnded = false;
        std::thread opener([&] {
            ending = endingOf(path, source.get_token());
            hasEnded = true;
        });
        while (bytesRead(path) < 2'000'000 && !hasEnded)
            std::this_thread::yield();
        const auto asked = std::chrono::steady_clock::now();
        source.request_stop();
        opener.join();
        taken = std::chrono::steady_clock::now() - asked;
    }
    ASSERT_FALSE(ending.isOpened());
    EXPECT_EQ(ending.category, Category::Cancelled) << ending.sentence;
    EXPECT_LT(taken, std::chrono::milliseconds(500));
}

TEST(MediaAssetTest, AfterAWithdrawnOpeningTheFilmOpens) {
    const MediaAsset asset(films + QStringLiteral("closed_h264.mp4"));
    std::stop_source source;
    source.request_stop();
    EXPECT_THROW(asset.open(source.get_token()), MediaError);
    EXPECT_NO_THROW(asset.open());
    EXPECT_NE(asset.takeFrameSource({}), nullptr);
}

TEST(MediaAssetTest, WhatOpenMadeIsTakenOnceAndThenMadeAnew) {
    const MediaAsset asset(films + QStringLiteral("closed_h264.mp4"));
    asset.open();
    asset.open();
    const auto first = asset.takeFrameSource({});
    const auto second = asset.takeFrameSource({});
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    EXPECT_NO_THROW((void)second->frameAt(CMTime::make(1, 1), {}, {}));
}

TEST(MediaAssetTest, AnErrorIsToldAgainAtTheNextOpening) {
    const MediaAsset asset(refused + QStringLiteral("text.mp4"));
    EXPECT_THROW(asset.open(), MediaError);
    EXPECT_THROW(asset.open(), MediaError);
    EXPECT_THROW((void)asset.takeFrameSource({}), MediaError);
}

TEST(MediaAssetTest, AnErrorSurvivesAFuture) {
    const MediaError error = MediaError::make(Category::Damaged, QStringLiteral("moov"));
    const std::unique_ptr<MediaError> copy(error.clone());
    try {
        copy->raise();
        FAIL() << "not thrown";
    } catch (const MediaError& caught) {
        EXPECT_EQ(caught.category(), Category::Damaged);
        EXPECT_EQ(caught.description(), error.description());
        EXPECT_EQ(caught.libraryText(), QStringLiteral("moov"));
    }
}

/// Every clip with bytes overwritten at random opens or is refused, and never hangs.
TEST(MediaAssetTest, RandomlyDamagedClipsAreMetWithinTheirTime) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("damaged"));
    std::mt19937 random(7);
    for (const QString& film : filmsIn(films)) {
        QFile file(film);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        QByteArray bytes = file.readAll();
        // In the head, where the tables are, and anywhere.
        for (int i = 0; i < 12; ++i) {
            const auto range = i < 6 ? std::min<qsizetype>(2000, bytes.size()) : bytes.size();
            bytes[qsizetype(random()) % range] = char(random());
        }
        QFile damagedFile(path);
        ASSERT_TRUE(damagedFile.open(QIODevice::WriteOnly));
        damagedFile.write(bytes);
        damagedFile.close();
        const auto start = std::chrono::steady_clock::now();
        for (const CMTime& time : {CMTime::zero(), CMTime::make(4, 5)}) {
            const Ending ending = endingOf(path, {}, time);
            EXPECT_TRUE(ending.isOpened() || ending.category != Category::Cancelled)
                << film.toStdString();
        }
        EXPECT_LT(std::chrono::steady_clock::now() - start, patience) << film.toStdString();
    }
}

} // namespace

} // namespace stillwick::testing
