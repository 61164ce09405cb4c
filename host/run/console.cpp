#include "host/run/console.h"

#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string>

namespace vornhost {

namespace {

const char recompute_question[] = "Do you want to compute new approximate values?";
const char balance_question[] = "Do you want to balance the observations?";

// Reads the answer itself, not through a stream: nothing of standard input is lost to others.
std::string answer_line()
{
    std::string line;
    char c;
    while (read(STDIN_FILENO, &c, 1) == 1 && c != '\n') line += c;
    return line;
}

} // namespace

void Console::feedback(char *line)
{
    if (options.quiet || !line) return;
    size_t size = strlen(line);
    while (size > 0 && line[size - 1] == '\n') size--;
    fprintf(stderr, "%.*s\n", (int)size, line);
}

int Console::decision(char *question, char *)
{
    const std::string asked = question ? question : "";
    if (asked == recompute_question && options.recompute) return 1;
    if (asked == balance_question && options.balance) return 1;
    if (!options.ask || !isatty(STDIN_FILENO)) return 0;
    fprintf(stderr, "%s [y/N] ", asked.c_str());
    const std::string answer = answer_line();
    return !answer.empty() && (answer[0] == 'y' || answer[0] == 'Y');
}

} // namespace vornhost
