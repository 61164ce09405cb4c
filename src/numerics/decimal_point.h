// The decimal point of reports and files, whatever locale the host has set.

#ifndef VORN_DECIMAL_POINT_H
#define VORN_DECIMAL_POINT_H

#include <locale.h>

namespace vornengine {

// While one of these lives, this thread prints and reads numbers as in the locale "C"; other
// threads keep theirs. The host's locale comes back at the end.
class decimal_point {
public:
    decimal_point();
    ~decimal_point();
    decimal_point(const decimal_point &) = delete;
    decimal_point &operator=(const decimal_point &) = delete;

private:
#ifdef _WIN32
    int perthread; // whether the thread had a locale of its own
    char host[64]; // its name for numbers
#else
    locale_t plain, host;
#endif
};

} // namespace vornengine

#endif
