// Faces and sets of field books, from readings that are made of a known truth.

#include <gtest/gtest.h>

#include <cmath>

#include "host/formats/field_means.h"
#include "host/formats/field_sets.h"

using namespace vornhost;

namespace {

constexpr double circle = 400.0, gon = 3.14159265358979323846 / 200.0;
const SightSigmas sigmas = {0.001, 0.001, 0.002};

// What an instrument with errors c and i reads at a target of direction h and zenith angle v.
FieldSight sight(const std::string &target, double h, double v, int face, double c = 0.0, double i = 0.0)
{
    FieldSight reading;
    reading.target = target;
    const double shift = c / std::sin(v * gon);
    reading.direction = face == 1 ? h + shift : std::fmod(h + 200.0 - shift, circle);
    reading.zenith = face == 1 ? v + i : circle - v + i;
    reading.length[slope_length] = 50.0;
    return reading;
}

class Book {
public:
    Book &add(const FieldSight &reading)
    {
        setup.sights.push_back(reading);
        setup.sights.back().where.line = (int)setup.sights.size();
        return *this;
    }
    // Targets a letter each, small in the second face.
    Book &order(const std::string &letters)
    {
        for (const char letter : letters) {
            const bool second = letter >= 'a';
            const char name = second ? (char)(letter - 'a' + 'A') : letter;
            add(sight(std::string(1, name), 10.0 + 30.0 * (name - 'A'), 98.0, second ? 2 : 1));
        }
        return *this;
    }

    ReducedSetup reduced() { return reduce_faces(setup, circle, sigmas, account); }
    std::vector<std::string> notes()
    {
        Draft draft;
        account.close(draft);
        std::vector<std::string> texts;
        for (const DraftNote &note : draft.notes) texts.push_back(std::to_string(note.at.line) + ": " + note.text);
        texts.pop_back(); // the account
        return texts;
    }

    FieldSetup setup;
    RecordAccount account;
};

// "ABC AB": the targets of each set.
std::string sets_of(const std::string &letters)
{
    std::string text;
    for (const FieldSet &set : Book().order(letters).reduced().sets) {
        text += text.empty() ? "" : " ";
        for (const SetTarget &target : set) text += target.target;
    }
    return text;
}

} // namespace

TEST(FieldSets, FreeReadingsFromTheErrorsOfTheInstrument)
{
    const double c = 0.012, i = -0.007;
    Book book;
    for (const int face : {1, 2})
        book.add(sight("A", 399.999, 95.0, face, c, i)).add(sight("B", 120.5, 60.0, face, c, i));
    const ReducedSetup reduced = book.reduced();
    ASSERT_EQ(reduced.sets.size(), 1u);
    EXPECT_NEAR(*reduced.sets[0][0].direction, 399.999, 1e-9);
    EXPECT_NEAR(*reduced.sets[0][0].zenith, 95.0, 1e-9);
    EXPECT_NEAR(*reduced.sets[0][1].direction, 120.5, 1e-9);
    EXPECT_NEAR(*reduced.sets[0][1].zenith, 60.0, 1e-9);
    EXPECT_TRUE(reduced.sets[0][0].both_faces);
    EXPECT_NEAR(reduced.errors.collimation, c, 1e-9);
    EXPECT_NEAR(reduced.errors.index, i, 1e-9);
    EXPECT_TRUE(book.notes().empty());
}

TEST(FieldSets, CorrectASingleFaceByTheErrorsOfTheOthers)
{
    const double c = 0.02, i = 0.01, zeniths[] = {90.0, 110.0, 80.0};
    Book book;
    book.add(sight("A", 50.0, 90.0, 1, c, i))
        .add(sight("B", 70.0, 110.0, 1, c, i))
        .add(sight("A", 50.0, 90.0, 2, c, i));
    book.add(sight("C", 90.0, 80.0, 2, c, i));
    const ReducedSetup reduced = book.reduced();
    ASSERT_EQ(reduced.sets.size(), 1u);
    for (const SetTarget &target : reduced.sets[0]) {
        const size_t k = (size_t)(target.target[0] - 'A');
        // the collimation of a single face is taken at its reading of the zenith angle, which has the index error
        EXPECT_NEAR(*target.direction, 50.0 + 20.0 * (double)k, 5e-6) << target.target;
        EXPECT_NEAR(*target.zenith, zeniths[k], 1e-9) << target.target;
        EXPECT_EQ(target.both_faces, k == 0);
    }
}

TEST(FieldSets, EndWhereATargetComesAgain)
{
    EXPECT_EQ(sets_of("ABCcba"), "ABC");
    EXPECT_EQ(sets_of("ABCcbaABCcba"), "ABC ABC");
    EXPECT_EQ(sets_of("AaBbCcAaBbCc"), "ABC ABC");
    EXPECT_EQ(sets_of("ABCabcABCabc"), "ABC ABC");
    EXPECT_EQ(sets_of("ABCABCABC"), "ABC ABC ABC");
    EXPECT_EQ(sets_of("AaAaAa"), "A A A");
    EXPECT_EQ(sets_of("ABABAB"), "AB AB AB");
    EXPECT_EQ(sets_of("A"), "A");
    EXPECT_EQ(sets_of(""), "");
}

TEST(FieldSets, TakeAClosingSightIntoTheirSet)
{
    EXPECT_EQ(sets_of("ABCA"), "ABC");
    EXPECT_EQ(sets_of("ABCAacba"), "ABC");
    EXPECT_EQ(sets_of("ABCAacbaABCAacba"), "ABC ABC");
    EXPECT_EQ(sets_of("AaBbCcAa"), "ABC");
    EXPECT_EQ(sets_of("AaBbCcAaAaBbCcAa"), "ABC ABC");
    EXPECT_EQ(sets_of("ABBC"), "ABC");
}

TEST(FieldSets, AreThoseThatTheFileNames)
{
    Book book;
    for (const char *set : {"7", "8"})
        for (const char *target : {"A", "B", "A"}) {
            FieldSight reading = sight(target, 10.0, 98.0, 1);
            reading.set = set;
            book.add(reading);
        }
    EXPECT_EQ(book.reduced().sets.size(), 2u);
}

TEST(FieldSets, TellTargetsOfDifferentHeightsApart)
{
    Book book;
    for (const double height : {1.5, 1.7}) {
        FieldSight reading = sight("A", 10.0, 98.0, 1);
        reading.target_height = height;
        book.add(reading);
    }
    const ReducedSetup reduced = book.reduced();
    ASSERT_EQ(reduced.sets.size(), 1u);
    EXPECT_EQ(reduced.sets[0].size(), 2u);
}

TEST(FieldSets, SayWhereTheHorizonDoesNotClose)
{
    Book book;
    book.order("ABC").add(sight("A", 10.02, 98.0, 1));
    book.reduced();
    const std::vector<std::string> notes = book.notes();
    ASSERT_EQ(notes.size(), 1u);
    // 2 mm at 50 m are 2.5 mgon, and 8 mgon are four times the standard deviation of a difference of readings
    EXPECT_EQ(notes[0], "1: closing of the horizon, \"\" to \"A\": 20.0 mgon beside the mean of the set-up, beyond the "
                        "limit of 10.5");
}

TEST(FieldSets, SayWhereFacesDiffer)
{
    Book book;
    book.order("ABCDEF").add(sight("F", 160.03, 98.0, 2)).order("edcba");
    book.reduced();
    const std::vector<std::string> notes = book.notes();
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].substr(0, 44), "6: directions in both faces, \"\" to \"F\": 25.0");
}

TEST(FieldSets, LeaveExchangedTargetsOutAndNameThem)
{
    Book book;
    book.order("ABCDE").order("edbca");
    // B and C are written for one another in the second face
    std::swap(book.setup.sights[7].direction, book.setup.sights[8].direction);
    const ReducedSetup reduced = book.reduced();
    ASSERT_EQ(reduced.sets.size(), 1u);
    EXPECT_EQ(reduced.sets[0].size(), 3u);
    const std::vector<std::string> notes = book.notes();
    ASSERT_EQ(notes.size(), 3u);
    EXPECT_EQ(notes[0].substr(0, 37), "2: left out: both faces to \"B\" at \"\" ");
    EXPECT_NE(notes[0].find("(so is line 8)"), std::string::npos) << notes[0];
    EXPECT_EQ(notes[1], "3: targets \"B\" and \"C\" at \"\" seem to be exchanged in one face: correct their names");
}

// ---- means ----

namespace {

SetTarget target(const std::string &name, double direction, double zenith, int line)
{
    SetTarget t;
    t.target = name;
    t.direction = direction;
    t.zenith = zenith;
    t.both_faces = true;
    t.where.line = line;
    return t;
}

} // namespace

// Two sets over two targets: the scatter is that of the differences of the two directions.
TEST(FieldMeans, AreThoseOfTurnedSets)
{
    RecordAccount account;
    const std::vector<FieldSet> sets = {{target("A", 10.000, 90.000, 1), target("B", 60.000, 95.0, 2)},
                                        {target("B", 110.004, 95.002, 3), target("A", 60.000, 90.002, 4)}};
    const MeanSets means = mean_sets(sets, circle, true, account);
    ASSERT_EQ(means.sets.size(), 1u);
    const MeanSet &set = means.sets[0];
    EXPECT_EQ(set.sets, 2u);
    ASSERT_EQ(set.targets.size(), 2u);
    EXPECT_NEAR(*set.targets[1].sight.direction - *set.targets[0].sight.direction, 50.002, 1e-9);
    EXPECT_NEAR(*set.targets[0].sight.zenith, 90.001, 1e-9);
    EXPECT_NEAR(set.targets[0].factor, 1.0 / std::sqrt(2.0), 1e-12);
    // differences 50.000 and 50.004 of two directions each: their variance 2 s^2 is 0.004^2 / 2
    EXPECT_NEAR(*means.direction.deviation(), 0.002, 1e-9);
    EXPECT_EQ(means.direction.freedom, 1u);
    EXPECT_NEAR(*means.zenith.deviation(), 0.002 / std::sqrt(2.0), 1e-9);
    EXPECT_EQ(means.zenith.freedom, 2u);
    EXPECT_FALSE(means.distance.deviation().has_value());
}

TEST(FieldMeans, KeepTheZeroOfACircleThatStayed)
{
    RecordAccount account;
    const std::vector<FieldSet> sets = {{target("A", 399.999, 90.0, 1), target("B", 60.000, 95.0, 2)},
                                        {target("A", 0.003, 90.0, 3), target("B", 60.002, 95.0, 4)}};
    const MeanSets means = mean_sets(sets, circle, true, account);
    EXPECT_NEAR(*means.sets[0].targets[0].sight.direction, 400.001, 1e-9);
    EXPECT_NEAR(*means.sets[0].targets[1].sight.direction, 60.001, 1e-9);
}

TEST(FieldMeans, KeepSetsOverOtherTargetsApart)
{
    RecordAccount account;
    const std::vector<FieldSet> sets = {{target("A", 0, 90.0, 1), target("B", 60, 95.0, 2)},
                                        {target("A", 0, 90.0, 3), target("C", 70, 95.0, 4)},
                                        {target("A", 0, 90.0, 5), target("B", 60, 95.0, 6)}};
    EXPECT_EQ(mean_sets(sets, circle, true, account).sets.size(), 2u);
    EXPECT_EQ(mean_sets(sets, circle, false, account).sets.size(), 3u);
}

TEST(FieldMeans, DoNotAverageWhatIsElsewhere)
{
    RecordAccount account;
    const std::vector<FieldSet> sets = {{target("A", 0, 90.0, 1), target("B", 60, 95.0, 2), target("C", 70, 95.0, 3)},
                                        {target("A", 0, 90.0, 4), target("B", 70, 95.0, 5), target("C", 60, 95.0, 6)}};
    EXPECT_EQ(mean_sets(sets, circle, true, account).sets.size(), 2u);
    Draft draft;
    account.close(draft);
    ASSERT_EQ(draft.notes.size(), 3u);
    EXPECT_EQ(draft.notes[0].at.line, 5);
    EXPECT_EQ(draft.notes[1].at.line, 6);
}
