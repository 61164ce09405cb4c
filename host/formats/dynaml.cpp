#include "host/formats/dynaml.h"

#include <algorithm>

#include "host/formats/xml_text.h"

namespace vornhost {

namespace {

// Reads one file; the members are what its steps share.
class DynamlReader {
public:
    DynamlReader(const XmlElement &its_root, DnaNetwork &its_network, Faults &all)
        : root(its_root), network(its_network), faults(all)
    {
    }

    bool read()
    {
        const size_t before = faults.count();
        for (const XmlAttribute &attribute : root.attributes) {
            if (attribute.name == "referenceframe") network.frame = attribute.value;
            if (attribute.name == "epoch") network.epoch = attribute.value;
        }
        for (const XmlElement &child : root.children) {
            const std::string_view name = local_name(child);
            if (name == "DnaStation")
                read_station(child);
            else if (name == "DnaMeasurement")
                read_measure(child);
            else
                faults.add(child.at, "element " + quote(child.name) + " is not known here",
                           "write DnaStation or DnaMeasurement");
        }
        return faults.count() == before;
    }

private:
    // Degrees of an angle written as D.MMSSsss.
    double packed(const XmlElement &element, const char *child)
    {
        double degrees = 0.0;
        const XmlElement *found = child_of(element, child);
        if (!found)
            faults.add(element.at, "element " + element.name + " has no " + child, "add it");
        else if (!read_packed(text_of(*found), degrees))
            faults.add(found->at, quote(text_of(*found)) + " is not an angle in " + child,
                       "write it as degrees.minutesseconds, like 36.3348253617");
        return degrees;
    }

    void read_station(const XmlElement &element)
    {
        DnaStation station;
        station.where = element.at;
        station.name = text_of(element, "Name");
        station.constraints = text_of(element, "Constraints");
        station.type = text_of(element, "Type");
        const XmlElement *coordinates = child_of(element, "StationCoord");
        static const char *const types[] = {"LLH", "LLh", "UTM", "XYZ", "ENU"};
        if (std::find(std::begin(types), std::end(types), station.type) == std::end(types))
            return faults.add(element.at, "type of coordinates " + quote(station.type) + " is not known",
                              "write LLH, LLh, UTM or XYZ");
        if (!coordinates)
            return faults.add(element.at, "station " + quote(station.name) + " has no StationCoord", "add it");
        station.zone = text_of(*coordinates, "HemisphereZone");
        const bool angles = station.type == "LLH" || station.type == "LLh";
        const char *const names[] = {"XAxis", "YAxis", "Height"};
        for (size_t i = 0; i < 3; i++)
            station.value[i] =
                angles && i < 2 ? packed(*coordinates, names[i]) : number_in(*coordinates, names[i], faults);
        network.stations.push_back(std::move(station));
    }

    void read_measure(const XmlElement &element)
    {
        DnaMeasure m;
        m.where = element.at;
        const std::string type = text_of(element, "Type");
        if (type.size() != 1 || !is_dna_type(type[0]))
            return faults.add(element.at, "type of measurement " + quote(type) + " is not known",
                              "write one of A B C D E G H I J K L M P Q R S V X Y Z");
        m.type = type[0];
        m.ignored = !text_of(element, "Ignore").empty();
        m.frame = text_of(element, "ReferenceFrame");
        m.epoch = text_of(element, "Epoch");
        m.id = text_of(element, "MeasurementID");
        m.first = text_of(element, "First");
        m.second = text_of(element, "Second");
        m.third = text_of(element, "Third");
        const size_t before = faults.count();
        if (m.type == 'G' || m.type == 'X' || m.type == 'Y')
            read_satellite(element, m);
        else if (m.type == 'D')
            read_set(element, m);
        else
            read_single(element, m);
        if (faults.count() == before) network.measures.push_back(std::move(m));
    }

    void read_single(const XmlElement &element, DnaMeasure &m)
    {
        const bool angle = is_dna_angle(m.type) || std::string_view("IJPQ").find(m.type) != std::string_view::npos;
        m.value = angle ? packed(element, "Value") : number_in(element, "Value", faults);
        m.sigma = number_in(element, "StdDev", faults);
        if (m.type != 'S' && m.type != 'V' && m.type != 'Z') return; // the others are between marks
        m.instrument_height = number_in(element, "InstHeight", 0.0, faults);
        m.target_height = number_in(element, "TargHeight", 0.0, faults);
    }

    void read_set(const XmlElement &element, DnaMeasure &m)
    {
        DnaDirection reference;
        reference.where = element.at;
        reference.target = m.second;
        reference.value = packed(element, "Value");
        reference.sigma = number_in(element, "StdDev", faults);
        m.directions.push_back(std::move(reference));
        for (const XmlElement &child : element.children) {
            if (local_name(child) != "Directions") continue;
            DnaDirection d;
            d.where = child.at;
            d.ignored = !text_of(child, "Ignore").empty();
            d.target = text_of(child, "Target");
            d.value = packed(child, "Value");
            d.sigma = number_in(child, "StdDev", faults);
            m.directions.push_back(std::move(d));
        }
    }

    // First and Second stand again before each member.
    void read_satellite(const XmlElement &element, DnaMeasure &m)
    {
        static const char *const scalars[] = {"Vscale", "Pscale", "Lscale", "Hscale"};
        for (size_t i = 0; i < 4; i++) m.scalar[i] = number_in(element, scalars[i], 1.0, faults);
        m.coordinates = text_of(element, "Coords");
        if (m.coordinates.empty()) m.coordinates = "XYZ";
        std::string first, second;
        for (const XmlElement &child : element.children) {
            const std::string_view name = local_name(child);
            if (name == "First") first = text_of(child);
            if (name == "Second") second = text_of(child);
            if (name != "GPSBaseline" && name != "Clusterpoint") continue;
            m.members.push_back(read_member(child, m));
            m.members.back().first = first;
            if (m.type != 'Y') m.members.back().second = second;
        }
        check_members(element, m);
    }

    DnaMember read_member(const XmlElement &element, const DnaMeasure &m)
    {
        static const char *const values[] = {"X", "Y", "Z"};
        static const char *const variances[] = {"SigmaXX", "SigmaXY", "SigmaYY", "SigmaXZ", "SigmaYZ", "SigmaZZ"};
        static const char *const blocks[] = {"m11", "m12", "m13", "m21", "m22", "m23", "m31", "m32", "m33"};
        DnaMember member;
        member.where = element.at;
        for (size_t i = 0; i < 3; i++)
            member.value[i] =
                m.coordinates != "XYZ" && i < 2 ? packed(element, values[i]) : number_in(element, values[i], faults);
        for (size_t i = 0; i < 6; i++) member.covariance[i] = number_in(element, variances[i], faults);
        for (const XmlElement &child : element.children) {
            if (local_name(child) != "GPSCovariance" && local_name(child) != "PointCovariance") continue;
            member.later.emplace_back();
            for (size_t i = 0; i < 9; i++) member.later.back()[i] = number_in(child, blocks[i], faults);
        }
        return member;
    }

    void check_members(const XmlElement &element, const DnaMeasure &m)
    {
        const size_t n = m.members.size();
        if (n == 0 || (m.type == 'G' && n > 1))
            return faults.add(element.at,
                              "a measurement " + std::string(1, m.type) + " has " + std::to_string(n) + " members",
                              m.type == 'G' ? "write one GPSBaseline" : "write them");
        for (size_t i = 0; i < n; i++)
            if (m.members[i].later.size() != n - 1 - i)
                faults.add(m.members[i].where,
                           "member " + std::to_string(i + 1) + " of " + std::to_string(n) + " has " +
                               std::to_string(m.members[i].later.size()) + " covariances with later members",
                           "write one for each of these");
    }

    const XmlElement &root;
    DnaNetwork &network;
    Faults &faults;
};

} // namespace

bool read_dynaml(const XmlElement &root, DnaNetwork &network, Faults &faults)
{
    return DynamlReader(root, network, faults).read();
}

} // namespace vornhost
