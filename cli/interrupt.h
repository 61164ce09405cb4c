// Interrupts of the program (SIGINT, SIGTERM): it ends with status 130 and leaves nothing half-written.

#ifndef VORN_CLI_INTERRUPT_H
#define VORN_CLI_INTERRUPT_H

#include <atomic>
#include <string>

#include "host/run/run_watch.h"

// From here on an interrupt ends the program at once; one that was ignored when it started stays ignored.
void catch_interrupts();

// While a patient one lives, the first interrupt only sets the flag; the next one ends the program at once. So does the
// first one while the order of elimination is sought, by libraries that look at no flag.
class Interrupts : public vornhost::Progress {
public:
    // Tells the steps of the run on to `told`, which may be null.
    explicit Interrupts(bool patient, vornhost::Progress *told = nullptr);
    ~Interrupts() override;
    Interrupts(const Interrupts &) = delete;
    Interrupts &operator=(const Interrupts &) = delete;

    vornhost::RunWatch watch();
    bool came() const;

    void begin(const char *step) override;
    void share(double done) override;

private:
    const bool patient;
    vornhost::Progress *const told;
};

// An end at once removes this file first. For files under temporary names.
void remove_when_interrupted(const std::string &path);

#endif
