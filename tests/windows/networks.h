// Networks built in memory, for hosts that have no reader of network files.

#ifndef TESTS_WINDOWS_NETWORKS_H
#define TESTS_WINDOWS_NETWORKS_H

#include "vorn/project.h"

// Console of a host without a user: keeps nothing, answers no.
class Quiet : public Feedback {
public:
    void feedback(char *) override {}
    int decision(char *, char *) override { return 0; }
};

struct network {
    project p;
    Quiet quiet;
    station_input stations[4];
    target_input targets[8];
    measure_input dist[24], difh[24], dir1[24];
};

// A free levelling network with statistics. name and everything else of a run are set; the
// report stream is the caller's.
void levelling(network *n);

// Two stations between four known points, directions and distances, statistics; the trace
// shows the normal matrix, and both stations are exported to "plane.con".
void plane(network *n);

// The same with Gauss-Jordan's trace; both stations come from "plane.con".
void chained(network *n);

#endif
