// The host's side of the engine: class project, its records, and class Feedback.
//
// A project holds a whole run: settings, record arrays, report stream, results.
// The engine reads its fields directly, keeps pointers to its arrays and writes
// back into them. The byte positions are a binary contract on machines with
// 4-byte pointers and 8-byte aligned doubles; src/vorn/contract.cpp asserts every
// one of them. Fields of a host's own may only stand behind the last position.
//
// Units: coordinates, distances, height differences and their standard deviations
// in the unit that iunit selects; angular observations in the host's raw unit,
// which only the seven operations know; orientation angles (station_input::r) in
// radians; everything else in metres. Strings end with a zero byte.

#ifndef VORN_PROJECT_H
#define VORN_PROJECT_H

#include <stdio.h>

#if defined(_WIN32) && defined(VORN_HOST_IMPORT)
#define VORN_HOST __declspec(dllimport)
#elif defined(_WIN32) && defined(VORN_HOST_EXPORT)
#define VORN_HOST __declspec(dllexport)
#elif defined(_WIN32)
#define VORN_HOST
#else
#define VORN_HOST __attribute__((visibility("default")))
#endif

struct result;

// Observation kinds: typ of a measure_input, also the number of its list.
enum {
    KIND_DISTANCE = 1,
    KIND_DISTANCE_CONSTANTS = 2, // a distance that takes the constants of its station
    KIND_HEIGHT_DIFFERENCE = 3,
    KIND_DIRECTION = 4,
    KIND_VERTICAL = 5,
    KIND_AZIMUTH = 7
};

// Status of a point: above 0 takes part, 2 has no approximate coordinates,
// 0 or negative is left out.
enum { STATUS_OFF = -1, STATUS_ON = 1, STATUS_COMPUTE = 2 };

// Code of a coordinate, an orientation, a constant or an epoch's scale.
enum {
    CODE_ABSENT = -1,  // any negative value: not in this problem
    CODE_FREE = 1,     // also 0: free and used for the datum
    CODE_NO_DATUM = 2, // free, not used for the datum
    CODE_WEIGHTED = 3, // weighted by its standard deviation
    CODE_FIXED = 4
};

// Message channel to the user.
class VORN_HOST Feedback {
public:
    virtual ~Feedback() {}
    virtual void feedback(char *line) = 0;                 // shows one line; it carries no newline
    virtual int decision(char *question, char *title) = 0; // non-zero means yes
};

struct station_input {
    int typ;                 // 2: belongs to a group and takes its constants
    char name[12];           // at most 8 significant characters
    int status;              // STATUS_...
    alignas(8) double x[3];  // coordinates
    alignas(8) double r[3];  // orientation angles Rx1, Rx2, Rx3, radians
    alignas(8) double sx[3]; // standard deviations of x
    alignas(8) double sr[3]; // standard deviations of r
    int ix[3];               // code of each coordinate
    int ir[3];               // code of each orientation
    int ilump;               // lump index, 0 none
    int iconn;               // 1 exported to a connected net, 2 imported from one
    int ilevel;              // 1: the instrument is levelled
};

struct target_input {
    char name[12];
    int status; // as for stations; above 100 see the datum rules in 3D
    alignas(8) double x[3];
    alignas(8) double sx[3];
    int ix[3];
    int ilump;
    int iconn;
};

struct measure_input {
    int typ; // KIND_..., above 0 selected; the engine negates it to deselect
    char from[12];
    alignas(8) double h1; // height of the instrument above from, metres
    char to[12];
    alignas(8) double h2;  // height of the target above to, metres
    alignas(8) double val; // observed value
    alignas(8) double sig; // its standard deviation, same unit as val
    int time;              // epoch, 0 none
};

struct gps_input {
    int status; // above 0 selected
    char from[9];
    char to[9];
    alignas(8) double dx[3];  // components from -> to, metres
    alignas(8) double cov[6]; // covariance of dx: xx, xy, xz, yy, yz, zz
};

struct group_input {
    int typ; // negative: ignored; 0 when handed over; the engine adds 6, 7, 8
    int unused[3];
    int ic[3];               // code of additive constant, scale, refraction
    alignas(8) double c[3];  // their values; the engine writes back the adjusted ones
    alignas(8) double sc[3]; // their standard deviations, written back as well
    int nmember;
    int *member; // nmember indexes in stations
};

struct camera_input {
    int status; // above 0 used
    char name[12];
    int nu, nv;               // width and height in pixels
    alignas(8) double pu, pv; // pixel size in u and v
    int ip[10];               // code of each inner parameter
    alignas(8) double p[10];  // inner parameters
    alignas(8) double unused[10];
};

struct image_input {
    int status;    // above 0 used; the engine negates it to drop the image
    char file[80]; // text file of image coordinates
    char station[9];
    char camera[9];
};

struct lump_definition {
    int id;   // lump index
    int kind; // 1: rotations held at zero; 2: scale held at 1
    int iref; // reference epoch, used if positive
    int n;    // entries of each array below
    int *epoch;
    int *code; // code of each epoch's scale: 4 fixed
    double *scale;
    double *tx, *ty, *tz; // translation
    double *rx, *ry, *rz; // rotation
};

// Relative precision of two points, filled by a run with statistics.
struct pair_input {
    char from[9];
    char to[9];
    alignas(8) double sdx[3];   // standard deviations of the coordinate differences
    alignas(8) double ell12[3]; // relative ellipse, coordinates 1 and 2: axes a, b, bearing in radians
    alignas(8) double ell13[3];
    alignas(8) double ell23[3];
};

class VORN_HOST project {
public:
    Feedback *pfeedback;
    char filename[128];         // bare name of the run's input file with a three-letter extension
    FILE *out;                  // report stream, open for writing
    int irun;                   // -2 error propagation, -1 least absolute values, 0 solution, 1 statistics
    int idebug;                 // non-zero: trace lines; 9 also the normal matrices
    int dim;                    // 1, 2 or 3
    alignas(8) int iearth;      // 0 none, 1 cartesian, 2 mixed coordinates
    alignas(8) double radius;   // of the sphere
    alignas(8) double trans[3]; // translation of the origin
    alignas(8) double horigin;  // height of the origin
    alignas(8) double latitude; // degrees
    int itmax;
    alignas(8) double convergence;
    station_input *stations;
    int nstations;
    target_input *targets;
    int ntargets;
    measure_input *distances;
    int ndistances;
    measure_input *heightdiffs;
    int nheightdiffs;
    measure_input *directions;
    int ndirections;
    measure_input *verticals;
    int nverticals;
    measure_input *azimuths;
    int nazimuths;
    gps_input *baselines;
    int nbaselines;
    int igps; // 0 baselines ignored; 1 and 9 change the datum rules
    group_input *groups;
    int ngroups;
    int iphoto; // 1: photogrammetric data are present
    camera_input *cameras;
    int ncameras;
    image_input *images;
    int nimages;
    alignas(8) double suv;   // a-priori standard deviation of an image coordinate
    int iunit;               // 0 metres, 1 millimetres, 2 inches
    int iredux;              // reduction code of distances
    alignas(8) double sdist; // a-priori standard deviations of the lists
    alignas(8) double sdifh;
    alignas(8) double sdir1;
    alignas(8) double sdir2;
    alignas(8) double saz;
    alignas(8) double sgps;
    int lumpmethod; // 0 none, 1, 9
    lump_definition *lumpdefs;
    int nlumpdefs;
    char confile[128]; // connected-net file to import
    pair_input *pairs;
    int npairs;
    result *runresults;      // 0 or the results of the last run
    alignas(8) double azrot; // turn of the plane in the azimuth equation, radians
    int imixed;              // -1 before a run; point of a mixed datum

    // Fields of this host, behind the contract.
    int iangle;  // raw angular unit, ANGLE_...
    int izenith; // 1: the host's vertical angles are zenith angles, 0 elevations

    // Conversions between the raw angular unit and radians. First argument of the
    // rawto...: 1 a value, 2 a standard deviation. First argument of the ...toraw:
    // 0 a small difference or standard deviation, 1 a value, 2 leaves its argument
    // as it is. An unreadable value yields exactly 2 pi (rawtoh, rawtoaz) or exactly
    // pi (rawtov). Vertical angles are elevations on the engine's side.
    double rawtoh(int mode, double raw);
    double rawtoaz(int mode, double raw);
    double rawtov(int mode, double raw);
    double htoraw(int mode, double rad);
    double aztoraw(int mode, double rad);
    double vtoraw(int mode, double rad);
    void freerun(result *run); // releases a result and all that hangs from it
};

enum { ANGLE_GON = 0, ANGLE_DEGREE = 1, ANGLE_PACKED = 2, ANGLE_RADIAN = 3 };

#endif
