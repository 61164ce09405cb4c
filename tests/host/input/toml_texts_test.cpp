#include "host/input/toml_texts.h"

#include <gtest/gtest.h>

using namespace vornhost;

namespace {

std::string without(const std::string &toml) { return without_rows(toml, {"rows", "matrix"}); }

} // namespace

TEST(TomlTexts, AreFoundWithTheirMarks)
{
    const std::string toml = "a = 1 # \"no\"\nb = '''x\ny''''\nc = \"z\"";
    const std::optional<TomlText> b = next_text(toml, 0);
    ASSERT_TRUE(b);
    EXPECT_EQ(toml.substr(b->opening, b->past - b->opening), "'''x\ny''''");
    EXPECT_EQ(toml.substr(b->begin, b->end - b->begin), "x\ny");
    const std::optional<TomlText> c = next_text(toml, b->past);
    ASSERT_TRUE(c);
    EXPECT_TRUE(c->closed);
    EXPECT_EQ(toml.substr(c->begin, c->end - c->begin), "z");
    EXPECT_FALSE(next_text(toml, c->past));
}

TEST(TomlTexts, OfTablesKeepTheirLineEndsAlone)
{
    EXPECT_EQ(without("rows = \"\"\"\na b\n1 2\n\"\"\"\nx = 1\n"), "rows = \"\"\"\n\n\n\"\"\"\nx = 1\n");
    EXPECT_EQ(without("x = 1\nmatrix='''first\n1 \"\"\" 2\r\n3 4\n  '''\n"), "x = 1\nmatrix='''first\n\n\n  '''\n");
    EXPECT_EQ(without("rows = \"\"\"\n1\n2\"\"\"\nrows = \"\"\"\n3\n\"\"\""),
              "rows = \"\"\"\n\n2\"\"\"\nrows = \"\"\"\n\n\"\"\"");
}

TEST(TomlTexts, StayWhereTheParserMayFindFault)
{
    for (const char *toml : {"", "x = 1", "rows = \"\"\"\na\\u12\nb\n\"\"\"", "rows = \"\"\"\na\x01\nb\n\"\"\"",
                             "rows = \"\"\"\na\rb\n\"\"\"", "rows = \"\"\"\na\nb\n", "rows = \"\"\" a \"\"\"",
                             "rows = \"a b\"", "title = \"\"\"\na\nb\n\"\"\"", "rows = '''\na\x7F\n'''",
                             "rows = 3 \"\"\"\na\nb\n\"\"\"", "# rows = \"\"\"\na\nb\n"})
        EXPECT_EQ(without(toml), toml) << toml;
}
