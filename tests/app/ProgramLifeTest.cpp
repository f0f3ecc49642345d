#include "app/ProgramLife.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace kestrelguard {
namespace {

/// A program of three steps each way; every step writes its letter and does what the test wants.
struct ProgramLifeTest : testing::Test {
    using Action = std::function<void()>;

    ProgramLife::Steps StepsOf(const std::string& letters) {
        ProgramLife::Steps steps;
        for (const char letter : letters) {
            steps.emplace_back([this, letter] {
                log += letter;
                if (letter == at && during) {
                    const Action action = std::exchange(during, nullptr);
                    action();
                    log += letter;  // the step goes on after what it let in
                }
                if (letter == failing) {
                    failure();
                }
            });
        }
        return steps;
    }

    void At(char step, Action action) {
        at = step;
        during = std::move(action);
    }
    void Fail(char step, Action action) {
        failing = step;
        failure = std::move(action);
    }

    std::string log;
    char at = 0;
    Action during;
    char failing = 0;
    Action failure;
    ProgramLife life{
        {.start = StepsOf("abc"),
         .show = [this] { log += "S"; },
         .end = StepsOf("xyz"),
         .tell = [this](const RunTimeError& error) { log += "[" + std::to_string(error.Number()) + "]"; },
         .leave = [this] { log += "!"; }}};
};

TEST_F(ProgramLifeTest, StartsRunsAndEnds) {
    EXPECT_FALSE(life.Running());
    life.Start();
    EXPECT_EQ(log, "abcS");
    EXPECT_TRUE(life.Running());
    life.Close();
    EXPECT_EQ(log, "abcSxyz!");
    EXPECT_FALSE(life.Running());
}

TEST_F(ProgramLifeTest, IsNotRunningWhileItStartsOrEnds) {
    bool running = true;
    At('b', [&] { running = life.Running(); });
    life.Start();
    EXPECT_FALSE(running);
    running = true;
    At('y', [&] { running = life.Running(); });
    life.Close();
    EXPECT_FALSE(running);
}

TEST_F(ProgramLifeTest, ASecondCloseIsNone) {
    life.Start();
    At('y', [this] { life.Close(); });
    life.Close();
    EXPECT_EQ(log, "abcSxyyz!");
    life.Close();
    EXPECT_EQ(log, "abcSxyyz!");
}

TEST_F(ProgramLifeTest, ACloseDuringTheStartWaitsForItsStepAndEndsQuietly) {
    At('b', [this] { life.Close(); });
    life.Start();
    EXPECT_EQ(log, "abbxyz!");
}

TEST_F(ProgramLifeTest, ACloseInTheLastStepOfTheStartCountsToo) {
    At('c', [this] { life.Close(); });
    life.Start();
    EXPECT_EQ(log, "abccxyz!");
}

TEST_F(ProgramLifeTest, AStepThatFailsAfterACloseIsQuiet) {
    At('b', [this] { life.Close(); });
    Fail('b', [] { throw RunTimeError(RunTimeError::kOverflow); });
    life.Start();
    EXPECT_EQ(log, "abbxyz!");
}

TEST_F(ProgramLifeTest, WhatComesBeforeTheStartWaitsForIt) {
    life.EndSession();
    EXPECT_EQ(log, "") << "the rooms may not be there yet";
    life.Start();
    EXPECT_EQ(log, "xyz!");
    EXPECT_FALSE(life.Running());
}

TEST_F(ProgramLifeTest, AFailedStartThrowsAndEndsNothing) {
    Fail('b', [] { throw RunTimeError(RunTimeError::kPathFileAccess); });
    EXPECT_THROW(life.Start(), RunTimeError);
    EXPECT_EQ(log, "ab");
    EXPECT_FALSE(life.Running());
    // Its box is open: a close is the box's matter, the end of the session takes the window away.
    life.Close();
    EXPECT_EQ(log, "ab");
    life.EndSession();
    EXPECT_EQ(log, "ab!");
}

TEST_F(ProgramLifeTest, EveryStepOfTheEndIsDoneAndTheFirstFailureTold) {
    life.Start();
    Fail('x', [] { throw RunTimeError(RunTimeError::kDiskFull); });
    life.Close();
    EXPECT_EQ(log, "abcSxyz[61]!");
}

TEST_F(ProgramLifeTest, LackOfMemoryInOneStepSkipsNoOther) {
    life.Start();
    Fail('y', [] { throw std::bad_alloc(); });
    life.Close();
    EXPECT_EQ(log, "abcSxyz[7]!");
}

TEST_F(ProgramLifeTest, AMistakeInOneStepSkipsNoOther) {
    life.Start();
    Fail('z', [] { throw std::logic_error("a mistake"); });
    life.Close();
    EXPECT_EQ(log, "abcSxyz[5]!");
}

TEST_F(ProgramLifeTest, TheEndOfTheSessionTellsNobody) {
    life.Start();
    Fail('x', [] { throw RunTimeError(RunTimeError::kDiskFull); });
    life.EndSession();
    EXPECT_EQ(log, "abcSxyz!");
}

TEST_F(ProgramLifeTest, TheEndOfTheSessionDoesWhatAnEndHasLeftToDo) {
    life.Start();
    At('x', [this] {
        life.EndSession();
        EXPECT_EQ(log, "abcSxyz!") << "everything was done before it returned";
    });
    life.Close();
    EXPECT_EQ(log, "abcSxyz!x") << "and nothing twice";
}

TEST_F(ProgramLifeTest, TheEndOfTheSessionDuringTheStartEndsAtOnceAndQuietly) {
    At('b', [this] {
        life.EndSession();
        EXPECT_EQ(log, "abxyz!");
    });
    Fail('b', [] { throw RunTimeError(RunTimeError::kInvalidCall); });
    life.Start();
    EXPECT_EQ(log, "abxyz!b");
    EXPECT_FALSE(life.Running());
}

TEST(ProgramLife, TheSessionMayEndWhileAFailureIsTold) {
    std::string log;
    std::optional<ProgramLife> life;
    life.emplace(ProgramLife::Parts{.start = {},
                                    .end = {[] { throw RunTimeError(RunTimeError::kDiskFull); }},
                                    .tell =
                                        [&](const RunTimeError&) {
                                            log += "box ";
                                            life->Close();
                                            life->EndSession();
                                        },
                                    .leave = [&] { log += "left "; }});
    life->Start();
    life->Close();
    EXPECT_EQ(log, "box left ");
}

// A step that does not come back is left behind.

TEST_F(ProgramLifeTest, GoesOnInsideAStepOfTheStart) {
    At('b', [&] {
        life.GoOn();
        EXPECT_TRUE(life.Running());
        life.GoOn();
    });
    life.Start();
    EXPECT_EQ(log, "abcSb");
    EXPECT_TRUE(life.Running());
}

TEST_F(ProgramLifeTest, EndsInsideAStepOfTheStartThatWasLeftBehind) {
    At('b', [&] {
        life.GoOn();
        life.Close();
    });
    life.Start();
    EXPECT_EQ(log, "abcSxyz!b");
}

TEST_F(ProgramLifeTest, AWishToCloseIsMetWhenTheStepIsLeftBehind) {
    At('b', [&] {
        life.Close();
        EXPECT_EQ(log, "ab");
        life.GoOn();
    });
    life.Start();
    EXPECT_EQ(log, "abxyz!b");
}

TEST_F(ProgramLifeTest, WhatAStepLeftBehindThrowsInTheEndIsNoFailureOfTheStart) {
    At('b', [&] { life.GoOn(); });
    Fail('b', [] { throw RunTimeError(5); });
    EXPECT_NO_THROW(life.Start());
    EXPECT_EQ(log, "abcSb");
    EXPECT_TRUE(life.Running());
}

TEST_F(ProgramLifeTest, WhatFailsAfterAStepWasLeftBehindIsToldAndEndsTheProgram) {
    At('b', [&] { life.GoOn(); });
    Fail('c', [] { throw RunTimeError(7); });
    EXPECT_NO_THROW(life.Start());
    EXPECT_EQ(log, "abc[7]!b");
    EXPECT_FALSE(life.Alive());
}

TEST_F(ProgramLifeTest, LeavesNothingBehindWhileItRunsOrEnds) {
    life.GoOn();
    EXPECT_EQ(log, "");
    life.Start();
    EXPECT_TRUE(life.Alive());
    At('y', [&] {
        EXPECT_FALSE(life.Alive());
        life.GoOn();
    });
    life.Close();
    EXPECT_EQ(log, "abcSxyyz!");
}

}  // namespace
}  // namespace kestrelguard
