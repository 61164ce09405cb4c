// The account of a foreign file: how many records were read, which were left out and why, and what was assumed.

#ifndef VORNHOST_RECORD_ACCOUNT_H
#define VORNHOST_RECORD_ACCOUNT_H

#include <map>
#include <string>
#include <vector>

#include "host/formats/draft.h"

namespace vornhost {

class RecordAccount {
public:
    void read_one() { read++; }
    void leave_out(Source at, const std::string &reason) { left_out[reason].push_back(at); }
    void note(Source at, const std::string &text) { notes.push_back({at, text}); }

    // Appends the notes to those of the draft in the order of their lines, records that were left out for one reason
    // together, and the account at the end.
    void close(Draft &draft);

private:
    size_t read = 0;
    std::map<std::string, std::vector<Source>> left_out; // by reason
    std::vector<DraftNote> notes;
};

} // namespace vornhost

#endif
