// All that a host makes of a network file: report, engine's lines, JSON, tables.

#ifndef TESTS_RUNS_OUTPUTS_H
#define TESTS_RUNS_OUTPUTS_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

#include "host/results/csv_writer.h"
#include "host/results/json_writer.h"
#include "host/input/network_file.h"
#include "host/results/results.h"
#include "support/network.h"

// As one text, from a freshly read model.
inline std::string outputs_of(const std::string &path, vornhost::Solver solver = vornhost::Solver::Compact)
{
    using namespace vornhost;
    Model model;
    Faults faults;
    EXPECT_TRUE(read_network(path, model, faults)) << path;
    model.solver = solver;
    char *text = nullptr;
    size_t size = 0;
    FILE *report = open_memstream(&text, &size);
    Recorder messages;
    const RunOutcome outcome = run(model, report, messages);
    fclose(report);
    std::string all(text, size);
    free(text);
    const Results results = collect(model, outcome, "test");
    model.p.freerun(model.p.runresults);
    for (const std::string &line : messages.lines) all += line + "\n";
    all += to_json(results);
    for (const CsvTable &table : to_csv(results)) all += table.name + "\n" + table.text;
    return all;
}

#endif
