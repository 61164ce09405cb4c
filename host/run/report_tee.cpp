#include "host/run/report_tee.h"

#include <algorithm>

namespace vornhost {

ReportTee::ReportTee(FILE *its_report) : report(its_report), tee(&ReportTee::take, this) {}

// Called from within the engine: takes no memory and throws nothing. What the engine
// flushes is flushed in the report.
bool ReportTee::take(void *self, const char *text, size_t size)
{
    ReportTee *const to = static_cast<ReportTee *>(self);
    to->keep(text, size);
    return fwrite(text, 1, size, to->report) == size && fflush(to->report) == 0;
}

void ReportTee::keep(const char *text, size_t size)
{
    for (size_t i = 0; i < size; i++) kept[written++ % sizeof kept] = text[i];
}

std::string ReportTee::tail()
{
    tee.pass();
    std::string text;
    for (size_t n = written - std::min(written, sizeof kept); n < written; n++) text += kept[n % sizeof kept];
    return text;
}

void ReportTee::close() { tee.close(); }

} // namespace vornhost
