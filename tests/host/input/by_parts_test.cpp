// Reading a network file by parts: which points belong to a part, that the rows of all parts are those of the file, and
// what cannot be divided.

#include "host/input/by_parts.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <random>
#include <sstream>

#include "host/folder.h"
#include "host/input/observation_rows.h"
#include "host/input/point_parts.h"

using namespace vornhost;

namespace {

// ---- a file with every table of observations ----

class RandomFile {
public:
    explicit RandomFile(unsigned seed) : random(seed) {}

    std::string text()
    {
        std::string all = "[run]\ndimension = 3\n[sigma]\ndistances = 0.002\n[tables]\n";
        all += points("stations", "S", stations) + points("targets", "T", targets);
        all += table("setups", "station setup h levelled", 5,
                     [&] { return "S" + std::to_string(next_setup++) + " a " + number(1, 3) + " yes"; });
        all += table("distances", "from to value sigma h1 h2 epoch use id remark setup constants ppm atmosphere prism",
                     40, [&] {
                         return ends() + number(1, 9) + unknown() + heights() + " 1 " + use() + words() + stand() +
                                " no 2 3 0.01";
                     });
        all += table("height_differences", "from to value sigma h1 h2 epoch use id remark length setups", 30, [&] {
            return any_ends() + number(-9, 9) + " 0.01" + heights() + " 0 " + use() + words() + " 1 2";
        });
        all += table("directions", "from to value sigma h1 h2 epoch use id remark setup set face", 60, [&] {
            return ends() + number(0, 390) + " 0.001" + heights() + " - " + use() + words() + stand() + set() + face();
        });
        all += table("vertical_angles", "from to value sigma h1 h2 epoch use id remark setup set face refraction", 40,
                     [&] {
                         return ends() + zenith() + " 0.001" + heights() + " - " + use() + words() + stand() + set() +
                                " 1 " + (some() ? "0.13" : "-");
                     });
        all += table("azimuths", "from to value sigma use id remark", 20,
                     [&] { return any_ends() + number(0, 390) + " 0.001 " + use() + words(); });
        all += table("baselines", "from to dx dy dz cxx cxy cxz cyy cyz czz use id remark h1 h2 sigma_factor", 20, [&] {
            return any_ends() + number(-9, 9) + number(-9, 9) + number(-9, 9) + " 4e-6 1e-7 -1e-7 5e-6 0 9e-6 " +
                   use() + words() + heights() + " 2";
        });
        all += table("horizontal_distances", "from to value sigma use id remark setup constants", 20,
                     [&] { return ends() + number(1, 9) + " 0.01 " + use() + words() + stand() + " no"; });
        all += table("bearings", "from to value sigma use id remark", 20,
                     [&] { return any_ends() + number(0, 390) + " 0.01 " + use() + words(); });
        all += table("angles", "from to at value sigma use id remark setup", 30,
                     [&] { return angle_points() + number(0, 390) + " 0.01 " + use() + words() + stand(); });
        all += table("coordinates", "name x y z sx sy sz use id remark", 20,
                     [&] { return point() + number(0, 9) + " - " + number(0, 9) + " 0.1 0.2 0.3 " + use() + words(); });
        all += table("coordinate_differences", "from to dx dy dz sx sy sz use id remark", 20, [&] {
            return any_ends() + " - " + number(0, 9) + number(0, 9) + " 0.1 0.2 0.3 " + use() + words();
        });
        all += table("scale_bars", "from to value sigma use id remark", 10,
                     [&] { return any_ends() + number(1, 9) + " 0.01 " + use() + words(); });
        return all;
    }

private:
    static constexpr int stations = 23, targets = 14;

    int below(int n) { return (int)(random() % (unsigned)n); }
    bool some() { return below(2) == 0; }
    std::string number(int least, int most)
    {
        return " " + std::to_string(least + below(most - least)) + "." + std::to_string(below(1000));
    }
    std::string zenith() { return number(60, 140); }
    std::string unknown() { return some() ? " -" : " 0.003"; }
    std::string heights() { return some() ? " - -" : number(0, 2) + number(0, 2); }
    std::string use() { return below(5) == 0 ? "no" : "yes"; }
    std::string words()
    {
        return std::string(some() ? " -" : " id" + std::to_string(below(999))) + (some() ? " -" : " \"a note\"");
    }
    std::string stand() { return some() ? " -" : std::string(" ") + "abc"[below(3)]; }
    std::string set() { return some() ? " -" : " set" + std::to_string(below(4)); }
    std::string face() { return some() ? " 2" : " 1"; }
    std::string station() { return "S" + std::to_string(below(stations)); }
    std::string target() { return "T" + std::to_string(below(targets)); }
    std::string point() { return some() ? station() : target(); }
    std::string ends() { return station() + " " + target(); }
    std::string any_ends() { return some() ? ends() : target() + " " + station(); }
    std::string angle_points() // the first name is not that of the station
    {
        const int first = below(targets);
        return "T" + std::to_string(first) + " T" + std::to_string((first + 1) % targets) + " " + station();
    }

    std::string points(const std::string &name, const std::string &letter, int count)
    {
        int i = 0;
        return table(name, "name x y z status", count, [&] {
            return letter + std::to_string(i++) + number(0, 500) + number(0, 300) + number(0, 9) +
                   (below(8) == 0 ? " off" : " used");
        });
    }

    template <class Row>
    static std::string table(const std::string &name, const std::string &heading, int rows, Row row)
    {
        std::string text = name + " = \"\"\"\n" + heading + "\n";
        for (int i = 0; i < rows; i++) text += row() + (i % 7 == 0 ? " # a comment\n\n" : "\n");
        return text + "\"\"\"\n";
    }

    std::mt19937 random;
    int next_setup = 0;
};

// ---- everything that a row says, as one text ----

template <class... Values> std::string joined(const Values &...values)
{
    std::ostringstream out;
    out << std::hexfloat;
    ((out << values << ' '), ...);
    return out.str();
}

std::string text_of(const measure_input &m) { return joined(m.typ, m.from, m.to, m.h1, m.h2, m.val, m.sig, m.time); }
std::string text_of(const gps_input &g)
{
    std::string text = joined(g.status, g.from, g.to);
    for (const double dx : g.dx) text += joined(dx);
    for (const double c : g.cov) text += joined(c);
    return text;
}
std::string text_of(const SightRow &r)
{
    return joined(r.from, r.to, r.third, r.value, r.sigma, r.constants, (int)r.level, r.use);
}
std::string text_of(const VectorRow &r)
{
    std::string text = joined(r.from, r.to, r.use);
    for (int k = 0; k < 3; k++) text += joined(r.given[k], r.value[k], r.sigma[k]);
    return text;
}

template <class Record> std::string text_of(const List<Record> &list, size_t i)
{
    const RowNotes &n = list.notes;
    return text_of(list.records[i]) + joined(list.where[i].file, list.where[i].line, list.where[i].column) +
           joined(note_at(n.setup, i), note_at(n.set, i), note_at(n.covariance, i), note_at(n.place, i),
                  note_at(n.transformation, i), note_at(n.id, i), note_at(n.remark, i)) +
           joined(note_at(n.raw, i, unknown_note), note_at(n.h1, i, 0.0), note_at(n.h2, i, 0.0),
                  note_at(n.refraction, i, unknown_note));
}

// Number of the point at which a row begins.
int first_point(const Model &m, const SightRow &r) { return (void)m, r.from; }
int first_point(const Model &m, const VectorRow &r) { return (void)m, r.from; }
template <class Record> int first_point(const Model &m, const Record &r)
{
    for (int p = 0; p < (int)(m.stations.size() + m.targets.size()); p++)
        if (std::strcmp(full_name(m, record_name(m, p)).c_str(), full_name(m, r.from).c_str()) == 0) return p;
    return -1;
}

// The tables of the file as text, row by row; of parts as far as they hold the rows.
using Rows = std::map<std::pair<int, int>, std::string>; // table, row

Rows rows_of(const Model &m)
{
    Rows rows;
    for (int id = 0; id < TABLE_COUNT; id++)
        with_rows(m, (TableId)id, [&](const auto &list) {
            for (size_t i = 0; i < list.size(); i++) rows[{id, list.row_of(i)}] = text_of(list, i);
            EXPECT_TRUE(std::is_sorted(list.row.begin(), list.row.end()));
        });
    return rows;
}

std::string text_of(const SetupRecord &s)
{
    return joined(s.station, s.word, s.h, s.levelled, s.r[2], s.ir[0], s.ir[2], s.zero_given);
}

std::string points_and_stands(const Model &m)
{
    std::string text;
    for (const station_input &s : m.stations.records) text += joined(s.name, s.status, s.x[0], s.x[1], s.x[2]);
    for (const target_input &t : m.targets.records) text += joined(t.name, t.status, t.x[0], t.x[1], t.x[2]);
    for (const SetupRecord &s : m.setups.records) text += text_of(s);
    for (const Source &at : m.setups.where) text += joined(at.file, at.line, at.column);
    for (const std::string &word : m.set_words) text += joined(word);
    return text;
}

struct Reading {
    Model model;
    Faults faults;
    bool accepted = false;
};

Reading read_part(const std::string &path, int parts, int own)
{
    Reading r;
    r.accepted = read_network(path, r.model, r.faults, Mode::Statistics, {parts, own});
    return r;
}

std::vector<Reading> read_parts(const std::string &path, int parts)
{
    std::vector<Reading> all;
    all.reserve((size_t)parts);
    for (int own = 0; own < parts; own++) all.push_back(read_part(path, parts, own));
    return all;
}

// A network of points at these places, divided.
std::vector<int> division(const std::vector<std::array<double, 3>> &places, int parts, int dimension = 3)
{
    Model m;
    m.p.dim = dimension;
    m.share = {parts, 0};
    for (const auto &x : places) {
        target_input t = target_input();
        t.status = STATUS_ON;
        std::copy(x.begin(), x.end(), t.x);
        m.targets.add(t, Source());
    }
    return parts_of_points(m);
}

std::vector<int> sizes_of(const std::vector<int> &part_of, int parts)
{
    std::vector<int> sizes((size_t)parts);
    for (const int part : part_of) sizes[(size_t)part]++;
    return sizes;
}

std::vector<std::array<double, 3>> scattered(int n, double width, double height)
{
    std::mt19937 random(7);
    std::vector<std::array<double, 3>> places((size_t)n);
    for (auto &x : places) x = {(double)random() / 4e9 * width, (double)random() / 4e9 * height, 0.0};
    return places;
}

const char small_net[] = "[run]\ndimension = 2\n[tables]\nstations = \"\"\"\nname x y\nA 0 0\nB 100 0\n\"\"\"\n"
                         "distances = \"\"\"\nfrom to value sigma\nA B 100 0.01\nB A 100 0.01\n\"\"\"\n";

// What refuses a file that is read by two parts; the same from both.
Lines refusals(const std::string &text)
{
    const Folder folder;
    folder.write("net.inp", text);
    const std::vector<Reading> parts = read_parts(folder.file("net.inp"), 2);
    Lines lines = not_by_parts(parts[0].model);
    EXPECT_TRUE(parts[0].accepted && parts[1].accepted) << (parts[0].accepted ? "" : parts[0].faults.lines()[0]);
    EXPECT_EQ(lines, not_by_parts(parts[1].model));
    for (std::string &line : lines) folder.shorten(line);
    return lines;
}

// The small net with more before its tables and behind them.
Lines refusals_with(const std::string &settings, const std::string &tables)
{
    std::string text = small_net;
    text.insert(text.find("[tables]"), settings);
    return refusals(text + tables);
}

} // namespace

// ---- rows ----

TEST(ByParts, HoldEachRowOfTheFileOnceAsItIsReadWhole)
{
    for (const unsigned seed : {1u, 2u, 3u}) {
        const Folder folder;
        const std::string path = folder.write("net.inp", RandomFile(seed).text());
        const Reading whole = read_part(path, 1, 0);
        ASSERT_TRUE(whole.accepted) << whole.faults.lines()[0];
        const Rows expected = rows_of(whole.model);
        ASSERT_EQ(expected.size(), 330u);
        for (const int parts : {1, 2, 3, 7, 60}) {
            Rows together;
            size_t rows = 0;
            for (const Reading &part : read_parts(path, parts)) {
                ASSERT_TRUE(part.accepted) << part.faults.lines()[0];
                const Rows own = rows_of(part.model);
                rows += own.size();
                together.insert(own.begin(), own.end());
                EXPECT_EQ(points_and_stands(part.model), points_and_stands(whole.model));
            }
            EXPECT_EQ(rows, expected.size()) << parts;
            for (const auto &[where, text] : expected) EXPECT_EQ(together[where], text) << parts;
        }
    }
}

TEST(ByParts, HoldTheRowsThatBeginAtTheirPoints)
{
    const Folder folder;
    const std::string path = folder.write("net.inp", RandomFile(4).text());
    const Model whole = std::move(read_part(path, 1, 0).model);
    for (int own = 0; own < 3; own++) {
        const Model m = std::move(read_part(path, 3, own).model);
        size_t rows = 0;
        for (int id = 0; id < TABLE_COUNT; id++)
            with_rows(m, (TableId)id, [&](const auto &list) {
                for (const auto &r : list.records) EXPECT_EQ(m.part_of[(size_t)first_point(m, r)], own);
                rows += list.size();
            });
        EXPECT_GT(rows, 30u);
        for (int id = 0; id < TABLE_COUNT; id++)
            with_rows(m, (TableId)id, [&](const auto &list) {
                with_rows(whole, (TableId)id, [&](const auto &all) { EXPECT_EQ((size_t)list.rows, all.size()); });
            });
    }
}

TEST(ByParts, ReadAnAngleWhereItWasTaken)
{
    const Folder folder;
    std::string text = small_net;
    text += "angles = \"\"\"\nfrom to at value sigma\nT A B 50 0.01\n\"\"\"\n"
            "targets = \"\"\"\nname x y\nT 1 0\n\"\"\"\n";
    const std::vector<Reading> parts = read_parts(folder.write("net.inp", text), 3);
    const int of_b = parts[0].model.part_of[1], of_t = parts[0].model.part_of[2];
    ASSERT_NE(of_b, of_t);
    EXPECT_EQ(parts[(size_t)of_b].model.angles.size(), 1u);
    EXPECT_EQ(parts[(size_t)of_t].model.angles.size(), 0u);
}

TEST(ByParts, OfOneReadAsUsual)
{
    const Folder folder;
    const Reading one = read_part(folder.write("net.inp", RandomFile(5).text()), 1, 0);
    EXPECT_TRUE(one.model.part_of.empty());
    EXPECT_TRUE(one.model.distances.row.empty());
    EXPECT_EQ(one.model.distances.row_of(3), 3);
}

// ---- faults ----

TEST(ByParts, ReportFaultsOfARowOnce)
{
    // Of a value, of the number of cells, of quotation marks, of the second name and of the first.
    const std::string rows =
        "A B x 0.01\nB A x 0.01\nA B 1\nB A 1\nA B 100 0.01 1\nA \"B\"x 100 0.01\nB \"A\"x 100 0.01\n"
        "B \"A 100 0.01\nA C 100 0.01\nB C 100 0.01\nC B 100 0.01\n- B 100 0.01\n\"A\" B y 0.01\n";
    std::string text = small_net;
    text.insert(text.find("B A 100"), rows);
    const Folder folder;
    const std::string path = folder.write("net.inp", text);
    const Lines whole = read_part(path, 1, 0).faults.lines();
    const std::vector<Reading> parts = read_parts(path, 2);
    Lines together = parts[0].faults.lines();
    for (const std::string &line : parts[1].faults.lines()) together.push_back(line);
    EXPECT_FALSE(parts[0].accepted);
    EXPECT_FALSE(parts[1].accepted);
    const auto by_line = [](const std::string &a, const std::string &b) {
        return a.size() != b.size() ? a.size() < b.size() : a < b;
    };
    Lines expected = whole;
    std::sort(expected.begin(), expected.end(), by_line);
    std::sort(together.begin(), together.end(), by_line);
    EXPECT_EQ(expected.size(), 14u);
    EXPECT_EQ(together, expected);
}

TEST(ByParts, ReportARowWithoutAKnownPointByTheFirst)
{
    const Folder folder;
    std::string text = small_net;
    text.insert(text.find("B A 100"), "C B 100 0.01\n");
    const std::vector<Reading> parts = read_parts(folder.write("net.inp", text), 2);
    EXPECT_EQ(parts[0].faults.count(), 1u);
    EXPECT_TRUE(parts[1].accepted);
}

TEST(ByParts, ReportALineOfOpenMarksWithoutCellsByTheFirst)
{
    const Folder folder;
    folder.write("d.csv", "from,to,value,sigma\nA,B,100,0.01\n\"\nB,A,100,0.01\n");
    const std::string path =
        folder.write("net.inp", "[run]\ndimension = 2\n[tables]\nstations = '''\nname x y\nA 0 0\nB 9 9\n'''\n"
                                "distances = { file = \"d.csv\" }\n");
    EXPECT_EQ(read_part(path, 1, 0).faults.count(), 1u);
    EXPECT_EQ(read_part(path, 2, 0).faults.count(), 1u);
    EXPECT_EQ(read_part(path, 2, 1).faults.count(), 0u);
}

TEST(ByParts, DoNotMissTheRowsOfOtherParts)
{
    const Folder folder; // no row begins at B
    std::string text = small_net;
    text.erase(text.find("B A 100"), std::strlen("B A 100 0.01\n"));
    for (const Reading &part : read_parts(folder.write("net.inp", text), 2)) {
        EXPECT_TRUE(part.accepted);
        EXPECT_EQ(part.model.distances.rows, 1);
    }
}

// ---- division ----

TEST(PointParts, AreOfOneSizeToAPoint)
{
    for (const int n : {1, 2, 5, 100, 1023, 4097})
        for (const int parts : {2, 3, 4, 7, 8, 16, 100}) {
            const std::vector<int> sizes = sizes_of(division(scattered(n, 300, 200), parts), parts);
            const auto ends = std::minmax_element(sizes.begin(), sizes.end());
            EXPECT_LE(*ends.second - *ends.first, 1) << n << " in " << parts;
        }
}

TEST(PointParts, CutTheLongerExtent)
{
    EXPECT_EQ(division({{0, 0, 0}, {0, 9, 0}, {20, 0, 0}, {20, 9, 0}}, 2), (std::vector<int>{0, 0, 1, 1}));
    EXPECT_EQ(division({{0, 0, 0}, {0, 90, 0}, {20, 0, 0}, {20, 90, 0}}, 2), (std::vector<int>{0, 1, 0, 1}));
    EXPECT_EQ(division({{0, 0, 0}, {0, 9, 50}, {2, 0, 0}, {2, 9, 50}}, 2), (std::vector<int>{0, 1, 0, 1}));
    EXPECT_EQ(division({{0, 0, 0}, {0, 9, 50}, {20, 0, 0}, {20, 9, 50}}, 2, 2), (std::vector<int>{0, 0, 1, 1}));
}

TEST(PointParts, OfFourQuartersAreTheQuarters)
{
    std::vector<std::array<double, 3>> places = scattered(4000, 1, 1);
    for (size_t i = 0; i < places.size(); i++) {
        places[i][0] += i % 4 < 2 ? 0 : 10;
        places[i][1] += i % 2 == 0 ? 0 : 5;
    }
    const std::vector<int> part_of = division(places, 4);
    for (size_t i = 0; i < places.size(); i++) EXPECT_EQ(part_of[i], (int)(i % 4));
}

TEST(PointParts, OfPointsInOnePlaceFollowTheFile)
{
    const std::vector<int> part_of = division(std::vector<std::array<double, 3>>(10), 3, 1);
    EXPECT_EQ(part_of, (std::vector<int>{0, 0, 0, 1, 1, 1, 2, 2, 2, 2}));
}

TEST(PointParts, DoNotDependOnTheOrderOfThePoints)
{
    std::vector<std::array<double, 3>> places = scattered(1000, 300, 200);
    const std::vector<int> part_of = division(places, 7);
    std::map<std::array<double, 3>, int> expected;
    for (size_t i = 0; i < places.size(); i++) expected[places[i]] = part_of[i];
    std::shuffle(places.begin(), places.end(), std::mt19937(3));
    const std::vector<int> again = division(places, 7);
    for (size_t i = 0; i < places.size(); i++) EXPECT_EQ(again[i], expected[places[i]]);
}

TEST(PointParts, DoNotDependOnTheOrderOfTheTables)
{
    const std::string text = RandomFile(6).text();
    const size_t first = text.find("stations ="), second = text.find("targets ="), third = text.find("setups =");
    const std::string turned = text.substr(0, first) + text.substr(second, third - second) + text.substr(third) +
                               text.substr(first, second - first);
    const Folder folder;
    const std::vector<int> part_of = read_part(folder.write("net.inp", text), 5, 1).model.part_of;
    EXPECT_EQ(part_of.size(), 37u);
    EXPECT_EQ(read_part(folder.write("net.inp", turned), 5, 1).model.part_of, part_of);
}

TEST(PointParts, MayBeEmpty)
{
    const std::vector<int> sizes = sizes_of(division(scattered(3, 9, 9), 8), 8);
    EXPECT_EQ(std::count(sizes.begin(), sizes.end(), 1), 3);
    EXPECT_EQ(std::count(sizes.begin(), sizes.end(), 0), 5);
}

// ---- what is not divided ----

TEST(NotByParts, IsNothingOfAPlainNetwork)
{
    EXPECT_EQ(refusals(small_net), Lines());
    EXPECT_EQ(refusals(RandomFile(8).text()), Lines());
}

TEST(NotByParts, IsAReferenceSystem)
{
    EXPECT_EQ(refusals_with("[crs]\nnetwork = \"EPSG:25832\"\nheights = \"ellipsoidal\"\n", ""),
              Lines{"a network in a reference system, section [crs], is not divided (net.inp): leave out --by-parts"});
}

TEST(NotByParts, IsASolverOfTheEngine)
{
    std::string text = small_net;
    text.insert(text.find("[tables]"), "solver = \"compact\"\n");
    EXPECT_EQ(refusals(text), Lines{"only the solver sparse divides a network (net.inp): write --solver sparse"});
}

TEST(NotByParts, AreImages)
{
    const Folder folder;
    folder.write("image.txt", "A 1 2\n");
    std::string text = small_net;
    text.replace(text.find("dimension = 2"), 13, "dimension = 3");
    text += "cameras = \"\"\"\nname width height pu pv c\nK 10 10 1 1 10\n\"\"\"\n"
            "images = \"\"\"\nfile station camera\nimage.txt A K\n\"\"\"\n";
    text.replace(text.find("name x y\nA 0 0\nB 100 0"), 22, "name x y z\nA 0 0 0\nB 9 0 0");
    Reading part = read_part(folder.write("net.inp", text), 2, 1);
    Lines lines = not_by_parts(part.model);
    for (std::string &line : lines) folder.shorten(line);
    EXPECT_EQ(lines, (Lines{"table cameras is not divided (net.inp:16): leave out --by-parts",
                            "table images is not divided (net.inp:20): leave out --by-parts"}));
}

TEST(NotByParts, AreRowsThatShareACovariance)
{
    std::string text = small_net;
    const size_t at = text.find("from to value sigma");
    text.replace(at, text.find("\"\"\"", at) - at, "from to value covariance\nA B 100 K\nB A 100 K\n");
    EXPECT_EQ(refusals(text + "[covariances.K]\nmatrix = \"4 1 1 4\"\n"),
              Lines{"rows that share a covariance, here \"K\", are not divided (net.inp:14): leave out --by-parts"});
}

TEST(NotByParts, AreTransformationsAndDeflections)
{
    const std::string tables = "transformations = \"\"\"\nname code\nk free\n\"\"\"\n"
                               "deflections = \"\"\"\nname xi eta\nA 1 2\n\"\"\"\n";
    const Folder folder;
    std::string text = small_net;
    text.replace(text.find("dimension = 2"), 13, "dimension = 3");
    text.replace(text.find("name x y\nA 0 0\nB 100 0"), 22, "name x y z\nA 0 0 0\nB 9 0 0");
    text.insert(text.find("[tables]"), "[crs]\nnetwork = \"EPSG:25832\"\nheights = \"ellipsoidal\"\n");
    Lines lines = refusals(text + tables);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1], "table transformations is not divided (net.inp:19): leave out --by-parts");
    EXPECT_EQ(lines[2], "table deflections is not divided (net.inp:23): leave out --by-parts");
}

TEST(NotByParts, AreRowsThatAreLeftOut)
{
    EXPECT_EQ(refusals_with("", "left_out = \"\"\"\ntable row of from to\ndistances 2 2 B A\n\"\"\"\n"),
              Lines{"table left_out is not divided (net.inp:16): leave out --by-parts"});
}

TEST(NotByParts, AreLumps)
{
    std::string text = small_net;
    text.replace(text.find("dimension = 2"), 13, "dimension = 3");
    text.replace(text.find("name x y\nA 0 0\nB 100 0"), 22, "name x y z lump\nA 0 0 0 1\nB 9 0 0 1");
    EXPECT_EQ(refusals(text), Lines{"a network with lumps is not divided (net.inp): leave out --by-parts"});
}

TEST(NotByParts, ArePointsThatAreExported)
{
    std::string text = small_net;
    text.replace(text.find("name x y\nA 0 0\nB 100 0"), 22, "name x y connect\nA 0 0 none\nB 9 0 export");
    EXPECT_EQ(refusals(text),
              Lines{"points that are exported or imported are not divided (net.inp:7): leave out --by-parts"});
}

TEST(NotByParts, IsCentringOfStands)
{
    EXPECT_EQ(refusals_with("[sigma]\ncentring = \"each_stand\"\ncentring_target = 0.001\n", ""),
              Lines{"centring = \"each_stand\" in [sigma] is not divided (net.inp): leave out --by-parts"});
}

TEST(NotByParts, AreTestsThatRepeatTheAdjustment)
{
    Model m;
    m.solver = Solver::Sparse;
    m.path = "net.inp";
    EXPECT_EQ(not_by_parts(m), Lines());
    m.tests.snoop = true;
    m.tests.robust = Robust::huber;
    m.components = Components::propose;
    EXPECT_EQ(not_by_parts(m), (Lines{"snooping is not divided (net.inp): leave out --by-parts",
                                      "a robust adjustment is not divided (net.inp): leave out --by-parts",
                                      "variance components are not divided (net.inp): leave out --by-parts"}));
}

TEST(NotByParts, ArePointsWithoutFirstCoordinates)
{
    std::string text = small_net;
    text += "targets = \"\"\"\nname x y code\nT - - free\nU - 3 free\nV 1 2 fixed\n\"\"\"\n";
    EXPECT_EQ(refusals(text),
              Lines{"2 points have no first coordinates (first: T, net.inp:16): write them, vorn adjust "
                    "--update gives them, or leave out --by-parts"});
}
