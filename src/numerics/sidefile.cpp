// Opening and closing of the files that a run writes beside its report.

#include "numerics/sidefile.h"

#include <errno.h>

namespace vornengine {

void keep_error(int *first, int number)
{
    if (first && *first == 0) *first = number;
}

FILE *open_side(const char *name, int *error)
{
    errno = 0;
    FILE *f = fopen(name, "wb");
    if (!f) keep_error(error, errno ? errno : EIO);
    return f;
}

// A write that failed has left no more than the mark in the stream. Its cause shows again when
// one more byte is written to what is lost anyway.
void close_side(FILE *f, int *error)
{
    const bool failed = ferror(f) != 0;
    errno = 0;
    if (failed && fputc('\n', f) != EOF) fflush(f);
    const int cause = errno;
    const bool closed = fclose(f) == 0;
    if (failed || !closed) keep_error(error, cause ? cause : errno ? errno : EIO);
}

} // namespace vornengine
