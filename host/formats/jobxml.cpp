#include "host/formats/jobxml.h"

#include <map>

#include "host/formats/field_book_draft.h"
#include "host/formats/number_text.h"
#include "host/formats/record_lines.h"
#include "host/formats/xml_values.h"

namespace vornhost {

namespace {

struct Target {
    MaybeNumber height;
    double prism = 0.0; // metres, added
};

bool holds(std::string_view text, std::string_view word) { return text.find(word) != std::string_view::npos; }

// Reads one file; the members are what its steps share.
class JobReader {
public:
    JobReader(const XmlElement &its_root, const ImportOptions &its_options, RecordAccount &its_account,
              Draft &its_draft, Faults &all)
        : root(its_root), options(its_options), account(its_account), draft(its_draft), faults(all)
    {
    }

    bool read()
    {
        const XmlElement *records = child_of(root, "FieldBook");
        if (!records) {
            faults.add(root.at, "no element FieldBook", "export the job with its field book");
            return false;
        }
        book.unit = CircleUnit::degree;
        draft.title = utf8_text(attribute_text(root, "jobName"));
        for (const XmlElement &record : records->children) read_reference(record);
        for (const XmlElement &record : records->children) take(record);
        if (const XmlElement *reductions = child_of(root, "Reductions"))
            account.note(reductions->at, "Reductions are computed from the field book and not taken");
        return draft_field_book(book, options, account, draft, faults);
    }

private:
    // Records name one another by ID, also forward.
    void read_reference(const XmlElement &record)
    {
        const std::string id(attribute_text(record, "ID"));
        const std::string_view kind = local_name(record);
        if (kind == "StationRecord") {
            stations[id] = book.setups.size();
            FieldSetup setup;
            setup.station = point_name(child_text(record, "StationName"), record.at, faults);
            setup.height = child_number(record, "TheodoliteHeight", faults);
            setup.where = record.at;
            atmospheres_of_stations.emplace_back(child_text(record, "AtmosphereID"));
            book.setups.push_back(std::move(setup));
        } else if (kind == "TargetRecord") {
            targets[id] = {child_number(record, "TargetHeight", faults),
                           child_number(record, "PrismConstant", faults).value_or(0.0)};
        } else if (kind == "AtmosphereRecord") {
            const bool applies = child_text(record, "ApplyPPMToRawDistances") == "true";
            ppm[id] = applies ? child_number(record, "PPM", faults).value_or(0.0) : 0.0;
        }
    }

    void take(const XmlElement &record)
    {
        account.read_one();
        const std::string_view kind = local_name(record);
        if (kind == "PointRecord")
            take_point(record);
        else if (kind != "StationRecord" && kind != "TargetRecord" && kind != "AtmosphereRecord")
            account.leave_out(record.at, std::string(kind) + ": holds no reading");
    }

    // What was made of other records.
    static bool is_derived(const XmlElement &record)
    {
        for (const char *name : {"Method", "Classification"})
            for (const char *word : {"MeanTurnedAngle", "MTA", "Offset", "Computed", "Intersection"})
                if (holds(child_text(record, name), word)) return true;
        return false;
    }

    void take_point(const XmlElement &record)
    {
        if (child_text(record, "Deleted") == "true")
            account.leave_out(record.at, "a point that was deleted");
        else if (is_derived(record))
            account.leave_out(record.at, "a point that was derived from others (" +
                                             std::string(child_text(record, "Method")) + ")");
        else if (const XmlElement *circle = child_of(record, "Circle"))
            take_sight(record, *circle);
        else if (const XmlElement *grid = child_of(record, "Grid"))
            take_coordinates(record, *grid);
        else
            account.leave_out(record.at, "a point without readings of a circle or keyed coordinates");
    }

    std::string name(const XmlElement &record) { return point_name(child_text(record, "Name"), record.at, faults); }

    void take_coordinates(const XmlElement &record, const XmlElement &grid)
    {
        DraftPoint point;
        point.name = name(record);
        point.where = record.at;
        point.value = {child_number(grid, "North", faults), child_number(grid, "East", faults),
                       child_number(grid, "Elevation", faults)};
        book.points.push_back(std::move(point));
    }

    void take_sight(const XmlElement &record, const XmlElement &circle)
    {
        const auto station = stations.find(std::string(child_text(record, "StationID")));
        if (station == stations.end()) {
            faults.add(record.at, "StationID " + quote(child_text(record, "StationID")) + " is no StationRecord",
                       "name one of the file");
            return;
        }
        const auto found = targets.find(std::string(child_text(record, "TargetID")));
        const Target target = found == targets.end() ? Target() : found->second;
        FieldSight sight;
        sight.target = name(record);
        sight.where = record.at;
        sight.target_height = target.height;
        sight.direction = child_number(circle, "HorizontalCircle", faults);
        sight.zenith = child_number(circle, "VerticalCircle", faults);
        const std::string_view face = child_text(circle, "Face");
        sight.face = face == "Face1" ? 1 : face == "Face2" ? 2 : 0;
        if (const MaybeNumber distance = child_number(circle, "EDMDistance", faults)) {
            const double millionths = ppm[atmospheres_of_stations[station->second]];
            sight.length[slope_length] = *distance * (1.0 + millionths * 1e-6) + target.prism;
        }
        book.setups[station->second].sights.push_back(std::move(sight));
    }

    const XmlElement &root;
    const ImportOptions &options;
    RecordAccount &account;
    Draft &draft;
    Faults &faults;
    FieldBook book;
    std::map<std::string, size_t> stations; // set-ups by ID
    std::map<std::string, Target> targets;
    std::map<std::string, double> ppm;                // of atmospheres, where they apply
    std::vector<std::string> atmospheres_of_stations; // one a set-up
};

} // namespace

bool read_jobxml(const XmlElement &root, const ImportOptions &options, RecordAccount &account, Draft &draft,
                 Faults &faults)
{
    return JobReader(root, options, account, draft, faults).read();
}

} // namespace vornhost
