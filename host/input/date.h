// Dates of epochs.

#ifndef VORNHOST_DATE_H
#define VORNHOST_DATE_H

#include <optional>
#include <string_view>

namespace vornhost {

constexpr double days_in_year = 365.25;

// Days since 1970-01-01 of "2026-05-01" or "2026-05-01 14:30"; a T may stand for the blank. Absent for anything else.
std::optional<double> days_of_date(std::string_view date);

} // namespace vornhost

#endif
