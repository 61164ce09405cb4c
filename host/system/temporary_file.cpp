#include "host/system/temporary_file.h"

#ifdef _WIN32
#include <errno.h>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>
#endif

namespace vornhost {

#ifdef _WIN32

// In the user's folder for temporary files.
FILE *temporary_file()
{
    wchar_t folder[MAX_PATH + 1], name[MAX_PATH + 1];
    errno = EACCES;
    if (GetTempPathW(MAX_PATH, folder) == 0 || GetTempFileNameW(folder, L"vrn", 0, name) == 0) return nullptr;
    const int handle = _wopen(name, _O_RDWR | _O_BINARY | _O_TRUNC | _O_TEMPORARY, _S_IREAD | _S_IWRITE);
    return handle < 0 ? nullptr : _fdopen(handle, "w+b");
}

#else

FILE *temporary_file() { return tmpfile(); }

#endif

} // namespace vornhost
