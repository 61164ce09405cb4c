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
    for (const char *text : {"", "<", "<?xml", "<!--", "<!DOCTYPE [", "[run]\ndimension = 2\n", "<LandXML>",
                             "gama-local", "<gama-locals>", "<!DOCTYPE gama-local"})
        EXPECT_FALSE(recognise(text)) << text;
}

TEST(Recognise, TakesNoFileForWhatItIsNot)
{
    EXPECT_FALSE(recognise_file("/nowhere/net.gkf"));
    EXPECT_FALSE(recognise_file("/"));
}
