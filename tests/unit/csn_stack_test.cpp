// The machine's stack and tag store taken by themselves.

#include <gtest/gtest.h>

#include "csn/machine.h"
#include "unit/csn_test_support.h"

namespace quorvane::csn {
namespace {

class CsnStack : public testing::Test {
  protected:
    CsnStack() {
        static constexpr CsnProgram kNoProgram{};
        CsnMachineInit(machine, kNoProgram, 0, bits::BitReader(nullptr, 0), 0, 0);
    }

    CsnMachine machine;
};

TEST_F(CsnStack, EntryHoldsTheState) {
    machine.bitPos = 77;
    machine.flags |= kFlagRescan;
    machine.sourceLimit = 1234;
    machine.sourceNesting = 5;
    machine.tagCount = 6;
    machine.recordCount = 7;
    machine.fieldDepth = 8;
    PushEntry(machine, 99, kChoice);
    ASSERT_EQ(machine.stackDepth, 1);
    const CsnStackEntry& entry = machine.stack[0];
    EXPECT_EQ(entry.isChoice, 1U);
    EXPECT_EQ(entry.openEnded, 0U);
    EXPECT_EQ(entry.value, 99U);
    EXPECT_EQ(entry.inOpenLoop, 0U);
    EXPECT_EQ(entry.restoresEnd, 0U);
    EXPECT_EQ(entry.SavedPos(), 77);
    EXPECT_EQ(entry.savedRescan, 1U);
    EXPECT_EQ(entry.savedLimit, 1234U);
    EXPECT_EQ(entry.savedNesting, 5);
    EXPECT_EQ(entry.savedTagCount, 6);
    EXPECT_EQ(entry.savedRecordCount, 7);
    EXPECT_EQ(entry.savedFieldDepth, 8);
}

TEST_F(CsnStack, ValueHasThirtyBitsAndLimitThirtyOne) {
    PushEntry(machine, 0xFFFFFFFF, kPlainEntry);
    EXPECT_EQ(machine.stack[0].value, 0x3FFFFFFFU);
    EXPECT_EQ(machine.stack[0].Position(), -1);
    EXPECT_EQ(machine.stack[0].savedLimit, 0x7FFFFFFFU);
    machine.bitPos = -5;
    PushEntry(machine, 0, kPlainEntry);
    EXPECT_EQ(machine.stack[1].SavedPos(), -5);
}

TEST_F(CsnStack, OpenLoopIsInheritedFromTheEntryBelow) {
    PushEntry(machine, 0, kOpenEnded);
    PushEntry(machine, 0, kChoice);
    PushEntry(machine, 0, kChoice);
    EXPECT_EQ(machine.stack[0].openEnded, 1U);
    EXPECT_EQ(machine.stack[0].inOpenLoop, 1U);
    EXPECT_EQ(machine.stack[1].openEnded, 0U);
    EXPECT_EQ(machine.stack[1].inOpenLoop, 1U);
    // Of the entry below `openEnded` counts, not `inOpenLoop`.
    EXPECT_EQ(machine.stack[2].inOpenLoop, 0U);
}

TEST_F(CsnStack, PopBringsBackDepthAndRescanOnly) {
    machine.fieldDepth = 1;
    PushEntry(machine, 55, kChoice);
    machine.fieldDepth = 4;
    machine.bitPos = 9;
    machine.tagCount = 3;
    machine.recordCount = 2;
    machine.sourceLimit = 7;
    machine.sourceNesting = 8;
    machine.pc = 10;
    machine.endPos = 11;
    machine.flags |= kFlagRescan;
    PopEntry(machine);
    EXPECT_EQ(machine.stackDepth, 0);
    EXPECT_EQ(machine.fieldDepth, 1);
    EXPECT_EQ(machine.flags & kFlagRescan, 0U);
    EXPECT_EQ(machine.bitPos, 9);
    EXPECT_EQ(machine.tagCount, 3);
    EXPECT_EQ(machine.recordCount, 2);
    EXPECT_EQ(machine.sourceLimit, 7);
    EXPECT_EQ(machine.sourceNesting, 8);
    EXPECT_EQ(machine.pc, 10U);
    EXPECT_EQ(machine.endPos, 11);
}

TEST_F(CsnStack, PopOfAnEmptyStackAborts) {
    PopEntry(machine);
    EXPECT_EQ(machine.stackDepth, 0);
    EXPECT_NE(machine.flags & kFlagAbort, 0U);
}

TEST_F(CsnStack, Holds256Entries) {
    for (std::uint32_t entry = 0; entry < 256; ++entry) {
        PushEntry(machine, entry, kChoice);
    }
    EXPECT_EQ(machine.stackDepth, 256);
    EXPECT_EQ(machine.flags & kFlagAbort, 0U);
    EXPECT_FALSE(Backtrack(machine));  // not from a full stack
    PushEntry(machine, 256, kChoice);
    EXPECT_EQ(machine.stackDepth, 256);
    EXPECT_EQ(machine.stack[255].value, 255U);
    EXPECT_NE(machine.flags & kFlagAbort, 0U);
    PopEntry(machine);
    EXPECT_TRUE(Backtrack(machine));
    EXPECT_EQ(machine.stackDepth, 254);
    EXPECT_EQ(machine.pc, 254U);
}

TEST_F(CsnStack, BacktrackRestoresTheNearestChoice) {
    machine.bitPos = 3;
    machine.tagCount = 1;
    PushEntry(machine, 40, kChoice);
    machine.bitPos = 5;
    machine.tagCount = 2;
    machine.recordCount = 4;
    machine.fieldDepth = 1;
    machine.sourceLimit = 100;
    machine.sourceNesting = 1;
    PushEntry(machine, 50, kChoice);
    PushEntry(machine, 60, kPlainEntry);
    machine.bitPos = 8;
    machine.tagCount = 9;
    machine.recordCount = 9;
    machine.fieldDepth = 9;
    machine.sourceLimit = kNoLimit;
    machine.sourceNesting = 0;
    machine.flags |= kFlagRescan;
    ASSERT_TRUE(Backtrack(machine));
    EXPECT_EQ(machine.pc, 50U);
    EXPECT_EQ(machine.bitPos, 5);
    EXPECT_EQ(machine.tagCount, 2);
    EXPECT_EQ(machine.recordCount, 4);
    EXPECT_EQ(machine.fieldDepth, 1);
    EXPECT_EQ(machine.sourceLimit, 100);
    EXPECT_EQ(machine.sourceNesting, 1);
    EXPECT_EQ(machine.flags & kFlagRescan, 0U);
    EXPECT_EQ(machine.stackDepth, 1);
    ASSERT_TRUE(Backtrack(machine));
    EXPECT_EQ(machine.pc, 40U);
    EXPECT_EQ(machine.sourceLimit, kNoLimit);
    EXPECT_FALSE(Backtrack(machine));
}

TEST_F(CsnStack, BacktrackPutsEndsBackOnItsWay) {
    machine.endPos = 1;
    PushEntry(machine, 10, kRestoresEnd);
    PushEntry(machine, 20, kChoice);
    PushEntry(machine, 30, kRestoresEnd);
    PushEntry(machine, 40, kRestoresEnd);
    ASSERT_TRUE(Backtrack(machine));
    EXPECT_EQ(machine.endPos, 30);  // the one passed last; that below the choice is not passed
    EXPECT_EQ(machine.stackDepth, 1);
    EXPECT_FALSE(Backtrack(machine));
    EXPECT_EQ(machine.endPos, 10);  // no choice found, the end put back all the same
    EXPECT_EQ(machine.stackDepth, 1);
}

TEST_F(CsnStack, EndBeforeTheBufferSurvivesTheStack) {
    PushEntry(machine, 0, kChoice);
    PushEntry(machine, static_cast<std::uint32_t>(-1), kRestoresEnd);
    machine.endPos = 50;
    ASSERT_TRUE(Backtrack(machine));
    EXPECT_EQ(machine.endPos, -1);
}

TEST_F(CsnStack, CommitMovesTheNearestChoiceUp) {
    PushEntry(machine, 40, kChoice);
    PushEntry(machine, 50, kChoice);
    PushEntry(machine, 60, kPlainEntry);
    machine.bitPos = 8;
    machine.tagCount = 1;
    machine.recordCount = 2;
    machine.fieldDepth = 3;
    machine.sourceLimit = 400;
    machine.sourceNesting = 5;
    ASSERT_TRUE(Commit(machine));
    EXPECT_EQ(machine.stackDepth, 3);
    const CsnStackEntry& entry = machine.stack[1];
    EXPECT_EQ(entry.value, 50U);
    EXPECT_EQ(entry.SavedPos(), 8);
    EXPECT_EQ(entry.savedTagCount, 1);
    EXPECT_EQ(entry.savedRecordCount, 2);
    EXPECT_EQ(entry.savedFieldDepth, 3);
    EXPECT_EQ(entry.savedLimit, 400U);
    EXPECT_EQ(entry.savedNesting, 5);
    EXPECT_EQ(machine.stack[0].SavedPos(), 0);
    EXPECT_EQ(machine.stack[2].SavedPos(), 0);
}

TEST_F(CsnStack, CommitNeedsAChoice) {
    EXPECT_FALSE(Commit(machine));
    PushEntry(machine, 1, kPlainEntry);
    EXPECT_FALSE(Commit(machine));
}

TEST_F(CsnStack, CommitKeepsRescan) {
    machine.flags |= kFlagRescan;
    PushEntry(machine, 1, kChoice);
    machine.flags &= ~kFlagRescan;
    ASSERT_TRUE(Commit(machine));
    ASSERT_TRUE(Backtrack(machine));
    EXPECT_NE(machine.flags & kFlagRescan, 0U);
}

TEST_F(CsnStack, TagsAreFoundFromTheNewest) {
    EXPECT_EQ(TagValue(machine, 1), -1);
    EXPECT_EQ(TagValueOrZero(machine, 1), 0);
    TagUpdate(machine, 1, 5);
    EXPECT_EQ(machine.tagCount, 0);
    TagAdd(machine, 1, 10);
    TagAdd(machine, 2, 20);
    TagAdd(machine, 1, 11);
    EXPECT_EQ(TagValue(machine, 1), 11);
    EXPECT_EQ(TagValue(machine, 2), 20);
    EXPECT_EQ(TagValueOrZero(machine, 1), 11);
    TagUpdate(machine, 1, 12);
    EXPECT_EQ(TagValue(machine, 1), 12);
    machine.tagCount = 2;
    EXPECT_EQ(TagValue(machine, 1), 10);
}

TEST_F(CsnStack, FullTagStoreAborts) {
    for (std::int32_t tag = 0; tag < 32; ++tag) {
        TagAdd(machine, tag, tag);
    }
    EXPECT_EQ(machine.flags & kFlagAbort, 0U);
    TagAdd(machine, 32, 32);
    EXPECT_NE(machine.flags & kFlagAbort, 0U);
    EXPECT_EQ(machine.tagCount, 32);
}

// Repetition by itself.

TEST_F(CsnStack, LoopEnterPushesExitAndCounter) {
    LoopEnter(machine, 100, 20 << 1 | 1, 3, 5);
    ASSERT_EQ(machine.stackDepth, 2);
    EXPECT_EQ(machine.stack[0].value, 120U);
    EXPECT_EQ(machine.stack[0].openEnded, 0U);
    EXPECT_EQ(machine.stack[0].isChoice, 0U);
    EXPECT_EQ(machine.stack[1].MinLeft(), 3U);
    EXPECT_EQ(machine.stack[1].MaxLeft(), 5U);
    EXPECT_TRUE(machine.stack[1].SkipWhenWriting());
    EXPECT_EQ(machine.loopExit, 120U);
}

TEST_F(CsnStack, UnboundedLoopIsAChoiceAtOnce) {
    LoopEnter(machine, 100, 20 << 1, 0, kOpenEndedCount);
    ASSERT_EQ(machine.stackDepth, 2);
    EXPECT_EQ(machine.stack[0].isChoice, 1U);
    EXPECT_EQ(machine.stack[0].openEnded, 1U);
    EXPECT_EQ(machine.stack[0].inOpenLoop, 1U);
    EXPECT_EQ(machine.stack[1].isChoice, 0U);
    EXPECT_EQ(machine.stack[1].openEnded, 1U);
    EXPECT_EQ(machine.stack[1].inOpenLoop, 1U);
    EXPECT_FALSE(machine.stack[1].SkipWhenWriting());
}

TEST_F(CsnStack, CountsAreCutToTheirFields) {
    LoopEnter(machine, 0, 20 << 1, 0x7FFF, 0x7FFF);
    EXPECT_EQ(machine.stack[1].MinLeft(), 0x3FFFU);
    EXPECT_EQ(machine.stack[1].MaxLeft(), 0x7FFFU);
    EXPECT_EQ(machine.stack[1].openEnded, 0U);

    machine.stackDepth = 0;
    LoopEnter(machine, 0, 20 << 1, 0x4000, 0x4000);
    EXPECT_EQ(machine.stack[1].MinLeft(), 0U);
    EXPECT_EQ(machine.stack[1].MaxLeft(), 0x4000U);
    EXPECT_EQ(machine.stack[0].isChoice, 1U);

    machine.stackDepth = 0;
    LoopEnter(machine, 0, 20 << 1, 0x8000, 0x8000);  // no iteration is left of it
    EXPECT_EQ(machine.stackDepth, 0);
    EXPECT_EQ(machine.pc, 20U);
}

TEST_F(CsnStack, LoopCheckLeavesAWriterOutOfPadding) {
    machine.flags |= kFlagEncode;
    LoopEnter(machine, 0, 20 << 1 | 1, 0, kOpenEndedCount);
    EXPECT_EQ(machine.stackDepth, 0);
    EXPECT_EQ(machine.pc, 20U);

    machine.sourceLimit = 8;  // what the source has written is read
    LoopEnter(machine, 0, 20 << 1 | 1, 0, kOpenEndedCount);
    EXPECT_EQ(machine.stackDepth, 2);
}

TEST_F(CsnStack, FullStackStopsARepetitionHalfWay) {
    for (std::uint32_t entry = 0; entry < 255; ++entry) {
        PushEntry(machine, entry, kPlainEntry);
    }
    LoopEnter(machine, 0, 20 << 1, 2, 2);
    EXPECT_NE(machine.flags & kFlagAbort, 0U);
    EXPECT_EQ(machine.stackDepth, 256);
}

TEST_F(CsnStack, AFieldThatClosesWithoutItsRecordHasTheParentOfItsDepth) {
    // The list begins inside of a field: nothing tells its parent.
    machine.fieldDepth = 2;
    RecordEnd(machine, 11);
    EXPECT_EQ(machine.fieldDepth, 1);
    EXPECT_EQ(machine.records[0].parent, nullptr);

    // The newest record is of a field further in: the one of the depth is looked for.
    machine.recordCount = 0;
    machine.fieldDepth = 0;
    RecordBegin(machine, 10);
    RecordBegin(machine, 11);
    RecordBegin(machine, 12);
    machine.fieldDepth = 2;
    RecordEnd(machine, 11);
    EXPECT_EQ(machine.records[3].parent, &machine.records[0]);

    // At the outermost level there is none.
    RecordEnd(machine, 10);
    EXPECT_EQ(machine.records[4].parent, nullptr);
}

}  // namespace
}  // namespace quorvane::csn
