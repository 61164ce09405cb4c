#include "host/input/date.h"

namespace vornhost {

namespace {

// A number of so many digits, -1 for anything else.
int digits(std::string_view text, size_t at, size_t count)
{
    int number = 0;
    for (size_t i = at; i < at + count; i++) {
        if (i >= text.size() || text[i] < '0' || text[i] > '9') return -1;
        number = 10 * number + (text[i] - '0');
    }
    return number;
}

bool leap(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

int days_in_month(int year, int month)
{
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && leap(year) ? 29 : days[month - 1];
}

// Days from 1970-01-01 to the first of January.
int days_before(int year)
{
    const int y = year - 1;
    return 365 * (year - 1970) + (y / 4 - y / 100 + y / 400) - (1969 / 4 - 1969 / 100 + 1969 / 400);
}

} // namespace

std::optional<double> days_of_date(std::string_view date)
{
    const bool timed = date.size() == 16;
    if ((!timed && date.size() != 10) || date[4] != '-' || date[7] != '-') return std::nullopt;
    const int year = digits(date, 0, 4), month = digits(date, 5, 2), day = digits(date, 8, 2);
    if (year < 1 || month < 1 || month > 12 || day < 1 || day > days_in_month(year, month)) return std::nullopt;
    double days = days_before(year) + day - 1;
    for (int m = 1; m < month; m++) days += days_in_month(year, m);
    if (!timed) return days;
    const int hour = digits(date, 11, 2), minute = digits(date, 14, 2);
    if ((date[10] != ' ' && date[10] != 'T') || date[13] != ':' || hour < 0 || hour > 23 || minute < 0 || minute > 59)
        return std::nullopt;
    return days + (hour + minute / 60.0) / 24.0;
}

} // namespace vornhost
