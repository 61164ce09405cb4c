#include "support/network.h"

#include <stdio.h>
#include <string.h>

Network::Network(int dim) : p()
{
    p.pfeedback = &messages;
    strcpy(p.filename, "test.inp");
    p.out = tmpfile();
    p.irun = 0;
    p.dim = dim;
    p.radius = 6371000.0;
    p.itmax = 20;
    p.convergence = 1.0e-6;
    p.sdist = 0.9;
    p.sdifh = 1.1;
    p.sdir1 = 0.8;
    p.sdir2 = 1.2;
    p.saz = 0.7;
    p.sgps = 1.3;
    p.suv = 1.4;
    p.imixed = -1;
    p.iangle = ANGLE_RADIAN;
}

Network::~Network()
{
    if (p.runresults) p.freerun(p.runresults);
    if (p.out) fclose(p.out);
}

static void set_name(char *field, size_t size, const char *name)
{
    memset(field, 0, size);
    strncpy(field, name, size - 1);
}

station_input &Network::station(const char *name, double x, double y, double z)
{
    station_input s = station_input();
    set_name(s.name, sizeof s.name, name);
    s.status = STATUS_ON;
    s.x[0] = x;
    s.x[1] = y;
    s.x[2] = z;
    for (int i = 0; i < 3; i++) s.ix[i] = s.ir[i] = CODE_FREE;
    stations.push_back(s);
    return stations.back();
}

target_input &Network::target(const char *name, double x, double y, double z)
{
    target_input t = target_input();
    set_name(t.name, sizeof t.name, name);
    t.status = STATUS_ON;
    t.x[0] = x;
    t.x[1] = y;
    t.x[2] = z;
    for (int i = 0; i < 3; i++) t.ix[i] = CODE_FREE;
    targets.push_back(t);
    return targets.back();
}

static measure_input &add_measure(std::vector<measure_input> &list, int kind, const char *from, const char *to,
                                  double val, double sig)
{
    measure_input m = measure_input();
    m.typ = kind;
    set_name(m.from, sizeof m.from, from);
    set_name(m.to, sizeof m.to, to);
    m.val = val;
    m.sig = sig;
    list.push_back(m);
    return list.back();
}

measure_input &Network::distance(const char *from, const char *to, double val, double sig)
{
    return add_measure(distances, KIND_DISTANCE, from, to, val, sig);
}

measure_input &Network::heightdiff(const char *from, const char *to, double val, double sig)
{
    return add_measure(heightdiffs, KIND_HEIGHT_DIFFERENCE, from, to, val, sig);
}

measure_input &Network::direction(const char *from, const char *to, double val, double sig)
{
    return add_measure(directions, KIND_DIRECTION, from, to, val, sig);
}

measure_input &Network::vertical(const char *from, const char *to, double val, double sig)
{
    return add_measure(verticals, KIND_VERTICAL, from, to, val, sig);
}

measure_input &Network::azimuth(const char *from, const char *to, double val, double sig)
{
    return add_measure(azimuths, KIND_AZIMUTH, from, to, val, sig);
}

template <class Record> static void attach(std::vector<Record> &from, Record **array, int *count)
{
    *array = from.empty() ? nullptr : from.data();
    *count = (int)from.size();
}

project *Network::ready()
{
    attach(stations, &p.stations, &p.nstations);
    attach(targets, &p.targets, &p.ntargets);
    attach(distances, &p.distances, &p.ndistances);
    attach(heightdiffs, &p.heightdiffs, &p.nheightdiffs);
    attach(directions, &p.directions, &p.ndirections);
    attach(verticals, &p.verticals, &p.nverticals);
    attach(azimuths, &p.azimuths, &p.nazimuths);
    attach(baselines, &p.baselines, &p.nbaselines);
    attach(groups, &p.groups, &p.ngroups);
    attach(cameras, &p.cameras, &p.ncameras);
    attach(images, &p.images, &p.nimages);
    attach(lumpdefs, &p.lumpdefs, &p.nlumpdefs);
    attach(pairs, &p.pairs, &p.npairs);
    return &p;
}

std::string Network::report()
{
    fflush(p.out);
    std::string text;
    const long end = ftell(p.out);
    rewind(p.out);
    for (int c = fgetc(p.out); c != EOF; c = fgetc(p.out)) text += (char)c;
    fseek(p.out, end, SEEK_SET);
    return text;
}

std::string file_text(const std::string &path)
{
    std::string text;
    FILE *f = fopen(path.c_str(), "rb");
    if (!f) return text;
    for (int c = fgetc(f); c != EOF; c = fgetc(f)) text += (char)c;
    fclose(f);
    return text;
}
