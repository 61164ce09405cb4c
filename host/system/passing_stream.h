// A stream that hands what is written to it on to a function.
//
// Where the C library has streams with functions of their own, the text is handed on when the stream is flushed.
// Elsewhere it waits in a temporary file and is handed on by pass() and close().

#ifndef VORNHOST_PASSING_STREAM_H
#define VORNHOST_PASSING_STREAM_H

#include <stddef.h>
#include <stdio.h>

namespace vornhost {

class PassingStream {
public:
    // Takes bytes for to; false when they went nowhere. Must not throw.
    using Taker = bool (*)(void *to, const char *text, size_t size);

    PassingStream(Taker its_taker, void *whom);
    ~PassingStream() { close(); }
    PassingStream(const PassingStream &) = delete;
    PassingStream &operator=(const PassingStream &) = delete;

    // Null when the system gave none.
    FILE *stream() { return file; }

    // From here on all that was written has been handed on.
    void pass();

    // Hands the rest on; nothing can be written behind it.
    void close();

    bool take(const char *text, size_t size) { return taker(to, text, size); }

private:
    Taker taker;
    void *to;
    FILE *file;
};

} // namespace vornhost

#endif
