#include <gtest/gtest.h>
#include <vector>

#include "csn/functions.h"
#include "unit/csn_test_support.h"

namespace quorvane::csn {
namespace {

namespace fn = functions;

/// A machine in the middle of a run over `bits`.
class CsnFunctions : public testing::Test {
  protected:
    void At(std::string_view bits, std::int32_t position) {
        octets_ = test::Octets(bits);
        const bits::BitReader reader(octets_.data(), static_cast<std::int64_t>(octets_.size()));
        static constexpr CsnProgram kNoProgram{};
        CsnMachineInit(machine, kNoProgram, 0, reader, 0, test::Count(bits));
        machine.endPos = test::Count(bits);
        machine.bitPos = position;
    }
    void Encoding(std::size_t octets, std::int32_t position) {
        octets_.assign(octets, 0xFF);
        writer_ = bits::BitWriter(octets_.data(), static_cast<std::int64_t>(octets));
        static constexpr CsnProgram kNoProgram{};
        CsnMachineInit(machine, kNoProgram, 0, writer_, 0);
        machine.bitPos = position;
    }
    [[nodiscard]] std::string Written(std::int32_t count) const {
        return test::BitText(octets_, count);
    }

    CsnMachine machine;

  private:
    std::vector<std::uint8_t> octets_;
    bits::BitWriter writer_{nullptr, 0};
};

const std::string kLong(400, '0');

TEST_F(CsnFunctions, NotesPositions) {
    At(kLong, 33);
    fn::NotePosition<5>(machine);
    EXPECT_EQ(TagValue(machine, 5), 33);
    fn::NotePositionAhead<100, 160>(machine);
    EXPECT_EQ(TagValue(machine, 100), 193);
}

TEST_F(CsnFunctions, ScopeBehindItsLength) {
    At("0000 0101" + kLong, 8);
    machine.endPos = 300;
    fn::OpenScopeAtLengthEnd<1, 4>(machine);
    EXPECT_EQ(TagValue(machine, 1), 300);
    EXPECT_EQ(machine.endPos, 13);
    EXPECT_EQ(machine.bitPos, 8);
    fn::OpenScopeAtLengthEnd<20, 7>(machine);
    EXPECT_EQ(TagValue(machine, 20), 13);
    EXPECT_EQ(machine.endPos, 13);
    fn::CloseScope<20>(machine);
    EXPECT_EQ(machine.endPos, 13);
    fn::CloseScope<1>(machine);
    EXPECT_EQ(machine.endPos, 300);
}

TEST_F(CsnFunctions, ScopeInFrontOfItsLength) {
    At("00 000101" + kLong, 2);
    fn::OpenScopeAtLengthStart<20, 6, 7>(machine);
    EXPECT_EQ(machine.endPos, 2 + 5 + 7);
    EXPECT_EQ(TagValue(machine, 20), 408);
    EXPECT_EQ(machine.bitPos, 2);
    At("00000101" + kLong, 0);
    fn::OpenScopeAtLengthStart<20, 8, 8>(machine);
    EXPECT_EQ(machine.endPos, 13);
    At("00000101" + kLong, 0);
    fn::OpenScopeAtLengthStart<20, 8, 9>(machine);
    EXPECT_EQ(machine.endPos, 14);
}

TEST_F(CsnFunctions, ScopeByLengthCode) {
    At("000101" + kLong, 0);
    fn::OpenScopeAtCodedLength<21>(machine);
    EXPECT_EQ(machine.endPos, 5 + 65);
    EXPECT_EQ(TagValue(machine, 21), 406);
    At("000110" + kLong, 0);
    fn::OpenScopeAtCodedLength<21>(machine);
    EXPECT_EQ(machine.endPos, 7);
    At("111111" + kLong, 0);
    fn::OpenScopeAtCodedLength<21>(machine);
    EXPECT_EQ(machine.endPos, 64);
}

TEST_F(CsnFunctions, FixedScope) {
    At(kLong, 10);
    fn::OpenFixedScope<81, 128>(machine);
    EXPECT_EQ(machine.endPos, 138);
    EXPECT_EQ(TagValue(machine, 81), 400);
    fn::CloseScope<81>(machine);
    EXPECT_EQ(machine.endPos, 400);
}

TEST_F(CsnFunctions, ScopesStayWithinTheRun) {
    At("11111111 0000", 8);
    machine.endPos = 10;
    fn::OpenScopeAtLengthEnd<1, 7>(machine);
    EXPECT_EQ(machine.endPos, 12);
    fn::OpenFixedScope<1, 128>(machine);
    EXPECT_EQ(machine.endPos, 12);
    At("11111111 0000", 0);
    fn::OpenScopeAtLengthStart<1, 8, 9>(machine);
    EXPECT_EQ(machine.endPos, 12);
    At("000000", 0);
    fn::OpenScopeAtCodedLength<1>(machine);
    EXPECT_EQ(machine.endPos, 6);
    TagAdd(machine, 2, 0x7FFFFFFF);
    fn::CloseScope<2>(machine);
    EXPECT_EQ(machine.endPos, 6);
    // A run that does not begin at bit 0 ends so much later.
    At(kLong, 100);
    machine.startPos = 90;
    machine.bitLength = 20;
    fn::OpenFixedScope<1, 128>(machine);
    EXPECT_EQ(machine.endPos, 110);
}

TEST_F(CsnFunctions, AScopePastTheRunEndsWhereItSays) {
    At("11111111 0000", 8);
    fn::OpenScopeAtLengthEnd<1, 4>(machine);  // to 23, of 12 bits
    EXPECT_EQ(machine.endPos, 12);
    machine.bitPos = 11;
    fn::CloseScope<1>(machine);
    EXPECT_EQ(machine.bitPos, 11);  // not all that there was has been read
    At("11111111 0000", 8);
    fn::OpenScopeAtLengthEnd<1, 4>(machine);
    machine.bitPos = 12;
    fn::CloseScope<1>(machine);
    EXPECT_EQ(machine.bitPos, 23);
    EXPECT_EQ(machine.endPos, 12);
    // One that ends with the run, and one that ends ahead of it.
    At("1111 0100 0000", 8);
    fn::OpenScopeAtLengthEnd<1, 4>(machine);
    machine.bitPos = 12;
    fn::CloseScope<1>(machine);
    EXPECT_EQ(machine.bitPos, 12);
    At("1111 0011 0000", 8);
    fn::OpenScopeAtLengthEnd<1, 4>(machine);
    machine.bitPos = 11;
    fn::CloseScope<1>(machine);
    EXPECT_EQ(machine.bitPos, 11);
    // All was read, but not of the scope: a jump left it behind.
    At("1111 0011 0000", 8);
    fn::OpenScopeAtLengthEnd<1, 4>(machine);
    machine.bitPos = 12;
    fn::CloseScope<1>(machine);
    EXPECT_EQ(machine.bitPos, 12);
    // A second reading ends ahead of the scope.
    At("11111111 0000", 8);
    fn::OpenScopeAtLengthEnd<1, 4>(machine);
    machine.bitPos = 10;
    machine.endPos = 10;
    fn::CloseScope<1>(machine);
    EXPECT_EQ(machine.bitPos, 10);
}

TEST_F(CsnFunctions, AnEncodersScopeHasNoRunToEndWith) {
    Encoding(4, 8);
    fn::OpenFixedScope<1, 128>(machine);
    EXPECT_EQ(machine.endPos, 136);
    machine.bitPos = 8;
    machine.endPos = 8;
    fn::CloseScope<1>(machine);
    EXPECT_EQ(machine.bitPos, 8);
}

TEST_F(CsnFunctions, ClosingWhatWasNeverOpenedLeavesNoBits) {
    At(kLong, 10);
    fn::CloseScope<1>(machine);
    EXPECT_EQ(machine.endPos, -1);
}

TEST_F(CsnFunctions, AnEncodersScopeIsNotCut) {
    Encoding(64, 8);
    fn::OpenFixedScope<81, 128>(machine);
    EXPECT_EQ(machine.endPos, 136);
}

TEST_F(CsnFunctions, LengthsAreWrittenBack) {
    const struct {
        CsnAction action;
        std::int32_t noted;
        std::int32_t from;  // where the field begins
        std::int32_t width;
        std::string value;
    } rows[] = {
        {fn::WriteBackLength<1, 4, 0, 7>, 20, 13, 4, "1010"},      // 30 - 20
        {fn::WriteBackLength<1, 7, 0, 7>, 20, 13, 7, "0001010"},   //
        {fn::WriteBackLength<1, 6, 7, 0>, 16, 16, 6, "000111"},    // 30 - 16 - 7
        {fn::WriteBackLength<1, 8, 8, 0>, 16, 16, 8, "00000110"},  // 30 - 16 - 8
        {fn::WriteBackLength<1, 8, 9, 0>, 16, 16, 8, "00000101"},  // 30 - 16 - 9
    };
    for (const auto& row : rows) {
        Encoding(8, 30);
        TagAdd(machine, 1, row.noted);
        row.action(machine);
        std::string expected(64, '1');
        expected.replace(static_cast<std::size_t>(row.from), static_cast<std::size_t>(row.width),
                         row.value);
        EXPECT_EQ(Written(64), expected);
    }
}

TEST_F(CsnFunctions, LengthsAreNotWrittenBackWhenDecodingOrOutside) {
    At(kLong, 30);
    TagAdd(machine, 1, 20);
    fn::WriteBackLength<1, 7, 0, 7>(machine);
    EXPECT_EQ(Written(64), std::string(64, '0'));
    Encoding(8, 30);
    fn::WriteBackLength<1, 7, 0, 7>(machine);  // nothing noted: at -8
    EXPECT_EQ(Written(64), std::string(64, '1'));
}

TEST_F(CsnFunctions, Clip) {
    for (const std::int32_t passed : {24, 25, 60}) {
        At(kLong, 10 + passed);
        TagAdd(machine, 1, 10);
        fn::ClipToSpan<1, 24>(machine);
        EXPECT_EQ(machine.bitPos, 34) << passed;
    }
    At(kLong, 20);
    TagAdd(machine, 1, 10);
    fn::ClipToSpan<1, 24>(machine);
    EXPECT_EQ(machine.bitPos, 20);
}

TEST_F(CsnFunctions, JumpOver) {
    At("0000 00010100" + kLong, 200);
    TagAdd(machine, 1, 4);
    fn::JumpOverElement<1, 8, 9>(machine);
    EXPECT_EQ(machine.bitPos, 20 + 4 + 9);
}

TEST_F(CsnFunctions, Counts) {
    At("10111 011", 8);
    fn::KeepCount<6, 3>(machine);
    EXPECT_EQ(TagValue(machine, 6), 3);
    machine.bitPos = 5;
    fn::KeepCount<7, 5>(machine);
    EXPECT_EQ(TagValue(machine, 7), 23);

    fn::SetCount<40, fn::Constant<0>>(machine);
    fn::AddCount<40, fn::Constant<1>>(machine);
    fn::AddCount<40, fn::Constant<1>>(machine);
    EXPECT_EQ(TagValue(machine, 40), 2);
    EXPECT_EQ(machine.tagCount, 3);
    fn::SetCount<41, fn::TagPlus<7, -24>>(machine);
    EXPECT_EQ(TagValue(machine, 41), -1);
    fn::AddCount<99, fn::Constant<1>>(machine);  // never set: nothing to change
    EXPECT_EQ(TagValue(machine, 99), -1);
}

TEST_F(CsnFunctions, OneBits) {
    At("0111 0110 1000 0001", 8);
    EXPECT_EQ(fn::Ones<8>(machine), 5U);
    EXPECT_EQ(fn::Ones<3>(machine), 2U);
    fn::SetCount<41, fn::Ones<8>>(machine);
    machine.bitPos = 16;
    fn::AddCount<41, fn::Ones<8>>(machine);
    EXPECT_EQ(TagValue(machine, 41), 7);
    EXPECT_EQ(machine.tagCount, 1);
    // Of as many bits as a number says.
    EXPECT_EQ(fn::OnesOf<41>(machine), 1U);
    TagAdd(machine, 42, 12);
    EXPECT_EQ(fn::OnesOf<42>(machine), 4U);
    TagAdd(machine, 42, 0);
    EXPECT_EQ(fn::OnesOf<42>(machine), 0U);
    TagAdd(machine, 42, 100);
    EXPECT_EQ(fn::OnesOf<42>(machine), 7U);
    EXPECT_EQ(fn::OnesOf<99>(machine), 0U);
}

TEST_F(CsnFunctions, RunningMaximum) {
    At("01 10 01 11", 2);
    fn::SetCount<1, fn::Constant<0>>(machine);
    std::vector<std::int32_t> seen;
    for (; machine.bitPos <= 8; machine.bitPos += 2) {
        fn::RaiseMaximum<1, 2>(machine);
        seen.push_back(TagValue(machine, 1));
    }
    EXPECT_EQ(seen, (std::vector<std::int32_t>{1, 2, 2, 3}));
    EXPECT_EQ(machine.tagCount, 1);
}

TEST_F(CsnFunctions, Rejections) {
    const auto rejects = [&](CsnAction action, std::string_view bits) {
        At(bits, 0);
        machine.flags &= ~kFlagRefused;
        machine.bitPos = test::Count(bits);
        action(machine);
        return (machine.flags & kFlagRefused) != 0;
    };
    EXPECT_TRUE(rejects(fn::RejectZero<4>, "0000"));
    EXPECT_FALSE(rejects(fn::RejectZero<4>, "0001"));
    EXPECT_TRUE(rejects(fn::RejectZero<4>, "10000"));
    EXPECT_FALSE(rejects(fn::RejectZero<5>, "10000"));
    EXPECT_TRUE(rejects(fn::RejectZero<5>, "00000"));
    EXPECT_TRUE(rejects(fn::RejectZeroAndOnes<5>, "00000"));
    EXPECT_TRUE(rejects(fn::RejectZeroAndOnes<5>, "11111"));
    EXPECT_FALSE(rejects(fn::RejectZeroAndOnes<5>, "11110"));
    EXPECT_FALSE(rejects(fn::RejectZeroAndOnes<5>, "01111"));
}

TEST_F(CsnFunctions, BitsToTheOctetBoundary) {
    for (const auto& [position, bits] : {std::pair{0, 0U}, {1, 7U}, {7, 1U}, {8, 0U}, {13, 3U}}) {
        At(kLong, position);
        EXPECT_EQ(fn::BitsToOctetBoundary(machine), bits) << position;
    }
}

TEST_F(CsnFunctions, CountsWithAnOffset) {
    At(kLong, 0);
    TagAdd(machine, 1, 4);
    EXPECT_EQ((fn::TagPlus<1, 0>(machine)), 4U);
    EXPECT_EQ((fn::TagPlus<1, 1>(machine)), 5U);
    EXPECT_EQ((fn::TagPlus<1, 3>(machine)), 7U);
    EXPECT_EQ((fn::TagPlus<1, 6>(machine)), 10U);
    EXPECT_EQ((fn::TagPlus<1, -1>(machine)), 3U);
    EXPECT_EQ((fn::RestOf<1, 5>(machine)), 1U);
    EXPECT_EQ((fn::RestOf<1, 1>(machine)), 0xFFFFFFFDU);  // negative: no count
    EXPECT_EQ((fn::OctetsToBits<1>(machine)), 32U);
    EXPECT_EQ((fn::TagPlus<2, 0>(machine)), 0xFFFFFFFFU);  // never noted: no count
    EXPECT_EQ((fn::TagPlus<2, 1>(machine)), 0U);
    EXPECT_EQ((fn::OctetsToBits<2>(machine)), 0xFFFFFFF8U);
}

TEST_F(CsnFunctions, BitsLeftOfASpan) {
    At(kLong, 30);
    TagAdd(machine, 1, 10);
    EXPECT_EQ((fn::BitsLeftInSpan<1, 24>(machine)), 4U);
    EXPECT_EQ((fn::BitsLeftInSpan<1, 160>(machine)), 140U);
    EXPECT_EQ((fn::BitsLeftInSpan<1, 8>(machine)), 0xFFFFFFF4U);
    EXPECT_EQ((fn::BitsLeftInSpanOrZeroBased<1, 128>(machine)), 108U);
    EXPECT_EQ((fn::BitsLeftInSpanOrZeroBased<2, 128>(machine)), 98U);
    EXPECT_EQ((fn::BitsLeftInSpanIfAny<1, 24>(machine)), 4U);
    machine.bitPos = 34;
    EXPECT_EQ((fn::BitsLeftInSpanIfAny<1, 24>(machine)), 0U);
    machine.bitPos = 35;
    EXPECT_EQ((fn::BitsLeftInSpanIfAny<1, 24>(machine)), 0U);
    TagAdd(machine, 100, 40);
    EXPECT_EQ(fn::BitsLeftToEnd<100>(machine), 5U);
    machine.bitPos = 40;
    EXPECT_EQ(fn::BitsLeftToEnd<100>(machine), 0U);
    machine.bitPos = 50;
    EXPECT_EQ(fn::BitsLeftToEnd<100>(machine), 0U);
    EXPECT_EQ(fn::BitsLeftToEnd<101>(machine), 0U);
}

std::uint32_t Twice(std::int32_t number) {
    return static_cast<std::uint32_t>(number) * 2;
}

TEST_F(CsnFunctions, Declared) {
    At(kLong, 0);
    EXPECT_EQ((fn::Declared<7, Twice>(machine)), 0xFFFFFFFEU);  // of -1: the tag is not set
    TagAdd(machine, 7, 16);
    EXPECT_EQ((fn::Declared<7, Twice>(machine)), 32U);
}

TEST_F(CsnFunctions, HostileNumbersStayDefined) {
    At(kLong, 0);
    TagAdd(machine, 1, 0x7FFFFFFF);
    machine.bitPos = kMostPosition;
    EXPECT_EQ((fn::TagPlus<1, 1>(machine)), 0x80000000U);
    (void)fn::BitsLeftInSpan<1, 24>(machine);
    (void)fn::BitsLeftInSpanIfAny<1, 24>(machine);
    fn::ClipToSpan<1, 24>(machine);
    fn::JumpOverElement<1, 8, 9>(machine);
    EXPECT_GE(machine.bitPos, -kMostPosition);
    EXPECT_LE(machine.bitPos, kMostPosition);
    fn::OpenFixedScope<1, 128>(machine);
    EXPECT_LE(machine.endPos, 400);
}

/// A length field of 4 bits, what it limits, and a field behind, as an image holds them.
TEST(CsnScopes, LimitAPartOfTheMessage) {
    for (const bool encode : {false, true}) {
        test::Image image;
        const auto length = image.Field({{test::kRoot, 10}});
        const auto open = image.Action(fn::OpenScopeAtLengthEnd<1, 4>);
        const auto close = image.Action(fn::CloseScope<1>);
        const auto note = image.Action(fn::NotePosition<2>);
        const auto write = image.Action(fn::WriteBackLength<2, 4, 0, 4>);
        const auto exit = image.code.NewLabel();
        image.code.Emit(Opcode::kField, {length, 4});
        image.code.Emit(Opcode::kActEnc, {note});
        image.code.Emit(Opcode::kActDec, {open});
        image.code.Emit(Opcode::kRep, {Assembler::Exit(exit, false), 3});
        const auto body = image.code.BindNew();
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kLoop, {body});
        image.code.Bind(exit);
        image.code.Emit(Opcode::kActEnc, {write});
        image.code.Emit(Opcode::kActDec, {close});
        image.code.Emit(Opcode::kBit0);
        image.code.Emit(Opcode::kRet);
        if (encode) {
            EXPECT_EQ(test::Encode(image).Text(), "00111110");
        } else {
            EXPECT_EQ(test::Decode(image, "0011 111 0").result, 8);
            EXPECT_EQ(test::Decode(image, "0010 111 0").result, -1);  // the limit is felt
            EXPECT_EQ(test::Decode(image, "1111 111 0").result, 8);   // past the run: cut
            EXPECT_EQ(test::Decode(image, "1111 111").result, -1);
        }
    }
}

}  // namespace
}  // namespace quorvane::csn
