#include "host/formats/landxml.h"

#include <algorithm>
#include <map>
#include <set>

#include "host/formats/field_book_draft.h"
#include "host/formats/landxml_units.h"
#include "host/formats/record_lines.h"
#include "host/formats/xml_values.h"
#include "host/input/number.h"

namespace vornhost {

namespace {

// Reads one file; the members are what its steps share.
class LandReader {
public:
    LandReader(const XmlElement &its_root, const ImportOptions &its_options, RecordAccount &its_account,
               Draft &its_draft, Faults &all)
        : root(its_root), options(its_options), account(its_account), draft(its_draft), faults(all)
    {
    }

    bool read()
    {
        if (!read_land_units(root, units, faults)) return false;
        book.unit = units.circle();
        for (const XmlElement &child : root.children) {
            if (local_name(child) == "CgPoints") read_points(child);
            if (local_name(child) == "Survey") surveys.push_back(&child);
        }
        for (const XmlElement *survey : surveys) read_references(*survey);
        for (const XmlElement *survey : surveys) read_survey(*survey);
        if (book.points.empty() && book.setups.empty()) {
            faults.add(root.at, "neither Survey nor CgPoints: the file holds nothing to adjust",
                       "export the survey, not the surfaces alone");
            return false;
        }
        return draft_field_book(book, options, account, draft, faults);
    }

private:
    // North, east and elevation in the text; names are those that other elements refer to.
    void read_points(const XmlElement &list)
    {
        for (const XmlElement &element : list.children) {
            if (local_name(element) == "CgPoints") read_points(element);
            if (local_name(element) != "CgPoint") continue;
            account.read_one();
            DraftPoint point;
            const std::string_view name = attribute_text(element, "name");
            point.name = point_name(name.empty() ? attribute_text(element, "oID") : name, element.at, faults);
            point.where = element.at;
            if (read_place(element, point))
                book.points.push_back(std::move(point));
            else
                account.leave_out(element.at, "a CgPoint without coordinates of its own");
        }
    }

    // False where the element has none.
    bool read_place(const XmlElement &element, DraftPoint &point)
    {
        std::string_view text = without_space(element.text);
        size_t axis = 0;
        for (; !text.empty() && axis < 4; axis++) {
            const size_t end = std::min(text.find_first_of(" \t\r\n"), text.size());
            double value = 0.0;
            if (axis == 3 || read_number(text.substr(0, end), value) != Reading::Number) {
                faults.add(element.at, quote(without_space(element.text)) + " is not north, east and elevation",
                           "write two or three numbers with blanks between");
                return true;
            }
            point.value[axis] = value * units.metres;
            text = without_space(text.substr(end));
        }
        if (axis == 1) faults.add(element.at, "one coordinate stands alone", "write north and east");
        return axis > 0;
    }

    // Set-ups of instruments and targets, which observations name by their ids.
    void read_references(const XmlElement &element)
    {
        for (const XmlElement &child : element.children) {
            const std::string_view kind = local_name(child);
            if (kind == "TargetSetup") target_setups[std::string(attribute_text(child, "id"))] = &child;
            if (kind == "InstrumentSetup") add_setup(child);
            if (kind == "InstrumentSetup" || kind == "ObservationGroup") read_references(child);
        }
    }

    void add_setup(const XmlElement &element)
    {
        FieldSetup setup;
        const XmlElement *point = child_of(element, "InstrumentPoint");
        std::string_view name = point ? attribute_text(*point, "pntRef") : std::string_view();
        if (name.empty()) name = attribute_text(element, "stationName");
        setup.station = point_name(name, element.at, faults);
        setup.height = length(element, "instrumentHeight");
        setup.where = element.at;
        DraftPoint place;
        if (point && read_place(*point, place)) {
            place.name = setup.station;
            place.where = element.at;
            book.points.push_back(std::move(place));
        }
        setups[std::string(attribute_text(element, "id"))] = book.setups.size();
        book.setups.push_back(std::move(setup));
    }

    MaybeNumber length(const XmlElement &element, std::string_view name)
    {
        const MaybeNumber value = attribute_number(element, name, faults);
        return value ? MaybeNumber(*value * units.metres) : value;
    }
    MaybeNumber angle(const XmlElement &element, std::string_view name)
    {
        return land_angle(element, name, units.angle, book.unit, faults);
    }

    static bool is_unused(const XmlElement &element)
    {
        return attribute_text(element, "status") == "deleted" || attribute_text(element, "unused") == "true";
    }

    void read_survey(const XmlElement &survey)
    {
        static const std::set<std::string_view> silent = {"SurveyHeader", "Equipment", "TargetSetup", "GPSSetup"};
        for (const XmlElement &element : survey.children) {
            const std::string_view kind = local_name(element);
            if (kind == "CgPoints")
                read_points(element);
            else if (kind == "InstrumentSetup")
                read_setup(element);
            else if (kind == "ObservationGroup")
                read_group(element, attribute_text(element, "setupID"));
            else if (!silent.count(kind)) {
                account.read_one();
                account.leave_out(element.at, std::string(kind) + ": not taken from LandXML");
            }
        }
    }

    void read_setup(const XmlElement &element)
    {
        account.read_one();
        if (is_unused(element)) {
            account.leave_out(element.at, "a set-up that is deleted, with its observations");
            return;
        }
        const std::string_view id = attribute_text(element, "id");
        for (const XmlElement &child : element.children) {
            if (local_name(child) == "ObservationGroup")
                read_group(child, id);
            else
                read_observation(child, id, {}, {});
        }
        bool first = true;
        for (const XmlElement &child : element.children) {
            if (local_name(child) != "Backsight") continue;
            account.read_one();
            if (first)
                take_backsight(child, book.setups[setups.at(std::string(id))]);
            else
                account.leave_out(child.at, "a second backsight of a set-up");
            first = false;
        }
    }

    // All observations of a group share an orientation: they are a set.
    void read_group(const XmlElement &group, std::string_view setup)
    {
        const std::string_view own = attribute_text(group, "setupID"), set = attribute_text(group, "setID");
        const std::string_view word = set.empty() ? attribute_text(group, "id") : set;
        for (const XmlElement &child : group.children)
            read_observation(child, own.empty() ? setup : own, word, attribute_text(group, "targetSetupID"));
    }

    void read_observation(const XmlElement &element, std::string_view setup, std::string_view set,
                          std::string_view target_setup)
    {
        const std::string_view kind = local_name(element);
        const bool raw = kind == "RawObservation", reduced = kind == "ReducedObservation";
        if (!raw && !reduced) {
            if (kind != "ReducedArcObservation" && kind != "RedHorizontalPosition" && kind != "RedVerticalObservation")
                return;
            account.read_one();
            account.leave_out(element.at, std::string(kind) + ": not taken from LandXML");
            return;
        }
        account.read_one();
        const std::string_view own = attribute_text(element, "setupID");
        const auto found = setups.find(std::string(own.empty() ? setup : own));
        if (is_unused(element))
            account.leave_out(element.at, "an observation that is deleted or not used");
        else if (found == setups.end())
            faults.add(element.at, "setupID " + quote(own.empty() ? setup : own) + " is no InstrumentSetup",
                       "name one of the file");
        else if (reduced)
            take_reduced(element, book.setups[found->second]);
        else
            take_raw(element, book.setups[found->second], set, target_setup);
    }

    // The name of a point-like element: a reference or a name of its own.
    static std::string_view reference(const XmlElement *point)
    {
        if (!point) return std::string_view();
        const std::string_view name = attribute_text(*point, "pntRef");
        return name.empty() ? attribute_text(*point, "name") : name;
    }

    static bool has_offsets(const XmlElement &element)
    {
        const XmlElement *offsets = child_of(element, "OffsetVals");
        if (!offsets) return false;
        return std::any_of(offsets->attributes.begin(), offsets->attributes.end(), [](const XmlAttribute &attribute) {
            double value = 1.0;
            read_number(without_space(attribute.value), value);
            return attribute.name.substr(0, 6) == "offset" && value != 0.0;
        });
    }

    void take_raw(const XmlElement &element, FieldSetup &setup, std::string_view set, std::string_view target_setup)
    {
        if (has_offsets(element)) {
            account.leave_out(element.at, "an observation with offsets of its target");
            return;
        }
        FieldSight sight;
        const XmlElement *point = child_of(element, "TargetPoint");
        const std::string_view name = point ? reference(point) : attribute_text(element, "targetPoint");
        sight.target = point_name(name, element.at, faults);
        sight.where = element.at;
        sight.direction = angle(element, "horizAngle");
        sight.zenith = angle(element, "zenithAngle");
        sight.length = {length(element, "slopeDistance"), length(element, "horizDistance"),
                        length(element, "vertDistance")};
        const std::string_view face = attribute_text(element, "directFace"), own = attribute_text(element, "setID");
        sight.face = face == "true" ? 1 : face == "false" ? 2 : 0;
        sight.set = utf8_text(own.empty() ? set : own);
        const std::string_view its = attribute_text(element, "targetSetupID");
        sight.target_height = target_height(element, its.empty() ? target_setup : its);
        setup.sights.push_back(std::move(sight));
    }

    MaybeNumber target_height(const XmlElement &element, std::string_view target_setup)
    {
        if (const MaybeNumber own = length(element, "targetHeight")) return own;
        const auto found = target_setups.find(std::string(target_setup));
        return found == target_setups.end() ? MaybeNumber() : length(*found->second, "targetHeight");
    }

    // The reading to the backsight, where no observation has it.
    void take_backsight(const XmlElement &element, FieldSetup &setup)
    {
        const std::string_view name = reference(child_of(element, "BacksightPoint"));
        const MaybeNumber circle = land_angle(element, "circle", units.direction, book.unit, faults);
        const bool seen = std::any_of(setup.sights.begin(), setup.sights.end(),
                                      [&](const FieldSight &sight) { return sight.target == name; });
        if (name.empty() || seen || !circle) {
            account.leave_out(element.at, seen ? "a backsight that is among the observations"
                                               : "a backsight without a point or a reading");
            return;
        }
        FieldSight sight;
        sight.target = point_name(name, element.at, faults);
        sight.where = element.at;
        sight.direction = circle;
        if (!setup.sights.empty()) sight.set = setup.sights.front().set;
        setup.sights.insert(setup.sights.begin(), std::move(sight));
    }

    // Azimuth and horizontal distance between two set-ups, or from one to a point.
    void take_reduced(const XmlElement &element, const FieldSetup &setup)
    {
        const auto other = setups.find(std::string(attribute_text(element, "targetSetupID")));
        const XmlElement *point = child_of(element, "TargetPoint");
        DraftRow row;
        row.from = setup.station;
        row.to = point                   ? point_name(reference(point), element.at, faults)
                 : other == setups.end() ? std::string()
                                         : book.setups[other->second].station;
        row.id = printable(attribute_text(element, "name"));
        row.where = element.at;
        const MaybeNumber azimuth = land_angle(element, "azimuth", units.direction, book.unit, faults),
                          distance = length(element, "horizDistance");
        if (row.to.empty() || row.to == row.from || (!azimuth && !distance)) {
            account.leave_out(element.at, "a reduced observation without two points, or without azimuth and "
                                          "horizontal distance");
            return;
        }
        add(DraftKind::azimuth, row, azimuth);
        if (distance && *distance > 0.0) add(DraftKind::horizontal_distance, row, distance);
    }

    void add(DraftKind kind, DraftRow row, const MaybeNumber &value)
    {
        if (!value) return;
        row.value[0] = value;
        draft.of(kind).push_back(std::move(row));
    }

    const XmlElement &root;
    const ImportOptions &options;
    RecordAccount &account;
    Draft &draft;
    Faults &faults;
    LandUnits units;
    FieldBook book;
    std::vector<const XmlElement *> surveys;
    std::map<std::string, size_t> setups; // by id
    std::map<std::string, const XmlElement *> target_setups;
};

} // namespace

bool read_landxml(const XmlElement &root, const ImportOptions &options, RecordAccount &account, Draft &draft,
                  Faults &faults)
{
    return LandReader(root, options, account, draft, faults).read();
}

} // namespace vornhost
