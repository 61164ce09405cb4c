#include "host/run/report_tee.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>

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

// Lines of 10 bytes, each with its number.
std::string lines(int from, int to)
{
    std::string text;
    char line[30];
    for (int i = from; i < to; i++) {
        snprintf(line, sizeof line, "line %4d\n", i);
        text += line;
    }
    return text;
}

} // namespace

TEST(ReportTee, HandsTheWholeReportOnAndKeepsItsEnd)
{
    for (const int n : {0, 1, 399, 400, 401, 3000}) {
        const File report(tmpfile(), fclose);
        ReportTee tee(report.get());
        fputs(lines(0, n).c_str(), tee.stream());
        EXPECT_EQ(tee.tail(), lines(n < 400 ? 0 : n - 400, n)) << n;
        tee.close();
        EXPECT_EQ(text_of(report.get()), lines(0, n)) << n;
    }
}

TEST(ReportTee, FlushesTheReportWithItself)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const File report(fdopen(ends[1], "w"), fclose);
    ReportTee tee(report.get());
    fputs("now", tee.stream());
    fflush(tee.stream());
    char text[4] = "";
    EXPECT_EQ(read(ends[0], text, 3), 3);
    EXPECT_STREQ(text, "now");
    close(ends[0]);
}

TEST(ReportTee, KeepsTheEndOfAReportThatIsNotTaken)
{
    const File report(fopen("/dev/full", "w"), fclose);
    ReportTee tee(report.get());
    fputs("why\n", tee.stream());
    EXPECT_EQ(tee.tail(), "why\n");
    EXPECT_NE(ferror(report.get()), 0);
}
