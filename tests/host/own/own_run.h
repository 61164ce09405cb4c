// Runs of a network file by the program's own adjustment, and by the engine beside it.

#ifndef TESTS_HOST_OWN_RUN_H
#define TESTS_HOST_OWN_RUN_H

#include <gtest/gtest.h>
#include <stdio.h>

#include <memory>
#include <string>

#include "host/folder.h"
#include "host/run/network_run.h"
#include "support/network.h"

using vornhost::Solver;

struct SolvedNetwork {
    vornhost::NetworkRun run;
    std::string report;
    Lines messages;

    const vornhost::Results &results() const { return run.results; }
    bool adjusted() const { return run.results.adjusted; }
    std::string code() const { return run.results.stage + ": " + run.results.code; }
    std::string words() const
    {
        std::string all;
        for (const std::string &word : run.results.words) all += word + "\n";
        return all;
    }
    const vornhost::PointResult &point(const std::string &name) const
    {
        for (const vornhost::PointResult &p : run.results.points)
            if (p.name == name) return p;
        ADD_FAILURE() << "no point " << name;
        static const vornhost::PointResult none;
        return none;
    }
};

inline std::string whole_text(FILE *file)
{
    std::string all;
    rewind(file);
    for (int c = fgetc(file); c != EOF; c = fgetc(file)) all += (char)c;
    return all;
}

inline SolvedNetwork solve(vornhost::Model &model, bool check = false)
{
    SolvedNetwork solved;
    Recorder messages;
    const std::unique_ptr<FILE, int (*)(FILE *)> report(tmpfile(), fclose);
    solved.run = check ? vornhost::check_network(model, report.get(), messages, "test")
                       : vornhost::run_network(model, report.get(), messages, "test");
    solved.report = whole_text(report.get());
    solved.messages = messages.lines;
    return solved;
}

inline SolvedNetwork solve_file(const std::string &path, Solver solver = Solver::Sparse, bool check = false)
{
    vornhost::Model model;
    vornhost::Faults faults;
    EXPECT_TRUE(vornhost::read_network(path, model, faults)) << (faults.lines().empty() ? path : faults.lines()[0]);
    model.solver = solver;
    return solve(model, check);
}

// A network file given as text. Side files go into its folder.
inline SolvedNetwork solve_text(const std::string &text, Solver solver = Solver::Sparse, bool check = false)
{
    const Folder folder;
    const InFolder inside(folder.path);
    folder.write("net.inp", text);
    return solve_file("net.inp", solver, check);
}

inline SolvedNetwork check_text(const std::string &text) { return solve_text(text, Solver::Sparse, true); }

#endif
