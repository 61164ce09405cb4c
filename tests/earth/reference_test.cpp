// Reference systems against published points, and geoids against what the test wrote.

#include "host/earth/reference.h"

#include <stdint.h>

#include <cstring>
#include <fstream>
#include <thread>

#include "earth/truth.h"
#include "host/folder.h"

using namespace vornhost;
using truth::degree;

namespace {

struct Published {
    const char *system;
    double latitude, longitude, north, east; // degrees, metres
    double unit;                             // of its grid, metres
};

double dms(double d, double m, double s) { return d < 0 ? d - m / 60 - s / 3600 : d + m / 60 + s / 3600; }

// A file of undulations in the format GTX: 5 by 5 nodes a degree apart from (48, 7), big endian.
void write_gtx(const std::string &path, double (*undulation)(double latitude, double longitude))
{
    std::ofstream out(path, std::ios::binary);
    const auto put = [&](auto value) {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        for (size_t k = sizeof value; k-- > 0;) out.put(bytes[k]);
    };
    for (const double x : {48.0, 7.0, 1.0, 1.0}) put(x);
    put((int32_t)5);
    put((int32_t)5);
    for (int i = 0; i < 5; i++)
        for (int k = 0; k < 5; k++) put((float)undulation(48.0 + i, 7.0 + k));
}

double slope(double latitude, double longitude) { return 40.0 + 2.0 * (latitude - 48.0) - 0.5 * (longitude - 7.0); }

} // namespace

// IOGP Publication 373-7-2, Geomatics Guidance Note 7 part 2: transverse Mercator (British National Grid), Lambert
// conformal (Jamaica), oblique Mercator (Borneo). Printed to a centimetre, of
// series with few terms.
TEST(Reference, ProjectsPublishedPointsOfThreeProjections)
{
    const Published all[] = {
        {"EPSG:27700", 50.5, 0.5, 69740.50, 577274.99, 1.0},
        {"EPSG:24200", dms(17, 55, 55.80), -dms(76, 56, 37.26), 142493.51, 255966.58, 1.0},
        {"EPSG:29873", dms(5, 23, 14.1129), dms(115, 48, 19.8196), 596562.78, 679245.73, 1.0},
    };
    for (const Published &p : all) {
        const Reference r = truth::open(p.system);
        const auto grid = r.grid({p.latitude * degree, p.longitude * degree});
        ASSERT_TRUE(grid);
        EXPECT_NEAR(grid->north, p.north, 0.01) << p.system;
        EXPECT_NEAR(grid->east, p.east, 0.01) << p.system;
        const auto back = r.geographic(*grid);
        ASSERT_TRUE(back);
        EXPECT_NEAR(back->latitude, p.latitude * degree, 1e-14) << p.system; // 0.06 micrometres
        EXPECT_NEAR(back->longitude, p.longitude * degree, 1e-14) << p.system;
    }
}

// The closed series of the transverse Mercator projection, tan of the convergence to the third power of the difference
// of longitude (L. P. Lee, Conformal projections, 1976; 2e-9 at two degrees).
TEST(Reference, HasTheConvergenceOfTheTransverseMercatorProjection)
{
    const Reference r = truth::open("EPSG:25832");
    for (const double l : {-2.0, -0.7, 0.0, 1.3, 2.0})
        for (const double b : {0.5, 48.0, 69.0}) {
            const double dl = l * degree, s = std::sin(b * degree), c2 = std::pow(std::cos(b * degree), 2);
            const double eta2 = r.ellipsoid().e2 / (1.0 - r.ellipsoid().e2) * c2;
            const double expected = dl * s * (1.0 + dl * dl * c2 / 3.0 * (1.0 + 3.0 * eta2 + 2.0 * eta2 * eta2));
            const auto axes = r.axes({b * degree, (9.0 + l) * degree});
            ASSERT_TRUE(axes);
            EXPECT_NEAR(axes->convergence, expected, 2e-8) << l << " " << b;
        }
}

TEST(Reference, KnowsUnitsAndAxes)
{
    const Reference feet = truth::open("EPSG:2263"); // New York Long Island, US survey feet
    const auto origin = feet.grid({dms(40, 10, 0) * degree, -74.0 * degree});
    ASSERT_TRUE(origin);
    EXPECT_NEAR(origin->north, 0.0, 1e-6);
    EXPECT_NEAR(origin->east, 300000.0, 1e-3);
    std::string fault;
    EXPECT_FALSE(Reference::open(truth::crs("EPSG:4326"), &fault));
    EXPECT_NE(fault.find("no projected"), std::string::npos) << fault;
    EXPECT_FALSE(Reference::open(truth::crs("EPSG:2053"), &fault)); // westing, southing
    EXPECT_NE(fault.find("north and east"), std::string::npos) << fault;
    EXPECT_FALSE(Reference::open(truth::crs("EPSG:999999"), &fault));
    EXPECT_FALSE(Reference::open(truth::crs("no such thing"), &fault));
    EXPECT_NE(fault.find("PROJ knows"), std::string::npos) << fault;
}

TEST(Reference, ReadsAGridOfTheGeoidAndRefusesPlacesOutsideIt)
{
    const Folder folder;
    Crs crs = truth::crs("EPSG:25832");
    crs.ellipsoidal = false;
    crs.geoid.form = Geoid::Form::grid;
    crs.geoid.file = folder.path + "/a geoid.gtx";
    write_gtx(crs.geoid.file, slope);
    std::string fault;
    const auto r = Reference::open(crs, &fault);
    ASSERT_TRUE(r) << fault;
    for (const double b : {48.25, 50.0, 51.9})
        for (const double l : {7.1, 9.0, 10.75}) {
            const auto n = r->undulation({b * degree, l * degree});
            ASSERT_TRUE(n);
            EXPECT_NEAR(*n, slope(b, l), 1e-5); // nodes are floats
        }
    EXPECT_FALSE(r->undulation({53.5 * degree, 9.0 * degree}));
    crs.geoid.file = folder.path + "/none.gtx";
    EXPECT_FALSE(Reference::open(crs, &fault));
}

TEST(Reference, TiltsThePlaneOfAGeoid)
{
    Crs crs = truth::crs("EPSG:25832");
    crs.ellipsoidal = false;
    crs.geoid.form = Geoid::Form::plane;
    crs.geoid.undulation = 47.0;
    crs.geoid.latitude = 50.0 * degree;
    crs.geoid.longitude = 9.0 * degree;
    crs.geoid.north = 2e-5;
    crs.geoid.east = -1e-5;
    std::string fault;
    const auto r = Reference::open(crs, &fault);
    ASSERT_TRUE(r) << fault;
    const LatLon here{50.0 * degree, 9.0 * degree}, north{50.1 * degree, 9.0 * degree},
        east{50.0 * degree, 9.1 * degree};
    EXPECT_NEAR(*r->undulation(north), 47.0 + 2e-5 * r->geodesic(here, north).length, 1e-3);
    EXPECT_NEAR(*r->undulation(east), 47.0 - 1e-5 * r->geodesic(here, east).length, 1e-3);
}

TEST(Conversion, TakesGeocentricCoordinatesAndThoseOfAnotherZone)
{
    const Reference r = truth::open("EPSG:25832");
    const truth::Point p{"P", 50.123 * degree, 9.456 * degree, 321.5};
    const truth::Vector x = truth::geocentric(r.ellipsoid(), p);
    std::string fault;
    const auto geocentric = Conversion::open(r, "EPSG:4936", &fault), zone = Conversion::open(r, "EPSG:25833", &fault);
    ASSERT_TRUE(geocentric && zone) << fault;
    const auto a = (*geocentric)(x.x, x.y, x.z);
    const auto there = truth::open("EPSG:25833").grid({p.latitude, p.longitude});
    const auto b = (*zone)(there->east, there->north, 321.5);
    for (const auto &place : {a, b}) {
        ASSERT_TRUE(place);
        EXPECT_NEAR(place->at.latitude, p.latitude, 1e-13);
        EXPECT_NEAR(place->at.longitude, p.longitude, 1e-13);
        EXPECT_NEAR(place->height, p.height, 1e-6);
    }
}

TEST(Reference, WorksInSeveralThreads)
{
    std::vector<double> north(4);
    std::vector<std::thread> threads;
    threads.reserve(north.size());
    for (double &n : north)
        threads.emplace_back([&n] {
            const Reference r = truth::open("EPSG:25832");
            for (int k = 0; k < 200; k++) n = r.grid({(45.0 + 0.01 * k) * degree, 9.5 * degree})->north;
        });
    for (std::thread &t : threads) t.join();
    for (const double n : north) EXPECT_EQ(n, north[0]);
}
