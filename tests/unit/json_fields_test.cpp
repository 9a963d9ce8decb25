// The JSON of records, put together by hand. tests/json holds that of messages against their
// fields.

#include "facade/json_fields.h"

#include <gtest/gtest.h>
#include <string>

#include "bits/arena.h"
#include "bits/record.h"
#include "reflect_test_types.h"

namespace quorvane::facade {
namespace {

using bits::Cell;
using namespace reflect;
using namespace reflect::test;

class JsonFieldsTest : public testing::Test {
  protected:
    static std::string JsonOf(const TypeTables& tables, std::uint16_t type, const Cell& cell,
                              bool made = false) {
        TextBuffer text;
        text.Advance(PutMembersAsJson(text, text.Room(0), tables, tables.types[type], cell, made));
        return std::string(text.View());
    }
    static std::string JsonOf(std::uint16_t type, const Cell& cell, bool made = false) {
        return JsonOf(kMixedTables, type, cell, made);
    }
    /// The JSON of one member of Everything, all others of which have no trace.
    std::string Member(EverythingMember member, const Cell& value, bool made = false) {
        Cell cell{};
        bits::StructCells(arena_, cell, kMemberCount)[member] = value;
        const std::string json = JsonOf(kEverything, cell, made);
        const std::string_view name = kMixedTables.NameOf(kMixedElements[5 + member]);
        const std::size_t start = json.find("\"" + std::string(name) + "\":");
        std::size_t end = json.find(":", start);
        for (int depth = 0; ++end < json.size();) {
            depth += json[end] == '{' ? 1 : json[end] == '}' ? -1 : 0;
            if (depth == 0) {
                return json.substr(start, end + 1 - start);
            }
        }
        return "none";
    }
    Cell Struct(std::uint32_t members) {
        Cell cell{};
        bits::StructCells(arena_, cell, members);
        return cell;
    }

    bits::Arena arena_;
};

Cell Number(std::uint32_t value, bits::FieldLocator location = 0) {
    Cell cell{};
    cell.number = value;
    cell.location = location;
    return cell;
}

TEST_F(JsonFieldsTest, WhatNoDecoderReachedIsByDefault) {
    EXPECT_EQ(JsonOf(kEverything, Cell{}),
              R"({"Plain":{"value":0,"status":"default"},"Spare":{"value":0,"status":"default"},)"
              R"("Kind":{"value":0,"words":"reserved","status":"default"},)"
              R"("Fixed":{"hex":"","bits":0,"status":"default"},)"
              R"("Numbers":{"items":[],"status":"default"},)"
              R"("Smalls":{"items":[],"status":"default"},)"
              R"("Choice":{"choice":{"Num":{"value":0,"status":"default"}},"status":"default"},)"
              R"("Inner":{"fields":{"Wide":{"value":0,"status":"default"},)"
              R"("Grid":{"items":[],"status":"default"}},"status":"default"},)"
              R"("Bare":{"value":0,"status":"default"}})");
    EXPECT_EQ(JsonOf(kEmpty, Cell{}), "{}");
}

TEST_F(JsonFieldsTest, NumbersHaveTheirPlace) {
    EXPECT_EQ(Member(kMemberPlain, Number(65535, At(65535, 16))),
              R"("Plain":{"value":65535,"at":[65535,16]})");
    EXPECT_EQ(Member(kMemberKind, Number(3, At(0, 8))),
              R"("Kind":{"value":3,"words":"three","at":[0,8]})");
    EXPECT_EQ(Member(kMemberBare, Number(5)), R"("Bare":{"value":5,"words":"five"})");
}

TEST_F(JsonFieldsTest, NumbersOfNoWidthAreZeroAndHaveNoPlace) {
    EXPECT_EQ(Member(kMemberSpare, Number(3, At(8, 4))), R"("Spare":{"value":0})");
}

TEST_F(JsonFieldsTest, BitsAreThoseOfTheRecord) {
    Cell bits{};
    bits.octets = arena_.AllocateZeroed<std::uint8_t>(2);
    bits.octets[0] = 0x12;
    bits.octets[1] = 0xF0;
    bits.number = 12;
    EXPECT_EQ(Member(kMemberFixed, bits), R"("Fixed":{"hex":"12F0","bits":12})");
}

TEST_F(JsonFieldsTest, TheStatusTellsHowFarTheDecoderCame) {
    // A member behind has a trace, here the very next one.
    Cell inner = Struct(2);
    inner.cells[1].reached = true;
    EXPECT_EQ(JsonOf(kInner, inner), R"({"Wide":{"value":0},"Grid":{"items":[]}})");
    // What a program makes is not made in order.
    EXPECT_EQ(JsonOf(kInner, inner, true),
              R"({"Wide":{"value":0,"status":"default"},"Grid":{"items":[]}})");
    inner.cells[1].refused = true;
    EXPECT_EQ(JsonOf(kInner, inner),
              R"({"Wide":{"value":0},"Grid":{"items":[],"status":"refused"}})");
    // Nothing can be set where there are no bits.
    EXPECT_EQ(Member(kMemberSpare, Cell{}, true), R"("Spare":{"value":0})");
}

TEST_F(JsonFieldsTest, AnOptionalMemberIsThereOrLeftOut) {
    Cell small = Struct(2);
    small.cells[0].reached = true;
    EXPECT_EQ(JsonOf(kSmall, small), R"({"Number":{"value":0}})");
    small.cells[1].present = true;
    EXPECT_EQ(JsonOf(kSmall, small), R"({"Number":{"value":0},"Flag":{"value":0}})");
    small.cells[1].present = false;
    small.cells[1].refused = true;
    EXPECT_EQ(JsonOf(kSmall, small),
              R"({"Number":{"value":0},"Flag":{"value":0,"status":"refused"}})");
}

TEST_F(JsonFieldsTest, AUnionHasTheAlternativeChosenOrItsFirstByDefault) {
    Cell choice{};
    bits::ChooseAlternative(arena_, choice, 2);
    EXPECT_EQ(
        Member(kMemberChoice, choice),
        R"("Choice":{"choice":{"Item":{"fields":{"Number":{"value":0,"status":"default"}}}}})");
    EXPECT_EQ(Member(kMemberChoice, Number(4)),
              R"("Choice":{"choice":{"Num":{"value":0,"status":"default"}}})");
}

TEST_F(JsonFieldsTest, ItemsAreThereOnceTheyAreCounted) {
    Cell numbers{};
    ASSERT_FALSE(bits::SetSize(arena_, numbers, 2, 4).Failed());
    numbers.cells[1].refused = true;
    EXPECT_EQ(Member(kMemberNumbers, numbers),
              R"("Numbers":{"items":[{"value":0},{"value":0,"status":"refused"}]})");
}

// Types that no message of ours has.

TEST_F(JsonFieldsTest, AUnionMayHaveNoAlternatives) {
    const std::array elements = {ElementRow{Label("None"), 1, false}};
    const std::array types = {StructRow({}, elements, 0, 1),
                              TypeRow{{}, TypeKind::kUnion, false, 0, 0, 0}};
    EXPECT_EQ(JsonOf({TableTexts(), types, elements, {}, {}, {}}, 0, Cell{}),
              R"({"None":{"choice":{},"status":"default"}})");
}

TEST_F(JsonFieldsTest, WordsAreEscaped) {
    const std::array values = {Listed("\"\xDF\"", 1)};
    const std::array enums = {EnumRow{0, 1, 0, Stored("\\"), true, false}};
    const std::array elements = {ElementRow{Label("A"), 1, false},
                                 ElementRow{Label("B"), 1, false}};
    const std::array types = {StructRow({}, elements, 0, 2),
                              TypeRow{{}, TypeKind::kEnumerated, false, 8, 0, 0}};
    Cell cell = Struct(2);
    cell.cells[0].number = 1;
    cell.cells[1].number = 2;
    EXPECT_EQ(JsonOf({TableTexts(), types, elements, enums, values, {}}, 0, cell),
              "{\"A\":{\"value\":1,\"words\":\"\\\"\xC3\x9F\\\"\"},"
              "\"B\":{\"value\":2,\"words\":\"\\\\\"}}");
}

TEST_F(JsonFieldsTest, NamesWordsAndBitsMayBeLong) {
    const std::string name(900, 'n');
    const std::string words(900, 'w');
    constexpr std::uint32_t kOctetCount = 3000;
    const std::array enums = {EnumRow{0, 0, 0, Stored(words), true, true}};
    const std::array elements = {ElementRow{Label(name), 1, false},
                                 ElementRow{Label(name), 2, false}};
    const std::array types = {StructRow({}, elements, 0, 2),
                              TypeRow{{}, TypeKind::kEnumerated, false, 8, 0, 0},
                              TypeRow{{}, TypeKind::kBinary, false, 8 * kOctetCount, 0, 0}};
    Cell cell = Struct(2);
    cell.cells[0].number = 1;
    cell.cells[1].number = 8 * kOctetCount;
    cell.cells[1].octets = arena_.AllocateZeroed<std::uint8_t>(kOctetCount);
    std::string expected = "{\"" + name;
    expected.append("\":{\"value\":1,\"words\":\"").append(words).append("\"},\"").append(name);
    expected.append("\":{\"hex\":\"").append(2 * kOctetCount, '0').append("\",\"bits\":24000}}");
    EXPECT_EQ(JsonOf({TableTexts(), types, elements, enums, {}, {}}, 0, cell), expected);
}

}  // namespace
}  // namespace quorvane::facade
