#include "host/input/open_text.h"

#include <gtest/gtest.h>

using namespace vornhost;

namespace {

// Key and offset of the open text, "closed" when there is none.
std::string open_text(const std::string &toml)
{
    const std::optional<OpenText> open = find_open_text(toml);
    return open ? open->key + " " + std::to_string(open->offset) + " " + open->marks : "closed";
}

} // namespace

TEST(OpenText, IsNoneWhereEveryTextIsClosed)
{
    for (const char *toml :
         {"", "a = 1", "a = \"\"\"\nx\n\"\"\"\nb = '''\ny\n'''", "# \"\"\"\n", "a = \"\"", "a = \"x # \\\" ''' \"\n",
          "a = \"\"\"x \\\"\"\" \"\"\"", "a = '''it's \"\"\" '''", "a = \"\"\"ends in a mark\"\"\"\"\nb = 1",
          "a = '''\nb = 2\n[c]\n'''\n", "a = 'not closed on its line\nb = \"\"\"\n\"\"\""})
        EXPECT_EQ(open_text(toml), "closed") << toml;
}

TEST(OpenText, IsFoundWhereItBegins)
{
    EXPECT_EQ(open_text("a = \"\"\"\nx\n"), "a 4 \"\"\"");
    EXPECT_EQ(open_text("a = '''\nx\n"), "a 4 '''");
    EXPECT_EQ(open_text("ok = '''\n'''\n  a-b.c =\"\"\"\nx\nd = \"\"\"\ny\n\"\"\"\n"), "a-b.c 22 \"\"\"");
    EXPECT_EQ(open_text("\"\"\" x"), " 0 \"\"\"");
    EXPECT_EQ(open_text("a = \"\"\"x\\"), "a 4 \"\"\"");
}
