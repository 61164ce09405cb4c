#include "host/run/report_tee.h"

#include <algorithm>

namespace vornhost {

ReportTee::ReportTee(FILE *its_report) : report(its_report)
{
    cookie_io_functions_t functions = cookie_io_functions_t();
    functions.write = &ReportTee::write;
    tee = fopencookie(this, "w", functions);
}

// Called from within the engine: takes no memory and throws nothing. What the engine
// flushes is flushed in the report. 0 tells the stream of a failure.
ssize_t ReportTee::write(void *self, const char *text, size_t size)
{
    ReportTee *const to = static_cast<ReportTee *>(self);
    to->keep(text, size);
    const bool taken = fwrite(text, 1, size, to->report) == size && fflush(to->report) == 0;
    return taken ? (ssize_t)size : 0;
}

void ReportTee::keep(const char *text, size_t size)
{
    for (size_t i = 0; i < size; i++) kept[written++ % sizeof kept] = text[i];
}

std::string ReportTee::tail()
{
    if (tee) fflush(tee);
    std::string text;
    for (size_t n = written - std::min(written, sizeof kept); n < written; n++) text += kept[n % sizeof kept];
    return text;
}

void ReportTee::close()
{
    if (tee) fclose(tee);
    tee = nullptr;
}

} // namespace vornhost
