// A network file handed to the engine without the program's own care around it: what a run
// says and by which codes it ends, whatever fails under it.

#ifndef TESTS_FAULTS_ENGINE_RUN_H
#define TESTS_FAULTS_ENGINE_RUN_H

#include <stdlib.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/input/model.h"
#include "host/input/network_file.h"
#include "host/preparation/prepare.h"
#include "support/network.h"
#include "vorn/vorn.h"

struct Setting {
    vornhost::Solver solver = vornhost::Solver::Compact;
    vornhost::Mode mode = vornhost::Mode::Statistics;
    int trace = 0;
    int lumpmethod = -1;  // -1: as the file says
    bool compute = false; // coordinates of free points are for the engine to find
};

struct Ended {
    int start = 0, code = 0;
    bool results = false;
    std::string report;
    std::vector<std::string> lines;

    bool same(const Ended &other) const
    {
        return start == other.start && code == other.code && results == other.results && all() == other.all();
    }
    bool documented() const { return start <= 0 && start >= -6 && code <= 0 && code >= -5; }
    std::string all() const
    {
        std::string text = report;
        for (const std::string &line : lines) text += "> " + line + "\n";
        return text;
    }
};

// A prepared network and one run after the other on it.
class EngineRun {
public:
    EngineRun() = default;
    ~EngineRun() { model.p.freerun(model.p.runresults); }
    EngineRun(const EngineRun &) = delete;
    EngineRun &operator=(const EngineRun &) = delete;

    bool read(const std::string &path, const Setting &setting)
    {
        vornhost::Faults faults;
        if (!vornhost::read_network(path, model, faults)) return false;
        model.solver = setting.solver;
        model.mode = setting.mode;
        if (setting.lumpmethod >= 0) model.p.lumpmethod = setting.lumpmethod;
        if (setting.compute) forget_coordinates();
        vornhost::prepare(model);
        lumpmethod = model.p.lumpmethod;
        groups = model.groups.records;
        model.p.idebug = setting.trace;
        model.p.irun = setting.solver == vornhost::Solver::Simplex   ? -1
                       : setting.mode == vornhost::Mode::Solution    ? 0
                       : setting.mode == vornhost::Mode::Propagation ? -2
                                                                     : 1;
        return true;
    }

    Ended run(int answer = 1)
    {
        char *text = nullptr;
        size_t size = 0;
        FILE *report = open_memstream(&text, &size);
        Ended ended = run_on(report, answer);
        fclose(report);
        ended.report.assign(text, size);
        free(text);
        return ended;
    }

    // The report goes to a stream of the caller.
    Ended run_on(FILE *report, int answer = 1)
    {
        Ended ended;
        Recorder messages;
        messages.answer = answer;
        model.p.pfeedback = &messages;
        model.p.out = report;
        hand_over_again();
        {
            vorn engine(&model.p);
            ended.start = engine.vornstart();
            if (ended.start == 0) ended.code = solve(engine);
        }
        model.p.pfeedback = nullptr;
        model.p.out = nullptr;
        ended.results = model.p.runresults;
        ended.lines = std::move(messages.lines);
        return ended;
    }

    vornhost::Model model;

private:
    // Before every run: the fields of the project into which the engine writes, lumps that were
    // given up among them, and the adjusted constants of the groups.
    void hand_over_again()
    {
        model.p.imixed = -1;
        model.p.lumpmethod = lumpmethod;
        std::copy(groups.begin(), groups.end(), model.groups.records.begin());
    }

    int solve(vorn &engine) const
    {
        if (model.solver == vornhost::Solver::Simplex) return engine.vornL1();
        return model.solver == vornhost::Solver::Jordan ? engine.vornjordan() : engine.vornL2();
    }

    void forget_coordinates()
    {
        const auto forget = [](auto &list) {
            for (auto &point : list.records)
                if (point.status == STATUS_ON && point.ix[0] != CODE_FIXED && point.ix[1] != CODE_FIXED &&
                    point.ix[2] != CODE_FIXED)
                    point.status = STATUS_COMPUTE;
        };
        forget(model.stations);
        forget(model.targets);
    }

    int lumpmethod = 0;
    std::vector<group_input> groups;
};

#endif
