#include "host/run/console.h"

#include <gtest/gtest.h>

#include <string>

using namespace vornhost;

namespace {

const char recompute[] = "Do you want to compute new approximate values?";
const char balance[] = "Do you want to balance the observations?";

int answer(const ConsoleOptions &options, std::string question)
{
    Console console(options);
    std::string title = "Title";
    return console.decision(&question[0], &title[0]);
}

std::string shown(const ConsoleOptions &options, std::string line)
{
    Console console(options);
    testing::internal::CaptureStderr();
    console.feedback(&line[0]);
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(Console, ShowsLinesOnStandardErrorWithOneLineEnd)
{
    EXPECT_EQ(shown({}, "The solution has converged"), "The solution has converged\n");
    EXPECT_EQ(shown({}, "with its own\n"), "with its own\n");
}

TEST(Console, ShowsNothingWhenQuiet)
{
    ConsoleOptions quiet;
    quiet.quiet = true;
    EXPECT_EQ(shown(quiet, "line"), "");
}

TEST(Console, AnswersNoWithoutOptions)
{
    EXPECT_EQ(answer({}, recompute), 0);
    EXPECT_EQ(answer({}, balance), 0);
    EXPECT_EQ(answer({}, "Another question?"), 0);
}

TEST(Console, AnswersEachQuestionByItsOption)
{
    ConsoleOptions one, two;
    one.recompute = true;
    two.balance = true;
    EXPECT_NE(answer(one, recompute), 0);
    EXPECT_EQ(answer(one, balance), 0);
    EXPECT_EQ(answer(two, recompute), 0);
    EXPECT_NE(answer(two, balance), 0);
}

TEST(Console, BearsAMissingQuestion)
{
    Console console({});
    EXPECT_EQ(console.decision(nullptr, nullptr), 0);
    console.feedback(nullptr);
}
