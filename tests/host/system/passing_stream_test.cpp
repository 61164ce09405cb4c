#include "host/system/passing_stream.h"

#include <gtest/gtest.h>

#include <string>

using namespace vornhost;

namespace {

bool append(void *to, const char *text, size_t size)
{
    static_cast<std::string *>(to)->append(text, size);
    return true;
}

bool refuse(void *to, const char *, size_t)
{
    ++*static_cast<int *>(to);
    return false;
}

} // namespace

TEST(PassingStream, HandsOnWhatWasWrittenWhenItIsAsked)
{
    std::string taken;
    PassingStream stream(append, &taken);
    ASSERT_NE(stream.stream(), nullptr);
    fputs("one\n", stream.stream());
    stream.pass();
    EXPECT_EQ(taken, "one\n");
    stream.pass();
    EXPECT_EQ(taken, "one\n");
    fputs("2\n", stream.stream());
    stream.pass();
    EXPECT_EQ(taken, "one\n2\n");
}

TEST(PassingStream, HandsOnAllOfAnyLengthWhenItIsClosed)
{
    std::string written, taken;
    PassingStream stream(append, &taken);
    for (int i = 0; i < 20000; i++) {
        const std::string line = "line " + std::to_string(i) + "\n";
        fputs(line.c_str(), stream.stream());
        written += line;
        if (i % 7000 == 6999) stream.pass();
    }
    stream.close();
    EXPECT_EQ(taken, written);
    EXPECT_EQ(stream.stream(), nullptr);
}

TEST(PassingStream, GoesOnBehindATakerThatRefuses)
{
    int calls = 0;
    PassingStream stream(refuse, &calls);
    fputs("lost", stream.stream());
    stream.pass();
    stream.close();
    EXPECT_GE(calls, 1);
}
