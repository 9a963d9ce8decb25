// Repetitions in records: sequences of values and of structs.

#include <gtest/gtest.h>

#include "csn/csn_record.h"
#include "unit/csn_record_support.h"

namespace quorvane::csn::test {
namespace {

using bits::Cell;

/// A list of integers, then one integer.
struct ListSubject : Subject {
    ListSubject() : Subject(2, {Integers(0, 2, 20), Integer(1, 3, true)}) {
        const auto item = image.Field({{kRoot, 10}});
        const auto behind = image.Field({{kRoot, 11}});
        List(image, [&] { image.code.Emit(Opcode::kField, {item, 2}); });
        image.code.Emit(Opcode::kField, {behind, 3});
        image.code.Emit(Opcode::kRet);
    }
};

std::string ListBits(int items) {
    std::string bits;
    for (int item = 0; item < items; ++item) {
        bits += item % 2 == 0 ? "101" : "110";
    }
    return bits + "0" + "111";
}

TEST(CsnRecordRepetition, RepeatedFields) {
    for (const int items : {0, 1, 5, 20}) {
        ListSubject subject;
        EXPECT_EQ(subject.Decode(ListBits(items)), items * 3 + 4);
        ASSERT_EQ(subject.Member(0).number, static_cast<std::uint32_t>(items));
        for (int item = 0; item < items; ++item) {
            const Cell& cell = subject.Member(0).cells[item];
            EXPECT_EQ(cell.number, item % 2 == 0 ? 1U : 2U);
            EXPECT_EQ(cell.location, 0U);  // items of a sequence have none
        }
        EXPECT_EQ(subject.Member(1).number, 7U);
        EXPECT_EQ(subject.Encode(), ListBits(items));
    }
}

TEST(CsnRecordRepetition, ItemsOfALocatedRowNoteTheirPlaces) {
    CsnFieldRow numbers = Integers(0, 2, 20);
    numbers.located = true;
    CsnFieldRow strings = Binary(1, 8);
    strings.bound = 20;
    strings.located = false;
    Subject subject(2, {numbers, strings});
    const auto number = subject.image.Field({{kRoot, 10}});
    const auto text = subject.image.Field({{kRoot, 11}});
    List(subject.image, [&] { subject.image.code.Emit(Opcode::kField, {number, 2}); });
    Group(
        subject.image, text, [&] { subject.image.code.Emit(Opcode::kSkip, {3}); }, true);
    Group(
        subject.image, text, [&] { subject.image.code.Emit(Opcode::kSkip, {2}); }, true);
    subject.image.code.Emit(Opcode::kRet);
    ASSERT_EQ(subject.Decode("1 01 1 11 0 101 10"), 12);
    const Cell& list = subject.Member(0);
    ASSERT_EQ(list.number, 2U);
    EXPECT_EQ(list.cells[0].location, bits::FieldLocator{1} << 16 | 2U);
    EXPECT_EQ(list.cells[1].location, bits::FieldLocator{4} << 16 | 2U);
    ASSERT_EQ(subject.Member(1).number, 2U);
    EXPECT_EQ(subject.Member(1).cells[1].location, 0U);
}

TEST(CsnRecordRepetition, ItemAboveTheBoundStopsTheWalk) {
    ListSubject subject;
    EXPECT_EQ(subject.Decode(ListBits(21)), -13);
    ASSERT_EQ(subject.Member(0).number, 20U);
    EXPECT_EQ(subject.Member(0).cells[19].number, 2U);
    EXPECT_FALSE(subject.Member(1).present);
}

TEST(CsnRecordRepetition, RefusedItemOutweighsAFailedRun) {
    ListSubject subject;
    std::string bits = ListBits(21);
    bits.resize(bits.size() - 2);  // the last field is cut off too
    EXPECT_EQ(subject.Decode(bits), -13);
}

/// Groups with an integer and a list inside: a repetition of repetitions.
struct NestedSubject : Subject {
    NestedSubject()
        : Subject(1, {Structs(0, 3, 20), Integer(2, 2), Structs(0, 1, 20), Integers(0, 2, 4),
                      Marker(1)}) {
        const auto outer = image.Field({{kRoot, 10}});
        const auto number = image.Field({{10, 11}});
        const auto inner = image.Field({{10, 12}});
        const auto item = image.Field({{12, 13}});
        const auto marker = image.Field({{10, 14}});
        List(image, [&] {
            Group(image, outer, [&] {
                image.code.Emit(Opcode::kField, {number, 2});
                List(image, [&] {
                    Group(image, inner, [&] {
                        List(image, [&] { image.code.Emit(Opcode::kField, {item, 2}); });
                    });
                });
                Optional(image, [&] { Group(image, marker, [] {}); });
            });
        });
        image.code.Emit(Opcode::kRet);
    }
};

TEST(CsnRecordRepetition, NestedRepetitions) {
    NestedSubject subject;
    // Outer 1: number 1, inner lists { 3, 2 } and { }, marked; outer 2: number 2, none, unmarked.
    const std::string bits = "1 01 1 111 110 0 1 0 0 1  1 10 0 0  0";
    const std::int32_t length = Count(bits);
    EXPECT_EQ(subject.Decode(bits), length);
    const Cell& outer = subject.Member(0);
    ASSERT_EQ(outer.number, 2U);
    const Cell* first = outer.cells[0].cells;
    EXPECT_EQ(first[2].number, 1U);
    ASSERT_EQ(first[0].number, 2U);
    ASSERT_EQ(first[0].cells[0].cells[0].number, 2U);
    EXPECT_EQ(first[0].cells[0].cells[0].cells[0].number, 3U);
    EXPECT_EQ(first[0].cells[0].cells[0].cells[1].number, 2U);
    EXPECT_EQ(first[0].cells[1].cells[0].number, 0U);
    EXPECT_TRUE(first[1].present);
    const Cell* second = outer.cells[1].cells;
    EXPECT_EQ(second[2].number, 2U);
    EXPECT_EQ(second[0].number, 0U);
    EXPECT_FALSE(second[1].present);
    EXPECT_EQ(subject.Encode(), BitText(Octets(bits), length));
}

TEST(CsnRecordRepetition, GrowingSequenceKeepsOpenStructs) {
    // More outer items than a sequence holds at first, each filled after the one before.
    NestedSubject subject;
    std::string bits;
    for (int item = 0; item < 9; ++item) {
        bits += "1 10 1 101 0 0 0 ";
    }
    bits += "0";
    EXPECT_EQ(subject.Decode(bits), Count(bits));
    ASSERT_EQ(subject.Member(0).number, 9U);
    for (int item = 0; item < 9; ++item) {
        const Cell* members = subject.Member(0).cells[item].cells;
        EXPECT_EQ(members[2].number, 2U);
        EXPECT_EQ(members[0].cells[0].cells[0].cells[0].number, 1U);
    }
}

TEST(CsnRecordRepetition, InnerBoundIsItsOwn) {
    NestedSubject subject;
    EXPECT_EQ(subject.Decode("1 01 1 111 111 111 111 0 0 0 0"), 20);
    NestedSubject refused;
    EXPECT_EQ(refused.Decode("1 01 1 111 111 111 111 101 0 0 0 0"), -13);
    EXPECT_EQ(refused.Member(0).cells[0].cells[0].cells[0].cells[0].number, 4U);
}

TEST(CsnRecordRepetition, EmptyRepetitionOfAnUnfilledRecord) {
    NestedSubject nested;
    EXPECT_EQ(nested.Encode(), "0");
}

TEST(CsnRecordRepetition, SingleMemberEndsAnOpenRepetition) {
    // A description may hold one value of what the air could repeat.
    Subject subject(1, {Integer(0, 2)});
    const auto field = subject.image.Field({{kRoot, 10}});
    List(subject.image, [&] { subject.image.code.Emit(Opcode::kField, {field, 2}); });
    subject.image.code.Emit(Opcode::kRet);
    EXPECT_EQ(subject.Decode("101 110 0"), 7);
    EXPECT_EQ(subject.Member(0).number, 2U);
    EXPECT_EQ(subject.Encode(), "1100");
}

}  // namespace
}  // namespace quorvane::csn::test
