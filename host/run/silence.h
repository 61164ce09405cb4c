// A listener that keeps the notes of a run to itself and says no to every question: what a run has to tell stands in
// its results.

#ifndef VORNHOST_SILENCE_H
#define VORNHOST_SILENCE_H

#include "vorn/project.h"

namespace vornhost {

class Silence : public Feedback {
public:
    void feedback(char *) override {}
    int decision(char *, char *) override { return 0; }
};

} // namespace vornhost

#endif
