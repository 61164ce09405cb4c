// A draft in the making, for formats whose files say of points and observations what they are one by one: points are
// declared or appear in observations, what cannot be taken is left out with a reason, and at the end the dimension, the
// codes of the coordinates and the account of what was read are settled.

#ifndef VORNHOST_DRAFT_BUILDER_H
#define VORNHOST_DRAFT_BUILDER_H

#include <string>
#include <unordered_map>

#include "host/formats/draft.h"
#include "host/input/faults.h"

namespace vornhost {

class DraftBuilder {
public:
    static constexpr size_t longest_name = 40; // characters of a name in the network file

    DraftBuilder(Draft &its_draft, Faults &all) : draft(its_draft), faults(all) {}

    Draft &draft;
    Faults &faults;

    // The point of this name, which is new where none has it: without coordinates and free.
    DraftPoint &point(const std::string &name, Source where);
    const DraftPoint *find(const std::string &name) const;

    // Adds an observation with its points; `values` is how many were observed.
    void add(DraftKind kind, DraftRow row, size_t values = 1);

    // An observation that is not taken: a note with its place, what it is and why.
    void leave_out(Source at, const std::string &words, const std::string &reason, size_t values = 1);

    void note(Source at, const std::string &text) { draft.notes.push_back({at, text}); }

    // Settles what only the whole file tells. A fault where nothing was taken.
    void finish(Source file);

    size_t taken() const { return values_taken; }

private:
    struct Reach {
        bool plan = false, height = false;
    };
    void check_sizes(const DraftRow &row);
    void settle_dimension();
    void settle_codes();

    std::unordered_map<std::string, size_t> index; // of points by name
    std::vector<Reach> reached;                    // one a point
    bool any_plan = false, any_height = false;
    size_t values_taken = 0, values_left_out = 0;
};

} // namespace vornhost

#endif
