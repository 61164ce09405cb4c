// The locale of a thread, for the numbers in reports and files. On Windows a thread that shares
// the locale of the process gets one of its own for the time.

#include "numerics/decimal_point.h"

#include <string.h>

namespace vornengine {

#ifdef _WIN32

decimal_point::decimal_point() : perthread(_configthreadlocale(_ENABLE_PER_THREAD_LOCALE)), host()
{
    const char *name = setlocale(LC_NUMERIC, NULL);
    if (!name || strlen(name) >= sizeof host) return;
    strcpy(host, name);
    setlocale(LC_NUMERIC, "C");
}

decimal_point::~decimal_point()
{
    if (host[0]) setlocale(LC_NUMERIC, host);
    if (perthread > 0) _configthreadlocale(perthread);
}

#else

decimal_point::decimal_point() : plain(newlocale(LC_ALL_MASK, "C", (locale_t)0)), host((locale_t)0)
{
    if (plain) host = uselocale(plain);
}

decimal_point::~decimal_point()
{
    if (!plain) return;
    uselocale(host);
    freelocale(plain);
}

#endif

} // namespace vornengine
