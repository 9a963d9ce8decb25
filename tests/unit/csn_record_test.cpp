#include "csn/csn_record.h"

#include <gtest/gtest.h>
#include <vector>

#include "csn/functions.h"
#include "unit/csn_record_support.h"

namespace quorvane::csn::test {
namespace {

using bits::Arena;
using bits::Cell;

/// A variable bit string: an 8-bit length in front, as member 0, then the string, as member 1.
struct StringSubject : Subject {
    explicit StringSubject(std::uint32_t mostBits)
        : Subject(2, {Integer(0, 8), Binary(1, mostBits)}) {
        const auto length = image.Field({{kRoot, 10}});
        const auto text = image.Field({{kRoot, 11}});
        const auto function = image.Function(functions::TagPlus<1, 0>);
        image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(length, true)});
        image.code.Emit(Opcode::kSkip, {8});
        image.code.Emit(Opcode::kEndTag, {Assembler::Delimiter(length, true), 1});
        Group(
            image, text,
            [&] {
                const auto exit = image.code.NewLabel();
                image.code.Emit(Opcode::kRepFn, {Assembler::Exit(exit, false), function});
                const auto body = image.code.BindNew();
                image.code.Emit(Opcode::kSkip, {1});
                image.code.Emit(Opcode::kLoop, {body});
                image.code.Bind(exit);
            },
            true);
        image.code.Emit(Opcode::kRet);
    }
};

TEST(CsnRecord, Integers) {
    Subject subject(2, {Integer(1, 3), Integer(0, 5, true)});
    const auto first = subject.image.Field({{kRoot, 10}});
    const auto second = subject.image.Field({{kRoot, 11}});
    subject.image.code.Emit(Opcode::kField, {first, 3});
    Optional(subject.image, [&] { subject.image.code.Emit(Opcode::kField, {second, 5}); });
    subject.image.code.Emit(Opcode::kRet);

    EXPECT_EQ(subject.Decode("101 1 10011"), 9);
    EXPECT_EQ(subject.Member(1).number, 5U);
    EXPECT_EQ(subject.Member(1).location, 0U << 16 | 3U);
    EXPECT_EQ(subject.Member(0).number, 19U);
    EXPECT_EQ(subject.Member(0).location, 4U << 16 | 5U);
    EXPECT_TRUE(subject.Member(0).present);
    EXPECT_EQ(subject.Encode(), "101110011");

    subject.Member(0) = {};
    EXPECT_EQ(subject.Encode(), "1010");
}

TEST(CsnRecord, AbsentMembersStayZero) {
    Subject subject(1, {Integer(0, 5, true)});
    const auto field = subject.image.Field({{kRoot, 10}});
    Optional(subject.image, [&] { subject.image.code.Emit(Opcode::kField, {field, 5}); });
    subject.image.code.Emit(Opcode::kRet);
    EXPECT_EQ(subject.Decode("0"), 1);
    EXPECT_FALSE(subject.Member(0).present);
    EXPECT_EQ(subject.Member(0).location, 0U);
}

TEST(CsnRecord, FailedBranchesLeaveNoTrace) {
    Subject subject(1, {Integer(0, 2, true)});
    const auto field = subject.image.Field({{kRoot, 10}});
    const auto other = subject.image.code.NewLabel();
    subject.image.code.Emit(Opcode::kAlt, {Assembler::Branch(other, false)});
    subject.image.code.Emit(Opcode::kField, {field, 2});
    subject.image.code.Emit(Opcode::kFail);
    subject.image.code.Bind(other);
    subject.image.code.Emit(Opcode::kRet);
    EXPECT_EQ(subject.Decode("11"), 0);
    EXPECT_FALSE(subject.Member(0).present);
    EXPECT_EQ(subject.Member(0).number, 0U);
}

TEST(CsnRecord, FailedRunStoresWhatItRead) {
    Subject subject(2, {Integer(0, 4), Integer(1, 4, true)});
    const auto first = subject.image.Field({{kRoot, 10}});
    const auto second = subject.image.Field({{kRoot, 11}});
    subject.image.code.Emit(Opcode::kField, {first, 4});
    subject.image.code.Emit(Opcode::kField, {second, 4});
    subject.image.code.Emit(Opcode::kRet);
    EXPECT_EQ(subject.Decode("1001 11"), -1);
    EXPECT_EQ(subject.Member(0).number, 9U);
    EXPECT_FALSE(subject.Member(1).present);
}

TEST(CsnRecord, TagsOfOthersAreIgnored) {
    // Tags 9 and 12 are not of this structure, whose fields have 10 and 11.
    Subject subject(2, {Integer(0, 2), Integer(1, 2)});
    const std::uint16_t tags[] = {9, 10, 12, 11};
    for (const std::uint16_t tag : tags) {
        subject.image.code.Emit(Opcode::kField, {subject.image.Field({{kRoot, tag}}), 2});
    }
    const auto foreign = subject.image.Field({{kRoot, 13}});
    const auto inside = subject.image.Field({{13, 10}});
    Group(subject.image, foreign, [&] { subject.image.code.Emit(Opcode::kField, {inside, 2}); });
    subject.image.code.Emit(Opcode::kRet);
    EXPECT_EQ(subject.Decode("11 01 11 10 00"), 10);
    EXPECT_EQ(subject.Member(0).number, 1U);
    EXPECT_EQ(subject.Member(1).number, 2U);
    EXPECT_EQ(subject.Encode(), "0001001000");
}

TEST(CsnRecord, PositionsBeyondALocationAreLeftOut) {
    Subject subject(1, {Integer(0, 4)});
    subject.image.code.Emit(Opcode::kSkip, {60});
    subject.image.code.Emit(Opcode::kField, {subject.image.Field({{kRoot, 10}}), 4});
    subject.image.code.Emit(Opcode::kRet);
    std::vector<std::uint8_t> octets(9000, 0xFF);
    const bits::BitReader reader(octets.data(), 9000);
    const std::vector<CsnFieldRow> rows = {Integer(0, 4)};
    const CsnStructure structure{"S", &subject.image.Program(), 0, 0, kRoot, 10, 1, rows};
    Arena arena;
    Cell cell{};
    EXPECT_EQ(DecodeCsn(structure, reader, arena, 65530, 100, cell), 64);
    EXPECT_EQ(cell.cells[0].number, 15U);
    EXPECT_EQ(cell.cells[0].location, 0U);
}

/// The worked structure: two octets and two optional groups of two octets.
struct QosSubject : Subject {
    QosSubject()
        : Subject(4, {Integer(0, 8), Integer(1, 8), Struct(2, 2, true), Struct(3, 2, true),
                      Integer(0, 8), Integer(1, 8), Integer(0, 8), Integer(1, 8)}) {
        const auto plain = [&](std::uint16_t parent, std::uint16_t tag) {
            image.code.Emit(Opcode::kField, {image.Field({{parent, tag}}), 8});
        };
        const auto end = image.code.NewLabel();
        plain(kRoot, 10);
        plain(kRoot, 11);
        image.code.Emit(Opcode::kAlt, {Assembler::Branch(end, false)});
        Group(image, image.Field({{kRoot, 12}}), [&] {
            plain(12, 14);
            plain(12, 15);
        });
        image.code.Emit(Opcode::kCommit);
        Group(image, image.Field({{kRoot, 13}}), [&] {
            plain(13, 16);
            plain(13, 17);
        });
        image.code.Emit(Opcode::kPop);
        image.code.Bind(end);
        image.code.Emit(Opcode::kRet);
    }
};

constexpr std::string_view kSixOctets = "00000001 00000010 00000011 00000100 00000101 00000110";

TEST(CsnRecord, OptionalGroups) {
    const std::pair<std::size_t, std::int32_t> rows[] = {
        {2, 16}, {3, 16}, {4, 32}, {5, 32}, {6, 48}};
    for (const auto& [octets, result] : rows) {
        QosSubject subject;
        EXPECT_EQ(subject.Decode(kSixOctets.substr(0, octets * 9)), result) << octets;
        EXPECT_EQ(subject.Member(0).number, 1U);
        EXPECT_EQ(subject.Member(1).number, 2U);
        ASSERT_EQ(subject.Member(2).present, result >= 32) << octets;
        ASSERT_EQ(subject.Member(3).present, result >= 48) << octets;
        if (result >= 32) {
            EXPECT_EQ(subject.Member(2).cells[0].number, 3U);
            EXPECT_EQ(subject.Member(2).cells[1].number, 4U);
            EXPECT_EQ(subject.Member(2).cells[1].location, 24U << 16 | 8U);
        }
        if (result >= 48) {
            EXPECT_EQ(subject.Member(3).cells[1].number, 6U);
        }
        std::string expected;
        for (const char bit : kSixOctets.substr(0, static_cast<std::size_t>(result / 8) * 9)) {
            expected += bit == ' ' ? "" : std::string(1, bit);
        }
        EXPECT_EQ(subject.Encode(), expected);
    }
}

TEST(CsnRecord, SecondGroupAloneCannotBeWritten) {
    QosSubject subject;
    ASSERT_EQ(subject.Decode(kSixOctets), 48);
    subject.Member(2).present = false;
    EXPECT_EQ(subject.Encode().size(), 16U);
}

TEST(CsnRecord, VariableStrings) {
    for (const int length : {0, 1, 8, 13, 64}) {
        StringSubject subject(64);
        std::string text;
        for (int bit = 0; bit < length; ++bit) {
            text += bit % 3 == 0 ? '1' : '0';
        }
        std::string bits = "00000000";
        for (int bit = 0; bit < 8; ++bit) {
            bits[static_cast<std::size_t>(bit)] = (length >> (7 - bit) & 1) != 0 ? '1' : '0';
        }
        EXPECT_EQ(subject.Decode(bits + text), 8 + length);
        const Cell& cell = subject.Member(1);
        ASSERT_EQ(cell.number, static_cast<std::uint32_t>(length));
        EXPECT_EQ(cell.location, 8U << 16 | static_cast<std::uint32_t>(length));
        const std::vector<std::uint8_t> stored(
            cell.octets, cell.octets + static_cast<std::size_t>((length + 7) / 8));
        EXPECT_EQ(BitText(stored, length), text);
        EXPECT_EQ(subject.Encode(), bits + text);
    }
}

TEST(CsnRecord, LongStringsAreCut) {
    StringSubject subject(64);
    const std::string text = std::string(64, '1') + std::string(36, '0');
    EXPECT_EQ(subject.Decode("01100100" + text), 108);
    const Cell& cell = subject.Member(1);
    EXPECT_EQ(cell.number, 64U);
    EXPECT_EQ(cell.location, 8U << 16 | 100U);
    for (int octet = 0; octet < 8; ++octet) {
        EXPECT_EQ(cell.octets[octet], 0xFF);
    }
    // Written again it is too short for its length.
    EXPECT_EQ(subject.Encode(), "failed");
}

TEST(CsnRecord, EmptyStringIsPresent) {
    Subject subject(1, {Binary(0, 64, true)});
    Group(
        subject.image, subject.image.Field({{kRoot, 10}}), [] {}, true);
    subject.image.code.Emit(Opcode::kRet);
    EXPECT_EQ(subject.Decode("1"), 0);
    EXPECT_TRUE(subject.Member(0).present);
    EXPECT_EQ(subject.Member(0).number, 0U);
    EXPECT_EQ(subject.Member(0).octets, nullptr);
    EXPECT_EQ(subject.Encode(), "");
}

TEST(CsnRecord, FixedStrings) {
    Subject subject(1, {FixedBinary(0, 40)});
    subject.image.code.Emit(Opcode::kField, {subject.image.Field({{kRoot, 10}}), 40});
    subject.image.code.Emit(Opcode::kRet);
    EXPECT_EQ(subject.Encode(), std::string(40, '0'));  // never set
    const std::string bits = "1100" + std::string(35, '0') + "1";
    EXPECT_EQ(subject.Decode(bits), 40);
    EXPECT_EQ(subject.Member(0).number, 40U);
    EXPECT_EQ(subject.Member(0).location, 40U);
    EXPECT_EQ(subject.Encode(), bits);
}

TEST(CsnRecord, Markers) {
    Subject subject(2, {Marker(0), Marker(1)});
    const auto first = subject.image.Field({{kRoot, 10}});
    const auto second = subject.image.Field({{kRoot, 11}});
    Optional(subject.image, [&] { Group(subject.image, first, [] {}); });
    Optional(subject.image, [&] { Group(subject.image, second, [] {}); });
    subject.image.code.Emit(Opcode::kRet);
    EXPECT_EQ(subject.Decode("01"), 2);
    EXPECT_FALSE(subject.Member(0).present);
    EXPECT_TRUE(subject.Member(1).present);
    EXPECT_EQ(subject.Member(1).number, 0U);
    EXPECT_EQ(subject.Encode(), "01");
}

TEST(CsnRecord, FixedValues) {
    // <type: 01> <sort: 1>, of which only the second is kept.
    Subject subject(1, {Nothing(), Integer(0, 1)});
    subject.image.code.Emit(Opcode::kFieldLit,
                            {subject.image.Field({{kRoot, 10}}), Assembler::Literal(1, 2)});
    subject.image.code.Emit(Opcode::kFieldLit,
                            {subject.image.Field({{kRoot, 11}}), Assembler::Literal(1, 1)});
    subject.image.code.Emit(Opcode::kRet);
    EXPECT_EQ(subject.Decode("011"), 3);
    EXPECT_EQ(subject.Member(0).number, 1U);
    EXPECT_EQ(subject.Encode(), "011");
    subject.Member(0).number = 0;  // not the value that the description wants
    EXPECT_EQ(subject.Encode(), "failed");
}

TEST(CsnRecord, FixedValueChoosesTheBranch) {
    // { <sort: 0> <short(2)> | <sort: 1> <long(4)> }
    Subject subject(3, {Integer(2, 1), Integer(1, 2, true), Integer(0, 4, true)});
    const auto sort = subject.image.Field({{kRoot, 10}});
    const auto shortField = subject.image.Field({{kRoot, 11}});
    const auto longField = subject.image.Field({{kRoot, 12}});
    auto& code = subject.image.code;
    const auto second = code.NewLabel();
    const auto fail = code.NewLabel();
    const auto join = code.NewLabel();
    code.Emit(Opcode::kAlt, {Assembler::Branch(second, false)});
    code.Emit(Opcode::kFieldLit, {sort, Assembler::Literal(0, 1)});
    code.Emit(Opcode::kField, {shortField, 2});
    code.Emit(Opcode::kJmp, {join});
    code.Bind(second);
    code.Emit(Opcode::kAlt, {Assembler::Branch(fail, true)});
    code.Emit(Opcode::kFieldLit, {sort, Assembler::Literal(1, 1)});
    code.Emit(Opcode::kField, {longField, 4});
    code.Emit(Opcode::kJmp, {join});
    code.Bind(fail);
    code.Emit(Opcode::kFail);
    code.Bind(join);
    code.Emit(Opcode::kPop);
    code.Emit(Opcode::kRet);
    for (const std::string bits : {"010", "11001"}) {
        subject.cell = {};
        EXPECT_EQ(subject.Decode(bits), Count(bits));
        EXPECT_EQ(subject.Encode(), bits);
    }
}

TEST(CsnRecord, RawBitOfAChoice) {
    // <flag: { L | H }>
    Subject subject(1, {Integer(0, 1)});
    const auto flag = subject.image.Field({{kRoot, 10}});
    auto& code = subject.image.code;
    code.Emit(Opcode::kSkip, {2});  // the padding bit of the place is 1
    Group(
        subject.image, flag,
        [&] {
            const auto second = code.NewLabel();
            const auto join = code.NewLabel();
            code.Emit(Opcode::kAlt, {Assembler::Branch(second, false)});
            code.Emit(Opcode::kBitL);
            code.Emit(Opcode::kPop);
            code.Emit(Opcode::kJmp, {join});
            code.Bind(second);
            code.Emit(Opcode::kBitH);
            code.Bind(join);
        },
        true);
    code.Emit(Opcode::kRet);
    EXPECT_EQ(subject.Decode("001"), 3);
    EXPECT_EQ(subject.Member(0).number, 1U);
    EXPECT_EQ(subject.Encode(), "001");
    EXPECT_EQ(subject.Decode("000"), 3);
    EXPECT_EQ(subject.Member(0).number, 0U);
    EXPECT_EQ(subject.Encode(), "000");
}

TEST(CsnRecord, FieldsOfAPlainDelimiterBelongToItsParent) {
    Subject subject(2, {Nothing(), Integer(0, 2), Integer(1, 2)});
    const auto group = subject.image.Field({{kRoot, 10}});
    const auto inside = subject.image.Field({{10, 11}});
    const auto behind = subject.image.Field({{kRoot, 12}});
    Group(subject.image, group, [&] { subject.image.code.Emit(Opcode::kField, {inside, 2}); });
    subject.image.code.Emit(Opcode::kField, {behind, 2});
    subject.image.code.Emit(Opcode::kRet);
    EXPECT_EQ(subject.Decode("0110"), 4);
    EXPECT_EQ(subject.Member(0).number, 1U);
    EXPECT_EQ(subject.Member(1).number, 2U);
    EXPECT_EQ(subject.Encode(), "0110");
}

TEST(CsnRecord, RecordThatWasNeverFilledIsWrittenAsDefaults) {
    QosSubject qos;
    EXPECT_EQ(qos.Encode(), std::string(16, '0'));
    // A mandatory group that nobody reached.
    Subject subject(1, {Struct(0, 1), Integer(0, 4)});
    const auto group = subject.image.Field({{kRoot, 10}});
    const auto inside = subject.image.Field({{10, 11}});
    Group(subject.image, group, [&] { subject.image.code.Emit(Opcode::kField, {inside, 4}); });
    subject.image.code.Emit(Opcode::kRet);
    EXPECT_EQ(subject.Encode(), "0000");
}

TEST(CsnRecord, AStringThatTheRunEndsInHasNoBits) {
    StringSubject subject(64);
    EXPECT_EQ(subject.Decode("00000101 11111"), 13);
    EXPECT_EQ(subject.Member(1).number, 5U);
    EXPECT_EQ(subject.Member(1).location, 8U << 16 | 5U);
    subject.cell = {};
    EXPECT_EQ(subject.Decode("00000101 1111"), -1);
    EXPECT_EQ(subject.Member(0).number, 5U);
    EXPECT_EQ(subject.Member(1).number, 0U);
    EXPECT_EQ(subject.Member(1).location, 8U << 16);
}

TEST(CsnRecord, FullRecordListIsStoredAsFarAsItGoes) {
    // The 256th record opens a string, and nothing tells where it ends.
    Subject subject(2, {Nothing(), Integers(0, 1, 200), Binary(1, 64, true)});
    const auto group = subject.image.Field({{kRoot, 10}});
    const auto item = subject.image.Field({{10, 11}});
    const auto text = subject.image.Field({{10, 12}});
    const auto exit = subject.image.code.NewLabel();
    subject.image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(group, false)});
    subject.image.code.Emit(Opcode::kRep, {Assembler::Exit(exit, false), 127});
    const auto body = subject.image.code.BindNew();
    subject.image.code.Emit(Opcode::kField, {item, 1});
    subject.image.code.Emit(Opcode::kLoop, {body});
    subject.image.code.Bind(exit);
    subject.image.code.Emit(Opcode::kField, {text, 4});
    subject.image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(group, false)});
    subject.image.code.Emit(Opcode::kRet);
    EXPECT_EQ(subject.Decode(std::string(140, '1')), -1);
    EXPECT_EQ(subject.Member(0).number, 127U);
    EXPECT_TRUE(subject.Member(1).present);
    EXPECT_EQ(subject.Member(1).number, 0U);
    EXPECT_EQ(subject.Member(1).location, 127U << 16);
}

TEST(CsnRecord, WriterWithoutRoomSaysSo) {
    Subject subject(1, {Integer(0, 16)});
    subject.image.code.Emit(Opcode::kField, {subject.image.Field({{kRoot, 10}}), 16});
    subject.image.code.Emit(Opcode::kRet);
    const std::vector<CsnFieldRow> rows = {Integer(0, 16)};
    const CsnStructure structure{"S", &subject.image.Program(), 0, 0, kRoot, 10, 1, rows};
    std::uint8_t octet = 0;
    bits::BitWriter writer(&octet, 1);
    EXPECT_EQ(EncodeCsn(structure, writer, 0, subject.cell), 16);
    EXPECT_TRUE(writer.Overflowed());
}

}  // namespace
}  // namespace quorvane::csn::test
