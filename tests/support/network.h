// A small network built by a test: owns the records, the report and the messages.
//
//   Network n(2);
//   n.station("S", 0, 0);
//   n.target("A", 100, 0).ix[0] = CODE_FIXED;
//   n.distance("S", "A", 100.0, 0.001);
//   vorn run(n.ready());                 // sets the pointers of the project
//   ... n.report(), n.lines

#ifndef TESTS_NETWORK_H
#define TESTS_NETWORK_H

#include <string>
#include <vector>

#include "vorn/project.h"
#include "vorn/result.h"

// Keeps every line; answers every question with answer.
class Recorder : public Feedback {
public:
    void feedback(char *line) override { lines.push_back(line); }
    int decision(char *question, char *title) override
    {
        questions.push_back(std::string(title) + ": " + question);
        return answer;
    }
    std::vector<std::string> lines;
    std::vector<std::string> questions;
    int answer = 0;
};

class Network {
public:
    explicit Network(int dim);
    ~Network();
    Network(const Network &) = delete;
    Network &operator=(const Network &) = delete;

    // Records with status 1, codes free (absent outside the dimension's coordinates they
    // keep 1: the engine excludes them), names padded as given.
    station_input &station(const char *name, double x, double y, double z = 0.0);
    target_input &target(const char *name, double x, double y, double z = 0.0);
    measure_input &distance(const char *from, const char *to, double val, double sig);
    measure_input &heightdiff(const char *from, const char *to, double val, double sig);
    measure_input &direction(const char *from, const char *to, double val, double sig);
    measure_input &vertical(const char *from, const char *to, double val, double sig);
    measure_input &azimuth(const char *from, const char *to, double val, double sig);

    // Sets the arrays of the project; call it after the last record was added.
    project *ready();

    // Text of the report so far.
    std::string report();

    project p; // radian, elevations; an a-priori deviation of its own for each list
    Recorder messages;
    std::vector<station_input> stations; // references from station() die with the next one
    std::vector<target_input> targets;
    std::vector<measure_input> distances, heightdiffs, directions, verticals, azimuths;
    std::vector<gps_input> baselines;
    std::vector<group_input> groups;
    std::vector<camera_input> cameras;
    std::vector<image_input> images;
    std::vector<lump_definition> lumpdefs;
    std::vector<pair_input> pairs;
};

// Contents of a file; an empty string when it cannot be read.
std::string file_text(const std::string &path);

#endif
