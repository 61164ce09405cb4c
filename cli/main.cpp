// The program vorn: adjusts survey networks from the command line.

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <exception>
#include <new>

#include "commands.h"
#include "host/run/memory_limit.h"
#include "interrupt.h"
#include "options.h"

namespace {

// A standard stream that is closed would give its number to the next file that is opened.
// Reading handles take their places, on which writing fails.
void hold_standard_streams()
{
    for (int handle = 0; handle <= 2; handle++)
        if (fcntl(handle, F_GETFD) < 0 && open("/dev/null", O_RDONLY) < 0) _exit(STATUS_SYSTEM);
}

// Libraries that read TOML and write JSON allocate in functions that may not throw: without memory they end here.
[[noreturn]] void end_without_memory()
{
    fputs("vorn: out of memory\n", stderr);
    _exit(STATUS_SYSTEM);
}

int command(int argc, char **argv)
{
    int status = STATUS_ADJUSTED;
    const std::optional<Options> options = read_options(argc, argv, &status);
    if (options) return options->check ? check(*options) : adjust(*options);
    if (status == STATUS_ADJUSTED) flush_standard_output(); // a help text
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    hold_standard_streams();
    std::set_terminate(end_without_memory);
    catch_interrupts();
    vornhost::limit_memory(); // what does not fit ends with words and a status
    signal(SIGPIPE, SIG_IGN); // a reader that has gone shows as a failed write
    signal(SIGXFSZ, SIG_IGN); // and so does a file beyond the user's limit
    try {
        return command(argc, argv);
    } catch (const std::bad_alloc &) {
        fputs("vorn: out of memory\n", stderr);
    } catch (const std::exception &error) {
        fprintf(stderr, "vorn: %s\n", error.what());
    }
    return STATUS_SYSTEM;
}
