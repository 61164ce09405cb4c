// The handler does what POSIX allows one to do: it looks at atomic flags, removes files and ends the process.

#include "interrupt.h"

#include <limits.h>
#include <string.h>
#include <unistd.h>

#include "host/system/process.h"
#include "options.h"

namespace {

std::atomic<bool> waiting{false}, asked{false};
std::atomic<bool> before_outputs{false}; // an end at once leaves nothing, and says so
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free, "used by the handler");

const int most_files = 2; // report and JSON
char files[most_files][PATH_MAX];
std::atomic<int> nfiles{0};

const char words[] = "vorn: interrupted; nothing was written\n";

[[noreturn]] void end()
{
    for (int i = 0; i < nfiles.load(); i++) unlink(files[i]);
    if (before_outputs.load() && write(STDERR_FILENO, words, sizeof words - 1) < 0) _exit(STATUS_INTERRUPTED);
    _exit(STATUS_INTERRUPTED);
}

void interrupt()
{
    if (waiting.load() && !asked.exchange(true)) return;
    end();
}

} // namespace

void catch_interrupts() { vornhost::when_interrupted(interrupt); }

Interrupts::Interrupts(bool waits, vornhost::Progress *its_told) : patient(waits), told(its_told) { waiting = waits; }

Interrupts::~Interrupts() { waiting = false; }

vornhost::RunWatch Interrupts::watch() { return {this, &asked}; }

bool Interrupts::came() const { return asked.load(); }

void Interrupts::begin(const char *step)
{
    if (told) told->begin(step);
    const bool deaf = patient && strcmp(step, "order") == 0;
    before_outputs = deaf;
    waiting = patient && !deaf;
    if (deaf && asked.load()) end();
}

void Interrupts::share(double done)
{
    if (told) told->share(done);
}

void remove_when_interrupted(const std::string &path)
{
    if (nfiles == most_files || path.empty() || path.size() >= PATH_MAX) return;
    strcpy(files[nfiles], path.c_str());
    nfiles++;
}
