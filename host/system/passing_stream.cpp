#include "host/system/passing_stream.h"

#include "host/system/temporary_file.h"

namespace vornhost {

#ifdef __GLIBC__

namespace {

// 0 tells the stream of a failure.
ssize_t write_on(void *stream, const char *text, size_t size)
{
    return static_cast<PassingStream *>(stream)->take(text, size) ? (ssize_t)size : 0;
}

} // namespace

PassingStream::PassingStream(Taker its_taker, void *whom) : taker(its_taker), to(whom)
{
    cookie_io_functions_t functions = cookie_io_functions_t();
    functions.write = write_on;
    file = fopencookie(this, "w", functions);
}

void PassingStream::pass()
{
    if (file) fflush(file);
}

#else

PassingStream::PassingStream(Taker its_taker, void *whom) : taker(its_taker), to(whom), file(temporary_file()) {}

// What was handed on is written over.
void PassingStream::pass()
{
    if (!file) return;
    char piece[4096];
    long waiting = ftell(file);
    rewind(file);
    while (waiting > 0) {
        const size_t n = fread(piece, 1, waiting < (long)sizeof piece ? (size_t)waiting : sizeof piece, file);
        if (n == 0 || !take(piece, n)) break;
        waiting -= (long)n;
    }
    rewind(file);
}

#endif

void PassingStream::close()
{
    pass();
    if (file) fclose(file);
    file = nullptr;
}

} // namespace vornhost
