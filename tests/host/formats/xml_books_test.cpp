// Field books in JobXML and LandXML, and lists of coordinates.

#include "field_truth.h"

#include "host/formats/xml.h"

using namespace vornhost;

namespace {

class XmlBooks : public FieldBooks {
protected:
    void SetUp() override
    {
        if (!xml_available()) GTEST_SKIP() << "built without a parser of XML";
    }
};

std::string jobxml()
{
    std::string text = "<JOBFile jobName='made up' version='5.7'><FieldBook>\n"
                       "<AtmosphereRecord ID='air'><PPM>10</PPM><ApplyPPMToRawDistances>true</ApplyPPMToRawDistances>"
                       "</AtmosphereRecord>\n";
    int id = 0;
    std::string station;
    for (const field::Sight &s : field::sights()) {
        if (s.first) {
            station = "s" + s.station;
            text += field::format("<StationRecord ID='%s'><StationName>%s</StationName><TheodoliteHeight>%.4f"
                                  "</TheodoliteHeight><AtmosphereID>air</AtmosphereID></StationRecord>\n",
                                  station.c_str(), s.station.c_str(), s.instrument);
        }
        id++;
        text += field::format("<PointRecord ID='%d'><Name>%s</Name><StationID>%s</StationID><TargetID>t%d</TargetID>"
                              "<Circle><HorizontalCircle>%.8f</HorizontalCircle><VerticalCircle>%.8f</VerticalCircle>"
                              "<EDMDistance>%.7f</EDMDistance><Face>%s</Face></Circle></PointRecord>\n",
                              id, s.target.c_str(), station.c_str(), id, s.direction * 0.9, s.zenith * 0.9,
                              (s.slope + 0.017) / 1.00001, s.face == 1 ? "Face1" : "Face2");
        // what a sight names may stand behind it
        text += field::format("<TargetRecord ID='t%d'><TargetHeight>%.4f</TargetHeight><PrismConstant>-0.017"
                              "</PrismConstant></TargetRecord>\n",
                              id, s.height);
    }
    return text + "<PointRecord ID='x'><Name>B</Name><Method>MeanTurnedAngle</Method></PointRecord>\n"
                  "<PointRecord ID='y'><Name>B</Name><Deleted>true</Deleted></PointRecord></FieldBook></JOBFile>\n";
}

const char *const units = "<Units><Metric linearUnit='meter' angularUnit='grads' directionUnit='grads'/></Units>\n";

std::string landxml(const char *schema)
{
    std::string text = field::format("<LandXML xmlns='http://www.landxml.org/schema/%s'>\n", schema) + units;
    text += "<CgPoints><CgPoint name='A' role='control point'>100 200 10</CgPoint></CgPoints>\n<Survey>";
    std::string open;
    int set = 0;
    for (const field::Sight &s : field::sights()) {
        if (s.first) {
            text += open + field::format("<InstrumentSetup id='s%s' stationName='%s' instrumentHeight='%.4f'>\n",
                                         s.station.c_str(), s.station.c_str(), s.instrument);
            open = "</ObservationGroup></InstrumentSetup>\n";
            set = 0;
        }
        if (s.set != set)
            text +=
                std::string(set ? "</ObservationGroup>\n" : "") + field::format("<ObservationGroup id='g%d'>\n", s.set);
        set = s.set;
        text +=
            field::format("<RawObservation horizAngle='%.6f' zenithAngle=' %.6f ' slopeDistance='%.6f' "
                          "targetHeight='%.4f' directFace='%s'><TargetPoint name='%s'/></RawObservation>\n",
                          s.direction, s.zenith, s.slope, s.height, s.face == 1 ? "true" : "false", s.target.c_str());
    }
    return text + open + "</Survey></LandXML>\n";
}

} // namespace

TEST_F(XmlBooks, OfJobXmlGiveTheNetworkBack)
{
    expect_truth(jobxml(), 2e-6);
    EXPECT_EQ(draft.title, "made up");
    EXPECT_EQ(last_note(), "book: records read 103 = taken 101 + left out 2");
}

TEST_F(XmlBooks, OfJobXmlNameTheStationThatIsMissing)
{
    EXPECT_EQ(import("<JOBFile><FieldBook>\n<PointRecord><Name>B</Name><StationID>9</StationID><Circle>"
                     "<HorizontalCircle>1,5</HorizontalCircle></Circle></PointRecord>\n</FieldBook></JOBFile>"),
              Lines{"book:2:1: StationID \"9\" is no StationRecord; name one of the file"});
}

TEST_F(XmlBooks, OfLandXmlGiveTheNetworkBack)
{
    expect_truth(landxml("LandXML-1.2"), 2e-6);
    EXPECT_EQ(rows(DraftKind::direction).size(), 12u);
    EXPECT_EQ(last_note(), "book: records read 53 = taken 53 + left out 0");
}

TEST_F(XmlBooks, OfLandXmlTakeBacksightsReductionsAndHeightsOfTargetSetups)
{
    ASSERT_EQ(import("<LandXML><Units><Metric linearUnit='meter' angularUnit='decimal dd.mm.ss' "
                     "directionUnit='decimal dd.mm.ss'/></Units>\n"
                     "<Survey><InstrumentSetup id='1' stationName='A' instrumentHeight='1.5'><InstrumentPoint "
                     "pntRef='P1'/><TargetSetup id='t' targetHeight='1.25'/>"
                     "<Backsight circle='10.3' azimuth='0'><BacksightPoint pntRef='P2'/></Backsight>\n"
                     "<RawObservation targetSetupID='t' horizAngle='302.504' zenithAngle='90.3' slopeDistance='70.713'>"
                     "<TargetPoint pntRef='P3'/></RawObservation>\n"
                     "<RawObservation unused='true' horizAngle='1'><TargetPoint pntRef='P3'/></RawObservation>\n"
                     "</InstrumentSetup><InstrumentSetup id='2' stationName='P4'/>\n"
                     "<ReducedObservation/><ObservationGroup><ReducedObservation name='r7' setupID='2' "
                     "targetSetupID='1' azimuth='110.2' horizDistance='50.5'/></ObservationGroup></Survey></LandXML>"),
              Lines());
    ASSERT_EQ(rows(DraftKind::direction).size(), 2u);
    EXPECT_EQ(rows(DraftKind::direction)[0].to, "P2");
    EXPECT_NEAR(*rows(DraftKind::direction)[0].value[0], 10.5, 1e-9);
    EXPECT_NEAR(*rows(DraftKind::direction)[1].value[0], 302 + 50.0 / 60 + 40.0 / 3600, 1e-9);
    EXPECT_DOUBLE_EQ(*rows(DraftKind::distance).at(0).h2, 1.25);
    EXPECT_EQ(rows(DraftKind::distance)[0].from, "P1");
    const DraftRow &azimuth = rows(DraftKind::azimuth).at(0);
    EXPECT_EQ(azimuth.from + " " + azimuth.to + " " + azimuth.id, "P4 P1 r7");
    EXPECT_NEAR(*azimuth.value[0], 110.0 + 1.0 / 3, 1e-9);
    EXPECT_DOUBLE_EQ(*rows(DraftKind::horizontal_distance).at(0).value[0], 50.5);
}

TEST_F(XmlBooks, OfLandXmlRefuseUnitsTheyDoNotKnow)
{
    EXPECT_EQ(import("<LandXML><Units><Metric linearUnit='meter' angularUnit='degrees'/></Units></LandXML>"),
              Lines{"book:1:57: \"degrees\" is not known for angularUnit; write one of decimal dd.mm.ss, decimal "
                    "degrees, grads, radians"});
    EXPECT_EQ(import("<LandXML><Survey/></LandXML>"),
              Lines{"book:1:1: no element Units with Metric or Imperial; write the units of lengths and angles there"});
    EXPECT_EQ(import(std::string("<LandXML>") + units + "<Surfaces/></LandXML>"),
              Lines{"book:1:1: neither Survey nor CgPoints: the file holds nothing to adjust; export the survey, not "
                    "the surfaces alone"});
}

// ---- coordinates ----

TEST_F(FieldBooks, TakeCoordinatesAndDatumFromAListBeside)
{
    folder.write("known.csv", "Point;Easting [m];Northing [m];Height;Code\nA;200,000;100;10;x\n\"B\";230;160;12,5;\n"
                              "E;1;2;3;\n");
    ImportOptions options;
    options.points = folder.file("known.csv");
    options.fixed = {"A"};
    options.datum = {"B"};
    ASSERT_EQ(
        import("110001+0000000A 88..16+00015000\n110002+0000000B 21.322+00000000 22.322+10000000 31..00+00070000\n",
               options),
        Lines());
    ASSERT_EQ(draft.points.size(), 2u);
    EXPECT_DOUBLE_EQ(*draft.points[0].value[0], 100.0);
    EXPECT_DOUBLE_EQ(*draft.points[0].value[1], 200.0);
    EXPECT_DOUBLE_EQ(*draft.points[1].value[2], 12.5);
    EXPECT_EQ(draft.points[0].code[2], CODE_FIXED);
    EXPECT_EQ(draft.points[1].code[0], CODE_FREE);
    const Lines lines = notes();
    EXPECT_EQ(lines[lines.size() - 2], "book: coordinates of 2 points are from known.csv, which has 3");
    options.fixed = {"X"};
    options.datum = {"Y"};
    EXPECT_EQ(import("110001+0000000A 88..16+00015000\n110002+0000000B 21.322+00000000\n", options).size(), 2u);
}

TEST_F(FieldBooks, TakeListsOfCoordinatesByTheirHeading)
{
    ASSERT_EQ(import("name,x,y\nP 1,1.5,-2\n\"a,\"\"b\"\"\",3,4\n"), Lines());
    ASSERT_EQ(draft.points.size(), 2u);
    EXPECT_EQ(draft.points[1].name, "a,\"b\"");
    EXPECT_DOUBLE_EQ(*draft.points[0].value[1], -2.0);
    EXPECT_EQ(draft.dimension, 2);
    EXPECT_EQ(import("name,x,y\nP,1.5\nQ,1;5,3\n"),
              (Lines{"book:2:1: the row has 2 cells, the heading 3; write a cell for each, with quotation marks around "
                     "one that holds the separator",
                     "book:3:3: \"1;5\" is not a number; write a number like 12.5"}));
}
