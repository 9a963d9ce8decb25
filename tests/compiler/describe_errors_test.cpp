// Each kind of mistake in a description file, with the message that tells it.

#include <algorithm>
#include <ctime>
#include <gtest/gtest.h>
#include <ostream>
#include <string>

#include "compiler/describe.h"

namespace quorvane::compiler {
namespace {

struct Mistake {
    const char* name;
    const char* source;
    const char* errors;
};

std::ostream& operator<<(std::ostream& out, const Mistake& mistake) {
    return out << mistake.name;
}

// What most cases need around the line in question.
constexpr const char* kHeader = "family f\nheader h {\n    = 1 8\n    type 8\n}\n";

std::string WithHeader(const char* source) {
    return std::string(kHeader) + source;
}

class DescribeErrors : public testing::TestWithParam<Mistake> {};

TEST_P(DescribeErrors, AreTold) {
    const Description result = Describe({{"f.qd", WithHeader(GetParam().source)}});
    EXPECT_EQ(result.errors, GetParam().errors);
    EXPECT_EQ(result.code, "");
}

// Line numbers count the five lines of the header in front.
constexpr Mistake kMistakes[] = {
    {"Character", "struct s fixed {\n    a 8 : int8 ;\n}\n",
     "f.qd:7:16: error: the character ';' has no meaning here\n"},
    {"OpenText", "enum v {\n    1 = \"one\n}\n",
     "f.qd:7:9: error: the text has no closing quote on its line\n"},
    {"Escape", "enum v {\n    1 = \"a\\q\"\n}\n",
     "f.qd:7:11: error: a backslash stands before 't', 'x' and two digits, or a backslash\n"},
    {"NotAscii", "\xC3\xA9\xC3\xA9 struct s fixed {\n    a 8 : int8\n}\n",
     "f.qd:6:1: error: a description is made of printable ASCII characters\n"},
    {"HugeNumber", "struct s fixed {\n    a 99999999999999999999999 : int8\n}\n",
     "f.qd:7:7: error: the number is too large\n"},
    {"HugeSize",
     "message m h 1 {\n    a V 99999999999999999999999 : int8\n}\nset s {\n    key octets 0 0\n    "
     "m = 0101\n}\n",
     "f.qd:7:9: error: the number is too large\n"},
    {"OneErrorOfALine", "family f diagnostics from x to y\n",
     "f.qd:6:27: error: the first diagnostic number is expected here, not 'x'\n"},
    {"MessageOfAnUnknownHeader",
     "message m g 1 {\n}\nset s {\n    key octets 0 1\n    m = 0101\n}\nunion u messages octet 1 "
     "{\n    m : m\n}\n",
     "f.qd:6:11: error: no header 'g' is declared\n"},
    {"Declaration", "struture s {\n}\n",
     "f.qd:6:1: error: a declaration (family, specials, skip, enum, struct, union, sequence, csn, "
     "pattern, take, header, message, set or decoding) is expected here, not 'struture'\n"},
    {"Shape", "struct s {\n    a 8 : int8\n}\n",
     "f.qd:6:10: error: the wire form (fixed, truncatable, serial, extension or special) is "
     "expected here, not '{'\n"},
    {"Colon", "struct s fixed {\n    a 8 int8\n}\n",
     "f.qd:7:9: error: ':' is expected here, not 'int8'\n"},
    {"LineEnd", "struct s fixed {\n    a 8 : int8 int8\n}\n",
     "f.qd:7:16: error: the end of the line is expected here, not 'int8'\n"},
    {"TypeUnknown", "struct s fixed {\n    a 8 : t\n}\n",
     "f.qd:7:11: error: no type 't' is declared above; a type stands before its users\n"},
    {"EnumUnknown", "struct s fixed {\n    a 8 : enum v\n}\n",
     "f.qd:7:16: error: no enumeration 'v' is declared\n"},
    {"EnumerationWidth",
     "enum v {\n    1 = \"a\"\n}\nspecials \"x.h\" {\n    x\n}\n"
     "struct s special x {\n    a : enum v\n}\n",
     "f.qd:13:9: error: the width of the enumeration in bits is missing: 'enum8'\n"},
    {"EnumTwice", "enum v {\n    1 = \"a\"\n}\nenum v {\n    1 = \"a\"\n}\n",
     "f.qd:9:6: error: the enumeration 'v' is declared already; give it another name\n"},
    {"TypeTwice", "struct s fixed {\n    a 8 : int8\n}\nsequence s [2] of int8\n",
     "f.qd:9:10: error: 's' is declared already; names are unique in a family\n"},
    {"SequenceWithABrokenOnesName", "union u choice {\n}\nsequence u [2] of int8\n",
     "f.qd:6:16: error: the selector's offset in bits is expected here, not '{'\n"
     "f.qd:8:10: error: 'u' is declared already; names are unique in a family\n"},
    {"MessageWithABrokenOnesName", "union m choice {\n}\nmessage m h 1 {\n}\n",
     "f.qd:6:16: error: the selector's offset in bits is expected here, not '{'\n"
     "f.qd:8:9: error: 'm' is declared already; names are unique in a family\n"},
    {"SequenceWithAMessagesName", "message m h 1 {\n}\nsequence m [2] of int8\n",
     "f.qd:8:10: error: 'm' is declared already; names are unique in a family\n"},
    {"MemberTwice", "struct s fixed {\n    a 8 : int8\n    a 8 : int8\n}\n",
     "f.qd:8:5: error: 's' has a member 'a' already; a member has a name of its own\n"},
    {"IntegerTooWide", "struct s fixed {\n    a 33 : int32\n}\n",
     "f.qd:7:7: error: 33 is above 32, the most bits of this integer\n"},
    {"WidthMissing", "struct s fixed {\n    a : int8\n}\nstruct t serial {\n    b : binary 8\n}\n",
     "f.qd:10:5: error: the width of 'b' in bits is missing in front of the colon\n"},
    {"WidthDiffers", "struct s fixed {\n    a 8 : int8\n}\nstruct t fixed {\n    b 16 : s\n}\n",
     "f.qd:10:5: error: 'b' has 16 bits here, its type 8\n"},
    {"CountedInFixed", "struct s fixed {\n    a counted : binary 8\n}\n",
     "f.qd:7:5: error: only a serial struct has counted members\n"},
    {"NoBits", "struct s fixed {\n    a 0 : int8\n    - 0\n    b 0 : spare\n}\n",
     "f.qd:7:7: error: 0 is below 1, the least bits of a member\n"
     "f.qd:8:7: error: 0 is below 1, the least bits of a member\n"
     "f.qd:9:7: error: 0 is below 1, the least bits of a member\n"},
    {"NoBitsOfAType", "struct s fixed {\n    a 8 : int8\n}\nstruct t fixed {\n    b 0 : s\n}\n",
     "f.qd:10:5: error: 'b' has 0 bits here, its type 8\n"},
    {"NoBitsInSerial",
     "sequence s [4] of int8\nstruct t serial {\n    a 8 : int8\n    b 0 : s\n}\n",
     "f.qd:9:7: error: 0 is below 1, the least bits of a member\n"},
    {"RestInFixed", "struct s fixed {\n    a rest : binary 8\n}\n",
     "f.qd:7:5: error: a fixed struct has no member that takes the rest; use truncatable or "
     "serial\n"},
    {"RestNotLast", "struct s truncatable {\n    a rest : binary 8\n    b 8 : int8\n}\n",
     "f.qd:7:5: error: a member that takes the rest is the last one\n"},
    {"OctetWidth",
     "struct s extension {\n    group 3 {\n        octet {\n            a 8 : int8\n        }\n"
     "    }\n}\n",
     "f.qd:8:9: error: the members of an octet take 7 bits behind the extension bit, not 8\n"},
    {"OctetFlagMissing",
     "struct s extension {\n    group 3 {\n        octet {\n            a 7 : int7\n        }\n"
     "        octet {\n            b 7 : int7\n        }\n    }\n}\n",
     "f.qd:12:13: error: the first member of an octet that may be absent is optional: put a '?' "
     "behind its name\n"},
    {"OctetFlagOdd",
     "struct s extension {\n    group 3 {\n        octet {\n            a? 7 : int7\n        }\n"
     "    }\n}\n",
     "f.qd:9:13: error: only the first member of an octet that may be absent is optional\n"},
    {"ChoiceWithoutDefault",
     "struct s fixed {\n    a 8 : int8\n}\nunion u choice 0 2 {\n    a : s when 1\n}\n",
     "f.qd:9:7: error: a choice needs a default alternative\n"},
    {"ChoiceWithoutValue",
     "struct s fixed {\n    a 8 : int8\n}\nunion u choice 0 2 {\n    a : s\n    b : s default\n}\n",
     "f.qd:10:5: error: an alternative of a choice has 'when' and a value, one of them "
     "'default'\n"},
    {"AlternativeNoMessage",
     "struct s fixed {\n    a 8 : int8\n}\nunion u messages octet 1 {\n    a : s\n}\n",
     "f.qd:10:9: error: 's' is no message declared above\n"},
    {"SelectorOfAMessage", "message m h 1 {\n}\nunion u messages octet 1 {\n    a : m when 1\n}\n",
     "f.qd:9:5: error: only a choice has alternatives with 'when' or 'default'\n"},
    {"InlineAlternative",
     "sequence s [4] of int8\nunion u choice 0 2 {\n    a : s default\n    b : [3] of int8 when "
     "1\n}\n",
     "f.qd:9:9: error: only a special union has types that stand inline; declare this one above "
     "and "
     "name it here\n"},
    {"InlineMessage", "union u messages octet 1 {\n    a : {\n        b : int8\n    }\n}\n",
     "f.qd:7:9: error: only a special union has types that stand inline; declare this one above "
     "and "
     "name it here\n"},
    {"InlineOfAlternative",
     "specials \"x.h\" {\n    x\n}\nunion u special x {\n    a : {\n        b 3 : int8\n    }\n}\n",
     "f.qd:11:9: error: a member has no width here, only a name and a type\n"},
    {"UnionForm", "union u {\n}\n",
     "f.qd:6:9: error: the way to choose (choice, messages or special) is expected here, not "
     "'{'\n"},
    {"SequenceForm", "sequence s int8\n", "f.qd:6:12: error: a sequence is '[most] of type'\n"},
    {"CsnUnknown", "csn c\n",
     "f.qd:6:5: error: no .csn1 file of the family has a structure 'c' at its top\n"},
    {"InlineStruct", "struct s fixed {\n    a 8 : {\n        b : int8\n    }\n}\n",
     "f.qd:7:11: error: an inline struct has a wire form only inside a special element; declare a "
     "struct of its own\n"},
    {"HeaderUnknown", "message m k 1 {\n}\n", "f.qd:6:11: error: no header 'k' is declared\n"},
    {"HeaderTwice", "header h {\n    type 8\n}\n",
     "f.qd:6:8: error: the header 'h' is declared already\n"},
    {"RecordOfNothing", "header r {\n    after body a 1 : int1\n    b 7 : int7\n    record\n}\n",
     "f.qd:9:11: error: a member of the header is expected here, not the end of the line\n"},
    {"RecordUnknown",
     "header r {\n    after body a 1 : int1\n    b 7 : int7\n    record b c a\n}\n",
     "f.qd:9:14: error: 'c' is no member of the header, or stands in the record's order already\n"},
    {"RecordTwice", "header r {\n    after body a 1 : int1\n    b 7 : int7\n    record b a b\n}\n",
     "f.qd:9:16: error: 'b' is no member of the header, or stands in the record's order already\n"},
    {"RecordIncomplete", "header r {\n    after body a 1 : int1\n    b 7 : int7\n    record b\n}\n",
     "f.qd:7:16: error: 'a' is missing in the record's order\n"},
    {"RecordOfOthers", "header r {\n    a 8 : int8\n    record type\n}\n",
     "f.qd:7:5: error: 'a' is missing in the record's order\n"
     "f.qd:8:12: error: 'type' is no member of the header, or stands in the record's order "
     "already\n"},
    {"RecordOfAStruct", "struct r fixed {\n    a 4 : int4\n    b 4 : int4\n    record b c\n}\n",
     "f.qd:7:5: error: 'a' is missing in the record's order\n"
     "f.qd:9:14: error: 'c' is no member of the struct, or stands in the record's order already\n"},
    {"RecordOfASpecial",
     "specials \"x.h\" {\n    x\n}\nstruct r special x {\n    a : int4\n    b : int4\n    record b "
     "a\n}\n",
     "f.qd:12:12: error: the members of a special struct stand in the record's order already\n"},
    {"RecordOnTheWire", "struct r fixed {\n    a 4 : int4\n    b 4 : int4\n    record a b\n}\n",
     "f.qd:9:12: error: the record's order is that on the wire; leave the line out\n"},
    {"RecordOfAHeaderOnTheWire", "header r {\n    a 4 : int4\n    b 4 : int4\n    record a b\n}\n",
     "f.qd:9:12: error: the record's order is that on the wire; leave the line out\n"},
    {"HeaderItem", "header r {\n    ? 8\n}\n",
     "f.qd:7:5: error: a member, '=', 'type', 'pseudo length', 'after body' or 'record' is "
     "expected "
     "here, not '?'\n"},
    {"IdentifierMissing", "message m h 1 {\n    a TLV 1 : int8\n}\n",
     "f.qd:7:5: error: 'a' needs its identifier in front of the format\n"},
    {"IdentifierOdd", "message m h 1 {\n    a 12 LV 1 : int8\n}\n",
     "f.qd:7:5: error: the format of 'a' has no identifier; TV, TLV, TLV-E and T have one\n"},
    {"IdentifierForm", "message m h 1 {\n    a 123 TV 1 : int8\n}\n",
     "f.qd:7:7: error: an identifier has two hexadecimal digits, or one with '-' behind it\n"},
    {"HalfIdentifier", "message m h 1 {\n    a 9- TV 1 : int8\n}\n",
     "f.qd:7:5: error: an identifier of half an octet goes with a value of half an octet: '9- TV "
     "half'\n"},
    {"Format", "message m h 1 {\n    a 12 XV 1 : int8\n}\n",
     "f.qd:7:10: error: a format (V, LV, LV-E, TV, TLV, TLV-E, T, rest or endcheck) is expected "
     "here, "
     "not 'XV'\n"},
    {"SizeMissing", "message m h 1 {\n    a V : int8\n}\n",
     "f.qd:7:5: error: the size of 'a' is missing: a number of octets, or 'half'\n"},
    {"LimitsTurned", "message m h 1 {\n    a LV 4-2 : binary 32\n}\n",
     "f.qd:7:10: error: the limits of 'a' are the wrong way round\n"},
    {"LengthOfHalfAnOctet", "message m h 1 {\n    a LV half : int4\n}\n",
     "f.qd:7:5: error: a field with a length is not half an octet\n"},
    {"MandatoryOdd", "message m h 1 {\n    a V 1 mandatory : int8\n}\n",
     "f.qd:7:5: error: a field without an identifier is mandatory as it is\n"},
    {"FieldWidth", "struct s fixed {\n    a 16 : int16\n}\nmessage m h 1 {\n    b V 1 : s\n}\n",
     "f.qd:10:13: error: 'b' has 8 bits, its type 16\n"},
    {"HalfOctetAlone", "message m h 1 {\n    a V half : int4\n    b V 1 : int8\n}\n",
     "f.qd:7:5: error: the half octet 'a' needs a second one behind it; add a SpareHalfOctet\n"},
    {"ConditionUnknown", "message m h 1 {\n    a V 1 if b = 1 : int8\n}\n",
     "f.qd:7:14: error: 'b' is no field above this one\n"},
    {"SetMessageUnknown", "set s {\n    key octets 0 1\n    m = 1\n}\n",
     "f.qd:8:5: error: 'm' is no message declared above\n"},
    {"KeyForm", "message m h 1 {\n}\nset s {\n    key octet 0 1\n    m = 101\n}\n",
     "f.qd:9:9: error: the form of the key (octets, bits 6 or extended) is expected here, not "
     "'octet'\n"},
    {"MaskCondition",
     "message m h 1 {\n}\nset s {\n    key octets 0 1\n    mask FFFF if 3\n    m = 101\n}\n",
     "f.qd:10:18: error: 'low' is expected here, not '3'\n"},
    {"KeyTwice",
     "message m h 1 {\n}\nmessage n h 1 {\n}\nset s {\n    key octets 0 1\n    m = 101\n    n = "
     "101\n"
     "}\n",
     "f.qd:13:9: error: the key of 'n' is that of 'm' already\n"},
    {"SkipIdentifierTwice", "skip {\n    TLV : 11 12\n    16 : 11\n}\n",
     "f.qd:8:10: error: the identifier stands in the skip table already\n"},
    {"SkipHalfIdentifier", "skip {\n    8 half : 81\n}\n",
     "f.qd:7:14: error: the identifier of a half-octet row ends in 0\n"},
    {"SkipIdentifierTooLong", "skip {\n    16 : 123\n}\n",
     "f.qd:7:10: error: 0x123 is above 0xFF, the most of an identifier\n"},
    {"SpecialsHeader", "specials stdio {\n}\n",
     "f.qd:6:10: error: a header in double quotes is expected here, not 'stdio'\n"},
    {"OtherFamily", "family g\n",
     "f.qd:6:8: error: the family is 'f' in the other files; all files of a run are one "
     "family's\n"},
};

INSTANTIATE_TEST_SUITE_P(Kinds, DescribeErrors, testing::ValuesIn(kMistakes),
                         [](const auto& kind) { return std::string(kind.param.name); });

TEST(Describe, TellsAllMistakesOfARun) {
    const Description result =
        Describe({{"a.qd", "family f\nstruct s fixed {\n    a 8 : t\n    b 8 : enum v\n}\n"},
                  {"b.qd", "family f\nsequence q [3] of r\n"}});
    EXPECT_EQ(result.errors,
              "a.qd:3:11: error: no type 't' is declared above; a type stands before its users\n"
              "a.qd:4:16: error: no enumeration 'v' is declared\n"
              "b.qd:2:19: error: no type 'r' is declared above; a type stands before its users\n");
}

// A declaration that could not be read whole is known by its name, and nothing else is said of it.
TEST(Describe, TellsNoFollowUpsOfWhatCouldNotBeRead) {
    const Description result = Describe(
        {{"a.qd",
          WithHeader("struct s fixed {\n    a 8 int8\n}\n"
                     "enum e {\n    1 \"one\"\n}\n"
                     "header g {\n    1 8\n    type x\n}\n"
                     "union u choice x y {\n    a : s when 1\n}\n"
                     "message m h 1 {\n    a V 1 : s\n    b V 1 if a = 1 : enum8 e\n    c V 1 if "
                     "a.b = 1 : u\n}\n"
                     "message n h 1 {\n    a V 1 int8\n}\n"
                     "message o g 1 {\n    a V 1 : int8\n}\n"
                     "set t {\n    key octets 0 1\n    m = 0101\n    n = 0102\n    o = 0103\n}\n"
                     "set v {\n    = 0101\n}\n"
                     "pattern struct w fixed {\n    a 8 int8\n}\n"
                     "take w as x\n"
                     "sequence y [2] of x\n")
              .c_str()}});
    EXPECT_EQ(result.errors,
              "a.qd:7:9: error: ':' is expected here, not 'int8'\n"
              "a.qd:10:7: error: '=' is expected here, not a text\n"
              "a.qd:13:8: error: ':' is expected here, not the end of the line\n"
              "a.qd:14:10: error: its width in bits is expected here, not 'x'\n"
              "a.qd:16:16: error: the selector's offset in bits is expected here, not 'x'\n"
              "a.qd:25:11: error: ':' is expected here, not 'int8'\n"
              "a.qd:37:5: error: a message's name is expected here, not '='\n"
              "a.qd:40:9: error: ':' is expected here, not 'int8'\n");
}

// What a .csn1 file declares with mistakes is known to the .qd files, and what they declare wrongly
// does not keep the .csn1 files from being looked at.
TEST(Describe, TellsTheMistakesOfBothNotations) {
    const Description result = Describe(
        {{"a.qd",
          "family f\ncsn T\nsequence q [3] of T\nsequence p [3] of U\nstruct s fixed {\n    a 8 : "
          "t\n}\n"},
         {"b.csn1", "structure T \"clause\" ;\n< t > ::= { 0 ;\n"}});
    EXPECT_EQ(result.errors,
              "a.qd:4:19: error: no type 'U' is declared above; a type stands before its users\n"
              "a.qd:6:11: error: no type 't' is declared above; a type stands before its users\n"
              "b.csn1:2:15: error: '}' is expected here, not ';'\n");
}

TEST(Describe, TellsAByteOrderMarkOnce) {
    const std::string message =
        ":1:1: error: the file begins with a byte order mark; save it as ASCII text\n";
    const std::string qd = "family f\nsequence q [3] of int8\n";
    const std::string csn = "structure T \"clause\" ;\n< t > ::= < a : bit > ;\n";
    for (const std::string mark : {"\xEF\xBB\xBF", "\xFE\xFF", "\xFF\xFE"}) {
        EXPECT_EQ(Describe({{"a.qd", mark + qd}}).errors, "a.qd" + message);
        EXPECT_EQ(Describe({{"a.qd", qd}, {"b.csn1", mark + csn}}).errors, "b.csn1" + message);
    }
}

// A text of 1000 characters stands in the tables with a number of 32 bits behind it.
TEST(Describe, TellsOfTextsThatAreTooLong) {
    const auto errorsWith = [](std::size_t length) {
        return Describe(
                   {{"f.qd", "family f\nenum v {\n    4294967295 = \"" + std::string(length, 'x') +
                                 "\"\n}\nstruct s fixed {\n    a 32 : enum v\n}\n"}})
            .errors;
    };
    EXPECT_EQ(errorsWith(1000), "");
    EXPECT_EQ(errorsWith(1001), "f.qd:3:18: error: a name or a text has at most 1000 characters\n");
}

// Within a time that rises with their number: a hundred times of what they take.
TEST(Describe, TellsManyErrors) {
    constexpr std::size_t kErrors = 300000;
    std::string lines;
    for (std::size_t count = 0; count < kErrors; ++count) {
        lines += "@\n";
    }
    const std::clock_t start = std::clock();
    const std::string inLines = Describe({{"a.qd", "family f\n" + lines}}).errors;
    const std::string inOneLine =
        Describe({{"a.qd", "family f\n" + std::string(kErrors, '@')}}).errors;
    EXPECT_LT(std::clock() - start, 30 * CLOCKS_PER_SEC);
    EXPECT_TRUE(
        inLines.ends_with("\na.qd:300001:1: error: the character '@' has no meaning here\n"));
    EXPECT_TRUE(
        inOneLine.ends_with("\na.qd:2:300000: error: the character '@' has no meaning here\n"));
    EXPECT_EQ(std::count(inLines.begin(), inLines.end(), '\n'), kErrors);
}

TEST(Describe, WantsAFamilyAndKnownFiles) {
    EXPECT_EQ(Describe({{"a.qd", "\n"}}).errors,
              "a.qd:1:1: error: no file says 'family' and the family's name\n");
    EXPECT_EQ(Describe({{"a.qd", "family f\n"}, {"b.txt", ""}}).errors,
              "b.txt:1:1: error: a description file ends in .qd or .csn1\n");
}

TEST(Describe, OutputDependsOnTheSourcesAlone) {
    const std::vector<Source> sources = {
        {"some/where/a.qd",
         WithHeader("message m h 1 {\n    a V 1 : enum {\n        1 = \"\\xDF\\t\"\n    }\n}\n"
                    "set s {\n    key octets 0 1\n    m = 101\n}\n")}};
    std::vector<Source> elsewhere = sources;
    elsewhere[0].name = "/another/place/a.qd";
    const Description first = Describe(sources);
    EXPECT_EQ(first.errors, "");
    EXPECT_EQ(first.code, Describe(elsewhere).code);
    EXPECT_NE(first.code.find("\"\\337\\011\""), std::string::npos);
}

}  // namespace
}  // namespace quorvane::compiler
