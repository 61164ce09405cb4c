#include "host/input/date.h"

#include <gtest/gtest.h>

using vornhost::days_of_date;

TEST(Date, CountsDays)
{
    EXPECT_EQ(days_of_date("1970-01-01"), 0.0);
    EXPECT_EQ(days_of_date("2000-03-01"), 11017.0); // 951868800 seconds of Unix time
    EXPECT_EQ(days_of_date("2026-05-01"), 20574.0); // 1777593600 seconds
    EXPECT_EQ(days_of_date("1969-12-31"), -1.0);
    EXPECT_EQ(days_of_date("2026-05-01 18:00"), 20574.75);
    EXPECT_EQ(days_of_date("2026-05-01T06:00"), 20574.25);
}

TEST(Date, KnowsLeapYears)
{
    EXPECT_EQ(*days_of_date("2024-03-01") - *days_of_date("2024-02-28"), 2.0);
    EXPECT_EQ(*days_of_date("1900-03-01") - *days_of_date("1900-02-28"), 1.0);
    EXPECT_EQ(*days_of_date("2000-03-01") - *days_of_date("2000-02-28"), 2.0);
}

TEST(Date, RefusesWhatIsNone)
{
    for (const char *text :
         {"", "2026", "2026-13-01", "2026-00-01", "2026-02-29", "2026-04-31", "2026/05/01", "01-05-2026",
          "2026-05-01 24:00", "2026-05-01 12:60", "2026-05-01x12:00", "2026-05-1", "2026-05-01 12:00:00", "-026-05-01"})
        EXPECT_FALSE(days_of_date(text)) << text;
}
