#include "ranks/watcher.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "options.h"

namespace {

const int handed_on[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2};

volatile pid_t worker = 0;
volatile sig_atomic_t asked = 0; // the last signal that was handed on

void hand_on(int signal)
{
    asked = signal;
    kill(worker, signal);
}

// Number of this process among all, as the starters of MPI say it; null where none does.
const char *rank()
{
    for (const char *name : {"OMPI_COMM_WORLD_RANK", "PMIX_RANK", "PMI_RANK"})
        if (const char *value = getenv(name)) return value;
    return nullptr;
}

void say_lost(int signal)
{
    const char *number = rank();
    fprintf(stderr, "vorn-mpi: process%s%s: lost, ended by signal %d (%s)\n", number ? " " : "", number ? number : "",
            signal, strsignal(signal));
}

// What was ignored when the program began stays so.
void hand_signals_on()
{
    struct sigaction action = {}, before;
    action.sa_handler = hand_on;
    action.sa_flags = SA_RESTART;
    for (const int signal : handed_on)
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
}

[[noreturn]] void watch()
{
    int status = 0;
    while (waitpid(worker, &status, 0) < 0 && errno == EINTR) continue;
    if (!WIFSIGNALED(status)) _exit(WEXITSTATUS(status));
    const int signal = WTERMSIG(status);
    if (signal == asked) _exit(128 + signal); // it was asked to, and says nothing
    say_lost(signal);
    _exit(STATUS_SYSTEM);
}

} // namespace

// The child gets a group of its own, so that a signal to the group of the watcher does not reach it twice. Names: who
// kills processes by the name of the program means those that work.
void become_worker()
{
    sigset_t all, before;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, &before);
    const pid_t watcher = getpid();
    worker = fork();
    if (worker < 0) {
        fprintf(stderr, "vorn-mpi: cannot start a process: %s\n", strerror(errno));
        _exit(STATUS_SYSTEM);
    }
    if (worker > 0) {
        prctl(PR_SET_NAME, "vorn-watch");
        hand_signals_on();
        sigprocmask(SIG_SETMASK, &before, nullptr);
        watch();
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != watcher) _exit(STATUS_SYSTEM);
    setpgid(0, 0);
    sigprocmask(SIG_SETMASK, &before, nullptr);
}
