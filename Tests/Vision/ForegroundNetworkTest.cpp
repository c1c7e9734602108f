// The network against what torch computed from the same weights and picture.
#include "Vision/ForegroundNetwork.h"

#include "FileBytes.h"
#include "Vision/ConvolutionTask.h"
#include "Vision/NetworkSegmenter.h"
#include "Vision/VisionError.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>
#include <thread>

namespace stillwick {
namespace {

using testing::bytesOfFile;

ForegroundNetwork smallNetwork() {
    const std::vector<std::byte> bytes = bytesOfFile("small-network.npz");
    auto network = ForegroundNetwork::read(bytes);
    EXPECT_TRUE(network);
    return *network;
}

struct Answer {
    cv::Mat3f picture;
    cv::Mat1f odds;
};

Answer torchsAnswer() {
    const auto archive = NumpyArchive::read(bytesOfFile("small-answer.npz"));
    const NumberArray* picture = archive->find("picture");
    const NumberArray* odds = archive->find("odds");
    Answer answer{cv::Mat3f(picture->shape[0], picture->shape[1]),
                  cv::Mat1f(odds->shape[0], odds->shape[1])};
    std::copy(picture->values.begin(), picture->values.end(), answer.picture.ptr<float>());
    std::copy(odds->values.begin(), odds->values.end(), answer.odds.ptr<float>());
    return answer;
}

// The bytes where `from` first occurs replaced by `to`, of the same length, in the entries' names
// as well as in the directory, so that no sum is wrong.
std::vector<std::byte> replaced(std::vector<std::byte> bytes, std::string_view from,
                                std::string_view to) {
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (std::size_t at = text.find(from); at != std::string_view::npos;
         at = text.find(from, at + 1))
        std::transform(to.begin(), to.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                       [](char c) { return std::byte(c); });
    return bytes;
}

TEST(ForegroundNetworkTest, AnswersWhatTorchAnswers) {
    const Answer expected = torchsAnswer();
    const cv::Mat1f odds = smallNetwork().logOdds(expected.picture, {});
    ASSERT_EQ(odds.size(), expected.odds.size());
    double largest = 0;
    for (int y = 0; y < odds.rows; ++y)
        for (int x = 0; x < odds.cols; ++x)
            largest =
                std::max(largest, static_cast<double>(std::abs(odds(y, x) - expected.odds(y, x))));
    EXPECT_LT(largest, 1e-4);
}

TEST(ForegroundNetworkTest, TheSideComesWithTheWeights) {
    EXPECT_EQ(smallNetwork().side(), 64);
}

TEST(ForegroundNetworkTest, OneNetworkAnswersManyThreadsAlike) {
    const ForegroundNetwork network = smallNetwork();
    const Answer expected = torchsAnswer();
    const cv::Mat1f alone = network.logOdds(expected.picture, {});
    std::vector<cv::Mat1f> answers(4);
    {
        std::vector<std::jthread> threads;
        for (cv::Mat1f& answer : answers)
            threads.emplace_back([&] { answer = network.logOdds(expected.picture, {}); });
    }
    for (const cv::Mat1f& answer : answers)
        EXPECT_TRUE(std::equal(answer.begin(), answer.end(), alone.begin()));
}

TEST(ForegroundNetworkTest, AMissingPartIsNoNetwork) {
    const std::vector<std::byte> whole = bytesOfFile("small-network.npz");
    EXPECT_TRUE(ForegroundNetwork::read(whole));
    for (const char* part :
         {"down.0.0.0.weight", "down.3.1.second.weight", "context.whole.bias",
          "context.wide.1.running_var", "up.2.merge.0.weight", "finest.mask.bias", "figures"}) {
        std::string other(part);
        other.back() = '_';
        EXPECT_FALSE(ForegroundNetwork::read(replaced(whole, part, other))) << part;
    }
}

TEST(ForegroundNetworkTest, DamagedOrMissingWeightsAreNoNetwork) {
    std::vector<std::byte> bytes = bytesOfFile("small-network.npz");
    EXPECT_FALSE(ForegroundNetwork::read({}));
    EXPECT_FALSE(ForegroundNetwork::read(std::span(bytes).first(bytes.size() / 2)));
    bytes[bytes.size() / 3] ^= std::byte{1};
    EXPECT_FALSE(ForegroundNetwork::read(bytes));
}

TEST(ForegroundNetworkTest, AWithdrawnQuestionEndsInCancelled) {
    std::stop_source source;
    source.request_stop();
    try {
        static_cast<void>(smallNetwork().logOdds(torchsAnswer().picture, source.get_token()));
        FAIL() << "nothing was thrown";
    } catch (const VisionError& error) {
        EXPECT_EQ(error.category(), VisionError::Category::Cancelled);
    }
}

TEST(ForegroundNetworkTest, TheProgramsOwnWeightsAreWhole) {
    EXPECT_NE(standardSegmenter(), nullptr);
    EXPECT_NE(networkSegmenter(networkWeights()), nullptr);
    EXPECT_LT(networkWeights().size(), 20'000'000U);
}

} // namespace
} // namespace stillwick
