#include "host/run/console.h"

#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <string>

namespace vornhost {

namespace {

const char recompute_question[] = "Do you want to compute new approximate values?";
const char balance_question[] = "Do you want to balance the observations?";

// Between two lines of progress: on a terminal, and elsewhere.
const std::chrono::milliseconds blink(100), pause(2000);

double processor_seconds() { return (double)clock() / CLOCKS_PER_SEC; }

// Reads the answer itself, not through a stream: nothing of standard input is lost to others.
std::string answer_line()
{
    std::string line;
    char c;
    while (read(STDIN_FILENO, &c, 1) == 1 && c != '\n') line += c;
    return line;
}

} // namespace

Console::Console(const ConsoleOptions &its_options)
    : options(its_options), terminal(isatty(STDERR_FILENO) != 0), told(Clock::now()), since(told)
{
}

Console::~Console() { hide(); }

void Console::feedback(char *line)
{
    if (options.quiet || !line) return;
    size_t size = strlen(line);
    while (size > 0 && line[size - 1] == '\n') size--;
    hide();
    fprintf(stderr, "%.*s\n", (int)size, line);
}

int Console::decision(char *question, char *)
{
    const std::string asked = question ? question : "";
    if (asked == recompute_question && options.recompute) return 1;
    if (asked == balance_question && options.balance) return 1;
    if (!options.ask || !isatty(STDIN_FILENO)) return 0;
    hide();
    fprintf(stderr, "%s [y/N] ", asked.c_str());
    const std::string answer = answer_line();
    return !answer.empty() && (answer[0] == 'y' || answer[0] == 'Y');
}

void Console::begin(const char *its_step)
{
    if (step == its_step) return;
    close_step();
    step = its_step;
    since = Clock::now();
    processor = processor_seconds();
    show(step);
}

void Console::share(double done) { show(step + " " + std::to_string((int)(100.0 * done)) + " %"); }

void Console::finish()
{
    close_step();
    step.clear();
    hide();
    if (!options.times) return;
    for (const Time &t : times)
        fprintf(stderr, "time: %-18s%8.3f s, processor %8.3f s\n", t.step.c_str(), t.seconds, t.processor);
    times.clear();
}

// Adds the time of the present step to those of its name.
void Console::close_step()
{
    if (step.empty()) return;
    auto time = std::find_if(times.begin(), times.end(), [&](const Time &t) { return t.step == step; });
    if (time == times.end()) time = times.insert(times.end(), Time{step});
    time->seconds += std::chrono::duration<double>(Clock::now() - since).count();
    time->processor += processor_seconds() - processor;
}

void Console::show(const std::string &text)
{
    if (options.quiet || Clock::now() - told < (terminal ? Clock::duration(blink) : Clock::duration(pause))) return;
    told = Clock::now();
    if (terminal) {
        fprintf(stderr, "\r%-*s", (int)shown, text.c_str());
        shown = std::max(shown, text.size());
    } else {
        fprintf(stderr, "%s\n", text.c_str());
    }
    fflush(stderr);
}

void Console::hide()
{
    if (shown > 0) fprintf(stderr, "\r%*s\r", (int)shown, "");
    shown = 0;
}

} // namespace vornhost
