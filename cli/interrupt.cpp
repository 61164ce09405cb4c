// The handler does what POSIX allows one to do: it looks at atomic flags, removes files and ends the process.

#include "interrupt.h"

#include <limits.h>
#include <string.h>
#include <unistd.h>

#include "host/system/process.h"
#include "options.h"

namespace {

std::atomic<bool> waiting{false}, asked{false};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free, "used by the handler");

const int most_files = 2; // report and JSON
char files[most_files][PATH_MAX];
std::atomic<int> nfiles{0};

void interrupt()
{
    if (waiting.load() && !asked.exchange(true)) return;
    for (int i = 0; i < nfiles.load(); i++) unlink(files[i]);
    _exit(STATUS_INTERRUPTED);
}

} // namespace

void catch_interrupts() { vornhost::when_interrupted(interrupt); }

Interrupts::Interrupts(bool patient) { waiting = patient; }

Interrupts::~Interrupts() { waiting = false; }

const std::atomic<bool> *Interrupts::flag() const { return &asked; }

void remove_when_interrupted(const std::string &path)
{
    if (nfiles == most_files || path.empty() || path.size() >= PATH_MAX) return;
    strcpy(files[nfiles], path.c_str());
    nfiles++;
}
