// Set-ups of instruments: a row for each stand, all on the mark of its station.

#include "host/input/angle.h"
#include "host/input/note_columns.h"

namespace vornhost {

namespace {

enum {
    STATION,
    SETUP,
    H,
    LEVELLED,
    ORIENTATION,
    CODE_ORIENTATION,
    S_ORIENTATION,
    RX,
    SRX = RX + 3,
    CODE_RX = SRX + 3,
    GROUP = CODE_RX + 3,
    ZERO
};

const std::vector<Column> setup_columns = {
    {"station", true}, {"setup", true}, {"h"},        {"levelled"}, {"orientation"}, {"code_orientation"},
    {"s_orientation"}, {"rx1"},         {"rx2"},      {"rx3"},      {"srx1"},        {"srx2"},
    {"srx3"},          {"code_rx1"},    {"code_rx2"}, {"code_rx3"}, {"group"},       {"zero"}};

// One of two columns that say the same of the orientation; a fault where both do.
int orientation_column(Row &row, int column, int other)
{
    if (row.given(column) && row.given(other))
        row.fault(column, "orientation and rx3 are both described", "keep one of the two");
    return row.given(column) ? column : other;
}

// A standard deviation in radians, which a weighted rotation needs.
double read_deviation(Network &net, Row &row, int column, int code)
{
    if (code == CODE_WEIGHTED && !row.given(column))
        row.fault(column, "a weighted rotation needs its standard deviation",
                  std::string("write it in column ") + setup_columns[(size_t)column].name);
    const double sigma = row.positive(column, 0.0);
    return read_angle_deviation(net, row, column, sigma);
}

void read_tilts(Network &net, Row &row, SetupRecord &setup)
{
    for (int k = 0; k < 2; k++) {
        if (row.given(RX + k)) setup.r[k] = read_angle(net, row, RX + k);
        if (setup.ir[k] == CODE_ABSENT) continue;
        setup.ir[k] = read_code(row, CODE_RX + k, setup.ir[k]);
        if (setup.ir[k] == CODE_WEIGHTED && setup.sr[k] == 0.0)
            setup.sr[k] = read_deviation(net, row, SRX + k, setup.ir[k]);
    }
}

// A direction is azimuth + rx3, so the azimuth of the circle's zero is -rx3.
void read_orientation(Network &net, Row &row, SetupRecord &setup)
{
    const int value = orientation_column(row, ORIENTATION, RX + 2);
    if (row.given(value)) {
        setup.r[2] = (value == ORIENTATION ? -1.0 : 1.0) * read_angle(net, row, value);
        setup.orientation_given = true;
    }
    if (setup.ir[2] == CODE_ABSENT) return;
    const int code = orientation_column(row, CODE_ORIENTATION, CODE_RX + 2);
    setup.ir[2] = read_code(row, code, setup.ir[2]);
    const int sigma = orientation_column(row, S_ORIENTATION, SRX + 2);
    if (row.given(sigma) || (setup.ir[2] == CODE_WEIGHTED && setup.sr[2] == 0.0))
        setup.sr[2] = read_deviation(net, row, sigma, setup.ir[2]);
    if (is_held(setup.ir[2]) && !setup.orientation_given)
        row.fault(code, "a held orientation needs its value", "write it in column orientation");
}

void read_zero(Row &row, SetupRecord &setup)
{
    static const Words zeros = {{"setup", 0}, {"set", 1}};
    setup.zero_given = row.given(ZERO);
    setup.zero_each_set = row.word(ZERO, 0, zeros) == 1;
    if (!setup.zero_each_set) return;
    if (!setup.levelled) row.fault(ZERO, "an instrument that is not levelled has one zero", "write setup");
    if (setup.orientation_given || is_held(setup.ir[2]))
        row.fault(ZERO, "an orientation that is given is that of one zero", "write setup, or no orientation");
}

// The stand that a row describes, once; with defaults where the row has faults.
SetupRecord *new_setup(Network &net, Row &row, int station)
{
    const std::string_view word = read_word(row, SETUP);
    const size_t before = net.model.setups.size();
    const int setup = setup_of(net, station, word, row.at());
    if (net.model.setups.size() > before) return &net.model.setups.records[(size_t)setup];
    const Source first = net.model.setups.where[(size_t)setup];
    row.fault(SETUP, "set-up " + quote(word) + " of " + quote(row.name(STATION)) + " is listed twice",
              "keep one of the two, the first stands in line " + std::to_string(first.line));
    return nullptr;
}

void read_setup(Network &net, Row &row)
{
    const int station = named_point(net, row, STATION);
    if (station < 0) return;
    if ((size_t)station >= net.model.stations.size()) {
        row.fault(STATION, quote(row.name(STATION)) + " is no station", "list it under stations");
        return;
    }
    SetupRecord *setup = new_setup(net, row, station);
    if (!setup) return;
    setup->h = row.length(H, 0.0) * net.metres;
    const bool levelled = row.yes(LEVELLED, setup->levelled);
    if (levelled != setup->levelled)
        for (int k = 0; k < 2 && setup->ir[k] != CODE_ABSENT; k++) setup->ir[k] = levelled ? CODE_FIXED : CODE_FREE;
    setup->levelled = levelled;
    read_tilts(net, row, *setup);
    read_orientation(net, row, *setup);
    read_zero(row, *setup);
    if (!row.given(GROUP)) return;
    setup->group = net.groups.find(row.text(GROUP));
    if (setup->group < 0)
        row.fault(GROUP, "unknown group " + row.cell(GROUP),
                  similar_name(net, net.groups, row, GROUP, "list it under groups"));
}

} // namespace

void read_setups(Network &net) { read_rows(net, TABLE_SETUPS, setup_columns, read_setup); }

} // namespace vornhost
