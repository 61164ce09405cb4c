#include "host/system/temporary_file.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace vornhost;

namespace {

using File = std::unique_ptr<FILE, int (*)(FILE *)>;

std::string text_of(FILE *file)
{
    std::string text;
    rewind(file);
    for (int c = fgetc(file); c != EOF; c = fgetc(file)) text += (char)c;
    return text;
}

} // namespace

TEST(TemporaryFile, GivesBackEveryByteThatWasWritten)
{
    const File file(temporary_file(), fclose);
    ASSERT_NE(file, nullptr);
    const std::string bytes("one\ntwo\r\n\x1A\0end", 14);
    EXPECT_EQ(fwrite(bytes.data(), 1, bytes.size(), file.get()), bytes.size());
    EXPECT_EQ(text_of(file.get()), bytes);
}

TEST(TemporaryFile, IsAnotherOneEachTime)
{
    const File first(temporary_file(), fclose), second(temporary_file(), fclose);
    ASSERT_TRUE(first && second);
    fputs("first", first.get());
    fputs("second", second.get());
    EXPECT_EQ(text_of(first.get()), "first");
    EXPECT_EQ(text_of(second.get()), "second");
}
