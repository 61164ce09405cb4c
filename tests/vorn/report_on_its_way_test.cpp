// What of the report has left the buffer of its stream when the host gets the word, and when the
// entries return: a host shows the report while a run goes on.

#include <gtest/gtest.h>
#include <math.h>
#include <stdio.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "support/network.h"
#include "vorn/vorn.h"

namespace {

// What has left the buffer, read behind its back.
std::string on_disk(FILE *out)
{
    std::string text(1 << 16, '\0');
    const ssize_t size = pread(fileno(out), &text[0], text.size(), 0);
    text.resize(size > 0 ? (size_t)size : 0);
    return text;
}

// True when the buffer is empty; writes nothing itself.
bool all_sent(FILE *out) { return (long)on_disk(out).size() == ftell(out); }

// Looks at the report at each line and question.
class Onlooker : public Recorder {
public:
    void feedback(char *line) override
    {
        Recorder::feedback(line);
        if (look) look(line);
    }
    int decision(char *question, char *title) override
    {
        if (look) look(title);
        return Recorder::decision(question, title);
    }
    std::function<void(const std::string &)> look;
};

// A station between three fixed targets, its orientation held.
void add_plane(Network &n)
{
    n.station("S", 10, 20).ir[2] = CODE_FIXED;
    const double x[3] = {100, 0, -50}, y[3] = {0, 100, -50};
    const char *names[3] = {"A", "B", "C"};
    for (int i = 0; i < 3; i++) {
        target_input &t = n.target(names[i], x[i], y[i]);
        t.ix[0] = t.ix[1] = CODE_FIXED;
        n.distance("S", names[i], hypot(x[i] - 10, y[i] - 20), 0.001);
    }
}

TEST(ReportOnItsWay, HoldsTheSummaryWhenTheHostIsAsked)
{
    Network n(2);
    add_plane(n);
    Onlooker host;
    n.p.pfeedback = &host;
    bool asked = false;
    host.look = [&](const std::string &title) {
        if (title != "Approximation Info") return;
        asked = true;
        EXPECT_NE(on_disk(n.p.out).find("number of distances                  3\n"), std::string::npos);
    };
    vorn run(n.ready());
    ASSERT_EQ(run.vornstart(), 0);
    EXPECT_TRUE(asked);
}

TEST(ReportOnItsWay, IsWholeWhenTheSetUpFails)
{
    Network none(2);
    vorn empty(none.ready());
    EXPECT_EQ(empty.vornstart(), -1);
    EXPECT_TRUE(all_sent(none.p.out));
    EXPECT_EQ(on_disk(none.p.out), "fill_vorn: Stop in verif\n");

    Network loose(2); // one fixed target and nothing more
    loose.station("S", 10, 20);
    loose.target("A", 100, 0).ix[0] = CODE_FIXED;
    loose.targets[0].ix[1] = CODE_FIXED;
    loose.distance("S", "A", 92, 1);
    vorn undetermined(loose.ready());
    EXPECT_EQ(undetermined.vornstart(), -3);
    EXPECT_TRUE(all_sent(loose.p.out));
}

// Without inversion: the report ends with what the iteration wrote.
TEST(ReportOnItsWay, IsWholeWhenTheIterationHasEnded)
{
    for (const auto solve : {&vorn::vornL2, &vorn::vornjordan, &vorn::vornL1})
        for (int itmax : {20, 1}) { // 1: it stops too early
            Network n(2);
            add_plane(n);
            n.stations[0].x[0] += 5.0;
            n.p.itmax = itmax;
            vorn run(n.ready());
            ASSERT_EQ(run.vornstart(), 0);
            const long before = ftell(n.p.out);
            (run.*solve)();
            EXPECT_GT(ftell(n.p.out), before);
            EXPECT_TRUE(all_sent(n.p.out)) << itmax;
        }
}

TEST(ReportOnItsWay, IsWholeBeforeAndBehindTheInversion)
{
    for (const auto solve : {&vorn::vornL2, &vorn::vornjordan}) {
        Network n(2);
        add_plane(n);
        n.p.irun = 1;
        Onlooker host;
        n.p.pfeedback = &host;
        bool inverts = false;
        host.look = [&](const std::string &line) {
            if (line != "Start inversion...") return;
            inverts = true;
            EXPECT_TRUE(all_sent(n.p.out));
        };
        vorn run(n.ready());
        ASSERT_EQ(run.vornstart(), 0);
        ASSERT_EQ((run.*solve)(), 0);
        EXPECT_TRUE(inverts);
        EXPECT_TRUE(all_sent(n.p.out));
    }
}

} // namespace
