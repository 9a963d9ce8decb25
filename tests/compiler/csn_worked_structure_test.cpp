// The aggregate maximum bit rate from its description to its records, instruction by instruction.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "bits/arena.h"
#include "compiler/csn_type_text.h"
#include "csn/assembly/disassembler.h"
#include "csn/csn_record.h"
#include "reference/csn_grammar.h"

namespace quorvane::compiler {
namespace {

using reference::Event;
using reference::Grammar;
using reference::Reading;

constexpr std::size_t kStructure = 1;  // in the EPS image, behind one with 39 fields

class WorkedStructure : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(grammar.Errors(), ""); }

    Grammar grammar{test::CsnTextOf("eps")};
};

TEST_F(WorkedStructure, CompilesToItsInstructions) {
    const std::uint32_t label = grammar.Structure(kStructure).label;
    std::string listing;
    for (std::uint32_t offset = label; offset < label + 38;) {
        const auto instruction = csn::DecodeInstruction(grammar.Image().code, offset);
        ASSERT_TRUE(instruction.has_value());
        // Offsets relative to the structure's start.
        listing += std::to_string(offset - label) + " " + std::string(instruction->info->name);
        if (const std::uint32_t id = instruction->FieldId(); id != 0) {
            listing += " " + std::to_string(id);
        }
        if (instruction->Code() == csn::Opcode::kField) {
            listing += ", " + std::to_string(instruction->operands[1]);
        }
        if (instruction->Target()) {
            listing += " to " + std::to_string(*instruction->Target() - label);
            listing += instruction->Flag() ? " flag" : "";
        }
        listing += "\n";
        offset += instruction->size;
    }
    EXPECT_EQ(listing,
              "0 FIELD 118, 8\n"
              "3 FIELD 121, 8\n"
              "6 ALT to 37\n"
              "8 BEGIN 124\n"
              "11 FIELD 127, 8\n"
              "14 FIELD 130, 8\n"
              "18 END 124\n"
              "21 COMMIT\n"
              "22 BEGIN 133\n"
              "25 FIELD 136, 8\n"
              "29 FIELD 139, 8\n"
              "33 END 133\n"
              "36 POP\n"
              "37 RET\n");
}

TEST_F(WorkedStructure, NumbersItsFields) {
    const auto& table = grammar.Image().fieldTable;
    const std::uint16_t root = grammar.Structure(kStructure).rootTag;
    const std::uint16_t first = grammar.Structure(kStructure).firstTag;
    // Identifier, parent and tag; parents and tags counted from the structure's first tag.
    struct Row {
        std::size_t id;
        int parent;  // -1: the root
        int tag;
    };
    const std::vector<Row> rows = {{118, -1, 0}, {121, -1, 1}, {124, -1, 2}, {127, 2, 4},
                                   {130, 2, 5},  {133, -1, 3}, {136, 3, 6},  {139, 3, 7}};
    std::uint16_t index = 39;
    for (const Row& row : rows) {
        EXPECT_EQ(table[row.id - 1], index++);
        EXPECT_EQ(table[row.id], row.parent < 0 ? root : first + row.parent) << row.id;
        EXPECT_EQ(table[row.id + 1], first + row.tag) << row.id;
    }
    EXPECT_EQ(grammar.Structure(kStructure).fields.size(), 8U);
}

/// The records of fields that stand whole in the message: name, bit, depth and width.
std::vector<Event> Plain(const std::string& name, std::int32_t bit, std::int32_t depth,
                         std::int32_t occurrence = 0) {
    return {{name, occurrence, bit, depth}, {"", -1, bit + 8, depth + 1}};
}

TEST_F(WorkedStructure, ThirtyTwoBitsGiveTheFirstGroup) {
    const Reading reading = grammar.Decode(std::string(32, '0'), 0, kStructure);
    EXPECT_EQ(reading.taken, 32);
    std::vector<Event> expected = Plain("APN_AMBRDownlink", 0, 0);
    const auto append = [&](const std::vector<Event>& events) {
        expected.insert(expected.end(), events.begin(), events.end());
    };
    append(Plain("APN_AMBRUplink", 8, 0));
    append({{"ext", 0, 16, 0}});
    append(Plain("APN_AMBRDownlinkExt", 16, 1));
    append(Plain("APN_AMBRUplinkExt", 24, 1));
    append({{"", -1, 32, 1}});
    EXPECT_EQ(reading.events, expected);
    // The fields inside know the group's record.
    const csn::CsnFieldRecord* records = grammar.Machine().records;
    EXPECT_EQ(records[5].parent, &records[4]);
    EXPECT_EQ(records[7].parent, &records[4]);
    EXPECT_EQ(records[4].parent, nullptr);
}

TEST_F(WorkedStructure, LengthsThatCutAGroupDropIt) {
    const auto run = [&](std::size_t bits) {
        const Reading reading = grammar.Decode(std::string(bits, '1'), 0, kStructure);
        return std::pair(reading.taken, reading.events.size());
    };
    EXPECT_EQ(run(16), std::pair(16, std::size_t{4}));
    EXPECT_EQ(run(24), std::pair(16, std::size_t{4}));
    EXPECT_EQ(run(40), std::pair(32, std::size_t{10}));
    EXPECT_EQ(run(48), std::pair(48, std::size_t{16}));
    EXPECT_EQ(run(56), std::pair(48, std::size_t{16}));
    EXPECT_EQ(run(8).first, -1);
}

TEST_F(WorkedStructure, WritesWhatTheRecordHas) {
    for (const std::size_t octets : {2U, 4U, 6U}) {
        std::vector<std::uint8_t> source;
        for (std::size_t index = 0; index < octets; ++index) {
            source.push_back(static_cast<std::uint8_t>(0x35 + 40 * index));
        }
        const auto bits = static_cast<std::int32_t>(octets * 8);
        const csn::CsnStructure& structure = grammar.Structure(kStructure);
        bits::Arena arena;
        bits::Cell record{};
        const bits::BitReader reader(source.data(), static_cast<std::int64_t>(octets));
        ASSERT_EQ(csn::DecodeCsn(structure, reader, arena, 0, bits, record), bits);
        std::vector<std::uint8_t> written(octets);
        bits::BitWriter writer(written.data(), static_cast<std::int64_t>(octets));
        EXPECT_EQ(csn::EncodeCsn(structure, writer, 0, record), bits);
        EXPECT_EQ(written, source);
    }
}

}  // namespace
}  // namespace quorvane::compiler
