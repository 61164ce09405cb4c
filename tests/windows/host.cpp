// A host that adjusts networks one after the other in the folder given, each with its report
// NAME.txt. On Windows it loads the engine at run time from the path in its second argument.

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "networks.h"

#ifdef _WIN32

#include <direct.h>
#include <windows.h>
#define change_folder _chdir

#include "vorn/vorn.h"

#ifdef _WIN64
#define MEMBER
#else
#define MEMBER __attribute__((thiscall))
#endif

// The exported members of class vorn, by the names that the compiler gives them.
struct Engine {
    explicit Engine(const char *path) : library(LoadLibraryA(path))
    {
        construct = (void(MEMBER *)(void *, project *))find("_ZN4vornC1EP7project");
        destroy = (void(MEMBER *)(void *))find("_ZN4vornD1Ev");
        start = (int(MEMBER *)(void *))find("_ZN4vorn9vornstartEv");
        compact = (int(MEMBER *)(void *))find("_ZN4vorn6vornL2Ev");
        jordan = (int(MEMBER *)(void *))find("_ZN4vorn10vornjordanEv");
    }
    void *find(const char *name)
    {
        void *address = library ? (void *)GetProcAddress(library, name) : NULL;
        if (address) return address;
        fprintf(stderr, "no %s in the library\n", name);
        exit(1);
    }
    HMODULE library;
    void(MEMBER *construct)(void *, project *);
    void(MEMBER *destroy)(void *);
    int(MEMBER *start)(void *);
    int(MEMBER *compact)(void *);
    int(MEMBER *jordan)(void *);
};

static int adjust(Engine *engine, project *p, bool jordan)
{
    void *run = calloc(1, sizeof(vorn));
    if (!run) return -1;
    engine->construct(run, p);
    int code = engine->start(run);
    if (code == 0) code = jordan ? engine->jordan(run) : engine->compact(run);
    engine->destroy(run);
    free(run);
    return code;
}

#else

#include <unistd.h>

#include "vorn/vorn.h"
#define change_folder chdir

struct Engine {
    explicit Engine(const char *) {}
};

static int adjust(Engine *, project *p, bool jordan)
{
    vorn run(p);
    const int code = run.vornstart();
    if (code != 0) return code;
    return jordan ? run.vornjordan() : run.vornL2();
}

#endif

static int report(Engine *engine, const char *name, void (*build)(network *), bool jordan)
{
    static network n;
    memset((void *)&n.p, 0, sizeof n.p);
    build(&n);
    n.p.out = fopen(name, "wb");
    if (!n.p.out) return 1;
    const int code = adjust(engine, &n.p, jordan);
    fclose(n.p.out);
    const bool results = n.p.runresults != NULL;
    if (results) n.p.freerun(n.p.runresults);
    if (code != 0 || !results) fprintf(stderr, "%s ended with code %d\n", name, code);
    return code != 0 || !results;
}

int main(int argc, char **argv)
{
    if (argc < 2) return 2;
    Engine engine(argc > 2 ? argv[2] : "vorn.dll");
    if (change_folder(argv[1]) != 0) return 2;
    return report(&engine, "level.txt", levelling, false) + report(&engine, "plane.txt", plane, false) +
           report(&engine, "chained.txt", chained, true);
}
