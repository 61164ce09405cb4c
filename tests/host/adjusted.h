// Whole runs of the host on a network file.

#ifndef TESTS_HOST_ADJUSTED_H
#define TESTS_HOST_ADJUSTED_H

#include <gtest/gtest.h>
#include <stdio.h>

#include <memory>
#include <string>

#include "host/folder.h"
#include "vorn/result.h"
#include "host/results/results.h"
#include "host/run/runner.h"
#include "support/network.h"

// A network file without faults, with the report and the messages of what is done with it.
struct ReadCase {
    explicit ReadCase(const std::string &text) : report(tmpfile())
    {
        folder.write("net.inp", text);
        EXPECT_EQ(folder.read(), Lines());
    }
    ~ReadCase()
    {
        folder.model.p.freerun(folder.model.p.runresults);
        if (report) fclose(report);
    }
    ReadCase(const ReadCase &) = delete;
    ReadCase &operator=(const ReadCase &) = delete;

    vornhost::RunOutcome run() { return vornhost::run(folder.model, report, messages); }
    Lines shortened(Lines lines) const
    {
        for (std::string &line : lines) folder.shorten(line);
        return lines;
    }
    std::string text() const
    {
        std::string all;
        rewind(report);
        for (int c = fgetc(report); c != EOF; c = fgetc(report)) all += (char)c;
        return all;
    }

    Folder folder;
    FILE *report;
    Recorder messages;
};

// Results of a run on a model, which must succeed.
inline vornhost::Results adjusted_results(vornhost::Model &model, Feedback &listener)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> report(tmpfile(), fclose);
    const vornhost::RunOutcome outcome = vornhost::run(model, report.get(), listener);
    EXPECT_TRUE(outcome.adjusted()) << (outcome.words.empty() ? "" : outcome.words[0]);
    vornhost::Results results = vornhost::collect(model, outcome, "test");
    model.p.freerun(model.p.runresults);
    return results;
}

inline vornhost::Results adjusted_results(vornhost::Model &model)
{
    Recorder messages;
    return adjusted_results(model, messages);
}

#endif
