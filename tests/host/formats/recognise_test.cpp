// Formats by the content of their files.

#include <gtest/gtest.h>

#include "host/formats/recognise.h"

using namespace vornhost;

TEST(Recognise, KnowsNetworksOfGamaByTheirFirstElement)
{
    for (const char *text : {"<gama-local>", "\xEF\xBB\xBF<?xml version='1.0'?>\n<!-- <a> -->\n<gama-local xmlns='x'>",
                             "<!DOCTYPE gama-xml SYSTEM \"gama-xml.dtd\">\n<gama-xml>", "  <gama-local/>",
                             "<!DOCTYPE gama-local [<!ENTITY a \">\">]><gama-local>"})
        EXPECT_EQ(recognise(text), Format::gkf) << text;
    EXPECT_EQ(recognise("<?xml version='1.0'?><gama-local-adjustment xmlns='y'>"), Format::gama_results);
}

TEST(Recognise, LeavesOthersAlone)
{
    for (const char *text : {"", "<", "<?xml", "<!--", "<!DOCTYPE [", "[run]\ndimension = 2\n", "<gml>", "name,x",
                             "00NM", "For M6|Adr", "gama-local", "<gama-locals>", "<!DOCTYPE gama-local"})
        EXPECT_FALSE(recognise(text)) << text;
}

TEST(Recognise, KnowsFieldBooksByTheirFirstLine)
{
    const std::pair<const char *, Format> cases[] = {{"110001+0000000A 21.322+00000000", Format::gsi},
                                                     {"\x02\r\n*110001+000000000000000A ", Format::gsi},
                                                     {"410001+?......2\n", Format::gsi},
                                                     {"00NMSDR33 V04-04.02     01-Jan-26 08:00 113121\n", Format::sdr},
                                                     {"For M5|Adr 00001|TI", Format::m5},
                                                     {"For_R5|Adr 0001|TI", Format::m5},
                                                     {"<?xml version='1.0'?><JOBFile>", Format::jobxml},
                                                     {"<lx:LandXML>", Format::landxml},
                                                     {"Point;Northing [m];Easting [m]\n", Format::csv}};
    for (const auto &[text, format] : cases) EXPECT_EQ(recognise(text), format) << text;
}

TEST(Recognise, TakesNoFileForWhatItIsNot)
{
    EXPECT_FALSE(recognise_file("/nowhere/net.gkf"));
    EXPECT_FALSE(recognise_file("/"));
}
