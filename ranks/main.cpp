// The program vorn-mpi: `mpirun -n K vorn-mpi adjust NAME.inp` does what `vorn adjust NAME.inp` does, its work shared
// by K processes. The first one writes and speaks; the others read the same files and are silent unless they fail. A
// process that cannot go on says so in one line and ends all.

#include <mpi.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/uio.h>
#include <unistd.h>

#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "commands.h"
#include "host/own/observation_results.h"
#include "host/own/parts.h"
#include "host/own/road.h"
#include "host/own/shared_rows.h"
#include "host/run/memory_limit.h"
#include "host/run/silence.h"
#include "host/system/file_disk.h"
#include "host/system/process.h"
#include "interrupt.h"
#include "options.h"
#include "ranks/mpi_ranks.h"
#include "ranks/watcher.h"

namespace {

int spoken = STDERR_FILENO; // where a process speaks that is silent otherwise
char name[64] = "vorn-mpi";

void say(const char *words)
{
    iovec pieces[4]; // in one piece, beside those of other processes
    int n = 0;
    for (const char *piece : {(const char *)name, ": ", words, "\n"}) pieces[n++] = {(void *)piece, strlen(piece)};
    if (writev(spoken, pieces, n) < 0) return;
}

// Without memory to spare: may be called when there is none.
[[noreturn]] void end_all(const char *why)
{
    say(why);
    MPI_Abort(MPI_COMM_WORLD, STATUS_SYSTEM);
    _exit(STATUS_SYSTEM);
}

[[noreturn]] void end_without_memory() { end_all("out of memory"); }

std::optional<Options> command(int argc, char **argv, int *status)
{
    std::optional<Options> options = read_options(argc, argv, status, Program::vorn_mpi);
    if (!options) return options;
    const char *why = nullptr;
    if (options->command != Command::adjust) why = "has the command adjust alone; vorn has the others";
    if (options->network == "-") why = "cannot read standard input; name the file";
    if (why) {
        fprintf(stderr, "vorn-mpi: %s\n", why);
        *status = STATUS_USAGE;
        return std::nullopt;
    }
    if (!options->threads) options->threads = 1; // processes, not threads, share the processors
    return options;
}

// Whatever a process other than the first has to say stands in the words of the first.
void fall_silent(int rank)
{
    snprintf(name, sizeof name, "vorn-mpi: process %d", rank);
    spoken = dup(STDERR_FILENO);
    if (spoken < 0 || !freopen("/dev/null", "w", stderr) || !freopen("/dev/null", "w", stdout))
        end_all("cannot open /dev/null");
}

// A signal handler. The end of one process is the end of all.
void end_without_disk()
{
    say("the file in the place of memory cannot be read or written");
    _exit(STATUS_SYSTEM);
}

// The part of a process other than the first.
void follow(const Options &options)
{
    vornhost::Model model;
    vornhost::Faults faults;
    if (!read_input(options, model, faults)) return;
    enter_folder(options);
    if (model.solver != vornhost::Solver::Sparse) return;
    vornhost::Silence silence;
    std::optional<vornhost::FileDisk> disk;
    vornhost::RunWatch watch;
    watch.ranks = options.ranks;
    if (options.memory) watch.disk = &disk.emplace(*options.memory, end_without_disk);
    const auto own = std::make_shared<const vornhost::OwnOutcome>(run_own(model, silence, false, watch));
    if (own->ranks) vornhost::serve_rows(vornhost::ObservationResults(model, own), *own->ranks);
}

void follow_to_the_end(const Options &options, MpiRanks &ranks)
{
    std::string why = "cannot do what the first process does: do all machines see the same files?";
    try {
        follow(options);
    } catch (const Released &) {
        why.clear();
    } catch (const vornhost::WholeWanted &) {
        why.clear();
    } catch (const std::bad_alloc &) {
        end_without_memory();
    } catch (const std::exception &error) {
        why = error.what();
    }
    if (ranks.begun() ? !why.empty() : !ranks.await_release()) end_all(why.c_str());
}

// What parts alone do not tell, a fault of the file or why the network cannot be adjusted, the first process finds out
// by itself.
int adjust_or_judge(const Options &options, MpiRanks &ranks)
{
    try {
        return adjust(options);
    } catch (const vornhost::WholeWanted &why) {
        if (why.was_read && !options.console.quiet)
            fprintf(stderr, "vorn-mpi: not adjusted by parts; the first process reads the whole network\n");
    }
    ranks.leave_to_first();
    Options whole = options;
    whole.by_parts = false;
    whole.ranks = nullptr;
    return adjust(whole);
}

// The first process.
int lead(const Options &options, MpiRanks &ranks)
{
    int status = STATUS_SYSTEM;
    try {
        status = adjust_or_judge(options, ranks);
    } catch (const std::bad_alloc &) {
        end_without_memory();
    } catch (const std::exception &error) {
        if (ranks.begun() && !ranks.alone() && !ranks.standing_by()) end_all(error.what());
        fprintf(stderr, "vorn: %s\n", error.what());
    }
    if (!ranks.begun() || ranks.standing_by()) ranks.release();
    return status;
}

// Waits for the others without keeping a processor busy.
void wait_for_all()
{
    MPI_Request request;
    int done = 0;
    MPI_Ibarrier(MPI_COMM_WORLD, &request);
    for (MPI_Test(&request, &done, MPI_STATUS_IGNORE); !done; MPI_Test(&request, &done, MPI_STATUS_IGNORE))
        usleep(2000);
}

int share(const Options &given)
{
    int status = STATUS_ADJUSTED;
    MpiRanks ranks;
    Options options = given;
    options.ranks = &ranks;
    if (ranks.own() == 0)
        status = lead(options, ranks);
    else
        follow_to_the_end(options, ranks);
    wait_for_all();
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    become_worker();
    MPI_Init(&argc, &argv);
    std::set_terminate(end_without_memory);
    int rank = 0, status = STATUS_ADJUSTED;
    MPI_Comm_rank(MPI_COMM_WORLD, &rank);
    if (rank > 0) fall_silent(rank);
    if (rank == 0) catch_interrupts();
    vornhost::keep_memory();
    vornhost::limit_memory();
    vornhost::let_writes_fail();
    const std::optional<Options> options = command(argc, argv, &status);
    if (options) status = share(*options);
    fflush(stdout);
    MPI_Finalize();
    return rank == 0 ? status : STATUS_ADJUSTED;
}
