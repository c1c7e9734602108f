#include "Media/PresenterCommands.h"

#include <gtest/gtest.h>

#include <thread>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;
using Command = PresenterCommands::Command;
using Verb = Command::Verb;

Command seekTo(std::int64_t seconds) {
    return {Verb::Seek, 0, CMTime::make(seconds, 1), 0, nullptr};
}

Command stepBy(int count) {
    return {Verb::Step, 0, {}, count, nullptr};
}

Command play() {
    return {Verb::Play, 0, {}, 0, nullptr};
}

TEST(PresenterCommandsTest, CommandsAreTakenInTheirOrder) {
    PresenterCommands commands(seekTo(1));
    commands.push(play());
    commands.push(stepBy(2));
    EXPECT_EQ(commands.take({})->verb, Verb::Seek);
    EXPECT_EQ(commands.take({})->verb, Verb::Play);
    EXPECT_TRUE(commands.isAnyWaiting());
    EXPECT_EQ(commands.take({})->verb, Verb::Step);
    EXPECT_FALSE(commands.isAnyWaiting());
    EXPECT_FALSE(commands.take({}));
}

TEST(PresenterCommandsTest, StepsInOneDirectionAddUp) {
    PresenterCommands commands(stepBy(1));
    commands.push(stepBy(4));
    commands.push(stepBy(-1));
    commands.push(stepBy(-1));
    EXPECT_EQ(commands.take({})->count, 5);
    EXPECT_EQ(commands.take({})->count, -2);
    EXPECT_FALSE(commands.isAnyWaiting());
}

TEST(PresenterCommandsTest, ASeekReplacesSeeksAndStepsButNotPlaying) {
    PresenterCommands commands(seekTo(1));
    commands.push(stepBy(3));
    commands.push(play());
    commands.push(seekTo(2));
    EXPECT_EQ(commands.take({})->verb, Verb::Play);
    EXPECT_EQ(commands.take({})->time, CMTime::make(2, 1));
    EXPECT_FALSE(commands.isAnyWaiting());
}

TEST(PresenterCommandsTest, ASeekWithdrawsTheCommandUnderWayAndStepsDoNot) {
    PresenterCommands commands(seekTo(1));
    (void)commands.take({});
    const std::stop_token first = commands.withdrawal();
    commands.push(stepBy(1));
    EXPECT_FALSE(first.stop_requested());
    commands.push(seekTo(2));
    EXPECT_TRUE(first.stop_requested());
    (void)commands.take({});
    EXPECT_FALSE(commands.withdrawal().stop_requested()) << "the next one is another";
}

TEST(PresenterCommandsTest, WhatIsTakenAfterTheEndIsWithdrawnAlready) {
    PresenterCommands commands(seekTo(1));
    std::stop_source end;
    end.request_stop();
    EXPECT_TRUE(commands.take(end.get_token()));
    EXPECT_TRUE(commands.withdrawal().stop_requested());
}

TEST(PresenterCommandsTest, SeeksDuringASeekAreADrag) {
    PresenterCommands commands(seekTo(0));
    EXPECT_FALSE(commands.isDragging());
    (void)commands.take({});
    commands.push(seekTo(1));
    EXPECT_TRUE(commands.isDragging());
}

TEST(PresenterCommandsTest, WaitingEndsWithACommandOrTheEnd) {
    PresenterCommands commands(seekTo(0));
    commands.waitForOne({}); // returns: one is there
    (void)commands.take({});
    std::jthread other([&commands] { commands.push(play()); });
    commands.waitForOne({});
    EXPECT_EQ(commands.take({})->verb, Verb::Play);
    std::stop_source end;
    std::jthread ender([&end] { end.request_stop(); });
    commands.waitForOne(end.get_token());
    commands.waitForOne(std::chrono::steady_clock::now() + 1ms, {});
    EXPECT_FALSE(commands.isAnyWaiting());
}

} // namespace

} // namespace stillwick::testing
