// The run's messages, questions and progress on a terminal.

#ifndef VORNHOST_CONSOLE_H
#define VORNHOST_CONSOLE_H

#include <chrono>
#include <string>
#include <vector>

#include "host/run/run_watch.h"
#include "vorn/project.h"

namespace vornhost {

struct ConsoleOptions {
    bool quiet = false;     // no progress lines
    bool recompute = false; // yes to "Do you want to compute new approximate values?"
    bool balance = false;   // yes to "Do you want to balance the observations?"
    bool ask = false;       // ask on the terminal what no option answers
    bool times = false;     // how long the steps took
};

// Shows lines on standard error as they come. A question without an answer is answered no;
// with ask, and a terminal as standard input, the user answers it there.
//
// Progress is a line that is written over on a terminal. Elsewhere it is a line every two seconds at most, so that a
// short run has none.
class Console : public Feedback, public Progress {
public:
    explicit Console(const ConsoleOptions &its_options);
    ~Console() override;
    Console(const Console &) = delete;
    Console &operator=(const Console &) = delete;

    void feedback(char *line) override;
    int decision(char *question, char *title) override;
    void begin(const char *step) override;
    void share(double done) override;

    // Takes the line of progress off the terminal, for other lines.
    void hide();

    // Ends the last step: no line of progress is left on the terminal, and the times are shown where they are wanted.
    void finish();

private:
    using Clock = std::chrono::steady_clock;
    struct Time {
        std::string step;
        double seconds = 0, processor = 0; // of all threads
    };

    void close_step();
    void show(const std::string &text);

    ConsoleOptions options;
    const bool terminal;     // standard error
    size_t shown = 0;        // characters of the line of progress on the terminal
    Clock::time_point told;  // when progress was last shown
    Clock::time_point since; // when the present step began
    double processor = 0;    // seconds of processor time when it began
    std::string step;        // the present one; empty for none
    std::vector<Time> times; // of each step, in the order of their first
};

} // namespace vornhost

#endif
