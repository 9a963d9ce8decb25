#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "reflect/ted_class.h"
#include "reflect/ted_data.h"
#include "reflect_test_types.h"

namespace quorvane::reflect {
namespace {

using test::At;
using test::Printed;

class PrintTest : public testing::Test {
  protected:
    PrintTest() {
        enumerated_.AddValue("initial attach", 1);
        small_.AddMember("Number", toNumber_, false);
    }

    TEDDataBase* Number(std::int32_t value, bits::FieldLocator location = 0) {
        auto* node = new TEDDataInteger(&number_, value);
        node->location = location;
        return node;
    }

    TEDDataBase* Small(std::int32_t value) {
        auto* node = new TEDDataStruct(&small_);
        node->SetMember(0, Number(value));
        return node;
    }

    TEDClassInteger number_{"number", 8};
    TEDClassReference toNumber_{&number_, false};
    TEDClassEnumerated enumerated_{"enumerated", 8};
    TEDClassBinary binary_{"binary", 64, false};
    TEDClassStruct small_{"small"};
    TEDClassReference toSmall_{&small_, false};
};

TEST_F(PrintTest, Indentation) {
    TextBuffer stream;
    PrintIndent(stream, 0);
    EXPECT_EQ(stream.View(), "");
    PrintIndent(stream, 3);
    EXPECT_EQ(stream.View(), "      ");
}

TEST_F(PrintTest, Location) {
    TextBuffer stream;
    TEDDataInteger node(&number_, 0);
    PrintLocation(node, stream);
    EXPECT_EQ(stream.View(), "");
    node.location = At(28, 4);
    PrintLocation(node, stream);
    EXPECT_EQ(stream.View(), "LOC:[28,4] ");
}

TEST_F(PrintTest, LocationsOfEverySize) {
    TEDDataInteger node(&number_, 0);
    node.location = 1;
    EXPECT_EQ(Printed(node), "LOC:[0,1] 0");
    node.location = At(999, 1000);
    EXPECT_EQ(Printed(node), "LOC:[999,1000] 0");
    node.location = At(65535, 65535);
    EXPECT_EQ(Printed(node), "LOC:[65535,65535] 0");
}

TEST_F(PrintTest, AFieldBeyondTheLastPositionHasNoLocation) {
    TEDDataInteger node(&number_, 5);
    bits::MakeFieldLocator(node.location, 65536, 4);
    EXPECT_EQ(Printed(node), "5");
}

TEST_F(PrintTest, IntegersAreSigned) {
    EXPECT_EQ(Printed(TEDDataInteger(&number_, 0)), "0");
    EXPECT_EQ(Printed(TEDDataInteger(&number_, 255)), "255");
    EXPECT_EQ(Printed(TEDDataInteger(&number_, 123456)), "123456");
    EXPECT_EQ(Printed(TEDDataInteger(&number_, -1)), "-1");
    EXPECT_EQ(Printed(TEDDataInteger(&number_, -2147483647 - 1)), "-2147483648");
}

TEST_F(PrintTest, EnumeratedValues) {
    TEDDataEnumerated listed(&enumerated_, 1);
    listed.location = At(28, 4);
    EXPECT_EQ(Printed(listed), "LOC:[28,4] initial attach (1)");
    EXPECT_EQ(Printed(TEDDataEnumerated(&enumerated_, 13)), "13");
    EXPECT_EQ(Printed(TEDDataEnumerated(&enumerated_, -1)), "4294967295");
    enumerated_.SetOtherText("reserved");
    EXPECT_EQ(Printed(TEDDataEnumerated(&enumerated_, 13)), "reserved (13)");
    EXPECT_EQ(Printed(TEDDataEnumerated(&enumerated_, -1)), "reserved (4294967295)");
    TEDDataEnumerated located(&enumerated_, 13);
    located.location = At(0, 8);
    EXPECT_EQ(Printed(located), "LOC:[0,8] reserved (13)");
    enumerated_.SetOtherText("");
    EXPECT_EQ(Printed(TEDDataEnumerated(&enumerated_, 13)), " (13)");
}

TEST_F(PrintTest, LongTextsOfEnumerations) {
    const std::string prose(500, 'p');
    enumerated_.AddValue(prose, 4000000000U);
    enumerated_.AddValue("", 3);
    enumerated_.SetOtherText(prose);
    EXPECT_EQ(Printed(TEDDataEnumerated(&enumerated_, static_cast<std::int32_t>(4000000000U))),
              prose + " (4000000000)");
    EXPECT_EQ(Printed(TEDDataEnumerated(&enumerated_, 3)), " (3)");
    EXPECT_EQ(Printed(TEDDataEnumerated(&enumerated_, 2)), prose + " (2)");
}

TEST_F(PrintTest, ACopiedEnumeratedNodePrintsItsValue) {
    const std::unique_ptr<TEDDataBase> copy(TEDDataEnumerated(&enumerated_, 1).Clone());
    EXPECT_EQ(Printed(*copy), "1");
}

TEST_F(PrintTest, Binaries) {
    const std::array<std::uint8_t, 4> octets = {0xAB, 0xC0, 0x0F, 0xFF};
    EXPECT_EQ(Printed(TEDDataBinary(&binary_)), "");
    EXPECT_EQ(Printed(TEDDataBinary(&binary_, octets.data(), 8)), "AB");
    EXPECT_EQ(Printed(TEDDataBinary(&binary_, octets.data(), 12)), "AB C0");
    EXPECT_EQ(Printed(TEDDataBinary(&binary_, octets.data(), 32)), "AB C0 0F FF");
    EXPECT_EQ(Printed(TEDDataBinary(&binary_, octets.data(), 1)), "80");
    TEDDataBinary located(&binary_);
    located.location = At(40, 0);
    EXPECT_EQ(Printed(located), "LOC:[40,0] ");
}

TEST_F(PrintTest, LongBinaries) {
    const TEDClassBinary type("b", 16000, true);
    std::string expected = "00";
    for (int octet = 1; octet < 2000; ++octet) {
        expected += " 00";
    }
    EXPECT_EQ(Printed(TEDDataBinary(&type)), expected);
}

TEST_F(PrintTest, AStructWithoutElements) {
    const TEDClassStruct type("s");
    EXPECT_EQ(Printed(TEDDataStruct(&type)), "{\n}\n");
    EXPECT_EQ(Printed(TEDDataStruct(&type), 2), "{\n    }\n");
}

TEST_F(PrintTest, AStructOfScalars) {
    TEDClassStruct type("s");
    type.AddMember("First", toNumber_, false);
    type.AddMember("Second", toNumber_, true);
    type.AddMember("Octets", TEDClassReference(&binary_, false), false);
    TEDDataStruct node(&type);
    node.SetMember(0, Number(7, At(8, 8)));
    EXPECT_EQ(Printed(node),
              "{\n"
              "  First: LOC:[8,8] 7\n"
              "  Second: MISSING\n"
              "  Octets: \n"
              "}\n");
}

TEST_F(PrintTest, LocationsOfStructsSequencesAndUnions) {
    TEDDataStruct object(&small_);
    object.location = At(1, 2);
    EXPECT_EQ(Printed(object), "LOC:[1,2] {\n  Number: 0\n}\n");
    const TEDClassSequence listType("q", toNumber_, 20, false);
    TEDDataSequence list(&listType);
    list.location = At(1, 2);
    EXPECT_EQ(Printed(list), "LOC:[1,2] [\n]");
    TEDClassUnion choiceType("u");
    choiceType.AddAlternative("A", toNumber_);
    TEDDataUnion choice(&choiceType);
    choice.location = At(1, 2);
    EXPECT_EQ(Printed(choice), "LOC:[1,2] A: 0");
    choice.SetChoice(0, nullptr);
    EXPECT_EQ(Printed(choice), "LOC:[1,2] NOT SET");
}

TEST_F(PrintTest, ANestedStructIsFollowedByAnEmptyLine) {
    TEDClassStruct type("s");
    type.AddMember("Inner", toSmall_, false);
    type.AddMember("After", toNumber_, false);
    EXPECT_EQ(Printed(TEDDataStruct(&type)),
              "{\n"
              "  Inner: {\n"
              "    Number: 0\n"
              "  }\n"
              "\n"
              "  After: 0\n"
              "}\n");
}

TEST_F(PrintTest, SequencesOfNumbers) {
    const TEDClassSequence type("q", toNumber_, 20, false);
    TEDDataSequence node(&type);
    EXPECT_EQ(Printed(node, 1), "[\n  ]");
    node.Append(Number(15));
    EXPECT_EQ(Printed(node, 1), "[\n    15\n  ]");
    node.Append(Number(1, At(8, 4)));
    EXPECT_EQ(Printed(node),
              "[\n"
              "  15,\n"
              "  LOC:[8,4] 1\n"
              "]");
}

TEST_F(PrintTest, AnEmptySequenceAsMember) {
    const TEDClassSequence list("q", toNumber_, 20, false);
    const TEDClassReference toList(const_cast<TEDClassSequence*>(&list), false);
    TEDClassStruct type("s");
    type.AddMember("List", toList, false);
    EXPECT_EQ(Printed(TEDDataStruct(&type)),
              "{\n"
              "  List: [\n"
              "  ]\n"
              "}\n");
}

TEST_F(PrintTest, SequencesOfStructs) {
    const TEDClassSequence type("q", toSmall_, 20, false);
    TEDDataSequence node(&type);
    node.Append(Small(1));
    EXPECT_EQ(Printed(node),
              "[\n"
              "  {\n"
              "      Number: 1\n"
              "    }\n"
              "\n"
              "]");
    node.Append(Small(2));
    EXPECT_EQ(Printed(node),
              "[\n"
              "  {\n"
              "      Number: 1\n"
              "    }\n"
              ",\n"
              "  {\n"
              "      Number: 2\n"
              "    }\n"
              "\n"
              "]");
}

TEST_F(PrintTest, AnItemThatIsNotThereIsMissing) {
    const TEDClassSequence type("list", toNumber_, 20, false);
    TEDDataSequence node(&type);
    node.Append(nullptr);
    node.Append(Number(1));
    node.Append(nullptr);
    EXPECT_EQ(Printed(node), "[\n  MISSING,\n  1,\n  MISSING\n]");
}

TEST_F(PrintTest, SequencesOfSequences) {
    const TEDClassReference inner(new TEDClassSequence("i", toNumber_, 20, false), true);
    const TEDClassSequence type("q", inner, 20, false);
    TEDDataSequence node(&type);
    auto* row = static_cast<TEDDataSequence*>(type.GetItemType().NewData());
    row->Append(Number(1));
    node.Append(row);
    node.Append(type.GetItemType().NewData());
    EXPECT_EQ(Printed(node),
              "[\n"
              "  [\n"
              "      1\n"
              "    ],\n"
              "  [\n"
              "    ]\n"
              "]");
}

TEST_F(PrintTest, UnionsOfScalarsAndStructs) {
    TEDClassUnion choice("u");
    choice.AddAlternative("Plain", toNumber_);
    choice.AddAlternative("Object", toSmall_);
    TEDClassStruct type("s");
    type.AddMember("Choice", TEDClassReference(&choice, false), false);
    TEDDataStruct node(&type);
    EXPECT_EQ(Printed(node),
              "{\n"
              "  Choice: Plain: 0\n"
              "}\n");
    auto* chosen = new TEDDataUnion(&choice);
    chosen->SetChoice(1, Small(3));
    node.SetMember(0, chosen);
    EXPECT_EQ(Printed(node),
              "{\n"
              "  Choice: Object: {\n"
              "      Number: 3\n"
              "    }\n"
              "\n"
              "}\n");
}

TEST_F(PrintTest, AUnionOfASequenceAsMember) {
    // The octets 07 41 71 04 F0 11 22 33 as an ATTACH REQUEST have this identity.
    const TEDClassSequence digits("d", toNumber_, 20, false);
    TEDClassStruct imsi("IMSI");
    imsi.AddMember("IdentityDigit",
                   TEDClassReference(const_cast<TEDClassSequence*>(&digits), false), false);
    TEDClassUnion identity("identity");
    identity.AddAlternative("IMSI", TEDClassReference(&imsi, false));
    TEDClassStruct message("m");
    message.AddMember("EPSMobileIdentity", TEDClassReference(&identity, false), false);
    auto* list = new TEDDataSequence(&digits);
    for (const int digit : {15, 1, 1, 2, 2, 3}) {
        list->Append(Number(digit));
    }
    auto* body = new TEDDataStruct(&imsi);
    body->SetMember(0, list);
    auto* choice = new TEDDataUnion(&identity);
    choice->SetChoice(0, body);
    TEDDataStruct node(&message);
    node.SetMember(0, choice);
    EXPECT_EQ(Printed(node),
              "{\n"
              "  EPSMobileIdentity: IMSI: {\n"
              "      IdentityDigit: [\n"
              "        15,\n"
              "        1,\n"
              "        1,\n"
              "        2,\n"
              "        2,\n"
              "        3\n"
              "      ]\n"
              "    }\n"
              "\n"
              "}\n");
}

TEST_F(PrintTest, ACopiedUnionPrintsItsChoiceWithoutAName) {
    TEDClassUnion choice("u");
    choice.AddAlternative("Plain", toNumber_);
    const std::unique_ptr<TEDDataBase> copy(TEDDataUnion(&choice).Clone());
    EXPECT_EQ(Printed(*copy), "0");
}

TEST_F(PrintTest, ACopiedStructMissesAllMembers) {
    const std::unique_ptr<TEDDataBase> copy(TEDDataStruct(&small_).Clone());
    EXPECT_EQ(Printed(*copy), "{\n  Number: MISSING\n}\n");
}

TEST_F(PrintTest, LongNames) {
    const std::string name(300, 'n');
    TEDClassStruct type("s");
    type.AddMember(name, toNumber_, false);
    type.AddMember("", toNumber_, true);
    EXPECT_EQ(Printed(TEDDataStruct(&type)), "{\n  " + name + ": 0\n  : MISSING\n}\n");
}

TEST_F(PrintTest, DeepTrees) {
    constexpr std::uint32_t kDepth = 60;
    auto* type = new TEDClassStruct("leaf");
    for (std::uint32_t level = 1; level < kDepth; ++level) {
        auto* outer = new TEDClassStruct("level");
        outer->AddMember("m", TEDClassReference(type, true), false);  // takes `type` with it
        type = outer;
    }
    const std::unique_ptr<TEDClassBase> root(type);
    std::string expected = "{\n";
    for (std::uint32_t level = 1; level < kDepth; ++level) {
        expected += std::string(2 * level, ' ') + "m: {\n";
    }
    for (std::uint32_t level = kDepth - 1; level > 0; --level) {
        expected += std::string(2 * level, ' ') + "}\n\n";
    }
    expected += "}\n";
    const std::unique_ptr<TEDDataBase> node(root->NewData());
    EXPECT_EQ(Printed(*node), expected);
}

TEST_F(PrintTest, GrowsTheBufferAtEveryPlace) {
    // Each run starts at another fill of the buffer, so that every piece meets its end once.
    TEDClassStruct type("s");
    type.AddMember("Number", toNumber_, false);
    type.AddMember("Enumerated", TEDClassReference(&enumerated_, false), false);
    type.AddMember("Octets", TEDClassReference(&binary_, false), false);
    type.AddMember("Absent", toNumber_, true);
    TEDDataStruct node(&type);
    node.SetMember(0, Number(-2147483647, At(65535, 65535)));
    node.SetMember(1, new TEDDataEnumerated(&enumerated_, 1));
    const std::array<std::uint8_t, 8> octets = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    node.SetMember(2, new TEDDataBinary(&binary_, octets.data(), 64));
    const std::string expected =
        "{\n"
        "  Number: LOC:[65535,65535] -2147483647\n"
        "  Enumerated: initial attach (1)\n"
        "  Octets: FF FF FF FF FF FF FF FF\n"
        "  Absent: MISSING\n"
        "}\n";
    for (std::size_t fill = 3800; fill < 4200; ++fill) {
        TextBuffer stream;
        stream.Append(std::string(fill, 'x'));
        node.Print(stream, 0);
        ASSERT_EQ(stream.View().substr(fill), expected) << fill;
    }
}

}  // namespace
}  // namespace quorvane::reflect
