// A project made of choices: mostly a small network of consistent observations, here and
// there with codes, names, numbers and counts that no host should hand over. The arrays are
// always as long as their counts say; that is the host's part of the contract.

#ifndef FUZZ_RANDOM_PROJECT_H
#define FUZZ_RANDOM_PROJECT_H

#include <vector>

#include "bytes.h"
#include "vorn/project.h"

enum class Solve { Compact, Jordan, Simplex };

// Which observations are made: any at all; all sights from every station, at every epoch; these
// in a network of many targets; directions and vertical angles without known coordinates.
enum class Scene { Scattered, Complete, Large, Unknown };

class RandomProject {
public:
    explicit RandomProject(Bytes &source);
    ~RandomProject() { p.freerun(p.runresults); }
    RandomProject(const RandomProject &) = delete;
    RandomProject &operator=(const RandomProject &) = delete;

    project p;
    Solve solver;
    int answer;  // to every question
    int failing; // the allocation of the run that fails, 0 none

private:
    struct LumpTable {
        std::vector<int> epoch, code;
        std::vector<double> scale, tx, ty, tz, rx, ry, rz;
    };

    void set_settings();
    void set_model();
    void make_points();
    void make_lists();
    void scatter(std::vector<measure_input> &list, int kind, int most);
    void observe_all();
    void observe_pair(int from, int to, int epoch);
    void observe(std::vector<measure_input> &list, int kind, int from, int to, int epoch);
    double observed(int kind, int from, int to, int epoch);
    void make_baselines();
    void make_groups();
    void make_photo();
    void write_image(const char *path);
    void make_lumps();
    void make_pairs();
    void write_connected_net();
    void attach();

    template <class Record> void common(Record &r, int i);
    template <class Record> int count(const std::vector<Record> &list);
    void name(char *field, size_t size, int i);
    void codes(int *code, int n, int ordinary);
    int any_point();

    Bytes &from;
    Scene scene = Scene::Scattered;
    int nsta = 0, npoint = 0, nepoch = 0;
    std::vector<station_input> stations;
    std::vector<target_input> targets;
    std::vector<measure_input> distances, heightdiffs, directions, verticals, azimuths;
    std::vector<gps_input> baselines;
    std::vector<group_input> groups;
    std::vector<std::vector<int>> members;
    std::vector<camera_input> cameras;
    std::vector<image_input> images;
    std::vector<lump_definition> lumpdefs;
    std::vector<LumpTable> lump_tables;
    std::vector<pair_input> pairs;
};

#endif
