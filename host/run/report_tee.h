// The report on its way to its stream, with its end kept for the words of a refusal.
//
// The report may go where nothing can be read back: a pipe, a terminal, /dev/null.

#ifndef VORNHOST_REPORT_TEE_H
#define VORNHOST_REPORT_TEE_H

#include <stddef.h>
#include <stdio.h>

#include <string>

#include "host/system/passing_stream.h"

namespace vornhost {

class ReportTee {
public:
    explicit ReportTee(FILE *report);
    ReportTee(const ReportTee &) = delete;
    ReportTee &operator=(const ReportTee &) = delete;

    // What the engine writes to; the report itself when there was no memory for a stream.
    FILE *stream() { return tee.stream() ? tee.stream() : report; }

    // The last 4000 bytes that were written.
    std::string tail();

    // Hands the rest over; nothing can be written behind it. A failed write shows in the report.
    void close();

private:
    static bool take(void *self, const char *text, size_t size);
    void keep(const char *text, size_t size);

    FILE *report;
    char kept[4000]; // a ring: byte n of the report stands at n % 4000
    size_t written = 0;
    PassingStream tee; // the last member: it hands the rest over when it ends
};

} // namespace vornhost

#endif
