// The text of records, against texts put together by hand and against that of the value tree.

#include <gtest/gtest.h>
#include <string>

#include "bits/arena.h"
#include "bits/record.h"
#include "reflect/catalogue.h"
#include "reflect/convert.h"
#include "reflect/render.h"
#include "reflect_test_types.h"

namespace quorvane::reflect {
namespace {

using bits::Cell;
using namespace test;

std::string Rendered(std::uint16_t type, const Cell& cell, std::uint32_t indent = 0) {
    TextBuffer stream;
    AppendText(stream, kMixedTables, type, cell, indent);
    return std::string(stream.View());
}

Cell Number(std::uint32_t value, bits::FieldLocator location = 0) {
    Cell cell{};
    cell.number = value;
    cell.location = location;
    return cell;
}

class RenderTest : public testing::Test {
  protected:
    Cell Binary(std::initializer_list<std::uint8_t> octets, std::uint32_t bits) {
        Cell cell{};
        cell.octets = arena_.AllocateZeroed<std::uint8_t>(octets.size());
        std::copy(octets.begin(), octets.end(), cell.octets);
        cell.number = bits;
        return cell;
    }

    /// The text, which the value tree of the record has as well.
    std::string TextOf(std::uint16_t type, const Cell& cell) {
        std::string text = Rendered(type, cell);
        EXPECT_EQ(text, Printed(*ToTree(catalogue_, type, cell, arena_)));
        EXPECT_EQ(Rendered(type, cell, 20), Printed(*ToTree(catalogue_, type, cell, arena_), 20));
        return text;
    }

    bits::Arena arena_;
    Catalogue catalogue_{kMixedTables};
};

TEST_F(RenderTest, Integers) {
    EXPECT_EQ(TextOf(kPlain, Number(7)), "7");
    EXPECT_EQ(TextOf(kPlain, Number(65535, At(65535, 16))), "LOC:[65535,16] 65535");
    EXPECT_EQ(TextOf(kWide, Number(0xFFFFFFFFU)), "-1");
    EXPECT_EQ(TextOf(kWide, Number(0x80000000U, At(0, 32))), "LOC:[0,32] -2147483648");
}

TEST_F(RenderTest, NumbersOfNoWidthAreZeroAndHaveNoLocation) {
    EXPECT_EQ(TextOf(kSpare, Number(3, At(8, 4))), "0");
}

TEST_F(RenderTest, Enumerations) {
    EXPECT_EQ(TextOf(kColour, Number(1, At(28, 4))), "LOC:[28,4] green (1)");
    EXPECT_EQ(TextOf(kColour, Number(3)), "3");  // behind those that stand at their own index
    EXPECT_EQ(TextOf(kEnumKind, Number(1)), "one (1)");
    EXPECT_EQ(TextOf(kEnumKind, Number(3)), "three (3)");  // the first of two
    EXPECT_EQ(TextOf(kEnumKind, Number(4, At(1, 8))), "LOC:[1,8] reserved (4)");
    EXPECT_EQ(TextOf(kBareEnum, Number(0xFFFFFFFFU)), "4294967295");
}

TEST_F(RenderTest, Binaries) {
    EXPECT_EQ(TextOf(kOctets, Cell{}), "");
    EXPECT_EQ(TextOf(kOctets, Binary({0xAB, 0xCD}, 16)), "AB CD");
    EXPECT_EQ(TextOf(kOctets, Binary({0xAB, 0xFF}, 12)), "AB F0");
    EXPECT_EQ(TextOf(kOctets, Binary({0xFF}, 1)), "80");
    EXPECT_EQ(TextOf(kFixed, Cell{}), "00 00 00 00 00");
    EXPECT_EQ(TextOf(kFixed, Binary({0x12, 0xFF}, 12)), "12 F0 00 00 00");
    EXPECT_EQ(TextOf(kFixed, Binary({1, 2, 3, 4, 0xFF}, 36)), "01 02 03 04 F0");
    EXPECT_EQ(TextOf(kFixed, Binary({1, 2, 3, 4, 5, 6}, 48)), "01 02 03 04 00");
    Cell located = Binary({0x80}, 1);
    located.location = At(3, 1);
    EXPECT_EQ(TextOf(kOctets, located), "LOC:[3,1] 80");
}

TEST_F(RenderTest, SequencesPartTheirItemsByCommas) {
    Cell numbers{};
    EXPECT_EQ(TextOf(kNumbers, numbers), "[\n]");
    ASSERT_FALSE(bits::SetSize(arena_, numbers, 2, 4).Failed());
    numbers.cells[1].number = 5;
    EXPECT_EQ(TextOf(kNumbers, numbers), "[\n  0,\n  5\n]");
    Cell smalls{};
    ASSERT_FALSE(bits::SetSize(arena_, smalls, 2, 3).Failed());
    EXPECT_EQ(TextOf(kSmallList, smalls),
              "[\n"
              "  {\n"
              "      Number: 0\n"
              "      Flag: MISSING\n"
              "    }\n"
              ",\n"
              "  {\n"
              "      Number: 0\n"
              "      Flag: MISSING\n"
              "    }\n"
              "\n"
              "]");
    Cell unreached{};
    unreached.number = 2;  // a count without items
    EXPECT_EQ(TextOf(kNumbers, unreached), "[\n]");
}

TEST_F(RenderTest, StructsShowAllMembers) {
    Cell small{};
    EXPECT_EQ(TextOf(kSmall, small), "{\n  Number: 0\n  Flag: MISSING\n}\n");
    Cell* cells = bits::StructCells(arena_, small, 2);
    cells[0].number = 9;
    cells[1].present = true;
    EXPECT_EQ(TextOf(kSmall, small), "{\n  Number: 9\n  Flag: 0\n}\n");
    EXPECT_EQ(TextOf(kEmpty, Cell{}), "{\n}\n");
}

// The sanitizer sees any octet behind the buffer.
TEST_F(RenderTest, StructsFitAtEveryFillOfTheBuffer) {
    Cell everything{};
    Cell* cells = bits::StructCells(arena_, everything, kMemberCount);
    cells[kMemberPlain] = Number(65535, At(65535, 65535));
    cells[kMemberKind] = Number(0xFFFFFFFFU, At(65535, 65535));
    cells[kMemberColour] = Number(2, At(65535, 65535));
    cells[kMemberColour].present = true;
    ASSERT_FALSE(bits::SetSize(arena_, cells[kMemberNumbers], 2, 4).Failed());
    const std::string text = TextOf(kEverything, everything);
    for (std::size_t fill = 4096 - 2 * text.size(); fill < 4096; ++fill) {
        TextBuffer stream;
        stream.Append(std::string(fill, 'x'));
        AppendText(stream, kMixedTables, kEverything, everything, 0);
        ASSERT_EQ(stream.View().substr(fill), text);
    }
}

TEST_F(RenderTest, UnionsNameTheirChoice) {
    Cell choice{};
    EXPECT_EQ(TextOf(kChoice, choice), "Num: 0");
    choice.number = 4;  // no alternative
    EXPECT_EQ(TextOf(kChoice, choice), "Num: 0");
    bits::ChooseAlternative(arena_, choice, 2);
    EXPECT_EQ(TextOf(kChoice, choice), "Item: {\n    Number: 0\n    Flag: MISSING\n  }\n");
}

TEST_F(RenderTest, OfEverythingWithoutContents) {
    EXPECT_EQ(TextOf(kEverything, Cell{}), test::kDefaultText);
}

TEST_F(RenderTest, LineEndsMayBeEscapes) {
    Cell numbers{};
    EXPECT_EQ(SetSize(arena_, numbers, 2, 4), 0);
    TextBuffer stream;
    EXPECT_TRUE(AppendText(stream, kMixedTables, kNumbers, numbers, 0, LineEnd::kJson));
    EXPECT_TRUE(AppendText(stream, kMixedTables, kSmall, Cell{}, 1, LineEnd::kJson));
    EXPECT_EQ(stream.View(), "[\\n  0,\\n  0\\n]{\\n    Number: 0\\n    Flag: MISSING\\n  }\\n");
}

TEST_F(RenderTest, TellsWhetherItsTextIsPlain) {
    std::array values = {test::Listed("one", 1), test::Listed("a \"b\"", 2),
                         test::Listed("Stra\xDF"
                                      "e",
                                      3)};
    const std::array enums = {EnumRow{0, 3, 0, test::Stored("a\tb"), true, false}};
    const std::array rows = {TypeRow{{}, TypeKind::kEnumerated, false, 4, 0, 0}};
    const TypeTables tables{test::TableTexts(), rows, {}, enums, values, {}};
    const auto isPlain = [&](std::uint32_t number) {
        TextBuffer stream;
        return AppendText(stream, tables, 0, Number(number));
    };
    EXPECT_TRUE(isPlain(1));
    EXPECT_FALSE(isPlain(2));
    EXPECT_FALSE(isPlain(3));
    EXPECT_FALSE(isPlain(4));
}

TEST_F(RenderTest, UnionsWithoutAlternativesAreNotSet) {
    const std::array kRows = {TypeRow{test::Stored("Nothing"), TypeKind::kUnion, false, 0, 0, 0}};
    TextBuffer stream;
    AppendText(stream, TypeTables{test::TableTexts(), kRows, {}, {}, {}, {}}, 0, Cell{});
    EXPECT_EQ(stream.View(), "NOT SET");
}

}  // namespace
}  // namespace quorvane::reflect
