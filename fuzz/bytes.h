// The bytes of one input as a source of choices. Behind their end come zeros, and zero
// always chooses the ordinary: a short input makes an ordinary network.

#ifndef FUZZ_BYTES_H
#define FUZZ_BYTES_H

#include <limits.h>
#include <math.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

class Bytes {
public:
    Bytes(const uint8_t *data, size_t size) : next(data), end(data + size) {}

    int byte() { return next < end ? *next++ : 0; }
    int below(int n) { return byte() % n; }
    bool rarely() { return byte() >= 240; }
    size_t left() const { return (size_t)(end - next); }
    const uint8_t *rest() const { return next; }

    // A number out of the whole range of int.
    int any_whole()
    {
        static const int edges[] = {0, 1, -1, 2, 9, 10, 100, 101, INT_MAX, INT_MIN, INT_MAX - 1, INT_MIN + 1, 1 << 16};
        const int choice = below(20);
        if (choice < 13) return edges[choice];
        int value = 0;
        take(&value, sizeof value);
        return value;
    }

    // Nearly always one of the n ordinary values from least on, otherwise any.
    int code(int least, int n) { return rarely() ? any_whole() : least + below(n); }

    // Nearly always the ordinary value, otherwise any, not-a-numbers and infinities among them.
    double number(double ordinary)
    {
        static const double edges[] = {0.0,  -0.0, 1.0,  -1.0,   1e-300, 1e300,    -1e300,    1e-15,
                                       1e15, -1e9, 1e-9, 5e-324, NAN,    INFINITY, -INFINITY, 1e8};
        if (!rarely()) return ordinary;
        const int choice = below(20);
        if (choice < 16) return edges[choice];
        if (choice == 16) return -ordinary;
        double value = 0.0;
        take(&value, sizeof value);
        return value;
    }

    // Within -1 and 1, zero for a byte of zero.
    double part() { return (int8_t)byte() / 128.0; }

private:
    void take(void *into, size_t size)
    {
        const size_t n = size < left() ? size : left();
        if (n > 0) memcpy(into, next, n);
        next += n;
    }

    const uint8_t *next, *end;
};

#endif
