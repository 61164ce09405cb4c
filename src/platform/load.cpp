// Entry of the dynamic library on Windows. The engine keeps nothing for a thread, so that the
// system need not tell it of threads that begin and end.

#ifdef _WIN32

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(library);
    return TRUE;
}

#endif
