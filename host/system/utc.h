// Calendar time, the same in every thread.

#ifndef VORNHOST_UTC_H
#define VORNHOST_UTC_H

#include <time.h>

namespace vornhost {

// The calendar of a time in UTC; false when it has none. Unlike gmtime it shares nothing with other threads.
inline bool utc(time_t seconds, tm *calendar)
{
#ifdef _WIN32
    return gmtime_s(calendar, &seconds) == 0;
#else
    return gmtime_r(&seconds, calendar) != nullptr;
#endif
}

} // namespace vornhost

#endif
