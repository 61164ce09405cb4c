#include "host/input/text_file.h"

#include <gtest/gtest.h>

#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/folder.h"

using namespace vornhost;

namespace {

// Reads a file of the folder; returns its faults.
Lines read(const Folder &folder, const std::string &name, TextFile &file, size_t largest = TextFile::largest_file)
{
    Faults faults;
    const bool good = file.read(folder.file(name), Source(), faults, largest);
    EXPECT_EQ(good, faults.empty());
    Lines lines = faults.lines();
    for (std::string &line : lines) folder.shorten(line);
    return lines;
}

Lines read_bytes(const std::string &bytes)
{
    Folder folder;
    TextFile file;
    folder.write("t", bytes);
    return read(folder, "t", file);
}

} // namespace

TEST(TextFile, FindsThePlaceOfAByteInCharacters)
{
    Folder folder;
    TextFile file;
    folder.write("t", "ab\n\xC3\xBCx\n\nlast");
    ASSERT_EQ(read(folder, "t", file), Lines());
    const auto expect_place = [&file](size_t offset, int line, int column) {
        EXPECT_EQ(file.place(offset).line, line) << offset;
        EXPECT_EQ(file.place(offset).column, column) << offset;
        EXPECT_EQ(file.offset(line, column), offset) << offset;
    };
    expect_place(0, 1, 1);
    expect_place(2, 1, 3);
    expect_place(3, 2, 1);
    expect_place(5, 2, 2); // behind a character of two bytes
    expect_place(7, 3, 1);
    expect_place(12, 4, 5);
}

TEST(TextFile, LeavesOutAByteOrderMark)
{
    Folder folder;
    TextFile file;
    folder.write("t", "\xEF\xBB\xBFname");
    ASSERT_EQ(read(folder, "t", file), Lines());
    EXPECT_EQ(file.text(), "name");
}

TEST(TextFile, TakesCarriageReturnsForLineEndsWhereThereAreNoOthers)
{
    Folder folder;
    TextFile file;
    folder.write("t", "name\r" + std::string(70000, 'x') + "\r" + std::string(70000, 'y') + "\rz");
    ASSERT_EQ(read(folder, "t", file), Lines());
    EXPECT_EQ(file.text().substr(0, 6), "name\nx");
    EXPECT_EQ(file.place(file.text().size() - 1).line, 4);
    folder.write("t", "a\rb\n");
    ASSERT_EQ(read(folder, "t", file), Lines());
    EXPECT_EQ(file.text(), "a\rb\n");
}

TEST(TextFile, MayBeEmpty) { EXPECT_EQ(read_bytes(""), Lines()); }

TEST(TextFile, RefusesAFileThatDoesNotExist)
{
    Folder folder;
    TextFile file;
    EXPECT_EQ(read(folder, "none.inp", file),
              Lines{"none.inp: file \"none.inp\" does not exist; check its name and folder"});
}

TEST(TextFile, RefusesAFolder)
{
    Folder folder;
    TextFile file;
    mkdir(folder.file("sub").c_str(), 0700);
    EXPECT_EQ(read(folder, "sub", file), Lines{"sub: file \"sub\" is a folder; name a file"});
}

TEST(TextFile, RefusesAFileThatCannotBeOpened)
{
    Folder folder;
    TextFile file;
    folder.make_socket("s"); // not even the superuser may open one
    EXPECT_EQ(read(folder, "s", file),
              Lines{"s: file \"s\" cannot be opened: No such device or address; check its permissions"});
}

TEST(TextFile, RefusesAFileThatCannotBeRead)
{
    TextFile file;
    Faults faults;
    ASSERT_FALSE(file.read("/proc/self/mem", Source(), faults));
    EXPECT_EQ(faults.lines(), Lines{"/proc/self/mem: file \"/proc/self/mem\" cannot be read: Input/output error; "
                                    "check the disk"});
}

TEST(TextFile, RefusesANulByteAtItsPlace)
{
    EXPECT_EQ(read_bytes(std::string("a\nbc\0d", 6)),
              Lines{"t:2:3: NUL byte in the text; save the file as plain text"});
}

TEST(TextFile, RefusesUtf16)
{
    EXPECT_EQ(read_bytes(std::string("\xFF\xFEn\0", 4)), Lines{"t:1:1: text is UTF-16; save it as UTF-8"});
    EXPECT_EQ(read_bytes(std::string("\xFE\xFF\0n", 4)), Lines{"t:1:1: text is UTF-16; save it as UTF-8"});
}

TEST(TextFile, RefusesTheFirstByteThatIsNotUtf8)
{
    const char *const bad[] = {
        "ok\nM\xFChle",          // Latin-1
        "ok\nM\xC0\xAF",         // overlong
        "ok\nM\xED\xA0\x80",     // surrogate
        "ok\nM\xF4\x90\x80\x80", // above U+10FFFF
        "ok\nM\xE2\x82",         // cut off
        "ok\nM\x80",             // continuation without lead
    };
    const char *const byte[] = {"FC", "C0", "ED", "F4", "E2", "80"};
    for (size_t i = 0; i < std::size(bad); i++)
        EXPECT_EQ(read_bytes(bad[i]),
                  Lines{std::string("t:2:2: byte ") + byte[i] + " is not UTF-8; save the file as UTF-8"});
}

TEST(TextFile, AcceptsALineOf100000BytesAndRefusesALongerOne)
{
    const std::string longest(100000, 'x');
    EXPECT_EQ(read_bytes("a\n" + longest + "\nb\n"), Lines());
    EXPECT_EQ(read_bytes("a\n" + longest), Lines());
    const Lines refused = {"t:2:1: line is longer than 100000 bytes; break it into lines"};
    EXPECT_EQ(read_bytes("a\n" + longest + "x\nb\n"), refused);
    EXPECT_EQ(read_bytes("a\n" + longest + "x"), refused);
}

TEST(TextFile, AcceptsManyLinesThatAreTogetherLong)
{
    std::string text;
    for (int i = 0; i < 30000; i++) text += "0123456789\n";
    EXPECT_EQ(read_bytes(text), Lines());
}

// The fault must come from the first pieces of the file: to read all of it would need
// its size in memory.
TEST(TextFile, RefusesALongLineWithoutReadingTheWholeFile)
{
    Folder folder;
    TextFile file;
    folder.write("t", std::string(200000, 'x'));
    ASSERT_EQ(truncate(folder.file("t").c_str(), 300000000), 0); // sparse
    EXPECT_EQ(read(folder, "t", file), Lines{"t:1:1: line is longer than 100000 bytes; break it into lines"});
    EXPECT_LT(file.text().size(), 300000u);
}

TEST(TextFile, RefusesAFileLargerThanItsLimit)
{
    Folder folder;
    TextFile file;
    folder.write("t", "0123456789\n0123456789\n");
    EXPECT_EQ(read(folder, "t", file, 22), Lines());
    EXPECT_EQ(read(folder, "t", file, 21), Lines{"t: file \"t\" has more than 21 bytes; split the network"});
}

TEST(TextFile, TakesATextLikeAFile)
{
    for (const std::string &text : {std::string("one\ntwo\n"), std::string("\xEF\xBB\xBFone"), std::string("a\nb\0", 4),
                                    std::string("\xFF\xFEo"), std::string("x\n\x80"), std::string(200000, 'x')}) {
        Folder folder;
        folder.write("t", text);
        TextFile file, taken;
        Faults faults;
        const Lines wanted = read(folder, "t", file);
        EXPECT_EQ(taken.take("t", text, faults), wanted.empty());
        EXPECT_EQ(faults.lines(), wanted);
        if (wanted.empty()) EXPECT_EQ(taken.text(), file.text());
    }
}
