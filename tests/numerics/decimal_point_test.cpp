#include "numerics/decimal_point.h"

#include <gtest/gtest.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <filesystem>
#include <string>

#include "support/network.h"
#include "vorn/vorn.h"

using namespace vornengine;

namespace {

// Sets a locale with a decimal comma, made from the system's own sources, for the time of a test.
class Comma {
public:
    Comma()
    {
        char pattern[] = "/tmp/vornlocaleXXXXXX";
        folder = mkdtemp(pattern) ? pattern : "/nowhere";
        setenv("LOCPATH", folder.c_str(), 1);
        const std::string make = "localedef -i de_DE -f UTF-8 " + folder + "/de_DE.UTF-8 >/dev/null 2>&1";
        there = system(make.c_str()) == 0 && setlocale(LC_ALL, "de_DE.UTF-8") && std::string(printed(1.5)) == "1,5";
    }
    ~Comma()
    {
        setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
        std::filesystem::remove_all(folder);
    }
    static std::string printed(double x)
    {
        char text[20];
        snprintf(text, sizeof text, "%.1f", x);
        return text;
    }
    bool there = false;

private:
    std::string folder;
};

} // namespace

#define NEED_COMMA(comma)                                                                                              \
    if (!(comma).there) GTEST_SKIP() << "no locale with a decimal comma: install the package locales"

TEST(DecimalPoint, HoldsInALocaleWithAComma)
{
    Comma comma;
    NEED_COMMA(comma);
    {
        const decimal_point held;
        EXPECT_EQ(Comma::printed(1.5), "1.5");
        EXPECT_EQ(strtod("2.5", NULL), 2.5);
    }
    EXPECT_EQ(Comma::printed(1.5), "1,5");
}

TEST(DecimalPoint, Nests)
{
    Comma comma;
    NEED_COMMA(comma);
    const decimal_point outer;
    {
        const decimal_point inner;
    }
    EXPECT_EQ(Comma::printed(1.5), "1.5");
}

TEST(DecimalPoint, StandsInTheReportWhateverTheLocaleOfTheHost)
{
    std::string reports[2];
    for (int i = 0; i < 2; i++) {
        Comma comma;
        NEED_COMMA(comma);
        if (i == 0) setlocale(LC_ALL, "C");
        Network net(1);
        net.target("A", 0, 0, 100.25);
        net.target("B", 0, 0, 101.5);
        net.targets[0].ix[2] = CODE_FIXED;
        net.heightdiff("A", "B", 1.25, 0.001);
        {
            vorn run(net.ready());
            EXPECT_EQ(run.vornstart(), 0);
            EXPECT_EQ(run.vornjordan(), 0);
        }
        reports[i] = net.report();
    }
    EXPECT_EQ(reports[0], reports[1]);
    EXPECT_NE(reports[0].find("101.500000"), std::string::npos);
}
