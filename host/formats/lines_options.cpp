#include "host/formats/lines_options.h"

#include <map>

#include "host/input/number.h"

namespace vornhost {

namespace {

enum class Option {
    units,
    order,
    plane,
    space,
    delta,
    scale,
    mult,
    data,
    end,
    map_mode,
    gps,
    include,
    other_defaults,
    listing
};

const std::map<std::string, Option> option_words = {{"UNITS", Option::units},
                                                    {"ORDER", Option::order},
                                                    {"2D", Option::plane},
                                                    {"3D", Option::space},
                                                    {"DELTA", Option::delta},
                                                    {"SCALE", Option::scale},
                                                    {"MULT", Option::mult},
                                                    {"DATA", Option::data},
                                                    {"END", Option::end},
                                                    {"MAPMODE", Option::map_mode},
                                                    {"GPS", Option::gps},
                                                    {"INCLUDE", Option::include},
                                                    {"INSTRUMENT", Option::other_defaults},
                                                    {"REFRACTION", Option::other_defaults},
                                                    {"LONGITUDE", Option::other_defaults},
                                                    {"ELEVATION", Option::other_defaults},
                                                    {"LWEIGHT", Option::other_defaults},
                                                    {"ELLIPSE", Option::listing},
                                                    {"RELATIVE", Option::listing},
                                                    {"PTOLERANCE", Option::listing}};

// Reads one option line; the members are what its steps share.
class OptionReader {
public:
    OptionReader(const CodedLine &its_line, LineOptions &its_options, DraftBuilder &its_builder)
        : line(its_line), options(its_options), builder(its_builder)
    {
    }

    void read()
    {
        if (line.code == ".") return fault(line.at, "an option without a word", "write one, such as .UNITS");
        const std::string word = line.code.substr(1);
        auto found = option_words.lower_bound(word);
        const bool known = found != option_words.end() && found->first.compare(0, word.size(), word) == 0;
        if (!known)
            return fault(line.at, "option " + quote(line.code) + " is not known",
                         "what it changes is not known either: write the lines behind it without it");
        const auto next = std::next(found);
        if (found->first != word && next != option_words.end() && next->first.compare(0, word.size(), word) == 0)
            return fault(line.at, "option " + quote(line.code) + " can be ." + found->first + " or ." + next->first,
                         "write it longer");
        take(found->second, found->first);
    }

private:
    void fault(Source at, const std::string &what, const std::string &remedy) { builder.faults.add(at, what, remedy); }

    void take(Option option, const std::string &word)
    {
        switch (option) {
        case Option::units: return read_units();
        case Option::order: return read_order();
        case Option::plane:
        case Option::space:
            options.space = option == Option::space;
            options.layout_given = true;
            return;
        case Option::delta: options.delta = switched(); return;
        case Option::data: options.skipping = !switched(true); return;
        case Option::end: options.ended = true; return;
        case Option::map_mode:
            if (switched())
                fault(line.at, ".MAPMODE ON: lines with bearings in place of angles are not taken over",
                      "write the legs of the traverse as BM lines");
            return;
        case Option::scale: return read_scale();
        case Option::mult: options.multiplier = line.items.empty() ? 1.0 : factor(line.items[0]); return;
        case Option::gps: return read_gps();
        case Option::include: return; // its lines stand in its place already
        case Option::other_defaults:
            return builder.note(line.at, "option ." + word + " is not taken over: it changes defaults of its program");
        case Option::listing: return builder.note(line.at, "option ." + word + " is for listings and not taken over");
        }
    }

    bool switched(bool otherwise = false)
    {
        if (line.items.empty()) return otherwise;
        const std::string word = capitals(line.items[0].text);
        if (word != "ON" && word != "OFF")
            fault(line.items[0].at, quote(line.items[0].text) + " is neither ON nor OFF", "write one of them");
        return word == "ON";
    }

    double factor(const LineItem &item)
    {
        double value = 1.0;
        if (read_number(item.text, value) == Reading::Number && value > 0.0) return value;
        fault(item.at, quote(item.text) + " is not a factor above 0", "write it with a decimal point, like 0.9996");
        return 1.0;
    }

    void read_scale()
    {
        if (!line.items.empty() && factor(line.items[0]) != 1.0)
            fault(line.items[0].at, "distances with a factor are not taken over", "reduce them, and leave .SCALE out");
    }

    void read_units()
    {
        static const std::map<std::string, const char *> lengths = {
            {"METERS", "m"},   {"METRES", "m"},           {"FEETUS", "us_ft"},
            {"FEETINT", "ft"}, {"FEETUSSURVEY", "us_ft"}, {"FEETINTERNATIONAL", "ft"}};
        if (line.items.empty()) {
            options.length = "m";
            options.gons = false;
        }
        for (const LineItem &item : line.items) {
            const std::string word = capitals(item.text);
            const auto length = lengths.find(word);
            if (length != lengths.end())
                options.length = length->second;
            else if (word == "DMS" || word == "GONS")
                options.gons = word == "GONS";
            else
                fault(item.at, "unit " + quote(item.text) + " is not known",
                      "write Meters, FeetUS or FeetInt, and DMS or GONS");
        }
        options.units_given = !line.items.empty();
    }

    void read_order()
    {
        if (line.items.empty()) options.east_first = options.from_first = false;
        for (const LineItem &item : line.items) {
            const std::string word = capitals(item.text);
            if (word == "NE" || word == "EN")
                options.east_first = word == "EN";
            else if (word == "ATFROMTO" || word == "FROMATTO")
                options.from_first = word == "FROMATTO";
            else
                fault(item.at, quote(item.text) + " is not an order", "write NE or EN, and AtFromTo or FromAtTo");
        }
    }

    void read_gps()
    {
        for (size_t i = 0; i < line.items.size(); i += 2) {
            const std::string word = capitals(line.items[i].text);
            const std::string value = i + 1 < line.items.size() ? capitals(line.items[i + 1].text) : std::string();
            if (word == "WEIGHT" && (value == "COVARIANCE" || value == "STDERRCORRELATION"))
                options.correlations = value == "STDERRCORRELATION";
            else if (word == "FACTOR" && !value.empty())
                options.vector_factor = factor(line.items[i + 1]);
            else
                return fault(line.items[i].at, quote(line.items[i].text) + " of .GPS is not taken over",
                             "write .GPS WEIGHT COVARIANCE or STDERRCORRELATION, or .GPS FACTOR with a number");
        }
    }

    const CodedLine &line;
    LineOptions &options;
    DraftBuilder &builder;
};

} // namespace

void read_line_option(const CodedLine &line, LineOptions &options, DraftBuilder &builder)
{
    OptionReader(line, options, builder).read();
}

} // namespace vornhost
