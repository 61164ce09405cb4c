// Files that are gone when they are closed.

#ifndef VORNHOST_TEMPORARY_FILE_H
#define VORNHOST_TEMPORARY_FILE_H

#include <stdio.h>

namespace vornhost {

// A new file, open for writing and reading of bytes, that nobody else sees; null, with errno, where the system gives
// none. Windows puts tmpfile into the root folder of the drive, where users may not write.
FILE *temporary_file();

} // namespace vornhost

#endif
