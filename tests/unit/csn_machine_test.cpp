// Set-up, end of a run, field records and the way through a whole structure.

#include <gtest/gtest.h>

#include "csn/machine.h"
#include "unit/csn_test_support.h"

namespace quorvane::csn {
namespace {

using test::Decode;
using test::Encode;
using test::Image;
using test::kRoot;
using test::RecordText;

/// The quality-of-service element of the EPS family: two octets, then two optional groups of two
/// octets each, the element being cut off by its length. It stands at offset 148 of its image.
struct QosImage : Image {
    QosImage() {
        fields.resize(142, 0xFFFF);
        const auto field = [&](std::size_t id, std::uint16_t index, std::uint16_t parent,
                               std::uint16_t tag) {
            fields[id - 1] = index;
            fields[id] = parent;
            fields[id + 1] = tag;
        };
        field(118, 39, 3, 103);
        field(121, 40, 3, 104);
        field(124, 41, 3, 105);
        field(127, 42, 105, 107);
        field(130, 43, 105, 108);
        field(133, 44, 3, 106);
        field(136, 45, 106, 109);
        field(139, 46, 106, 110);

        code.Emit(Opcode::kRet);
        for (int octet = 1; octet < 148; ++octet) {
            code.Emit(Opcode::kNop);
        }
        const auto end = code.NewLabel();
        const auto place = [&] { places.push_back(code.BindNew()); };
        place();
        code.Emit(Opcode::kField, {118, 8});
        place();
        code.Emit(Opcode::kField, {121, 8});
        place();
        code.Emit(Opcode::kAlt, {Assembler::Branch(end, false)});
        place();
        code.Emit(Opcode::kBegin, {Assembler::Delimiter(124, false)});
        place();
        code.Emit(Opcode::kField, {127, 8});
        place();
        code.Emit(Opcode::kField, {130, 8});
        place();
        code.Emit(Opcode::kEnd, {Assembler::Delimiter(124, false)});
        place();
        code.Emit(Opcode::kCommit);
        place();
        code.Emit(Opcode::kBegin, {Assembler::Delimiter(133, false)});
        place();
        code.Emit(Opcode::kField, {136, 8});
        place();
        code.Emit(Opcode::kField, {139, 8});
        place();
        code.Emit(Opcode::kEnd, {Assembler::Delimiter(133, false)});
        place();
        code.Emit(Opcode::kPop);
        place();
        code.Bind(end);
        code.Emit(Opcode::kRet);
    }

    std::vector<Assembler::Label> places;
};

std::string Zeros(int count) {
    return std::string(static_cast<std::size_t>(count), '0');
}

TEST(CsnMachineStructure, CodeStandsAtItsOffsets) {
    QosImage image;
    const std::vector<std::uint8_t>& code = image.Octets();
    const std::vector<std::uint32_t> offsets = {148, 151, 154, 156, 159, 162, 166,
                                                169, 170, 173, 177, 181, 184, 185};
    ASSERT_EQ(image.places.size(), offsets.size());
    for (std::size_t step = 0; step < offsets.size(); ++step) {
        EXPECT_EQ(image.code.OffsetOf(image.places[step]), offsets[step]) << step;
    }
    EXPECT_EQ(code.size(), 186U);
    const auto alternative = DecodeInstruction(code, 154);
    ASSERT_TRUE(alternative);
    EXPECT_EQ(alternative->Target(), 185U);
}

TEST(CsnMachineStructure, FirstGroupAlone) {
    QosImage image;
    const auto run = Decode(image, Zeros(32), nullptr, 148);
    EXPECT_EQ(run.result, 32);
    EXPECT_EQ(RecordText(*run.machine),
              "(103,0,0,0)(103,-1,8,1)"
              "(104,0,8,0)(104,-1,16,1)"
              "(105,0,16,0)"
              "(107,0,16,1)(107,-1,24,2)"
              "(108,0,24,1)(108,-1,32,2)"
              "(105,-1,32,1)");
    const CsnFieldRecord* records = run.machine->records;
    for (const int outer : {0, 1, 2, 3, 4, 9}) {
        EXPECT_EQ(records[outer].parent, nullptr) << outer;
    }
    for (const int inner : {5, 6, 7, 8}) {
        EXPECT_EQ(records[inner].parent, &records[4]) << inner;
    }
    EXPECT_EQ(run.machine->stackDepth, 0);
    EXPECT_EQ(run.machine->fieldDepth, 0);
}

/// Stops a run in front of the instruction at an offset by running only so many instructions.
std::string RecordsAfter(std::uint64_t steps, std::int32_t* bitPos, std::int32_t* stackDepth) {
    QosImage image;
    const std::vector<std::uint8_t> octets(4, 0);
    const bits::BitReader reader(octets.data(), 4);
    CsnMachine machine;
    CsnMachineInit(machine, image.Program(), 148, reader, 0, 32);
    machine.rootTag = kRoot;
    machine.instructionsLeft = steps;
    EXPECT_EQ(CsnMachineRun(machine, nullptr), kSyntaxError);
    *bitPos = machine.bitPos;
    *stackDepth = machine.stackDepth;
    return RecordText(machine);
}

TEST(CsnMachineStructure, StepByStep) {
    const std::string first = "(103,0,0,0)(103,-1,8,1)";
    const std::string second = first + "(104,0,8,0)(104,-1,16,1)";
    const std::string group = second + "(105,0,16,0)";
    const std::string inner = group + "(107,0,16,1)(107,-1,24,2)";
    const std::string both = inner + "(108,0,24,1)(108,-1,32,2)";
    const std::string closed = both + "(105,-1,32,1)";
    const struct {
        std::uint64_t steps;
        std::string records;
        std::int32_t bitPos;
        std::int32_t stackDepth;
    } rows[] = {
        {1, first, 8, 0},    {2, second, 16, 0}, {3, second, 16, 1},
        {4, group, 16, 2},   {5, inner, 24, 2},  {6, both, 32, 2},
        {7, closed, 32, 1},  {8, closed, 32, 1}, {9, closed + "(106,0,32,0)", 32, 2},
        {10, closed, 32, 0},
    };
    for (const auto& row : rows) {
        std::int32_t bitPos = 0;
        std::int32_t stackDepth = 0;
        EXPECT_EQ(RecordsAfter(row.steps, &bitPos, &stackDepth), row.records) << row.steps;
        EXPECT_EQ(bitPos, row.bitPos) << row.steps;
        EXPECT_EQ(stackDepth, row.stackDepth) << row.steps;
    }
}

TEST(CsnMachineStructure, HalfAGroupIsDroppedWhole) {
    QosImage image;
    const auto run24 = Decode(image, Zeros(24), nullptr, 148);
    EXPECT_EQ(run24.result, 16);
    EXPECT_EQ(RecordText(*run24.machine), "(103,0,0,0)(103,-1,8,1)(104,0,8,0)(104,-1,16,1)");

    const auto run40 = Decode(image, Zeros(40), nullptr, 148);
    EXPECT_EQ(run40.result, 32);
    EXPECT_EQ(run40.machine->recordCount, 10);
}

TEST(CsnMachineStructure, BothGroups) {
    QosImage image;
    const auto run = Decode(image, Zeros(48), nullptr, 148);
    EXPECT_EQ(run.result, 48);
    EXPECT_EQ(run.machine->recordCount, 16);
    EXPECT_EQ(run.machine->records[10].tag, 106);
    EXPECT_EQ(run.machine->records[11].tag, 109);
    EXPECT_EQ(run.machine->records[11].parent, &run.machine->records[10]);
}

TEST(CsnMachineStructure, BitsLeftOverAreNoError) {
    QosImage image;
    EXPECT_EQ(Decode(image, Zeros(64), nullptr, 148).result, 48);
}

TEST(CsnMachineStructure, FailedRunKeepsWhatWasRead) {
    QosImage image;
    const auto run = Decode(image, Zeros(12), nullptr, 148);
    EXPECT_EQ(run.result, -1);
    EXPECT_EQ(RecordText(*run.machine), "(103,0,0,0)(103,-1,8,1)");
}

/// Writes the number of the octet, and answers 1 for the groups that `userRecord` says are absent.
std::int32_t QosSource(CsnFieldEvent& event) {
    const int groups = *static_cast<const int*>(event.machine->userRecord);
    if (event.kind == kGroupOpens) {
        const int group = event.fieldId == 124 ? 1 : 2;
        return group <= groups ? kGoOn : kNotThere;
    }
    if (event.kind == kWholeField) {
        const auto number = static_cast<std::uint32_t>(event.bitPos / 8 + 1);
        event.machine->writer->Write(event.bitPos, number, 8);
        event.bitLength = 8;
    }
    return kGoOn;
}

TEST(CsnMachineStructure, EncodesByTheSameCode) {
    const int expected[] = {16, 32, 48};
    for (int groups = 0; groups <= 2; ++groups) {
        QosImage image;
        std::vector<std::uint8_t> octets(6, 0);
        bits::BitWriter writer(octets.data(), 6);
        CsnMachine machine;
        CsnMachineInit(machine, image.Program(), 148, writer, 0);
        machine.rootTag = kRoot;
        machine.userRecord = &groups;
        EXPECT_EQ(CsnMachineRun(machine, QosSource), expected[groups]);
        for (int octet = 0; octet < 6; ++octet) {
            const int wanted = octet * 8 < expected[groups] ? octet + 1 : 0;
            EXPECT_EQ(octets[static_cast<std::size_t>(octet)], wanted) << groups << " " << octet;
        }
    }
}

TEST(CsnMachineInit, SetsTheMachineUp) {
    Image image;
    image.code.Emit(Opcode::kRet);
    const std::vector<std::uint8_t> octets(2, 0);
    const bits::BitReader reader(octets.data(), 2);
    CsnMachine machine;
    machine.stackDepth = 9;
    machine.recordCount = 9;
    machine.userRecord = &machine;
    CsnMachineInit(machine, image.Program(), 7, reader, 5, 11);
    EXPECT_EQ(machine.pc, 7U);
    EXPECT_EQ(machine.bitPos, 5);
    EXPECT_EQ(machine.bitLength, 11);
    EXPECT_EQ(machine.rootTag, -1);
    EXPECT_EQ(machine.sourceLimit, 0x7FFFFFFF);
    EXPECT_EQ(machine.flags, static_cast<std::uint32_t>(kFlagPartialOk));
    EXPECT_EQ(machine.stackDepth, 0);
    EXPECT_EQ(machine.tagCount, 0);
    EXPECT_EQ(machine.recordCount, 0);
    EXPECT_EQ(machine.fieldDepth, 0);
    EXPECT_EQ(machine.sourceNesting, 0);
    EXPECT_EQ(machine.userRecord, nullptr);
    EXPECT_EQ(machine.program, &image.Program());
}

TEST(CsnMachineInit, EncoderHasNoLength) {
    Image image;
    image.code.Emit(Opcode::kRet);
    std::vector<std::uint8_t> octets(2, 0);
    bits::BitWriter writer(octets.data(), 2);
    CsnMachine machine;
    CsnMachineInit(machine, image.Program(), 0, writer, 5);
    EXPECT_EQ(machine.flags, static_cast<std::uint32_t>(kFlagEncode | kFlagPartialOk));
    EXPECT_EQ(machine.bitLength, 0);
}

TEST(CsnMachineRun, StartsAtItsPosition) {
    Image image;
    image.code.Emit(Opcode::kLit, {Assembler::Literal(5, 3)});
    image.code.Emit(Opcode::kRet);
    const std::vector<std::uint8_t> octets = test::Octets("000 101 11");
    const bits::BitReader reader(octets.data(), 1);
    CsnMachine machine;
    CsnMachineInit(machine, image.Program(), 0, reader, 3, 3);
    EXPECT_EQ(CsnMachineRun(machine, nullptr), 3);
    EXPECT_EQ(machine.startPos, 3);
    EXPECT_EQ(machine.endPos, 6);
    EXPECT_NE(machine.flags & kFlagRunning, 0U);
}

TEST(CsnMachineRun, AbortFlagEndsItAtOnce) {
    Image image;
    image.code.Emit(Opcode::kRet);
    const bits::BitReader reader(nullptr, 0);
    CsnMachine machine;
    CsnMachineInit(machine, image.Program(), 0, reader, 0, 0);
    machine.flags |= kFlagAbort;
    EXPECT_EQ(CsnMachineRun(machine, nullptr), -1);
}

TEST(CsnMachineRun, PartialEndIsARefusalWithoutItsFlag) {
    for (const std::string_view bits : {"1", "10"}) {
        Image image;
        const auto action = image.Action([](CsnRun& run) { run.flags &= ~kFlagPartialOk; });
        image.code.Emit(Opcode::kAct, {action});
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kRet);
        EXPECT_EQ(Decode(image, bits).result, bits.size() == 1 ? 1 : -1);
        EXPECT_EQ(Encode(image).result, 1);
    }
}

TEST(CsnMachineRun, ActionMayStopIt) {
    Image image;
    const auto action = image.Action([](CsnRun& run) { run.flags &= ~kFlagRunning; });
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kAct, {action});
    image.code.Emit(Opcode::kFail);
    EXPECT_EQ(Decode(image, "10").result, 1);
}

TEST(CsnMachineRun, PositionsOutsideTheBufferReadAsZero) {
    Image image;
    image.code.Emit(Opcode::kLit, {Assembler::Literal(0, 16)});
    image.code.Emit(Opcode::kRet);
    const std::vector<std::uint8_t> octets(1, 0xFF);
    const bits::BitReader reader(octets.data(), 1);
    CsnMachine machine;
    CsnMachineInit(machine, image.Program(), 0, reader, 8, 16);
    EXPECT_EQ(CsnMachineRun(machine, nullptr), 16);
    CsnMachineInit(machine, image.Program(), 0, reader, -100, 16);
    EXPECT_EQ(CsnMachineRun(machine, nullptr), 16);
}

TEST(CsnMachineRun, FarthestPositionsStayDefined) {
    Image image;
    image.code.Emit(Opcode::kSkip, {63});
    image.code.Emit(Opcode::kRet);
    const bits::BitReader reader(nullptr, 0);
    CsnMachine machine;
    CsnMachineInit(machine, image.Program(), 0, reader, 0x7FFFFFFF, 0x7FFFFFFF);
    EXPECT_EQ(CsnMachineRun(machine, nullptr), -1);
    CsnMachineInit(machine, image.Program(), 0, reader, 0, -1);
    EXPECT_EQ(CsnMachineRun(machine, nullptr), -1);

    std::uint8_t octet = 0;
    bits::BitWriter writer(&octet, 1);
    CsnMachineInit(machine, image.Program(), 0, writer, kMostPosition - 62);
    EXPECT_EQ(CsnMachineRun(machine, nullptr), -1);
    CsnMachineInit(machine, image.Program(), 0, writer, kMostPosition - 63);
    EXPECT_EQ(CsnMachineRun(machine, nullptr), 63);
}

TEST(CsnMachineRun, WithoutRootTagThereAreNoRecords) {
    Image image;
    const auto field = image.Field({{kRoot, 10}});
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(field, true)});
    image.code.Emit(Opcode::kField, {field, 4});
    image.code.Emit(Opcode::kFieldLit, {field, Assembler::Literal(1, 1)});
    image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(field, true)});
    image.code.Emit(Opcode::kRet);
    const std::vector<std::uint8_t> octets = test::Octets("00001");
    const bits::BitReader reader(octets.data(), 1);
    CsnMachine machine;
    CsnMachineInit(machine, image.Program(), 0, reader, 0, 5);
    EXPECT_EQ(CsnMachineRun(machine, nullptr), 5);
    EXPECT_EQ(machine.recordCount, 0);
    EXPECT_EQ(machine.fieldDepth, 0);
}

TEST(CsnMachineRun, RootTagIsComparedInSixteenBits) {
    Image image;
    const auto field = image.Field({{kRoot, 10}});
    image.code.Emit(Opcode::kField, {field, 4});
    image.code.Emit(Opcode::kRet);
    const std::vector<std::uint8_t> octets(1, 0);
    const bits::BitReader reader(octets.data(), 1);
    CsnMachine machine;
    CsnMachineInit(machine, image.Program(), 0, reader, 0, 4);
    machine.rootTag = 0x50000 | kRoot;
    EXPECT_EQ(CsnMachineRun(machine, nullptr), 4);
    EXPECT_EQ(RecordText(machine), "(10,0,0,0)(10,-1,4,1)");
}

/// Rules that call the next one twice, `depth` deep, and take no bit.
void CallTwice(Image& image, int depth) {
    std::vector<Assembler::Label> rules;
    for (int rule = 0; rule <= depth; ++rule) {
        rules.push_back(image.code.NewLabel());
    }
    for (std::size_t rule = 0; rule < rules.size(); ++rule) {
        image.code.Bind(rules[rule]);
        if (rule + 1 < rules.size()) {
            image.code.Emit(Opcode::kCall, {rules[rule + 1]});
            image.code.Emit(Opcode::kCall, {rules[rule + 1]});
        }
        image.code.Emit(Opcode::kRet);
    }
}

TEST(CsnMachineRun, EndsAtTheCeiling) {
    // Each rule takes 3 instructions, the innermost one 1: 4 * 2^n - 3 in all.
    Image few;
    CallTwice(few, 14);
    const auto run = Decode(few, "1");
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.machine->instructionsLeft, 65536U + 64U - 65533U);
    EXPECT_EQ(Encode(few, nullptr, 0).machine->instructionsLeft, 3U);

    Image many;
    CallTwice(many, 40);
    const auto failed = Decode(many, "1");
    EXPECT_EQ(failed.result, kSyntaxError);
    EXPECT_EQ(failed.machine->instructionsLeft, 0U);
    EXPECT_EQ(Encode(many).result, kSyntaxError);
}

TEST(CsnMachineRun, CeilingRisesWithTheBitsAtHand) {
    EXPECT_EQ(InstructionCeiling(0), 65536U);
    EXPECT_EQ(InstructionCeiling(-1), 65536U);
    EXPECT_EQ(InstructionCeiling(524288), 65536U + 33554432U);  // 64 KiB

    // An encoder has the room behind its first bit.
    Image image;
    image.code.Emit(Opcode::kRet);
    std::vector<std::uint8_t> octets(4);
    bits::BitWriter writer(octets.data(), 4);
    CsnMachine machine;
    CsnMachineInit(machine, image.Program(), 0, writer, 10);
    EXPECT_EQ(machine.instructionsLeft, InstructionCeiling(22));
}

TEST(CsnMachineRun, CountsInstructions) {
    Image image;
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kNop);
    image.code.Emit(Opcode::kRet);
    const auto run = Decode(image, "1");
    EXPECT_EQ(run.machine->instructionsLeft, InstructionCeiling(1) - 3);
}

}  // namespace
}  // namespace quorvane::csn
