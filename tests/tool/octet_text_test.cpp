#include "tools/octet_text.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace quorvane::tool {
namespace {

using Octets = std::vector<std::uint8_t>;

// ATTACH REQUEST up to the length of its container, TS 24.301, 8.2.4; the octets 41 and 29 are
// characters too.
const Octets kOctets = {0x07, 0x41, 0x71, 0x08, 0x29, 0x26, 0x10, 0x21, 0x43,
                        0x65, 0x87, 0x09, 0x02, 0xE0, 0xE0, 0x00, 0x04, 0x20};

Octets Read(std::string_view text) {
    Octets octets;
    EXPECT_EQ(ParseOctets(text, octets), "") << text;
    return octets;
}

std::string ProblemOf(std::string_view text) {
    Octets octets;
    return ParseOctets(text, octets);
}

TEST(OctetText, TakesGroupsOfManyForms) {
    const Octets two = {0x0F, 0x87};
    for (const char* text : {"0F87",
                             "0f 87",
                             "0F,87",
                             "0F, 87,",
                             "0F;87;",
                             "0F-87",
                             "0F - 87",
                             "0F:87",
                             "0F::87",
                             "0x0F,0X87",
                             "\\X0F\\X87",
                             "0x0F87",
                             "{0x0F, 0x87}",
                             "{ 0x0F, 0x87, };",
                             "[0F 87]",
                             "([0F 87])",
                             "\"0F 87\"",
                             "'0F 87'",
                             "\\x0F\\x87",
                             "\"\\x0F\\x87\"",
                             "\\x0f \\x87",
                             "0Fh 87h",
                             "0Fh,87H",
                             "0F87h",
                             "\t0F\t87\r",
                             "0F\n87\n",
                             "{\n0x0F,\n0x87\n}\n",
                             "# a comment\n\n0F 87\n# and one more\n"}) {
        EXPECT_EQ(Read(text), two) << text;
    }
    EXPECT_EQ(Read(""), Octets());
    EXPECT_EQ(Read("{}"), Octets());
}

TEST(OctetText, TakesDumps) {
    for (const char* text :
         {// xxd
          "00000000: 0741 7108 2926 1021 4365 8709 02e0 e000  .Aq.)&.!Ce......\n"
          "00000010: 0420                                     . \n",
          // with the blank at the end lost
          "00000000: 0741 7108 2926 1021 4365 8709 02e0 e000  .Aq.)&.!Ce......\n"
          "00000010: 0420                                     .\n",
          // xxd -g1
          "00000000: 07 41 71 08 29 26 10 21 43 65 87 09 02 e0 e0 00  .Aq.)&.!Ce......\n"
          "00000010: 04 20                                            . \n",
          // xxd -p
          "0741710829261021436587\n0902e0e0000420\n",
          // hexdump -C
          "00000000  07 41 71 08 29 26 10 21  43 65 87 09 02 e0 e0 00  |.Aq.)&.!Ce......|\n"
          "00000010  04 20                                             |. |\n"
          "00000012\n",
          // tcpdump -x
          "\t0x0000:  0741 7108 2926 1021 4365 8709 02e0 e000\n"
          "\t0x0010:  0420\n",
          // without a text column, and not from the start of the file
          "0010  07 41 71 08 29 26 10 21 43 65 87 09 02 e0 e0 00\r\n"
          "0020  04 20\r\n"}) {
        EXPECT_EQ(Read(text), kOctets) << text;
    }
    const Octets part(kOctets.begin(), kOctets.begin() + 4);
    EXPECT_EQ(Read("00000000: 0741 7108                                .Aq."), part);
    EXPECT_EQ(Read("00000000  07 41 71 08                                       |.Aq.|"), part);
    EXPECT_EQ(Read("  0000  07 41 71 08   .Aq."), part);
}

// What the text column shows may read as octets and blanks.
TEST(OctetText, KeepsTheTextColumnOut) {
    EXPECT_EQ(Read("00000000: 4142  AB"), (Octets{0x41, 0x42}));
    EXPECT_EQ(Read("0X0000: 41 42  AB"), (Octets{0x41, 0x42}));
    EXPECT_EQ(Read("00000000: 2020 3132 2020                             12  "),
              (Octets{0x20, 0x20, 0x31, 0x32, 0x20, 0x20}));
    EXPECT_EQ(Read("00000000: 3120 3241 2020                           1 2A"),
              (Octets{0x31, 0x20, 0x32, 0x41, 0x20, 0x20}));
    EXPECT_EQ(Read("00000000  7c 7c                                             ||||"),
              (Octets{0x7C, 0x7C}));
}

TEST(OctetText, TakesGroupsThatAreNoOffsets) {
    EXPECT_EQ(Read("0741 7108\n2926 1021\n").size(), 8U);
    EXPECT_EQ(Read("07417108 29"), (Octets{0x07, 0x41, 0x71, 0x08, 0x29}));
    EXPECT_EQ(Read("00000000"), Octets(4));
    EXPECT_EQ(Read("0000 0000"), Octets(4));
    EXPECT_EQ(Read("0x0000 0x0741"), (Octets{0x00, 0x00, 0x07, 0x41}));
    EXPECT_EQ(Read("0000:07:41"), (Octets{0x00, 0x00, 0x07, 0x41}));
}

TEST(OctetText, SaysWhatIsWrongAndWhere) {
    const std::pair<const char*, const char*> cases[] = {
        {"0G", "character 2: 'G' is not a hexadecimal digit"},
        {"02 1 D0", "character 4: an octet needs two hexadecimal digits, this one has one"},
        {"0F8", "character 3: an octet needs two hexadecimal digits, this one has one"},
        {"02 0x", "character 4: no digits follow 0x"},
        {"0F,,87", "character 4: there is no octet ahead of ','"},
        {"-0F", "character 1: there is no octet ahead of '-'"},
        {"0x0Fh", "character 5: 'h' is not a hexadecimal digit"},
        {"\\x0F87", "character 1: \\x stands ahead of each octet, here ahead of more than one"},
        {"{0F 87", "there is no } for the {"},
        {"[\"0F\"", "there is no ] for the ["},
        {"0F 87}", "character 6: '}' is not a hexadecimal digit"},
        {"{0F]", "character 4: ']' is not a hexadecimal digit"},
        {"[05] 0F",
         "character 6: brackets and quotes stand around all octets, and here they have been "
         "closed"},
        {"0F [87]",
         "character 4: '[' opens behind octets; brackets and quotes stand around all octets"},
        {"0F\n8", "line 2, character 1: an octet needs two hexadecimal digits, this one has one"},
        {"\n0F\n{87}",
         "line 3, character 1: '{' opens behind octets; brackets and quotes stand around all "
         "octets"},
    };
    for (const auto& [text, problem] : cases) {
        EXPECT_EQ(ProblemOf(text), problem) << text;
    }
}

TEST(OctetText, RefusesDumpsThatMayBeSomethingElse) {
    const std::pair<const char*, const char*> cases[] = {
        {"0000 07 41",
         "'0000' may be the offset of a dump or octets; leave it out, or write all octets without "
         "blanks"},
        {"0x0000: 0741",
         "'0000' may be the offset of a dump or octets; leave it out, or write all octets without "
         "blanks"},
        {"00000010: 0741",
         "'00000010' may be the offset of a dump or octets; leave it out, or write all octets "
         "without blanks"},
        {"00000000: 0741  .B",
         "character 17: this is neither an octet nor the text column, which shows the octets "
         "ahead of it"},
        {"00000000: 0741  4142",
         "character 17: this is neither an octet nor the text column, which shows the octets "
         "ahead of it"},
        {"0000000 4107 0871\n0000004\n",
         "line 1, character 9: behind an offset without a colon, digits in groups of other than "
         "two may be numbers of either byte order; xxd and hexdump -C show octets"},
        {"00000000: 0741\n00000010: 7108\n",
         "line 2, the offset is 00000010, and 2 octets (decimal) stand ahead of it"},
        {"00000000: 0741\n7108 2926\n", "line 2, this line has no offset, and the first one has"},
        {"00000000  07 41\n*\n00000020\n",
         "line 2, '*' stands for lines that the dump leaves out; hexdump -v shows them"},
    };
    for (const auto& [text, problem] : cases) {
        EXPECT_EQ(ProblemOf(text), problem) << text;
    }
}

}  // namespace
}  // namespace quorvane::tool
