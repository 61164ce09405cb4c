// A complete host: three height differences around a bench mark, adjusted by the library.
//
// Builds a project in memory, runs it, prints the adjusted heights and the residuals.

#include <stdio.h>
#include <string.h>

#include "vorn/vorn.h"

// Shows the engine's messages on standard error; answers no to its questions.
class Console : public Feedback {
public:
    void feedback(char *line) override { fprintf(stderr, "%s\n", line); }
    int decision(char *, char *) override { return 0; }
};

// Names are held with blanks up to 8 characters, so that the report's columns line up.
static void set_name(char name[12], const char *text) { snprintf(name, 12, "%-8s", text); }

static target_input benchmark(const char *name, double height, int code)
{
    target_input t = target_input();
    set_name(t.name, name);
    t.status = STATUS_ON;
    t.x[2] = height;
    t.ix[0] = t.ix[1] = CODE_ABSENT; // heights only
    t.ix[2] = code;
    return t;
}

static measure_input levelled(const char *from, const char *to, double dh, double sigma)
{
    measure_input m = measure_input();
    m.typ = KIND_HEIGHT_DIFFERENCE;
    set_name(m.from, from);
    set_name(m.to, to);
    m.val = dh;
    m.sig = sigma;
    return m;
}

int main()
{
    target_input targets[] = {benchmark("A", 100.0, CODE_FIXED), benchmark("B", 101.2, CODE_FREE),
                              benchmark("C", 103.5, CODE_FREE)};
    measure_input lines[] = {levelled("A", "B", 1.234, 0.001), levelled("B", "C", 2.221, 0.001),
                             levelled("C", "A", -3.452, 0.001)};

    Console console;
    project p = project();
    p.pfeedback = &console;
    strcpy(p.filename, "example.inp");
    p.out = tmpfile(); // the report; a real host opens a file of its own
    if (!p.out) return 3;
    p.irun = 0; // solution without statistics
    p.dim = 1;
    p.itmax = 20;
    p.convergence = 1.0e-6;
    p.suv = p.sdist = p.sdifh = p.sdir1 = p.sdir2 = p.saz = p.sgps = 1.0;
    p.imixed = -1;
    p.targets = targets;
    p.ntargets = 3;
    p.heightdiffs = lines;
    p.nheightdiffs = 3;

    int code;
    {
        vorn run(&p);
        code = run.vornstart();
        if (code == 0) code = run.vornjordan();
    } // the destructor leaves p.runresults

    if (code == 0 && p.runresults) {
        const result *r = p.runresults;
        for (int i = 0; i < r->nstar + r->ntarr; i++)
            printf("%s %12.5f\n", targets[r->ihost[i] - r->nstar].name, r->zpt[i]);
        for (int i = 0; i < r->ndifh; i++)
            printf("%s %s %9.5f\n", lines[r->iobs[i]].from, lines[r->iobs[i]].to, r->res[i]);
    }
    if (p.runresults) p.freerun(p.runresults);
    fclose(p.out);
    return code == 0 ? 0 : 1;
}
