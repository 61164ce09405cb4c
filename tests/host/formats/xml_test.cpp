// XML files: places, limits, and what is never expanded.

#include "imported.h"

using namespace vornhost;

namespace {

class Xml : public Formats {
protected:
    Lines read(const std::string &text)
    {
        folder.write("a.xml", text);
        Faults faults;
        good = read_xml(folder.file("a.xml"), root, faults);
        Lines lines = faults.lines();
        for (std::string &line : lines) folder.shorten(line);
        return lines;
    }

    XmlElement root;
    bool good = false;
};

std::string place_of(Source at) { return std::to_string(at.line) + ":" + std::to_string(at.column); }

} // namespace

TEST_F(Xml, GivesElementsAttributesAndTextsTheirPlaces)
{
    ASSERT_EQ(
        read("<?xml version='1.0'?>\n<a p=\"1\"\n   q = ' x&amp;y '>\n  <b>\n 1.5 \xC3\xA9 2<!-- 3 -->4</b>\n</a>\n"),
        Lines());
    EXPECT_EQ(root.name, "a");
    EXPECT_EQ(place_of(root.at), "2:1");
    EXPECT_EQ(root.find("q")->value, " x&y ");
    EXPECT_EQ(place_of(root.find("p")->at), "2:7");
    EXPECT_EQ(place_of(root.find("q")->at), "3:9");
    EXPECT_EQ(root.find("r"), nullptr);
    ASSERT_EQ(root.children.size(), 1u);
    const XmlElement &b = root.children[0];
    EXPECT_EQ(place_of(b.at), "4:3");
    EXPECT_EQ(b.text, " 1.5 \xC3\xA9 24");
    EXPECT_EQ(place_of(b.place(b.text.find('2'))), "5:8"); // columns count characters
    EXPECT_EQ(place_of(b.place(b.text.find('4'))), "5:19");
    EXPECT_EQ(root.text, "");
}

TEST_F(Xml, ReadsEncodingsOfOneByteACharacter)
{
    ASSERT_EQ(read("<?xml version='1.0' encoding='iso-8859-2'?>\n<a p='\xF8\xED'/>"), Lines());
    EXPECT_EQ(root.find("p")->value, "\xC5\x99\xC3\xAD"); // r with caron, i with acute
    EXPECT_EQ(read("<?xml version='1.0' encoding='klingon'?>\n<a/>"),
              (Lines{"a.xml:1:31: not XML: unknown encoding; correct the XML here or just before"}));
}

TEST_F(Xml, FetchesNothingThatADocumentTypeNames)
{
    EXPECT_EQ(read("<!DOCTYPE a SYSTEM \"/nowhere/a.dtd\">\n<a/>"), Lines());
    EXPECT_TRUE(good);
}

TEST_F(Xml, RefusesEntities)
{
    EXPECT_EQ(read("<!DOCTYPE a [\n <!ENTITY b \"bbb\">\n]>\n<a p='&b;'/>"),
              (Lines{"a.xml:2:13: the file declares the entity \"b\"; write its text where it is used and remove the "
                     "declaration"}));
    EXPECT_EQ(read("<!DOCTYPE a SYSTEM \"a.dtd\">\n<a p='x&b;'/>"),
              (Lines{"a.xml:2:7: an entity in attribute p is not expanded; write its text in its place"}));
    EXPECT_EQ(read("<!DOCTYPE a SYSTEM \"a.dtd\">\n<a>\n &b;</a>"),
              (Lines{"a.xml:3:2: entity \"b\" is not expanded; write its text in its place"}));
    EXPECT_FALSE(good);
    EXPECT_EQ(read("<!DOCTYPE a [<!ENTITY b SYSTEM \"/etc/passwd\">]>\n<a>&b;</a>").size(), 1u);
}

TEST_F(Xml, LimitsDepthAndAttributes)
{
    const auto nested = [](size_t depth) {
        std::string open, close;
        for (size_t i = 0; i < depth; i++) {
            open += "<a>";
            close += "</a>";
        }
        return open + close;
    };
    EXPECT_EQ(read(nested(deepest_xml)), Lines());
    EXPECT_EQ(read(nested(deepest_xml + 1)),
              (Lines{"a.xml:1:301: elements are nested deeper than 100; no network needs that"}));
    EXPECT_EQ(read("<a p='" + std::string(longest_xml_attribute, 'x') + "'/>"), Lines());
    EXPECT_EQ(read("<a p='" + std::string(longest_xml_attribute + 1, 'x') + "'/>"),
              (Lines{"a.xml:1:7: attribute p is longer than 10000 bytes; no network needs that"}));
}

TEST_F(Xml, NamesThePlaceWhereTheTextEndsToBeXml)
{
    EXPECT_EQ(
        read("<a>\n<b x=\"1 />\n<c/>\n</a>"),
        (Lines{"a.xml:3:1: not XML: not well-formed (invalid token); correct the XML here or just before, in \"a\" of "
               "line 1"}));
    EXPECT_EQ(read("<a>\n<b></a>"),
              (Lines{"a.xml:2:6: not XML: mismatched tag; correct the XML here or just before, in \"b\" of line 2"}));
    EXPECT_EQ(read(""), (Lines{"a.xml:1:1: not XML: no element found; correct the XML here or just before"}));
    EXPECT_EQ(read("\xFF\xFE<\0"), (Lines{"a.xml: text is UTF-16; save it as UTF-8"}));
}

TEST_F(Xml, SaysWhatIsWrongWithTheFile)
{
    Faults faults;
    EXPECT_FALSE(read_xml(folder.file("none.xml"), root, faults));
    Lines lines = faults.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find("does not exist; check its name and folder"), std::string::npos);
}
