// Account of the observations: read = used + left out, kind by kind, with the file, line
// and reason of each observation left out.

#ifndef VORNHOST_ACCOUNTS_H
#define VORNHOST_ACCOUNTS_H

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

struct LeftOut {
    std::string file;
    int line = 0;
    std::string from, to;
    std::string reason;
    std::string at = {}; // of an angle between from and to
};

// Why rows were left out, by number of the file and line.
using Reasons = std::map<std::pair<int, int>, std::string>;

struct Account {
    std::string kind; // "distances", "height differences", ... in the order of the file's reference
    int read = 0;
    int used = 0;
    std::vector<LeftOut> left_out; // read - used entries
};

// State of the observations before a run; the engine negates the typ of what it deselects.
class AccountKeeper {
public:
    explicit AccountKeeper(const Model &before);

    // Accounts of the kinds that the file has, after the run on the same model. known has the reasons that the run
    // itself tells.
    std::vector<Account> close(const Model &after, Reasons known = {}) const;

private:
    std::vector<std::vector<bool>> selected; // one list a kind
};

// "distances: read 12 = used 11 + left out 1", then a line for each left out.
std::vector<std::string> account_lines(const std::vector<Account> &accounts);

} // namespace vornhost

#endif
