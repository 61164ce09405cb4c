// A whole run written as JSON: the records of a project in, all that the run leaves behind out.
//
// In: the fields of project under their names, records as objects (a field not given is 0),
// "entry" (the solver: L2, jordan, L1), "answers" to questions by their title, "files" that stand
// beside the run, "runs" (how often on one project).
// Out: "start", "solve" (codes, null when not called), "report", "feedback", "questions",
// "result" (the fields of the record), "host" (what a run changes in the host's records) and
// "side" (the files it wrote).

#ifndef TESTS_OWNHOST_WHOLE_RUN_H
#define TESTS_OWNHOST_WHOLE_RUN_H

#include <math.h>
#include <string.h>

#include <deque>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "support/network.h"
#include "support/workfolder.h"
#include "vorn/vorn.h"

namespace ownhost {

using nlohmann::json;

// Texts may be kept as lists of their lines.
inline std::string joined(const json &text)
{
    if (text.is_string()) return text;
    std::string all;
    for (const json &line : text) all += line.get<std::string>() + "\n";
    return all;
}

class Answers : public Feedback {
public:
    explicit Answers(const json &by_title) : answers(by_title) {}
    void feedback(char *line) override { lines.push_back(line); }
    int decision(char *question, char *title) override
    {
        questions.push_back({question, title});
        return answers.value(std::string(title), 0);
    }
    json lines = json::array(), questions = json::array();

private:
    json answers;
};

// Reads the fields of a project and its records.
class ProjectReader {
public:
    explicit ProjectReader(const json &project) : in(project), net(in.value("dim", 3))
    {
        settings();
        points();
        observations();
        constants();
        photo();
        lumps();
        for (const json &r : list("pairs")) {
            pair_input q = pair_input();
            text(q.from, r, "from");
            text(q.to, r, "to");
            net.pairs.push_back(q);
        }
        net.ready();
    }

    project &p() { return net.p; }
    std::string report() { return net.report(); }

private:
    json list(const char *key) const { return in.value(key, json::array()); }

    template <size_t size> static void text(char (&field)[size], const json &o, const char *key)
    {
        memset(field, 0, size);
        strncpy(field, o.value(key, std::string()).c_str(), size - 1);
    }
    template <class T, size_t n> static void numbers(T (&a)[n], const json &o, const char *key)
    {
        const std::vector<T> v = o.value(key, std::vector<T>());
        for (size_t i = 0; i < n && i < v.size(); i++) a[i] = v[i];
    }
    int *ints(const json &o, const char *key, int n)
    {
        whole.push_back(o.value(key, std::vector<int>()));
        whole.back().resize((size_t)n + 1);
        return whole.back().data();
    }
    double *doubles(const json &o, const char *key, int n)
    {
        real.push_back(o.value(key, std::vector<double>()));
        real.back().resize((size_t)n + 1);
        return real.back().data();
    }

    void settings()
    {
        project &p = net.p;
        text(p.filename, in, "filename");
        text(p.confile, in, "confile");
        p.irun = in.value("irun", 1);
        p.idebug = in.value("idebug", 0);
        p.iearth = in.value("iearth", 0);
        p.radius = in.value("radius", 0.0);
        numbers(p.trans, in, "trans");
        p.horigin = in.value("horigin", 0.0);
        p.latitude = in.value("latitude", 0.0);
        p.itmax = in.value("itmax", 20);
        p.convergence = in.value("convergence", 1e-6);
        p.igps = in.value("igps", 0);
        p.iphoto = in.value("iphoto", 0);
        p.iunit = in.value("iunit", 0);
        p.iredux = in.value("iredux", 0);
        p.suv = in.value("suv", 1.0);
        p.sdist = in.value("sdist", 1.0);
        p.sdifh = in.value("sdifh", 1.0);
        p.sdir1 = in.value("sdir1", 1.0);
        p.sdir2 = in.value("sdir2", 1.0);
        p.saz = in.value("saz", 1.0);
        p.sgps = in.value("sgps", 1.0);
        p.lumpmethod = in.value("lumpmethod", 0);
        p.azrot = in.value("azrot", 0.0);
        p.imixed = in.value("imixed", -1);
    }

    void points()
    {
        for (const json &r : list("stations")) {
            station_input s = station_input();
            s.typ = r.value("typ", 0);
            text(s.name, r, "name");
            s.status = r.value("status", 0);
            numbers(s.x, r, "x");
            numbers(s.r, r, "r");
            numbers(s.sx, r, "sx");
            numbers(s.sr, r, "sr");
            numbers(s.ix, r, "ix");
            numbers(s.ir, r, "ir");
            s.ilump = r.value("ilump", 0);
            s.iconn = r.value("iconn", 0);
            s.ilevel = r.value("ilevel", 0);
            net.stations.push_back(s);
        }
        for (const json &r : list("targets")) {
            target_input t = target_input();
            text(t.name, r, "name");
            t.status = r.value("status", 0);
            numbers(t.x, r, "x");
            numbers(t.sx, r, "sx");
            numbers(t.ix, r, "ix");
            t.ilump = r.value("ilump", 0);
            t.iconn = r.value("iconn", 0);
            net.targets.push_back(t);
        }
    }

    void measures(const char *key, std::vector<measure_input> &to)
    {
        for (const json &r : list(key)) {
            measure_input m = measure_input();
            m.typ = r.value("typ", 0);
            text(m.from, r, "from");
            text(m.to, r, "to");
            m.h1 = r.value("h1", 0.0);
            m.h2 = r.value("h2", 0.0);
            m.val = r.value("val", 0.0);
            m.sig = r.value("sig", 0.0);
            m.time = r.value("time", 0);
            to.push_back(m);
        }
    }

    void observations()
    {
        measures("distances", net.distances);
        measures("heightdiffs", net.heightdiffs);
        measures("directions", net.directions);
        measures("verticals", net.verticals);
        measures("azimuths", net.azimuths);
        for (const json &r : list("baselines")) {
            gps_input g = gps_input();
            g.status = r.value("status", 0);
            text(g.from, r, "from");
            text(g.to, r, "to");
            numbers(g.dx, r, "dx");
            numbers(g.cov, r, "cov");
            net.baselines.push_back(g);
        }
    }

    void constants()
    {
        for (const json &r : list("groups")) {
            group_input g = group_input();
            g.typ = r.value("typ", 0);
            numbers(g.ic, r, "ic");
            numbers(g.c, r, "c");
            numbers(g.sc, r, "sc");
            g.nmember = r.value("nmember", 0);
            g.member = ints(r, "member", g.nmember);
            net.groups.push_back(g);
        }
    }

    void photo()
    {
        for (const json &r : list("cameras")) {
            camera_input c = camera_input();
            c.status = r.value("status", 0);
            text(c.name, r, "name");
            c.nu = r.value("nu", 0);
            c.nv = r.value("nv", 0);
            c.pu = r.value("pu", 0.0);
            c.pv = r.value("pv", 0.0);
            numbers(c.ip, r, "ip");
            numbers(c.p, r, "p");
            net.cameras.push_back(c);
        }
        for (const json &r : list("images")) {
            image_input i = image_input();
            i.status = r.value("status", 0);
            text(i.file, r, "file");
            text(i.station, r, "station");
            text(i.camera, r, "camera");
            net.images.push_back(i);
        }
    }

    void lumps()
    {
        for (const json &r : list("lumpdefs")) {
            lump_definition l = lump_definition();
            l.id = r.value("id", 0);
            l.kind = r.value("kind", 0);
            l.iref = r.value("iref", 0);
            l.n = r.value("n", 0);
            l.epoch = ints(r, "epoch", l.n);
            l.code = ints(r, "code", l.n);
            l.scale = doubles(r, "scale", l.n);
            l.tx = doubles(r, "tx", l.n);
            l.ty = doubles(r, "ty", l.n);
            l.tz = doubles(r, "tz", l.n);
            l.rx = doubles(r, "rx", l.n);
            l.ry = doubles(r, "ry", l.n);
            l.rz = doubles(r, "rz", l.n);
            net.lumpdefs.push_back(l);
        }
    }

    const json &in;
    Network net;
    std::deque<std::vector<int>> whole;
    std::deque<std::vector<double>> real;
};

inline json value(double v)
{
    if (isnan(v)) return "nan";
    if (isinf(v)) return v > 0.0 ? "inf" : "-inf";
    return v;
}

template <class T> json values(const T *a, int n)
{
    json l = json::array();
    for (int i = 0; i < n; i++) l.push_back(value((double)a[i]));
    return l;
}
inline json values(const int *a, int n) { return std::vector<int>(a, a + n); }

// The fields of a result; arrays that the run did not make are left out.
inline json result_fields(const result &q)
{
    json r;
    const int npt = q.nstar + q.ntarr, nres = q.ndist + q.ndifh + q.ndir1 + q.ndir2, nrow = q.nrow, nsta = q.nstar;
#define FIELD(f) r[#f] = q.f
#define REAL(f) r[#f] = value(q.f)
#define KIND(k)                                                                                                        \
    REAL(s##k), REAL(sp##k), FIELD(ichi##k), FIELD(nnorm##k), FIELD(nnormb##k), FIELD(ntau##k), FIELD(ntaub##k)
#define ARRAY(f, n)                                                                                                    \
    if (q.f) r[#f] = values(q.f, n)
#define ARRAYS3(f, g, h, n)                                                                                            \
    ARRAY(f, n);                                                                                                       \
    ARRAY(g, n);                                                                                                       \
    ARRAY(h, n)
    FIELD(irun);
    FIELD(dim);
    FIELD(nstar);
    FIELD(ntarr);
    FIELD(ndist);
    FIELD(ndifh);
    FIELD(ndir1);
    FIELD(ndir2);
    FIELD(dof);
    FIELD(itest);
    FIELD(nrow);
    REAL(sig0);
    REAL(sigpost);
    KIND(dist);
    KIND(difh);
    KIND(dir1);
    KIND(dir2);
    KIND(az);
    ARRAY(ihost, npt);
    ARRAYS3(code1, code2, code3, npt);
    ARRAYS3(x0, y0, z0, npt);
    ARRAYS3(xpt, ypt, zpt, npt);
    ARRAYS3(sxpt, sypt, szpt, npt);
    ARRAYS3(rx, ry, rz, nsta);
    ARRAYS3(srx, sry, srz, nsta);
    ARRAYS3(iobs, res, sres, nres);
    ARRAYS3(iout, inorm, inormb, nres);
    ARRAY(itau, nres);
    ARRAY(itaub, nres);
    ARRAYS3(ell12a, ell12b, ell12t, npt);
    ARRAYS3(ell13a, ell13b, ell13t, npt);
    ARRAYS3(ell23a, ell23b, ell23t, npt);
    ARRAYS3(ilump, iepoch, iref, nrow);
    ARRAYS3(tx, ty, tz, nrow);
    ARRAYS3(lrx, lry, lrz, nrow);
    ARRAY(tscale, nrow);
    ARRAYS3(stx, sty, stz, nrow);
    ARRAYS3(slrx, slry, slrz, nrow);
    ARRAY(stscale, nrow);
#undef FIELD
#undef REAL
#undef KIND
#undef ARRAY
#undef ARRAYS3
    return r;
}

inline json kinds(const measure_input *a, int n)
{
    json l = json::array();
    for (int i = 0; i < n; i++) l.push_back(a[i].typ);
    return l;
}

// What a run may change in the host's records.
inline json host_fields(const project &p)
{
    json h;
    for (const char *list : {"stations", "targets", "groups", "images", "pairs", "typs"}) h[list] = json::array();
    for (int i = 0; i < p.nstations; i++)
        h["stations"].push_back({values(p.stations[i].ix, 3), values(p.stations[i].ir, 3), p.stations[i].ilump});
    for (int i = 0; i < p.ntargets; i++) h["targets"].push_back({values(p.targets[i].ix, 3), p.targets[i].ilump});
    for (int i = 0; i < p.ngroups; i++)
        h["groups"].push_back({p.groups[i].typ, values(p.groups[i].c, 3), values(p.groups[i].sc, 3)});
    for (int i = 0; i < p.nimages; i++) h["images"].push_back(p.images[i].status);
    for (int i = 0; i < p.npairs; i++) {
        json l = json::array();
        const pair_input &q = p.pairs[i];
        for (const double *a : {q.sdx, q.ell12, q.ell13, q.ell23})
            for (int k = 0; k < 3; k++) l.push_back(value(a[k]));
        h["pairs"].push_back(l);
    }
    h["typs"] = {kinds(p.distances, p.ndistances), kinds(p.heightdiffs, p.nheightdiffs),
                 kinds(p.directions, p.ndirections), kinds(p.verticals, p.nverticals), kinds(p.azimuths, p.nazimuths)};
    h["lumpmethod"] = p.lumpmethod;
    h["imixed"] = p.imixed;
    h["filename"] = p.filename;
    return h;
}

// The files of the working folder that were not there before.
inline json new_files(const json &before)
{
    json side = json::object();
    for (const auto &entry : std::filesystem::directory_iterator(".")) {
        const std::string name = entry.path().filename().string();
        if (!before.contains(name)) side[name] = file_text(name);
    }
    return side;
}

inline json solve(vorn &run, const std::string &entry)
{
    return entry == "L2" ? run.vornL2() : entry == "jordan" ? run.vornjordan() : run.vornL1();
}

// Runs a project in a folder of its own.
inline json whole_run(const json &in)
{
    WorkFolder folder;
    const json files = in.value("files", json::object());
    for (const auto &[name, text] : files.items()) std::ofstream(name, std::ios::binary) << joined(text);
    Answers messages(in.value("answers", json::object()));
    ProjectReader reader(in);
    reader.p().pfeedback = &messages;
    json out;
    for (int n = in.value("runs", 1); n > 0; n--) {
        vorn run(&reader.p());
        out["start"] = run.vornstart();
        out["solve"] = out["start"] == 0 ? solve(run, in.value("entry", "L2")) : json();
    }
    out["report"] = reader.report();
    out["feedback"] = messages.lines;
    out["questions"] = messages.questions;
    out["result"] = reader.p().runresults ? result_fields(*reader.p().runresults) : json::object();
    out["host"] = host_fields(reader.p());
    out["side"] = new_files(files);
    return out;
}

} // namespace ownhost

#endif
