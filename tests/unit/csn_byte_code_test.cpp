#include <fstream>
#include <gtest/gtest.h>
#include <iomanip>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "csn/assembly/assembler.h"
#include "csn/assembly/instruction.h"

namespace quorvane::csn {
namespace {

std::uint32_t OperandOf(const std::vector<std::uint8_t>& octets, std::uint32_t consumed) {
    std::uint32_t offset = 0;
    const std::uint32_t value = ReadOperand(octets.data(), offset);
    EXPECT_EQ(offset, consumed);
    return value;
}

TEST(CsnByteCode, OperandsAreGroupsOfSevenBits) {
    EXPECT_EQ(OperandOf({0x08}, 1), 8U);
    EXPECT_EQ(OperandOf({0x81, 0x14}, 2), 148U);
    EXPECT_EQ(OperandOf({0x82, 0x0E}, 2), 270U);
    EXPECT_EQ(OperandOf({0x80, 0x05}, 2), 5U);
}

TEST(CsnByteCode, FifthOctetEndsAnOperandWithFourBits) {
    EXPECT_EQ(OperandOf({0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, 5), 0xFFFFFFFFU);
    EXPECT_EQ(OperandOf({0x80, 0x80, 0x80, 0x80, 0xF3, 0x01}, 5), 3U);
    EXPECT_EQ(OperandOf({0x80, 0x80, 0x80, 0x81, 0x00}, 5), 16U);
}

TEST(CsnByteCode, OperandsComeBackFromTheirOctets) {
    for (const std::uint32_t value : {0U, 1U, 127U, 128U, 16383U, 16384U, 0x1FFFFFU, 0x200000U,
                                      0x0FFFFFFFU, 0x10000000U, 0xFFFFFFFFU}) {
        std::vector<std::uint8_t> octets;
        AppendOperand(octets, value);
        EXPECT_EQ(octets.size(), OperandSize(value));
        EXPECT_EQ(OperandOf(octets, OperandSize(value)), value);
    }
    EXPECT_EQ(OperandSize(127), 1U);
    EXPECT_EQ(OperandSize(128), 2U);
    EXPECT_EQ(OperandSize(0x0FFFFFFF), 4U);
    EXPECT_EQ(OperandSize(0x10000000), 5U);
}

TEST(CsnByteCode, JumpDistanceHasFourRanges) {
    EXPECT_EQ(JumpDistance(100, 0), 100U);
    EXPECT_EQ(JumpDistance(101, 0xFFF), 101U + 4095U);
    EXPECT_EQ(JumpDistance(0, 0x2000), 4096U);
    EXPECT_EQ(JumpDistance(8, 0x2000), 4104U);
    EXPECT_EQ(JumpDistance(1, 0x2000), 4104U);  // 4097, rounded up
    EXPECT_EQ(JumpDistance(0, 0x2001), 4104U);
    EXPECT_EQ(JumpDistance(0, 0x2FFF), 36856U);
    EXPECT_EQ(JumpDistance(0, 0x4000), 36864U);
    EXPECT_EQ(JumpDistance(15, 0x4001), 36896U);  // 36895, rounded up to a multiple of 16
    EXPECT_EQ(JumpDistance(0, 0x6000), 102400U);
    EXPECT_EQ(JumpDistance(1, 0x6002), 102496U);  // 102465, rounded up to a multiple of 32
}

TEST(CsnByteCode, BitTwelvePlaysNoPart) {
    EXPECT_EQ(JumpDistance(7, 0x1005), JumpDistance(7, 0x0005));
    EXPECT_EQ(JumpDistance(7, 0x3005), JumpDistance(7, 0x2005));
}

TEST(CsnByteCode, AlternativeKeepsItsFlagApartFromTheDistance) {
    const std::vector<std::uint8_t> code(16, 0x00);
    std::vector<std::uint8_t> alternative = code;
    alternative[4] = 0x80 | 0x20;
    alternative[5] = 0x05;
    const auto instruction = DecodeInstruction(alternative, 4);
    ASSERT_TRUE(instruction);
    EXPECT_EQ(instruction->Code(), Opcode::kAlt);
    EXPECT_EQ(instruction->size, 2U);
    EXPECT_TRUE(instruction->Flag());
    EXPECT_EQ(instruction->Target(), 9U);
}

TEST(CsnByteCode, FormsShareTheirFirstOctet) {
    const std::vector<std::uint8_t> code = {0x41, 0x02, 0xFF};
    const auto jump = DecodeInstruction(code, 0);
    ASSERT_TRUE(jump);
    EXPECT_EQ(jump->Code(), Opcode::kJmp);
    EXPECT_EQ(jump->Target(), 0x102U);
    const auto skip = DecodeInstruction(code, 2);
    ASSERT_TRUE(skip);
    EXPECT_EQ(skip->Code(), Opcode::kSkip);
    EXPECT_EQ(skip->operands[0], 63U);
    EXPECT_EQ(skip->size, 1U);
}

TEST(CsnByteCode, IncompleteInstructionsAreRefused) {
    EXPECT_FALSE(DecodeInstruction({}, 0));
    const std::vector<std::uint8_t> jump = {0x40};
    EXPECT_FALSE(DecodeInstruction(jump, 0));
    const std::vector<std::uint8_t> field = {0x10, 0x81};
    EXPECT_FALSE(DecodeInstruction(field, 0));
    const std::vector<std::uint8_t> widthMissing = {0x10, 0x01};
    EXPECT_FALSE(DecodeInstruction(widthMissing, 0));
    const std::vector<std::uint8_t> longest = {0x14, 0x80, 0x80, 0x80, 0x80, 0x80, 0x01};
    EXPECT_TRUE(DecodeInstruction(longest, 0));
}

TEST(CsnByteCode, PackedOperandsAreTakenApart) {
    const std::vector<std::uint8_t> code = {0x12, 0x81, 0x79, 0x17, 0x0F};
    const auto end = DecodeInstruction(code, 0);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->FieldId(), 124U);
    EXPECT_TRUE(end->Flag());
    EXPECT_FALSE(end->Target());
    const auto repetition = DecodeInstruction(code, 3);
    ASSERT_TRUE(repetition);
    EXPECT_EQ(repetition->Target(), 10U);
    EXPECT_TRUE(repetition->Flag());
}

TEST(CsnByteCode, CodesWithoutOpcodeCountAsNop) {
    for (const unsigned code : {0x21U, 0x2EU, 0x2FU, 0x30U, 0x3FU}) {
        EXPECT_EQ(InfoOf(static_cast<std::uint8_t>(code)).opcode, Opcode::kNop) << code;
    }
    std::size_t count = 0;
#define CSN_OPCODE(code, opcodeName, mnemonic, ...)        \
    EXPECT_EQ(InfoOf(code).name, mnemonic);                \
    EXPECT_EQ(InfoOf(code).opcode, Opcode::k##opcodeName); \
    ++count;
#include "csn/opcodes.def"
#undef CSN_OPCODE
    EXPECT_EQ(count, 48U);  // 0x00 to 0x2D without 0x21, and three forms
}

std::string_view OperandName(OperandKind kind) {
    switch (kind) {
        case OperandKind::kNone:
            return "";
        case OperandKind::kLabel:
            return "label";
        case OperandKind::kDistance:
            return "distance";
        case OperandKind::kBackDistance:
            return "distance back";
        case OperandKind::kExit:
            return "exit and flag";
        case OperandKind::kField:
            return "field";
        case OperandKind::kDelimiter:
            return "field and sized";
        case OperandKind::kWidth:
            return "width";
        case OperandKind::kLiteral:
            return "value and width";
        case OperandKind::kTag:
            return "tag";
        case OperandKind::kNumber:
            return "n";
        case OperandKind::kAction:
            return "action";
        case OperandKind::kFunction:
            return "function";
        case OperandKind::kEncodeFunction:
            return "function encoding";
        case OperandKind::kDecodeFunction:
            return "function decoding";
        case OperandKind::kJumpDistance:
            return "distance, 14 bits";
        case OperandKind::kAltDistance:
            return "flag and distance, 14 bits";
        case OperandKind::kSkipBits:
            return "n, 6 bits";
    }
    return "";
}

std::string OperandsOf(const OpcodeInfo& info) {
    std::string text;
    for (const OperandKind kind : info.operands) {
        if (kind != OperandKind::kNone) {
            text.append(text.empty() ? " " : "; ").append(OperandName(kind));
        }
    }
    return text;
}

/// The instruction set as docs/byte-code.md shows it.
std::string OpcodeTable() {
    enum class Direction { kBoth, kDecode, kEncode };
    constexpr std::string_view kDirections[] = {"both", "decoding", "encoding"};
    std::ostringstream table;
    table << "| Code | Name | Operands | Direction | Effect |\n|---|---|---|---|---|\n"
          << std::hex << std::uppercase << std::setfill('0');
#define CSN_OPCODE(code, name, mnemonic, first, second, third, direction, effect)              \
    table << "| 0x" << std::setw(2) << (code) << " | `" << mnemonic << "` |"                   \
          << OperandsOf(InfoOf(code)) << " | "                                                 \
          << kDirections[static_cast<std::size_t>(Direction::k##direction)] << " | " << effect \
          << " |\n";
#include "csn/opcodes.def"
#undef CSN_OPCODE
    return table.str();
}

TEST(CsnByteCode, DocumentationHoldsTheTable) {
    std::ifstream file(QUORVANE_SOURCE_DIR "/docs/byte-code.md");
    ASSERT_TRUE(file);
    std::ostringstream text;
    text << file.rdbuf();
    EXPECT_NE(text.str().find(OpcodeTable()), std::string::npos)
        << "docs/byte-code.md should hold:\n"
        << OpcodeTable();
}

}  // namespace
}  // namespace quorvane::csn
