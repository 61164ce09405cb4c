#include "host/system/process.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <signal.h>
#endif

namespace vornhost {

#ifdef _WIN32

// A file that is opened takes no number of a standard stream here.
bool hold_standard_streams() { return true; }

void let_writes_fail() {}

void show_utf8() { SetConsoleOutputCP(CP_UTF8); }

#else

bool hold_standard_streams()
{
    for (int handle = 0; handle <= 2; handle++)
        if (fcntl(handle, F_GETFD) < 0 && open("/dev/null", O_RDONLY) < 0) return false;
    return true;
}

void let_writes_fail()
{
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

void show_utf8() {}

#endif

} // namespace vornhost
