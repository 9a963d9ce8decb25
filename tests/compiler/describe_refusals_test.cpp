// What a description cannot mean, though each word of it can be read: numbers that have no room,
// and statements that contradict each other. One case for each.

#include <gtest/gtest.h>
#include <ostream>
#include <string>

#include "compiler/describe.h"

namespace quorvane::compiler {
namespace {

struct Refusal {
    const char* name;
    std::string source;
    std::string errors;
};

std::ostream& operator<<(std::ostream& out, const Refusal& refusal) {
    return out << refusal.name;
}

// A header and two types in front of each case: their 13 lines count in the places.
constexpr const char* kPrelude =
    "family f\n"
    "header h {\n"
    "    = 1 8\n"
    "    type 8\n"
    "}\n"
    "struct three fixed {\n"
    "    a 24 : int24\n"
    "}\n"
    "struct one fixed {\n"
    "    a 4 : int4\n"
    "    b 4 : int4\n"
    "}\n"
    "\n";

std::string Message(const std::string& fields, const std::string& behind = "") {
    return "message m h 1 {\n" + fields + "}\n" + behind;  // fields from line 15
}

std::string Set(const std::string& lines) {
    return "message m h 1 {\n}\nset s {\n" + lines + "}\n";  // lines from line 17
}

// A group of one octet, five lines.
const std::string kGroup =
    "    group 3 {\n        octet {\n            a 7 : int7\n        }\n    }\n";

std::string Extension(const std::string& parts) {
    return "struct s extension {\n" + parts + "}\n";  // parts from line 15
}

constexpr const char* kNoSpare =
    "only half octets without an identifier and bits of a stated width are spare; give this a "
    "type";

// A struct whose second octet a field may leave out, and a field that this octet decides on.
const std::string kCutOff = "struct t truncatable {\n    x 8 : int8\n    y 8 : int8\n}\n";
const std::string kDecided = "    b V 1 if a.y = 0 : int8\n}\n";

// A use of the header.
const std::string kUsed = Set("    key octets 0 1\n    m = 0101\n");

class DescribeRefusals : public testing::TestWithParam<Refusal> {};

TEST_P(DescribeRefusals, AreTold) {
    const Description result = Describe({{"f.qd", kPrelude + GetParam().source}});
    EXPECT_EQ(result.errors, GetParam().errors);
    EXPECT_EQ(result.code, "");
}

std::string Error(const char* place, const std::string& text) {
    return "f.qd:" + std::string(place) + ": error: " + text + "\n";
}

const Refusal kNumbers[] = {
    {"LengthOfTwoOctets", Message("    a 12 TLV-E 3-70000 : binary 8\n"),
     Error("15:18", "70000 is above 65535, the most octets behind a length of two octets")},
    {"LengthOfOneOctet", Message("    a LV 3-256 : binary 8\n"),
     Error("15:12", "256 is above 255, the most octets behind a length of one octet")},
    {"Octets", Message("    a V 9000 : binary 8\n"),
     Error("15:9", "9000 is above 8191, the most octets of a value without a length")},
    {"NoOctets", Message("    a V 0 : binary 8\n"),
     Error("15:9", "0 is below 1, the least octets of a value without a length")},
    {"OctetsFromTo", Message("    a V 1-2 : binary 8\n"),
     Error("15:5", "the size of 'a' is missing: a number of octets, or 'half'")},
    {"HeaderField", "header g {\n    a 300 : int8\n}\nmessage m g {\n}\n",
     Error("15:7", "300 is above 32, the most bits of a header's item")},
    {"HeaderConstant", "header g {\n    = 16 4\n    = 0 4\n}\nmessage m g {\n}\n",
     Error("15:7", "16 is above 15, the most in 4 bits")},
    {"MessageType", "message m h 0x1FF {\n}\n",
     Error("14:13", "0x1FF is above 0xFF, the most of the message type")},
    {"Mask", Set("    key octets 0 1\n    mask 1FFFF\n    m = 0101\n"),
     Error("18:10", "0x1FFFF is above 0xFFFF, the most of a mask")},
    {"KeyOctet", Set("    key octets 0 8\n    m = 0101\n"),
     Error("17:18", "8 is above 7, the most octets ahead of one that tells a message")},
    {"ShownOctet", Set("    key octets 0 1\n    shows octet 8\n    m = 0101\n"),
     Error("18:17", "8 is above 7, the most octets ahead of one that tells a message")},
    {"Key", Set("    key octets 0 1\n    m = 10101\n"),
     Error("18:9", "0x10101 is above 0xFFFF, the most of a key")},
    {"KeyOfSixBits", Set("    key bits 6\n    m = 40\n"),
     Error("18:9", "0x40 is above 0x3F, the most of a key")},
    {"Binary", Message("    a rest : binary 600000\n"),
     Error("15:21", "600000 is above 524280, the most bits of a binary")},
    {"NoBinary", Message("    a rest : binary 0\n"),
     Error("15:21", "0 is below 1, the least bits of a binary")},
    {"FixedBinary", Message("    a rest : binary 70000 fixed\n"),
     Error("15:21", "70000 is above 65535, the most bits of a value")},
    {"NoItems", "sequence s [0] of int8\n",
     Error("14:13", "0 is below 1, the least items of a sequence")},
    {"Items", "sequence s [4294967295] of int8\n",
     Error("14:13", "4294967295 is above 65535, the most items of a sequence")},
    {"BeyondSixtyFourBits", "sequence s [99999999999999999999] of int8\n",
     Error("14:13", "the number is too large")},
    {"AllOfSixtyFourBits", Message("    a V 18446744073709551615 : binary 8\n"),
     Error("15:9", "the number is too large")},
    {"CatalogueBits", "struct s fixed {\n    a 8 : int64\n}\n",
     Error("15:14", "64 is above 32, the most bits of this integer")},
    {"SelectorOffset", "union u choice 65536 3 {\n    a : one default\n}\n",
     Error("14:16", "65536 is above 5, the most bits ahead of a selector")},
    {"SelectorBehindTheAlternatives",
     "union u choice 22 3 {\n    a : three default\n    b : one when 1\n}\n",
     Error("14:16", "22 is above 21, the most bits ahead of a selector")},
    {"SelectorWidth", "union u choice 0 33 {\n    a : one default\n}\n",
     Error("14:18", "33 is above 8, the most bits of a selector")},
    {"SelectorWiderThanANumber",
     "struct s serial {\n    a rest : binary 8\n}\nunion u choice 0 33 {\n    a : s default\n}\n",
     Error("17:18", "33 is above 32, the most bits of a selector")},
    {"SelectorValue", "union u choice 5 3 {\n    a : one default\n    b : one when 8\n}\n",
     Error("16:18", "8 is above 7, the most of the selector")},
    {"TypeOctet", Message("", "union u messages octet 8192 {\n    a : m\n}\n"),
     Error("16:24", "8192 is above 8191, the most octets ahead of a message type")},
    {"EnumerationValue", "struct s fixed {\n    a 3 : enum {\n        8 = \"x\"\n    }\n}\n",
     Error("16:9", "8 is above 7, the most in the 3 bits of 's_a'")},
    {"ReachableValue",
     "struct s fixed {\n    a 3 : enum {\n        7 = \"x\" unreachable\n    }\n}\n",
     Error("16:9", "the value is reachable in the 3 bits of 's_a'")},
    {"StructBits", "struct s fixed {\n    a 40000 : binary 8\n    b 40000 : binary 8\n}\n",
     Error("14:8", "80000 is above 65535, the most bits of a struct")},
    {"MemberBits", "struct s fixed {\n    - 0\n    a 8 : int8\n}\n",
     Error("15:7", "0 is below 1, the least bits of a member")},
    {"FirstDiagnostic", "family f diagnostics from 65536\n",
     Error("14:27", "65536 is above 65535, the most of the family's diagnostic numbers")},
    {"DiagnosticsTwice", "family f diagnostics from 1\nfamily f diagnostics from 2\n",
     Error("15:10", "the family's diagnostic numbers are stated already")},
    {"DiagnosticsOverrun",
     "family f diagnostics from 7 to 9\n" + Message("    a V 1 : int8\n    b V 1 : int8\n"),
     Error("14:8", "12 is above 9, the most of the family's diagnostic numbers")},
    {"SkipSize", "skip {\n    1000000 : 11\n}\n",
     Error("15:5", "1000000 is above 524304, the most bits of an element, identifier included")},
    {"SkipHalfSize", "skip {\n    16 half : 80\n}\n",
     Error("15:5", "16 is above 8, the most bits of an element, identifier included")},
    {"Nibble", Set("    key octets 0 1\n    mask FFFF if high 1F\n    m = 0101\n"),
     Error("18:23", "0x1F is above 0xF, the most of a half octet")},
    {"Group",
     "struct s extension {\n    group 11 {\n        octet {\n            a 7 : int7\n        }\n"
     "    }\n}\n",
     Error("15:11", "11 is above 9, the most of the group's octet number")},
    {"GroupTwice",
     "struct s extension {\n    group 3 {\n        octet {\n            a 7 : int7\n        }\n"
     "    }\n    group 3 optional {\n        octet {\n            b? 7 : int7\n        }\n    "
     "}\n}\n",
     Error("20:11", "3 is below 4, the least of the group's octet number")},
};

INSTANTIATE_TEST_SUITE_P(Numbers, DescribeRefusals, testing::ValuesIn(kNumbers),
                         [](const auto& kind) { return std::string(kind.param.name); });

const Refusal kFields[] = {
    {"LimitsBelowTheStruct", Message("    a 12 TLV 1-2 : three\n"),
     Error("15:20", "'a' has 8 to 16 bits, its type 24")},
    {"LimitsAboveTheStruct", Message("    a LV 4-9 : three\n"),
     Error("15:16", "'a' has 32 to 72 bits, its type 24")},
    {"NoWholeOctets", "struct s fixed {\n    a 4 : int4\n}\nmessage m h 1 {\n    a LV : s\n}\n",
     Error("18:12", "'a' has 0 to 2040 bits, its type 4")},
    {"LimitsOfATruncatable",
     "struct s truncatable {\n    a 8 : int8\n}\nmessage m h 1 {\n    a LV 2-3 : s\n}\n",
     Error("18:16", "'a' has 16 to 24 bits, its type 0 to 8")},
    {"LimitsOfASerial",
     "struct s serial {\n    a 16 : int16\n    b rest : binary 8\n}\nmessage m h 1 {\n"
     "    a LV 1 : s\n}\n",
     Error("19:14", "'a' has 8 bits, its type 16 or more")},
    {"LimitsOfAnExtension",
     "struct s extension {\n    group 3 {\n        octet {\n            a 7 : int7\n        }\n"
     "    }\n    group 4 {\n        octet {\n            b 7 : int7\n        }\n    }\n}\n"
     "message m h 1 {\n    a LV 0-1 : s\n}\n",
     Error("27:16", "'a' has 0 to 8 bits, its type 16 or more")},
    {"LimitsOfAFixedBinary", Message("    a LV 1 : binary 16 fixed\n"),
     Error("15:14", "'a' has 8 bits, its type 16")},
    {"LimitsOfAChoice",
     "union u choice 0 1 {\n    a : three default\n    b : one when 1\n}\nmessage m h 1 {\n"
     "    a LV 4 : u\n}\n",
     Error("19:14", "'a' has 32 bits, its type 8 to 24")},
    {"LimitsOfASequence", "sequence q [2] of one\nmessage m h 1 {\n    a LV 3 : q\n}\n",
     Error("16:14", "'a' has 24 bits, its type 0 to 16")},
    {"HalfOctetOfAnOctet", Message("    a V half : one\n    b V half : spare\n"),
     Error("15:16", "'a' has 4 bits, its type 8")},
    {"MemberOfATruncatable",
     "struct s truncatable {\n    a 8 : int8\n}\nstruct t fixed {\n    a 16 : s\n}\n",
     Error("18:5", "'a' has 16 bits here, its type 0 to 8")},
    {"IdentifierTwice", Message("    a 12 TV 1 : int8\n    b 12 TLV 1 : int8\n"),
     Error("15:7",
           "'b' has this identifier with another format; state in 'skip' which of them "
           "passes over it") +
         Error("16:7",
               "'a' has this identifier with another format; state in 'skip' which of them "
               "passes over it") +
         Error("16:7",
               "a field above has the identifier of 'b' already; put 'again' behind the "
               "size if it is repeated")},
    {"AgainTheFirstTime", Message("    a 12 TV 1 again : int8\n"),
     Error("15:7", "no field above has the identifier of 'a'")},
    {"HalfIdentifierOfAnOctet",
     Message("    a 9- TV half : int4\n    b 93 TV 1 : int8\n    c 83 TV 1 : int8\n"),
     Error("16:7", "the identifiers of 'a' and 'b' begin alike, one of them half an octet")},
    {"IdentifierOfAHalfOctet", Message("    a 93 TV 1 : int8\n    b 9- TV half : int4\n"),
     Error("16:7", "the identifiers of 'a' and 'b' begin alike, one of them half an octet")},
    {"SpareOfNoBits", Message("    a V half : spare0\n    b V half : spare\n"),
     Error("15:21", "0 is below 1, the least bits of this integer")},
    {"SpareOctet", Message("    a V 1 : spare\n"), Error("15:13", kNoSpare)},
    {"SpareWithALength", Message("    a 12 TLV 1-3 : spare\n"), Error("15:20", kNoSpare)},
    {"SpareWithAnIdentifier", Message("    a 9- TV half : spare\n"), Error("15:20", kNoSpare)},
    {"SpareRest", Message("    a rest : spare\n"), Error("15:14", kNoSpare)},
    {"ConditionOfAHalfOctet",
     Message("    a V 1 : int8\n    b V half if a = 1 : int4\n    c V half : int4\n"),
     Error("16:17", "half octets are always there; a condition goes with whole octets")},
    {"ConditionOnAnOptionalField", Message("    a 12 TV 1 : int8\n    b V 1 if a = 1 : int8\n"),
     Error("16:14", "'a' may be absent; a field that is always there decides")},
    {"ConditionOnAConditionalField",
     Message("    a V 1 : int8\n    b V 1 if a = 1 : int8\n    c V 1 if b = 1 : int8\n"),
     Error("17:14", "'b' may be absent; a field that is always there decides")},
    {"ConditionOnSpareBits",
     "struct s fixed {\n    x 4 : spare\n    y 4 : int4\n}\n"
     "message m h 1 {\n    a V 1 : s\n    b V 1 if a.x = 0 : int8\n}\n",
     Error("20:16", "'a' has no member 'x' that is a number and always there")},
    {"ConditionOnAnOptionalMember",
     Extension(
         "    group 3 optional {\n        octet {\n            x? 7 : int7\n        }\n    }\n") +
         Message("    a V 1 : s\n    b V 1 if a.x = 0 : int8\n"),
     Error("23:16", "'a' has no member 'x' that is a number and always there")},
    {"ConditionOnANarrowMember",
     "struct s fixed {\n    x 1 : int8\n    y 7 : int7\n}\n"
     "message m h 1 {\n    a V 1 : s\n    b V 1 if a.x = 2 : int8\n}\n",
     Error("20:20", "2 is above 1, the most in 'x'")},
    {"ConditionOnAStruct", Message("    a V 1 : one\n    b V 1 if a & 1 = 1 : int8\n"),
     Error("16:14", "'a' is no integer")},
    {"ConditionOnASpare",
     Message("    a V half : spare\n    b V half : int4\n    c V 1 if a = 1 : int8\n"),
     Error("17:14", "'a' is no integer")},
    {"ConditionOnNoMember", Message("    a V 1 : one\n    b V 1 if a.c = 1 : int8\n"),
     Error("16:16", "'a' has no member 'c' that is a number and always there")},
    {"ConditionOnAMemberOfNoStruct", Message("    a V 1 : int8\n    b V 1 if a.c = 1 : int8\n"),
     Error("16:16", "'a' has no member 'c' that is a number and always there")},
    {"ConditionOnAMemberThatMayBeCutOff",
     kCutOff + "message m h 1 {\n    a LV 1-2 : t\n" + kDecided,
     Error("20:16", "'a' may end ahead of 'y'; a member that is always there decides")},
    {"ConditionOnAnOctetThatMayBeAbsent",
     Extension("    group 3 {\n        octet {\n            x 7 : int7\n        }\n"
               "        octet {\n            v? 3 : int3\n            y 4 : int4\n        }\n"
               "    }\n") +
         Message("    a LV 1-2 : s\n    b V 1 if a.y = 0 : int8\n"),
     Error("27:16", "'a' may end ahead of 'y'; a member that is always there decides")},
    {"ConditionOnAGroupThatMayBeAbsent",
     Extension("    group 3 optional {\n        octet {\n            v? 3 : int3\n"
               "            y 4 : int4\n        }\n    }\n") +
         Message("    a LV 1-2 : s\n    b V 1 if a.y = 0 : int8\n"),
     Error("24:16", "'a' may end ahead of 'y'; a member that is always there decides")},
    {"ConditionOnTooLargeAMember", Message("    a V 1 : one\n    b V 1 if a.b = 16 : int8\n"),
     Error("16:20", "16 is above 15, the most in 'b'")},
    {"UncheckedWithALength", Message("    a LV unchecked : binary 8\n"),
     Error("15:5", "only a field of a fixed number of octets is unchecked")},
    {"UncheckedHalfOctet", Message("    a V half unchecked : int4\n    b V half : int4\n"),
     Error("15:5", "only a field of a fixed number of octets is unchecked")},
    {"PseudoLengthMissing", Message("    a V 1 : int8\n    pseudo length ends\n"),
     Error("16:5", "the header 'h' has no pseudo length")},
    {"PseudoLengthEndsBehindAnEndCheck",
     "header p {\n    pseudo length 8\n    type 8\n}\nmessage n p 1 {\n    a V 1 : int8\n    b "
     "endcheck\n"
     "    c V 1 : int8\n    pseudo length ends\n}\n",
     Error("22:5", "the pseudo length ends at a field above already")},
    {"PseudoLengthBehind", "header p {\n    type 8\n    pseudo length 8\n}\nmessage n p 1 {\n}\n",
     Error("16:5", "a pseudo length is the first octet of a header")},
    {"DecodingOfNothing", "decoding d : x\n",
     Error("14:14", "no type 'x' is declared above; a type stands before its users")},
    {"DecodingTwice", "decoding d : one\ndecoding d : three\n",
     Error("15:10", "'d' is declared already; names are unique in a family")},
    {"DecodingOfASetsName", Set("    key octets 0 1\n    m = 0101\n") + "decoding s : one\n",
     Error("20:10", "'s' is declared already; names are unique in a family")},
    {"SetOfADecodingsName", "decoding s : one\n" + Set("    key octets 0 1\n    m = 0101\n"),
     Error("17:5", "'s' is declared already; names are unique in a family")},
    {"DecodingOfASequence", "sequence q [3] of one\ndecoding d : q\n",
     Error("15:14", "'q' is neither a message nor a struct")},
    {"ConditionMasked", Message("    a V 1 : int8\n    b V 1 if a & 2 = 1 : int8\n"),
     Error("16:22", "the mask excludes the value")},
    {"ConditionMask", Message("    a V 1 : int8\n    b V 1 if a & 256 = 0 : int8\n"),
     Error("16:18", "256 is above 255, the most in 'a'")},
    {"ConditionValue", Message("    a V 1 : int8\n    b V 1 if a = 256 : int8\n"),
     Error("16:18", "256 is above 255, the most in 'a'")},
    {"ConditionOfAnIdentifier", Message("    a V 1 : int8\n    b 12 TV 1 if a = 1 : int8\n"),
     Error("16:18", "a field with an identifier is there if its identifier is")},
    {"BehindTheRest", Message("    a rest : binary 8\n    b V 1 : int8\n"),
     Error("15:5", "a field that takes the rest is the last one")},
    {"SizeOfTheRest", Message("    a rest 5 : binary 8\n"),
     Error("15:5", "the format of 'a' has no size")},
    {"SizeOfATypeOnly", Message("    a 12 T 5\n"), Error("15:5", "the format of 'a' has no size")},
    {"MessageNowhere", "message m h 1 {\n}\n",
     Error("14:9", "'m' is in no message set, union, field or decoding")},
    {"HeaderNowhere",
     Set("    key octets 0 1\n    m = 0101\n") + "header p {\n    a 300 : nosuch\n}\n",
     Error("20:8", "the header 'p' is used by no message")},
    {"MessageTypeMissing", "message m h {\n}\n",
     Error("14:11", "the message type is missing behind the header's name")},
    {"MessageTypeOdd", "header g {\n    = 1 8\n}\nmessage m g 1 {\n}\n",
     Error("17:11", "the header 'g' has no message type")},
    {"HeaderTypeTwice", "header g {\n    type 8\n    type 8\n}\nmessage m g 1 {\n}\n",
     Error("16:5", "the header has a message type already")},
    {"HeaderStruct", "header g {\n    a 8 : one\n}\nmessage m g {\n}\n",
     Error("15:11", "a member of a header is an integer or enumerated")},
    {"HeaderIdentifier", "header g {\n    a extended 4 : int4\n}\nmessage m g {\n}\n",
     Error("15:16", "a transaction identifier has 3 bits")},
    {"SpecialUnknown", "struct s special kNope {\n    a : int8\n}\n",
     Error("14:18",
           "no C++ element 'kNope' is declared; name it in a block 'specials' behind the "
           "header that declares it")},
};

INSTANTIATE_TEST_SUITE_P(Fields, DescribeRefusals, testing::ValuesIn(kFields),
                         [](const auto& kind) { return std::string(kind.param.name); });

const Refusal kSets[] = {
    {"KeyAgainstTheType", Set("    key octets 0 1\n    m = 0102\n"),
     Error("18:9", "the header and the type of 'm' contradict this key")},
    {"KeyAgainstAConstant", Set("    key octets 0 1\n    mask 0FFF\n    m = 201\n"),
     Error("19:9", "the header and the type of 'm' contradict this key")},
    {"KeyBehindTheMask", Set("    key octets 0 1\n    mask 0F0F\n    m = 0111\n"),
     Error("19:9", "the masks of the set let no message have this key")},
    {"KeyOfAnotherMask",
     Set("    key octets 0 1\n    mask FF00 if low 1\n    mask FFFF\n    m = 0101\n"),
     Error("20:9", "the masks of the set let no message have this key")},
    {"KeyOfSixBitsAgainstTheHeader", Set("    key bits 6\n    m = 3F\n"),
     Error("18:9", "the header and the type of 'm' contradict this key")},
    {"KeyMissing", Set("    m = 0101\n"), Error("16:5", "the set has no line 'key'")},
    {"KeyLineTwice", Set("    key octets 0 1\n    key octets 0 1\n    m = 0101\n"),
     Error("18:5", "a line 'key' stands here already")},
    {"ShowsTwice", Set("    key octets 0 1\n    shows octet 1\n    shows octet 1\n    m = 0101\n"),
     Error("19:5", "a line 'shows' stands here already")},
    {"NoKeyOfAMessage", Set("    key octets 0 1\n    m =\n"),
     Error("18:8", "a key in hexadecimal is expected here, not the end of the line")},
    {"NoNibbles", Set("    key octets 0 1\n    mask FFFF if low\n    m = 0101\n"),
     Error("18:21", "a half octet is expected here, not the end of the line")},
    {"ConditionTwice", Set("    key octets 0 1\n    mask FFFF if low 1 if low 2\n    m = 0101\n"),
     Error("18:27", "a condition 'low' stands here already")},
    {"HighConditionTwice",
     Set("    key octets 0 1\n    mask FFFF if high 0 if high 1\n    m = 0101\n"),
     Error("18:28", "a condition 'high' stands here already")},
    {"MaskNeverReached", Set("    key octets 0 1\n    mask FFFF\n    mask FF00\n    m = 0101\n"),
     Error("19:10", "no first octet selects this mask")},
    {"RecordLineTwice",
     "header g {\n    a 8 : int8\n    record a\n    record a\n}\nmessage m g {\n}\n",
     Error("17:5", "a line 'record' stands here already")},
    {"SkipAsItFollows",
     Message("    a 12 TV 1 : int8\n",
             "set s {\n    key octets 0 1\n    m = 0101\n}\n"
             "skip {\n    16 : 12\n}\n"),
     Error("22:10", "this follows from the messages; only what differs is stated")},
    {"SkipNothing", "skip {\n    none : 12\n}\n",
     Error("15:12", "this follows from the messages; only what differs is stated")},
    {"UnknownAsItFollows", "skip {\n    unknown TLV : 12\n}\n",
     Error("15:19", "this follows from the identifier; only what differs is stated")},
    {"UnknownTwice", "skip {\n    unknown TLV-E : 79 79\n}\n",
     Error("15:24", "an unknown element has this identifier already")},
    {"UnknownWithARow", "skip {\n    16 : 79\n    unknown TLV-E : 79\n}\n",
     Error("16:21", "the skip table has a row for this identifier")},
    {"UnknownWithoutALength", "skip {\n    unknown none : 79\n}\n",
     Error("15:13", "'TLV' is expected here, not 'none'")},
};

INSTANTIATE_TEST_SUITE_P(Sets, DescribeRefusals, testing::ValuesIn(kSets),
                         [](const auto& kind) { return std::string(kind.param.name); });

const Refusal kTypes[] = {
    {"WiderThanInTheCatalogue", "struct s fixed {\n    a 16 : int8\n}\n",
     Error("15:7", "16 is above 8, the most bits of this integer")},
    {"NoBits", "struct s fixed {\n    a 0 : binary 8\n}\n",
     Error("15:7", "0 is below 1, the least bits of a member")},
    {"SpareItems", "sequence q [3] of spare\n", Error("14:19", kNoSpare)},
    {"SpareCounted", "struct s serial {\n    a counted : spare\n    b 8 : int8\n}\n",
     Error("15:17", kNoSpare)},
    {"SpareToTheEnd", "struct s serial {\n    a 8 : int8\n    b rest : spare\n}\n",
     Error("16:14", kNoSpare)},
    {"SpareWithoutAWidth", "struct s fixed {\n    a 8 : int8\n    b : spare\n}\n",
     Error("16:9", kNoSpare)},
    {"SpareRemainder", Extension(kGroup + "    remainder r : spare\n"), Error("20:19", kNoSpare)},
    {"RemainderTwice", Extension(kGroup + "    remainder r : one\n    remainder t : one\n"),
     Error("21:5", "a remainder stands here already")},
    {"GroupBehindTheRemainder", Extension("    remainder r : one\n" + kGroup),
     Error("16:5", "the remainder stands behind all groups")},
    {"GroupWithoutOctets", Extension(kGroup + "    group 4 {\n    }\n"),
     Error("20:5", "the group has no octets")},
    {"ExtensionWithoutGroups", Extension("    remainder r : one\n"),
     Error("14:8", "the struct has no groups")},
    {"OtherTwice", "enum v {\n    1 = \"a\"\n    other = \"b\"\n    other = \"c\"\n}\n",
     Error("17:5", "'other' stands here already")},
    {"EnumerationsOfASequence", "sequence q [3] of enum {\n    1 = \"a\"\n}\n",
     Error("14:19", "the width of the enumeration in bits is missing: 'enum8'")},
    {"NoMembers", "struct s fixed {\n    - 8\n}\n", Error("14:8", "the struct has no members")},
    {"NoAlternatives", "union u messages octet 1 {\n}\n",
     Error("14:7", "the union has no alternatives")},
    {"NoMessages", "set s {\n    key octets 0 1\n}\n", Error("14:5", "the set has no messages")},
    {"NoValues", "enum v {\n}\n", Error("14:6", "the enumeration has no values")},
    {"ValueTwice", "enum v {\n    1 = \"a\"\n    2 = \"b\"\n    1 = \"c\"\n}\n",
     Error("17:5", "the value stands in the enumeration already")},
    {"RestNotLastInASerial", "struct s serial {\n    a rest : binary 8\n    b 8 : int8\n}\n",
     Error("15:5", "a member that takes the rest is the last one")},
    {"RestInAnOctet",
     "struct s extension {\n    group 3 {\n        octet {\n            a 7 : int7\n"
     "            b rest : binary 8\n        }\n    }\n}\n",
     Error("18:13", "a member that takes the rest is the last one")},
    {"OptionalOutsideOfAnOctet", "struct s fixed {\n    a? 8 : int8\n}\n",
     Error("15:5", "only the first member of an octet that may be absent is optional")},
    {"WidthInASpecial", "specials \"x.h\" {\n    k\n}\nstruct s special k {\n    a 8 : int8\n}\n",
     Error("18:5", "a member has no width here, only a name and a type")},
    {"WidthOfARemainder",
     "struct s extension {\n    group 3 {\n        octet {\n            a 7 : int7\n        }\n"
     "    }\n    remainder b 8 : int8\n}\n",
     Error("20:15", "a member has no width here, only a name and a type")},
    {"OptionalRemainder",
     "struct s extension {\n    group 3 {\n        octet {\n            a 7 : int7\n        }\n"
     "    }\n    remainder b? : binary 8\n}\n",
     Error("20:15", "a remainder is always there; leave the '?' out")},
    {"DefaultTwice", "union u choice 0 2 {\n    a : one default\n    b : one default\n}\n",
     Error("16:5", "an alternative of a choice has 'when' and a value, one of them 'default'")},
    {"DefaultWithAValue", "union u choice 0 2 {\n    a : one when 1 default\n}\n",
     Error("15:5", "an alternative of a choice has 'when' and a value, one of them 'default'")},
    {"SameSelector",
     "union u choice 0 2 {\n    a : one default\n    b : one when 1\n    c : one when 1\n}\n",
     Error("17:5", "an alternative above is chosen by the same value")},
    {"SameMessageType",
     "message m h 1 {\n}\nmessage n h 1 {\n}\nunion u messages octet 1 {\n    a : m\n    b : n\n"
     "}\n",
     Error("20:5", "an alternative above is chosen by the same value")},
    {"MessageTypeElsewhere", "message m h 1 {\n}\nunion u messages octet 2 {\n    a : m\n}\n",
     Error("17:9", "the header of 'm' has no message type in octet 2")},
    {"MessageTypeNowhere",
     "header g {\n    = 1 8\n}\nmessage m g {\n}\nunion u messages octet 1 {\n    a : m\n}\n",
     Error("20:9", "the header of 'm' has no message type in octet 1")},
    {"PatternForm", "pattern enum v {\n}\n",
     Error("14:9", "a type (struct, union or sequence) is expected here, not 'enum'")},
    {"PatternTwice", "pattern sequence p [2] of int8\npattern sequence p [3] of int8\ntake p\n",
     Error("15:18", "the pattern 'p' is declared already")},
    {"PatternUnknown", "take p as q\n", Error("14:6", "no pattern 'p' is declared above")},
    {"PatternTakenTwiceAsOne", "pattern sequence p [2] of int8\ntake p as q\ntake p as q\n",
     Error("16:11", "'q' is declared already; names are unique in a family")},
    {"PatternOfOneNotTaken",
     "pattern struct p fixed {\n    a 8 : int8\n}\npattern sequence q [2] of p\ntake q\n",
     Error("17:27", "no type 'p' is declared above; a type stands before its users")},
    {"PatternAsAType", "pattern sequence p [2] of int8\nsequence q [2] of p\n",
     Error("15:19", "no type 'p' is declared above; a type stands before its users")},
    {"ShowsWithSixBits", Set("    key bits 6\n    shows octet 1\n    m = 0\n"),
     Error("16:5", "only a key of two octets goes with a line 'shows'")},
    {"MaskWithSixBits", Set("    key bits 6\n    mask FF\n    m = 0\n"),
     Error("16:5", "a key of six bits goes without a mask")},
};

INSTANTIATE_TEST_SUITE_P(Types, DescribeRefusals, testing::ValuesIn(kTypes),
                         [](const auto& kind) { return std::string(kind.param.name); });

// Rows of the tables are counted in 16 bits.
TEST(DescribeRefusals, TellTablesThatAreFull) {
    std::string source = kPrelude + kUsed;
    for (const char* name : {"q", "t"}) {
        source += "struct " + std::string(name) + " fixed {\n    a 8 : int8\n";
        for (int part = 0; part < 33000; ++part) {
            source += "    - 1\n";
        }
        source += "}\n";
    }
    EXPECT_EQ(Describe({{"f.qd", source}}).errors,
              Error("1:8", "66005 is above 65535, the most parts of a family"));
}

// One body serves families under the names of each, in the place that each gives it.
TEST(Describe, FamiliesTakePatterns) {
    const std::string shared =
        "pattern struct Part fixed {\n    a 8 : enum {\n        1 = \"one\"\n    }\n}\n"
        "pattern union Either choice 0 1 {\n    part : Part default\n}\n"
        "pattern sequence All [2] of Either\n"
        "pattern struct Unused special kNone {\n    a : int8\n}\n";
    const std::string own =
        "struct ownPart fixed {\n    a 8 : enum {\n        1 = \"one\"\n    }\n}\n"
        "struct between fixed {\n    a 8 : int8\n}\n"
        "union ownEither choice 0 1 {\n    part : ownPart default\n}\n"
        "sequence All [2] of ownEither\n"
        "union other choice 0 1 {\n    part : ownPart default\n}\n"
        "sequence Again [2] of ownEither\n";
    const std::string taking =
        "take Part as ownPart\nstruct between fixed {\n    a 8 : int8\n}\n"
        "take Either as ownEither\ntake All\ntake Either as other\ntake All as Again\n";
    const Description whole = Describe({{"f.qd", kPrelude + own + kUsed}});
    const Description taken =
        Describe({{"common/shared.qd", shared}, {"f.qd", kPrelude + taking + kUsed}});
    EXPECT_EQ(taken.errors, "");
    const auto tables = [](const std::string& code) { return code.substr(code.find('\n')); };
    EXPECT_EQ(tables(taken.code), tables(whole.code));
}

// The bits of a fixed number of octets count only where no length tells them.
TEST(Describe, AFieldWithALengthHasNoWidth) {
    const std::string code =
        Describe({{"f.qd", kPrelude + Message("    a LV-E 9000 : binary 72000\n    b V 2 : int16\n",
                                              "set s {\n    key octets 0 1\n    m = 0101\n}\n")}})
            .code;
    EXPECT_NE(code.find("kLvE, FieldPresence::kMandatory, 0, 0, 4, 0, 9000,"), std::string::npos);
    EXPECT_NE(code.find("kV, FieldPresence::kMandatory, 0, 1, 5, 16, 2,"), std::string::npos);
}

// A member decides if the field's limits, or its octet, keep it in.
TEST(Describe, MembersThatAreAlwaysThereDecide) {
    const std::string set = "set all {\n    key octets 0 1\n    m = 0101\n}\n";
    for (const char* field : {"V 2", "LV 2", "LV 2-4"}) {
        const std::string source =
            kCutOff + "message m h 1 {\n    a " + field + " : t\n" + kDecided + set;
        EXPECT_EQ(Describe({{"f.qd", kPrelude + source}}).errors, "") << field;
    }
    const std::string first = Message("    a LV 1-2 : t\n    b V 1 if a.x = 0 : int8\n", set);
    EXPECT_EQ(Describe({{"f.qd", kPrelude + kCutOff + first}}).errors, "");
    const std::string octet = Message("    a LV 1-2 : s\n    b V 1 if a.a = 0 : int8\n", set);
    EXPECT_EQ(Describe({{"f.qd", kPrelude + Extension(kGroup) + octet}}).errors, "");
}

// Values of enumerations that fields of CSN.1 have are checked as those of other fields are.
TEST(DescribeRefusals, EnumerationsOfFieldsInCsn) {
    const auto errorsOf = [](const std::string& field, const std::string& value) {
        return Describe({{"f.qd", std::string(kPrelude) + "enum E {\n    0 = \"a\"\n    " + value +
                                      "\n}\ncsn C\n" + Message("    c LV 1 : C\n") +
                                      "set s {\n    key octets 0 1\n    m = 0101\n}\n"},
                         {"c.csn1", "structure C \"x\" ;\n< c > ::= " + field + " ;\n"}})
            .errors;
    };
    const std::string plain = "< a : bit (3) [enum E] >";
    EXPECT_EQ(errorsOf(plain, "7 = \"b\""), "");
    EXPECT_EQ(errorsOf(plain, "8 = \"b\""),
              Error("16:5", "8 is above 7, the most in the 3 bits of 'C_a'"));
    EXPECT_EQ(errorsOf(plain, "8 = \"b\" unreachable"), "");
    EXPECT_EQ(errorsOf(plain, "7 = \"b\" unreachable"),
              Error("16:5", "the value is reachable in the 3 bits of 'C_a'"));
    // The widest occurrence counts, also in a sequence.
    const std::string two = "{ 0 < a : bit (3) [enum E] > | 1 < a : bit (4) > } ";
    EXPECT_EQ(errorsOf(two + "** 0", "15 = \"b\""), "");
    EXPECT_EQ(errorsOf(two + "** 0", "16 = \"b\""),
              Error("16:5", "16 is above 15, the most in the 4 bits of 'C_a_data'"));
}

TEST(DescribeRefusals, SkipRowsFollowFromTheMessages) {
    const std::string source = Message(
        "    a 12 TV 1  : int8\n"
        "    b 13 TLV   : int8\n"
        "    c 14 TLV-E : binary 8\n"
        "    d 15 T\n"
        "    e 9- TV half : int4\n"
        "    f 16 TV 1  : int8\n"
        "    g 17 TV 1  : int8\n",
        "set s {\n    key octets 0 1\n    m = 0101\n}\n"
        "skip {\n    TLV : 16 71\n    none : 17\n}\n");
    const Description result = Describe({{"f.qd", kPrelude + source}});
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.code.find("constexpr std::array<IeFormatRow, 7> kFormats{{\n"
                               "    {18, 255, 16},  // 0\n"
                               "    {19, 255, -8},  // 1\n"
                               "    {20, 255, -16},  // 2\n"
                               "    {21, 255, 8},  // 3\n"
                               "    {22, 255, -8},  // 4\n"
                               "    {113, 255, -8},  // 5\n"
                               "    {144, 240, 8},  // 6\n"
                               "}};\n"),
              std::string::npos);
}

TEST(DescribeRefusals, UnknownElementsHaveATableOfTheirOwn) {
    const std::string source = Message("    a 12 TV 1  : int8\n",
                                       "set s {\n    key octets 0 1\n    m = 0101\n}\n"
                                       "skip {\n    unknown TLV-E : 7A 79\n    none : 12\n"
                                       "    unknown TLV : 90\n}\n");
    const Description result = Describe({{"f.qd", kPrelude + source}});
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.code.find("constexpr std::array<IeFormatRow, 3> kUnknownFormats{{\n"
                               "    {121, 255, -16},  // 0\n"
                               "    {122, 255, -16},  // 1\n"
                               "    {144, 255, -8},  // 2\n"
                               "}};\n"),
              std::string::npos);
}

}  // namespace
}  // namespace quorvane::compiler
