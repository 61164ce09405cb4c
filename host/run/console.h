// The engine's messages and questions on a terminal.

#ifndef VORNHOST_CONSOLE_H
#define VORNHOST_CONSOLE_H

#include "vorn/project.h"

namespace vornhost {

struct ConsoleOptions {
    bool quiet = false;     // no progress lines
    bool recompute = false; // yes to "Do you want to compute new approximate values?"
    bool balance = false;   // yes to "Do you want to balance the observations?"
    bool ask = false;       // ask on the terminal what no option answers
};

// Shows lines on standard error as they come. A question without an answer is answered no;
// with ask, and a terminal as standard input, the user answers it there.
class Console : public Feedback {
public:
    explicit Console(const ConsoleOptions &its_options) : options(its_options) {}
    void feedback(char *line) override;
    int decision(char *question, char *title) override;

private:
    ConsoleOptions options;
};

} // namespace vornhost

#endif
