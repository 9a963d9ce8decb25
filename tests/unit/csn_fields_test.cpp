// Field instructions: records, tags and what the callback is told.

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

/// A callback that keeps what it is told and acts by a script.
struct Listener {
    std::string heard;
    std::int32_t answer = kGoOn;
    std::string writes;        // bits to write at the first field heard
    std::int32_t claims = -1;  // bitLength to claim instead

    static std::int32_t Hear(CsnFieldEvent& event) {
        auto& self = *static_cast<Listener*>(event.machine->userRecord);
        EXPECT_EQ(event.failed, 0);
        self.heard += "[" + std::to_string(event.fieldIndex) + " at " +
                      std::to_string(event.bitPos) + "+" + std::to_string(event.bitLength) +
                      " kind " + std::to_string(event.kind);
        if (event.literalWidth >= 0) {
            self.heard += " literal " + std::to_string(event.literalValue) + "/" +
                          std::to_string(event.literalWidth);
        }
        self.heard += "]";
        if (!self.writes.empty()) {
            const auto octets = test::Octets(self.writes);
            const auto length = test::Count(self.writes);
            event.machine->writer->Copy(event.bitPos, octets.data(), length);
            event.bitLength = length;
            self.writes.clear();
        }
        if (self.claims >= 0) {
            event.bitLength = self.claims;
        }
        return self.answer;
    }
};

/// Decodes with the listener as callback.
test::DecodeRun DecodeTo(Image& image, std::string_view bits, Listener& listener) {
    test::DecodeRun run;
    run.octets = test::Octets(bits);
    const bits::BitReader reader(run.octets.data(), static_cast<std::int64_t>(run.octets.size()));
    CsnMachineInit(*run.machine, image.Program(), 0, reader, 0, test::Count(bits));
    run.machine->rootTag = kRoot;
    run.machine->userRecord = &listener;
    EXPECT_EQ(reference::DifferenceOfSlow(*run.machine, Listener::Hear, run.result), "");
    return run;
}

test::EncodeRun EncodeTo(Image& image, Listener& listener) {
    return Encode(image, Listener::Hear, 64, &listener);
}

struct FieldImage : Image {
    FieldImage() {
        code.Emit(Opcode::kField, {Field({{kRoot, 10}}, -7), 5});
        code.Emit(Opcode::kRet);
    }
};

TEST(CsnField, Decodes) {
    FieldImage image;
    Listener listener;
    const auto run = DecodeTo(image, "10101", listener);
    EXPECT_EQ(run.result, 5);
    EXPECT_EQ(RecordText(*run.machine), "(10,0,0,0)(10,-1,5,1)");
    EXPECT_EQ(listener.heard, "[-7 at 0+5 kind 2]");
    EXPECT_EQ(run.machine->fieldDepth, 0);
    EXPECT_EQ(Decode(image, "1010").result, -1);
}

TEST(CsnField, Encodes) {
    FieldImage image;
    Listener listener;
    listener.writes = "10101";
    const auto run = EncodeTo(image, listener);
    EXPECT_EQ(run.Text(), "10101");
    EXPECT_EQ(RecordText(*run.machine), "(10,0,0,0)(10,-1,5,1)");
    EXPECT_EQ(listener.heard, "[-7 at 0+5 kind 2]");
}

TEST(CsnField, WithoutSourceItsBitsStay) {
    FieldImage image;
    EXPECT_EQ(Encode(image).Text(), "11111");  // as the buffer was
}

TEST(CsnField, SourceOfAnotherLengthIsRefused) {
    FieldImage image;
    Listener listener;
    listener.writes = "1010";
    EXPECT_EQ(EncodeTo(image, listener).result, -1);
    // When decoding, what the callback makes of the length does not matter.
    Listener reader;
    reader.claims = 4;
    EXPECT_EQ(DecodeTo(image, "10101", reader).result, 5);
}

TEST(CsnField, AnswersOfTheCallback) {
    for (const bool encode : {false, true}) {
        Image image;
        const auto other = image.code.NewLabel();
        const auto field = image.Field({{kRoot, 10}});
        image.code.Emit(Opcode::kAlt, {Assembler::Branch(other, false)});
        image.code.Emit(Opcode::kField, {field, 5});
        image.code.Emit(Opcode::kPop);
        image.code.Emit(Opcode::kRet);
        image.code.Bind(other);
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kRet);
        const std::pair<std::int32_t, std::int32_t> rows[] = {
            {0, 5}, {1, 1}, {2, -1}, {3, 5}, {-1, 5}};
        for (const auto& [answer, result] : rows) {
            Listener listener;
            listener.answer = answer;
            const bits::Outcome got = encode ? EncodeTo(image, listener).result
                                             : DecodeTo(image, "11111", listener).result;
            EXPECT_EQ(got, result) << answer << (encode ? " encoding" : " decoding");
        }
    }
}

TEST(CsnField, OccurrencesCountUnderOneParent) {
    // <a> <b> <a> { <group: <a> > } * 2, <a> having another tag inside.
    Image image;
    const auto a = image.Field({{kRoot, 10}, {12, 20}});
    const auto b = image.Field({{kRoot, 11}});
    const auto group = image.Field({{kRoot, 12}});
    image.code.Emit(Opcode::kField, {a, 1});
    image.code.Emit(Opcode::kField, {b, 1});
    image.code.Emit(Opcode::kField, {a, 1});
    for (int count = 0; count < 2; ++count) {
        image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(group, false)});
        image.code.Emit(Opcode::kField, {a, 1});
        image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(group, false)});
    }
    image.code.Emit(Opcode::kField, {a, 1});
    image.code.Emit(Opcode::kRet);
    const auto run = Decode(image, "000000");
    EXPECT_EQ(run.result, 6);
    EXPECT_EQ(RecordText(*run.machine),
              "(10,0,0,0)(10,-1,1,1)"
              "(11,0,1,0)(11,-1,2,1)"
              "(10,1,2,0)(10,-1,3,1)"
              "(12,0,3,0)(20,0,3,1)(20,-1,4,2)(12,-1,4,1)"
              "(12,1,4,0)(20,0,4,1)(20,-1,5,2)(12,-1,5,1)"
              "(10,2,5,0)(10,-1,6,1)");
    const CsnFieldRecord* records = run.machine->records;
    EXPECT_EQ(records[7].parent, &records[6]);
    EXPECT_EQ(records[8].parent, &records[6]);
    EXPECT_EQ(records[11].parent, &records[10]);
    EXPECT_EQ(records[14].parent, nullptr);
}

TEST(CsnField, NestingThreeDeep) {
    Image image;
    const auto outer = image.Field({{kRoot, 10}});
    const auto middle = image.Field({{10, 11}});
    const auto inner = image.Field({{11, 12}, {10, 13}});
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(outer, false)});
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(middle, false)});
    image.code.Emit(Opcode::kField, {inner, 1});
    image.code.Emit(Opcode::kField, {inner, 1});
    image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(middle, false)});
    image.code.Emit(Opcode::kField, {inner, 1});
    image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(outer, false)});
    image.code.Emit(Opcode::kRet);
    const auto run = Decode(image, "000");
    EXPECT_EQ(run.result, 3);
    EXPECT_EQ(RecordText(*run.machine),
              "(10,0,0,0)(11,0,0,1)"
              "(12,0,0,2)(12,-1,1,3)(12,1,1,2)(12,-1,2,3)"
              "(11,-1,2,2)"
              "(13,0,2,1)(13,-1,3,2)"
              "(10,-1,3,1)");
    const CsnFieldRecord* records = run.machine->records;
    EXPECT_EQ(records[2].parent, &records[1]);
    EXPECT_EQ(records[5].parent, &records[1]);
    EXPECT_EQ(records[6].parent, &records[0]);
    EXPECT_EQ(records[7].parent, &records[0]);
    EXPECT_EQ(records[9].parent, nullptr);
}

TEST(CsnField, LookUpOfEnclosingTags) {
    Image image;
    const auto field = image.Field({{kRoot, 10}, {10, 20}, {20, 30}});
    image.code.Emit(Opcode::kRet);
    static constexpr std::uint8_t kOctet = 0;
    CsnMachine machine;
    CsnMachineInit(machine, image.Program(), 0, bits::BitReader(&kOctet, 1), 0, 8);
    machine.rootTag = kRoot;
    EXPECT_EQ(FieldTagLookup(machine, field, false), 10);
    EXPECT_EQ(FieldTagLookup(machine, field, true), 10);
    RecordBegin(machine, 10);
    EXPECT_EQ(FieldTagLookup(machine, field, false), 20);
    EXPECT_EQ(FieldTagLookup(machine, field, true), 10);
    RecordBegin(machine, 20);
    EXPECT_EQ(FieldTagLookup(machine, field, false), 30);
    EXPECT_EQ(FieldTagLookup(machine, field, true), 20);
    RecordEnd(machine, 20);
    EXPECT_EQ(FieldTagLookup(machine, field, false), 20);
    EXPECT_EQ(FieldTagLookup(machine, field, true), 10);
    // No record of that depth: the root tag counts.
    machine.fieldDepth = 9;
    EXPECT_EQ(FieldTagLookup(machine, field, true), 10);
}

// Fields with a fixed value.

struct LiteralImage : Image {
    LiteralImage() {
        code.Emit(Opcode::kFieldLit, {Field({{kRoot, 10}}, 4), Assembler::Literal(5, 3)});
        code.Emit(Opcode::kRet);
    }
};

TEST(CsnFieldLiteral, Decodes) {
    LiteralImage image;
    Listener listener;
    const auto run = DecodeTo(image, "101", listener);
    EXPECT_EQ(run.result, 3);
    EXPECT_EQ(RecordText(*run.machine), "(10,0,0,0)(10,-1,3,1)");
    EXPECT_EQ(listener.heard, "[4 at 0+3 kind 2 literal 5/3]");
    EXPECT_EQ(Decode(image, "100").result, -1);
    EXPECT_EQ(Decode(image, "10").result, -1);
    EXPECT_EQ(Decode(image, "100").machine->recordCount, 0);
}

TEST(CsnFieldLiteral, EncodingChecksWhatTheSourceWrote) {
    LiteralImage image;
    Listener right;
    right.writes = "101";
    EXPECT_EQ(EncodeTo(image, right).Text(), "101");
    EXPECT_EQ(right.heard, "[4 at 0+3 kind 2 literal 5/3]");
    Listener wrong;
    wrong.writes = "100";
    EXPECT_EQ(EncodeTo(image, wrong).result, -1);
}

TEST(CsnFieldLiteral, RescanReadsItFirst) {
    for (const bool match : {true, false}) {
        Image image;
        const auto field = image.Field({{kRoot, 10}});
        image.code.Emit(Opcode::kMark);
        image.code.Emit(Opcode::kLit, {Assembler::Literal(match ? 5 : 4, 3)});
        image.code.Emit(Opcode::kRescan);
        image.code.Emit(Opcode::kFieldLit, {field, Assembler::Literal(5, 3)});
        image.code.Emit(Opcode::kRescanEnd);
        image.code.Emit(Opcode::kRet);
        Listener listener;
        EXPECT_EQ(EncodeTo(image, listener).result, match ? 3 : -1);
        EXPECT_EQ(listener.heard, "");  // nothing is delivered from a second reading
    }
}

TEST(CsnFieldLiteral, RescanKeepsItWithinTheFirstReading) {
    // The fourth bit is there, but behind what is read again.
    Image image;
    const auto field = image.Field({{kRoot, 10}});
    image.code.Emit(Opcode::kMark);
    image.code.Emit(Opcode::kLit, {Assembler::Literal(5, 3)});
    image.code.Emit(Opcode::kRescan);
    image.code.Emit(Opcode::kFieldLit, {field, Assembler::Literal(11, 4)});
    image.code.Emit(Opcode::kRescanEnd);
    image.code.Emit(Opcode::kRet);
    const auto run = Encode(image);
    EXPECT_EQ(test::BitText(run.octets, 4), "1011");
    EXPECT_EQ(run.result, -1);
    EXPECT_EQ(run.machine->recordCount, 0);
}

TEST(CsnField, PositionsEnd) {
    for (const bool literal : {false, true}) {
        Image image;
        const auto field = image.Field({{kRoot, 10}});
        if (literal) {
            image.code.Emit(Opcode::kFieldLit, {field, Assembler::Literal(0, 2)});
        } else {
            image.code.Emit(Opcode::kField, {field, 2});
        }
        image.code.Emit(Opcode::kRet);
        for (const std::int32_t left : {1, 2}) {
            std::uint8_t octet = 0;
            bits::BitWriter writer(&octet, 1);
            CsnMachine machine;
            CsnMachineInit(machine, image.Program(), 0, writer, kMostPosition - left);
            machine.rootTag = kRoot;
            EXPECT_EQ(CsnMachineRun(machine, nullptr), left == 2 ? 2 : -1);
        }
    }
}

TEST(CsnGroup, PositionsEnd) {
    for (const std::int32_t left : {1, 2}) {
        Image image;
        const auto group = image.Field({{kRoot, 10}});
        image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(group, true)});
        image.code.Emit(Opcode::kSkip, {2});
        image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(group, true)});
        image.code.Emit(Opcode::kRet);
        std::uint8_t octet = 0;
        bits::BitWriter writer(&octet, 1);
        Listener listener;
        listener.claims = 2;
        CsnMachine machine;
        CsnMachineInit(machine, image.Program(), 0, writer, kMostPosition - left);
        machine.rootTag = kRoot;
        machine.userRecord = &listener;
        EXPECT_EQ(CsnMachineRun(machine, Listener::Hear), left == 2 ? 2 : -1);
        EXPECT_EQ(machine.sourceLimit, kNoLimit);
    }
}

// Groups.

struct GroupImage : Image {
    explicit GroupImage(bool sized) {
        const auto group = Field({{kRoot, 10}}, 1);
        const auto inner = Field({{10, 11}}, 2);
        code.Emit(Opcode::kBit0);
        code.Emit(Opcode::kBegin, {Assembler::Delimiter(group, sized)});
        code.Emit(Opcode::kField, {inner, 2});
        code.Emit(Opcode::kBit1);
        code.Emit(Opcode::kEnd, {Assembler::Delimiter(group, sized)});
        code.Emit(Opcode::kBit0);
        code.Emit(Opcode::kRet);
    }
};

constexpr std::string_view kGroupRecords = "(10,0,1,0)(11,0,1,1)(11,-1,3,2)(10,-1,4,1)";

TEST(CsnGroup, DecodesUnsized) {
    GroupImage image(false);
    Listener listener;
    const auto run = DecodeTo(image, "00110", listener);
    EXPECT_EQ(run.result, 5);
    EXPECT_EQ(RecordText(*run.machine), kGroupRecords);
    EXPECT_EQ(listener.heard, "[1 at 1+0 kind 0][2 at 1+2 kind 2][1 at 1+3 kind 1]");
    EXPECT_EQ(run.machine->stackDepth, 0);
    EXPECT_EQ(run.machine->fieldDepth, 0);
}

TEST(CsnGroup, DecodesSized) {
    GroupImage image(true);
    Listener listener;
    const auto run = DecodeTo(image, "00110", listener);
    EXPECT_EQ(run.result, 5);
    EXPECT_EQ(RecordText(*run.machine), kGroupRecords);
    // A decoder learns of it at its end.
    EXPECT_EQ(listener.heard, "[2 at 1+2 kind 2][1 at 1+3 kind 2]");
}

TEST(CsnGroup, EncodesUnsizedMemberByMember) {
    GroupImage image(false);
    Listener listener;
    const auto run = EncodeTo(image, listener);
    EXPECT_EQ(run.Text(), "01110");  // the field's two bits stay as they were
    EXPECT_EQ(RecordText(*run.machine), kGroupRecords);
    EXPECT_EQ(listener.heard, "[1 at 1+0 kind 0][2 at 1+2 kind 2][1 at 1+3 kind 1]");
}

TEST(CsnGroup, EncodesSizedAtOnce) {
    GroupImage image(true);
    Listener listener;
    listener.writes = "011";
    const auto run = EncodeTo(image, listener);
    EXPECT_EQ(run.Text(), "00110");
    EXPECT_EQ(listener.heard, "[1 at 1+0 kind 2]");
    EXPECT_EQ(RecordText(*run.machine), kGroupRecords);
    EXPECT_EQ(run.machine->sourceLimit, kNoLimit);
    EXPECT_EQ(run.machine->sourceNesting, 0);
}

TEST(CsnGroup, SourceMayWriteAnUnsizedGroupAsAWhole) {
    GroupImage image(false);
    Listener listener;
    listener.writes = "011";
    EXPECT_EQ(EncodeTo(image, listener).Text(), "00110");
    EXPECT_EQ(listener.heard, "[1 at 1+0 kind 0][1 at 1+3 kind 1]");
}

TEST(CsnGroup, WhatTheSourceWroteMustFitTheStructure) {
    for (const std::string bits : {"010", "0111", "01", ""}) {
        GroupImage image(true);
        Listener listener;
        listener.writes = bits;
        EXPECT_EQ(EncodeTo(image, listener).result, -1) << bits;
    }
}

TEST(CsnGroup, EndOfAnotherLengthGoesBack) {
    Image image;
    const auto group = image.Field({{kRoot, 10}});
    const auto other = image.code.NewLabel();
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(other, false)});
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(group, true)});
    image.code.Emit(Opcode::kSkip, {2});
    image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(group, true)});
    image.code.Emit(Opcode::kPop);
    image.code.Emit(Opcode::kRet);
    image.code.Bind(other);
    image.code.Emit(Opcode::kLit, {Assembler::Literal(0x15, 5)});
    image.code.Emit(Opcode::kRet);
    Listener listener;
    listener.writes = "000";
    const auto run = EncodeTo(image, listener);
    EXPECT_EQ(run.Text(), "10101");
    EXPECT_EQ(run.machine->recordCount, 0);
    EXPECT_EQ(run.machine->fieldDepth, 0);
    EXPECT_EQ(run.machine->stackDepth, 0);
}

TEST(CsnGroup, EndOfAnotherLengthDoesNothingElse) {
    // Whether the run goes back or has nowhere to go: the end is not told, the field does not
    // close, no number is kept, and what follows does not run.
    for (const bool choice : {false, true}) {
        Image image;
        const auto group = image.Field({{kRoot, 10}});
        const auto other = image.code.NewLabel();
        if (choice) {
            image.code.Emit(Opcode::kAlt, {Assembler::Branch(other, false)});
        }
        image.code.Emit(Opcode::kMark);
        image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(group, false)});
        image.code.Emit(Opcode::kSkip, {2});
        image.code.Emit(Opcode::kEndTag, {Assembler::Delimiter(group, false), 1});
        image.code.Emit(Opcode::kAct, {image.Action([](CsnRun&) { ADD_FAILURE(); })});
        image.code.Emit(Opcode::kRet);
        image.code.Bind(other);
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kRet);
        Listener listener;
        listener.writes = "000";
        const auto run = EncodeTo(image, listener);
        EXPECT_EQ(run.result, choice ? 1 : -1);
        EXPECT_EQ(listener.heard, "[0 at 0+0 kind 0]");
        EXPECT_EQ(RecordText(*run.machine), choice ? "" : "(10,0,0,0)");
        EXPECT_EQ(run.machine->tagCount, 0);
        EXPECT_EQ(run.machine->fieldDepth, choice ? 0 : 1);
        EXPECT_EQ(run.machine->stackDepth, choice ? 0 : 2);
        EXPECT_EQ(run.machine->sourceNesting, choice ? 0 : 1);
        EXPECT_EQ(run.machine->sourceLimit, choice ? kNoLimit : 3);
    }
}

TEST(CsnGroup, InnerGroupsOfASourceStretchAreCounted) {
    Image image;
    const auto outer = image.Field({{kRoot, 10}});
    const auto inner = image.Field({{10, 11}});
    const auto plain = image.Field({{10, 12}, {11, 13}});
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(outer, true)});
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(inner, true)});
    image.code.Emit(Opcode::kField, {plain, 2});
    image.code.Emit(Opcode::kEndTag, {Assembler::Delimiter(inner, true), 7});
    image.code.Emit(Opcode::kField, {plain, 2});
    image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(outer, true)});
    image.code.Emit(Opcode::kBit1);
    image.code.Emit(Opcode::kRet);
    Listener listener;
    listener.writes = "1001";
    const auto run = EncodeTo(image, listener);
    EXPECT_EQ(run.Text(), "10011");
    // The inner group opens but does not close: only what ends the stretch is recorded.
    EXPECT_EQ(RecordText(*run.machine),
              "(10,0,0,0)(11,0,0,1)(13,0,0,2)(13,-1,2,3)(12,0,2,1)(12,-1,4,2)(10,-1,4,1)");
    EXPECT_EQ(TagValue(*run.machine, 7), 2);
    EXPECT_EQ(run.machine->fieldDepth, 0);
}

TEST(CsnGroup, AStretchThatEndsInsideOfAnInnerGroupHasItsOwnParent) {
    // The inner group opens and does not close, so that the newest record is two levels further in.
    Image image;
    const auto outer = image.Field({{kRoot, 10}}, 1);
    const auto whole = image.Field({{10, 11}}, 2);
    const auto inner = image.Field({{11, 12}});
    const auto plain = image.Field({{12, 13}});
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(outer, false)});
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(whole, true)});
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(inner, false)});
    image.code.Emit(Opcode::kField, {plain, 2});
    image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(inner, false)});
    image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(whole, true)});
    image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(outer, false)});
    image.code.Emit(Opcode::kRet);
    const auto run = Encode(image, [](CsnFieldEvent& event) -> std::int32_t {
        if (event.fieldIndex == 2) {
            event.machine->writer->Write(event.bitPos, 2, 2);
            event.bitLength = 2;
        }
        return kGoOn;
    });
    EXPECT_EQ(run.Text(), "10");
    EXPECT_EQ(RecordText(*run.machine),
              "(10,0,0,0)(11,0,0,1)(12,0,0,2)(13,0,0,3)(13,-1,2,4)(11,-1,2,2)(10,-1,2,1)");
    EXPECT_EQ(run.machine->records[5].parent, &run.machine->records[0]);
}

TEST(CsnGroup, GroupsOfASecondReadingInAStretchAreCounted) {
    Image image;
    const auto outer = image.Field({{kRoot, 10}});
    const auto inner = image.Field({{10, 11}});
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(outer, true)});
    image.code.Emit(Opcode::kMark);
    image.code.Emit(Opcode::kSkip, {4});
    image.code.Emit(Opcode::kRescan);
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(inner, false)});
    image.code.Emit(Opcode::kSkip, {4});
    image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(inner, false)});
    image.code.Emit(Opcode::kRescanEnd);
    image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(outer, true)});
    image.code.Emit(Opcode::kRet);
    Listener listener;
    listener.writes = "1001";
    EXPECT_EQ(EncodeTo(image, listener).Text(), "1001");
}

TEST(CsnGroup, EndTagKeepsTheNumberInBothDirections) {
    Image image;
    const auto count = image.Field({{kRoot, 10}});
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(count, true)});
    image.code.Emit(Opcode::kSkip, {6});
    image.code.Emit(Opcode::kEndTag, {Assembler::Delimiter(count, true), 5});
    image.code.Emit(Opcode::kRet);
    const auto decoded = Decode(image, "101101");
    EXPECT_EQ(TagValue(*decoded.machine, 5), 45);
    Listener listener;
    listener.writes = "110001";
    const auto encoded = EncodeTo(image, listener);
    EXPECT_EQ(encoded.Text(), "110001");
    EXPECT_EQ(TagValue(*encoded.machine, 5), 49);
}

TEST(CsnGroup, EndTagWrapsWhatIsWiderThanANumber) {
    Image image;
    const auto field = image.Field({{kRoot, 10}});
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(field, true)});
    image.code.Emit(Opcode::kSkip, {36});
    image.code.Emit(Opcode::kEndTag, {Assembler::Delimiter(field, true), 5});
    image.code.Emit(Opcode::kRet);
    const auto run = Decode(image, "1010" + std::string(31, '0') + "1");
    EXPECT_EQ(TagValue(*run.machine, 5), 11);
}

TEST(CsnGroup, RefusedGroupLeavesNothingBehind) {
    GroupImage image(false);
    Listener listener;
    listener.answer = kNotThere;
    const auto run = EncodeTo(image, listener);
    EXPECT_EQ(run.result, -1);
    Listener giveUp;
    giveUp.answer = kGiveUp;
    EXPECT_EQ(EncodeTo(image, giveUp).result, -1);
    EXPECT_EQ(giveUp.heard, "[1 at 1+0 kind 0]");
}

TEST(CsnGroup, RefusalAtTheEndGoesBack) {
    for (const std::int32_t answer : {1, 2}) {
        Image image;
        const auto group = image.Field({{kRoot, 10}});
        const auto other = image.code.NewLabel();
        image.code.Emit(Opcode::kAlt, {Assembler::Branch(other, false)});
        image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(group, true)});
        image.code.Emit(Opcode::kSkip, {2});
        image.code.Emit(Opcode::kEndTag, {Assembler::Delimiter(group, true), 1});
        image.code.Emit(Opcode::kPop);
        image.code.Emit(Opcode::kRet);
        image.code.Bind(other);
        image.code.Emit(Opcode::kBit1);
        image.code.Emit(Opcode::kRet);
        Listener listener;
        listener.answer = answer;
        const auto run = DecodeTo(image, "10", listener);
        EXPECT_EQ(run.result, answer == 1 ? 1 : -1);
        EXPECT_EQ(run.machine->tagCount, 0);
    }
}

}  // namespace
}  // namespace quorvane::csn
