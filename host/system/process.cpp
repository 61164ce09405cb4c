#include "host/system/process.h"

#include <initializer_list>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <signal.h>

#include <initializer_list>
#endif
#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <initializer_list>

namespace vornhost {

#ifdef _WIN32

// A file that is opened takes no number of a standard stream here.
bool hold_standard_streams() { return true; }

namespace {

void (*interrupted)() = nullptr;

// Called in a thread of its own.
BOOL WINAPI take_event(DWORD event)
{
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
    interrupted();
    return TRUE;
}

} // namespace

void when_interrupted(void (*function)())
{
    interrupted = function;
    SetConsoleCtrlHandler(take_event, TRUE);
}

void let_writes_fail() {}

void show_utf8() { SetConsoleOutputCP(CP_UTF8); }

#else

bool hold_standard_streams()
{
    for (int handle = 0; handle <= 2; handle++)
        if (fcntl(handle, F_GETFD) < 0 && open("/dev/null", O_RDONLY) < 0) return false;
    return true;
}

namespace {

void (*interrupted)() = nullptr;

void take_signal(int) { interrupted(); }

} // namespace

void when_interrupted(void (*function)())
{
    interrupted = function;
    struct sigaction action = {}, before = {};
    action.sa_handler = take_signal;
    action.sa_flags = SA_RESTART;
    for (const int number : {SIGINT, SIGTERM}) {
        sigaction(number, nullptr, &before);
        if (before.sa_handler != SIG_IGN) sigaction(number, &action, nullptr);
    }
}

void let_writes_fail()
{
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

void show_utf8() {}

#endif

#ifdef __GLIBC__
void keep_memory()
{
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 256 << 20);
    mallopt(M_TOP_PAD, 4 << 20);
}

void give_back_memory() { malloc_trim(0); }
#else
void keep_memory() {}
void give_back_memory() {}
#endif

} // namespace vornhost
