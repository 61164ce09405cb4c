// The program vorn: adjusts survey networks from the command line.

#include <stdio.h>
#include <unistd.h>

#include <exception>
#include <new>

#include "commands.h"
#include "host/run/memory_limit.h"
#include "host/system/process.h"
#include "interrupt.h"
#include "options.h"

namespace {

// Libraries that read TOML and write JSON allocate in functions that may not throw: without memory they end here.
[[noreturn]] void end_without_memory()
{
    fputs("vorn: out of memory\n", stderr);
    _exit(STATUS_SYSTEM);
}

int run_command(const Options &options)
{
    switch (options.command) {
    case Command::import: return import_network(options);
    case Command::export_to: return export_to(options);
    case Command::check: return check(options);
    case Command::compare:
    case Command::control: return compare_epochs(options);
    case Command::transform: return transform_list(options);
    case Command::plan: return plan(options);
    default: return adjust(options);
    }
}

int command(int argc, char **argv)
{
    int status = STATUS_ADJUSTED;
    const std::optional<Options> options = read_options(argc, argv, &status);
    if (options) return run_command(*options);
    if (status == STATUS_ADJUSTED) flush_standard_output(); // a help text
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    if (!vornhost::hold_standard_streams()) _exit(STATUS_SYSTEM);
    std::set_terminate(end_without_memory);
    catch_interrupts();
    vornhost::keep_memory();
    vornhost::limit_memory(); // what does not fit ends with words and a status
    vornhost::let_writes_fail();
    vornhost::show_utf8();
    try {
        return command(argc, argv);
    } catch (const std::bad_alloc &) {
        fputs("vorn: out of memory\n", stderr);
    } catch (const std::exception &error) {
        fprintf(stderr, "vorn: %s\n", error.what());
    }
    return STATUS_SYSTEM;
}
