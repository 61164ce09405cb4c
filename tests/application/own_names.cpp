// An application whose own names are those that the engine uses inside: it must compile
// beside the public headers, link beside the library, and each must keep its own.

#include <vorn/vorn.h>

#include "project.h"

#include <stdio.h>

struct point {
    float pixel[2];
};
struct measure {
    char text[3];
};
struct camera {
    int megapixels;
};
class solution {
public:
    int answer() const { return 42; }
};
class approx : public solution {};
class jordan : public solution {};
class compact : public solution {};
class simplex : public solution {};
class simili : public solution {};

// Counted, so that a call of the engine that ends here shows.
static int calls = 0;

int ludcmp(double **, int) { return ++calls; }
int lubksb(double **, int) { return ++calls; }
double normal(double) { return ++calls; }
double tau(double, int) { return ++calls; }
void *zeroed(size_t, size_t) { return ++calls, nullptr; }
void tell(Feedback *, const char *, ...) { ++calls; }
double wrap(double) { return ++calls; }
int cvec(int) { return ++calls; }

class Silent : public Feedback {
public:
    void feedback(char *) override {}
    int decision(char *, char *) override { return 0; }
};

static target_input benchmark(const char *name, double height, int code)
{
    target_input t = target_input();
    snprintf(t.name, sizeof t.name, "%-8s", name);
    t.status = STATUS_ON;
    t.x[2] = height;
    t.ix[0] = t.ix[1] = CODE_ABSENT;
    t.ix[2] = code;
    return t;
}

int main()
{
    const office_project office = {"town", 1.5};
    const point pixel = {{1.0f, 2.0f}};
    target_input targets[] = {benchmark("A", 10.0, CODE_FIXED), benchmark("B", 11.0, CODE_FREE)};
    measure_input lines[2] = {measure_input(), measure_input()};
    const double values[2] = {1.5, 2.5}; // the mean is 2
    for (int i = 0; i < 2; i++) {
        lines[i].typ = KIND_HEIGHT_DIFFERENCE;
        snprintf(lines[i].from, sizeof lines[i].from, "%-8s", "A");
        snprintf(lines[i].to, sizeof lines[i].to, "%-8s", "B");
        lines[i].val = values[i];
        lines[i].sig = 1.0;
    }

    Silent silent;
    project p = project();
    p.pfeedback = &silent;
    snprintf(p.filename, sizeof p.filename, "own.inp");
    p.out = tmpfile();
    if (!p.out) return 3;
    p.dim = 1;
    p.itmax = 20;
    p.convergence = 1.0e-6;
    p.suv = p.sdist = p.sdifh = p.sdir1 = p.sdir2 = p.saz = p.sgps = 1.0;
    p.imixed = -1;
    p.targets = targets;
    p.ntargets = 2;
    p.heightdiffs = lines;
    p.nheightdiffs = 2;
    int code;
    {
        vorn run(&p);
        code = run.vornstart();
        if (code == 0) code = run.vornL2();
    }
    if (code == 0 && p.runresults) printf("B %.6f\n", p.runresults->zpt[1]);
    if (p.runresults) p.freerun(p.runresults);
    fclose(p.out);
    printf("own names called %d times, %s %.1f, %.1f %d\n", calls, office.client, office.fee, pixel.pixel[1],
           simplex().answer());
    return code == 0 ? 0 : 1;
}
