#include "ReadingPosition.h"

#include "Media/ImageGenerator.h"
#include "Media/MediaAsset.h"

#include <gtest/gtest.h>

#include <QFileInfo>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace stillwick::testing {

namespace {

using Category = MediaError::Category;
using Result = ImageGenerator::Result;

const QString film = QStringLiteral(STILLWICK_CLIPS "/films/open_h264.mp4");
const QString otherFilm = QStringLiteral(STILLWICK_CLIPS "/films/mpeg2.ts");
const QString longFilm = QStringLiteral(STILLWICK_CLIPS "/long/one_group.mp4");
const CMTime endOfLongFilm = CMTime::make(1199, 60); // its last frame of 1200

constexpr std::chrono::seconds patience{60};

std::shared_ptr<const MediaAsset> assetOf(const QString& path) {
    return std::make_shared<const MediaAsset>(path);
}

ImageGenerator exactGenerator(const QString& path) {
    ImageGenerator generator(assetOf(path));
    generator.setRequestedTimeToleranceBefore(CMTime::zero());
    generator.setRequestedTimeToleranceAfter(CMTime::zero());
    return generator;
}

std::string errorOf(const Result& result) {
    return result.error ? result.error->what() : "";
}

/// The category of a failed request's error; fails where it did not fail.
Category categoryOf(const Result& result) {
    if (result.error)
        return result.error->category();
    ADD_FAILURE() << "no error";
    return Category::NotMedia;
}

/// The answers to requests, in the order in which they came.
class Answers {
public:
    ImageGenerator::CompletionHandler handlerFor(int request) {
        return [this, request](Result result) {
            const std::lock_guard lock(m_mutex);
            m_answers.emplace_back(request, std::move(result));
            m_times.push_back(std::chrono::steady_clock::now());
            m_changed.notify_all();
        };
    }

    /// False where so many answers did not come.
    bool waitFor(std::size_t count) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, patience, [&] { return m_answers.size() >= count; });
    }

    std::chrono::steady_clock::time_point timeOf(std::size_t answer) {
        const std::lock_guard lock(m_mutex);
        return m_times.at(answer);
    }

    std::vector<std::pair<int, Result>> take() {
        const std::lock_guard lock(m_mutex);
        return m_answers;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::pair<int, Result>> m_answers;
    std::vector<std::chrono::steady_clock::time_point> m_times; // of the answers
};

// 30 pictures a second: the middle of picture `index`.
CMTime middleOf(int index) {
    return CMTime::make(2 * index + 1, 60);
}

TEST(ImageGeneratorTest, EachOfManyRequestsIsAnsweredOnceWithItsOwnPicture) {
    const ImageGenerator generator = exactGenerator(film);
    Answers answers;
    constexpr int requests = 40;
    for (int i = 0; i < requests; ++i)
        generator.generateImageAsynchronously(middleOf(i * 37 % 90), answers.handlerFor(i));
    ASSERT_TRUE(answers.waitFor(requests));
    // One picture after another by a second generator: nothing runs beside it.
    const ImageGenerator reference = exactGenerator(film);
    std::map<int, int> counts;
    for (const auto& [request, result] : answers.take()) {
        ++counts[request];
        const int frame = request * 37 % 90;
        ASSERT_EQ(errorOf(result), "");
        EXPECT_EQ(result.actualTime, CMTime::make(frame, 30));
        EXPECT_EQ(result.image, reference.generateImage(CMTime::make(frame, 30)).image);
    }
    EXPECT_EQ(counts.size(), std::size_t(requests));
    for (const auto& [request, count] : counts)
        EXPECT_EQ(count, 1) << request;
}

TEST(ImageGeneratorTest, ManyThreadsMayAskOneGeneratorAndWaitForIt) {
    const ImageGenerator generator = exactGenerator(film);
    constexpr int threads = 4;
    constexpr int requests = 8;
    std::vector<std::vector<Result>> results(threads);
    std::vector<std::thread> callers;
    for (int thread = 0; thread < threads; ++thread) {
        callers.emplace_back([&generator, &mine = results[std::size_t(thread)], thread] {
            for (int i = 0; i < requests; ++i)
                mine.push_back(generator.generateImage(middleOf((thread * 23 + i * 17) % 90)));
        });
    }
    for (std::thread& caller : callers)
        caller.join();
    for (int thread = 0; thread < threads; ++thread) {
        for (int i = 0; i < requests; ++i) {
            const Result& result = results[std::size_t(thread)][std::size_t(i)];
            ASSERT_EQ(errorOf(result), "");
            EXPECT_EQ(result.actualTime, CMTime::make((thread * 23 + i * 17) % 90, 30));
        }
    }
}

TEST(ImageGeneratorTest, TwoFilmsAtOnceDoNotMixTheirPictures) {
    const ImageGenerator first = exactGenerator(film);
    const ImageGenerator second = exactGenerator(otherFilm);
    Answers answers;
    constexpr int pairs = 15;
    for (int i = 0; i < pairs; ++i) {
        first.generateImageAsynchronously(CMTime::make(i * 5, 30), answers.handlerFor(2 * i));
        second.generateImageAsynchronously(CMTime::make(i * 4, 25), answers.handlerFor(2 * i + 1));
    }
    ASSERT_TRUE(answers.waitFor(2 * pairs));
    const ImageGenerator firstReference = exactGenerator(film);
    const ImageGenerator secondReference = exactGenerator(otherFilm);
    for (const auto& [request, result] : answers.take()) {
        ASSERT_EQ(errorOf(result), "");
        const int i = request / 2;
        const Result expected = request % 2 == 0
                                    ? firstReference.generateImage(CMTime::make(i * 5, 30))
                                    : secondReference.generateImage(CMTime::make(i * 4, 25));
        EXPECT_EQ(result.actualTime, expected.actualTime);
        EXPECT_EQ(result.image, expected.image);
    }
}

TEST(ImageGeneratorTest, RequestsSurviveTheirGenerator) {
    Answers answers;
    constexpr int requests = 6;
    {
        const ImageGenerator generator = exactGenerator(film);
        for (int i = 0; i < requests; ++i)
            generator.generateImageAsynchronously(middleOf(80 - i), answers.handlerFor(i));
    }
    ASSERT_TRUE(answers.waitFor(requests));
    for (const auto& [request, result] : answers.take()) {
        ASSERT_EQ(errorOf(result), "");
        EXPECT_EQ(result.actualTime, CMTime::make(80 - request, 30));
    }
}

TEST(ImageGeneratorTest, ARequestKeepsTheFilmOfTheGeneratorThatIsReplaced) {
    Answers answers;
    auto generator = std::make_unique<ImageGenerator>(exactGenerator(film));
    generator->generateImageAsynchronously(CMTime::make(1, 1), answers.handlerFor(0));
    generator = std::make_unique<ImageGenerator>(exactGenerator(otherFilm));
    generator->generateImageAsynchronously(CMTime::make(1, 1), answers.handlerFor(1));
    ASSERT_TRUE(answers.waitFor(2));
    for (const auto& [request, result] : answers.take()) {
        const ImageGenerator reference = exactGenerator(request == 0 ? film : otherFilm);
        EXPECT_EQ(result.image, reference.generateImage(CMTime::make(1, 1)).image);
    }
}

TEST(ImageGeneratorTest, SettingsCountAsTheyAreWhenARequestIsMade) {
    const QString turned = QStringLiteral(STILLWICK_CLIPS "/films/turned.mp4");
    ImageGenerator generator(assetOf(turned));
    EXPECT_FALSE(generator.appliesPreferredTrackTransform());
    Answers answers;
    generator.generateImageAsynchronously(CMTime::zero(), answers.handlerFor(0));
    generator.setAppliesPreferredTrackTransform(true);
    EXPECT_TRUE(generator.appliesPreferredTrackTransform());
    generator.generateImageAsynchronously(CMTime::zero(), answers.handlerFor(1));
    ASSERT_TRUE(answers.waitFor(2));
    for (const auto& [request, result] : answers.take())
        EXPECT_EQ(result.image.size(), request == 0 ? QSize(176, 144) : QSize(144, 176));
}

TEST(ImageGeneratorTest, AnErrorIsAnAnswerLikeAnother) {
    const ImageGenerator pastTheEnd = exactGenerator(film);
    Answers answers;
    pastTheEnd.generateImageAsynchronously(CMTime::make(100, 1), answers.handlerFor(0));
    const ImageGenerator noFilm =
        exactGenerator(QStringLiteral(STILLWICK_CLIPS "/refused/sound_only.mp3"));
    noFilm.generateImageAsynchronously(CMTime::zero(), answers.handlerFor(1));
    const ImageGenerator nothing = exactGenerator(QStringLiteral("/no/film"));
    nothing.generateImageAsynchronously(CMTime::zero(), answers.handlerFor(2));
    ASSERT_TRUE(answers.waitFor(3));
    const std::map<int, Category> expected = {
        {0, Category::TimeOutOfRange}, {1, Category::NoVideo}, {2, Category::NotFound}};
    for (const auto& [request, result] : answers.take()) {
        EXPECT_EQ(categoryOf(result), expected.at(request)) << errorOf(result);
        EXPECT_TRUE(result.image.isNull());
        EXPECT_FALSE(result.actualTime.isValid());
    }
    // The film is still there for the next request.
    EXPECT_FALSE(pastTheEnd.generateImage(CMTime::zero()).error);
}

TEST(ImageGeneratorTest, ARequestWithdrawnBeforehandIsCancelled) {
    const ImageGenerator generator = exactGenerator(film);
    std::stop_source source;
    source.request_stop();
    Answers answers;
    generator.generateImageAsynchronously(CMTime::zero(), answers.handlerFor(0),
                                          source.get_token());
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_EQ(categoryOf(answers.take()[0].second), Category::Cancelled);
}

/// Waits until a request for the end of the long film is decoding: all packets have been read.
void waitUntilDecoding() {
    const qint64 most = QFileInfo(longFilm).size() * 9 / 10;
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (bytesRead(longFilm) < most && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
}

TEST(ImageGeneratorTest, ARequestWithdrawnUnderWayEndsSoonAndTheNextIsAnswered) {
    const ImageGenerator generator = exactGenerator(longFilm);
    std::stop_source source;
    Answers answers;
    generator.generateImageAsynchronously(endOfLongFilm, answers.handlerFor(0), source.get_token());
    waitUntilDecoding();
    const auto asked = std::chrono::steady_clock::now();
    source.request_stop();
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::milliseconds(500));
    const Result result = answers.take()[0].second;
    EXPECT_EQ(categoryOf(result), Category::Cancelled);
    const Result next = generator.generateImage(CMTime::make(1, 6));
    ASSERT_EQ(errorOf(next), "");
    EXPECT_EQ(next.actualTime, CMTime::make(10, 60));
    EXPECT_EQ(next.image, exactGenerator(longFilm).generateImage(CMTime::make(10, 60)).image);
}

TEST(ImageGeneratorTest, ARequestWithdrawnWhileItWaitsDoesNotWaitForTheOneBefore) {
    const ImageGenerator generator = exactGenerator(longFilm);
    Answers answers;
    generator.generateImageAsynchronously(endOfLongFilm, answers.handlerFor(0));
    waitUntilDecoding();
    std::stop_source source;
    generator.generateImageAsynchronously(CMTime::zero(), answers.handlerFor(1),
                                          source.get_token());
    const auto asked = std::chrono::steady_clock::now();
    source.request_stop();
    ASSERT_TRUE(answers.waitFor(2));
    EXPECT_LT(answers.timeOf(0) - asked, (answers.timeOf(1) - asked) / 2);
    const auto log = answers.take();
    EXPECT_EQ(log[0].first, 1);
    EXPECT_EQ(categoryOf(log[0].second), Category::Cancelled);
    EXPECT_FALSE(log[1].second.error);
}

TEST(ImageGeneratorTest, InfiniteToleranceNeverGivesAFrameAfterTheTime) {
    ImageGenerator generator(assetOf(film));
    generator.setRequestedTimeToleranceAfter(CMTime::zero());
    const ImageGenerator reference = exactGenerator(film);
    for (int i = 0; i < 90; i += 7) {
        const CMTime time = middleOf(i * 31 % 90);
        const Result result = generator.generateImage(time);
        ASSERT_EQ(errorOf(result), "");
        EXPECT_LE(result.actualTime, time);
        EXPECT_EQ(result.image, reference.generateImage(result.actualTime).image);
    }
}

TEST(ImageGeneratorTest, AFiniteToleranceIsKept) {
    ImageGenerator generator(assetOf(film));
    const CMTime tolerance = CMTime::make(1, 10);
    generator.setRequestedTimeToleranceBefore(tolerance);
    generator.setRequestedTimeToleranceAfter(tolerance);
    for (int i = 0; i < 90; ++i) {
        const CMTime time = CMTime::make(i * 31 % 90, 30);
        const Result result = generator.generateImage(time);
        ASSERT_EQ(errorOf(result), "");
        EXPECT_LE(result.actualTime, time + tolerance);
        EXPECT_GE(result.actualTime, time - tolerance);
    }
}

TEST(ImageGeneratorTest, AnAssetThatIsOpenIsUsedByTheFirstGenerator) {
    const auto asset = assetOf(film);
    asset->open();
    ImageGenerator first(asset);
    ImageGenerator second(asset);
    EXPECT_FALSE(first.generateImage(CMTime::zero()).error);
    EXPECT_FALSE(second.generateImage(CMTime::zero()).error);
}

} // namespace

} // namespace stillwick::testing
