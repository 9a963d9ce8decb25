// Deletion of nodes and descriptors on the heap, in an arena, and of one inside the other. Run
// under the address sanitizer, which sees leaks and wrong releases.

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>

#include "bits/arena.h"
#include "reflect/ted_class.h"
#include "reflect/ted_data.h"

namespace quorvane::reflect {
namespace {

class Probe : public Placeable {
  public:
    explicit Probe(int& count) : count_(count) { ++count_; }
    Probe(bits::Arena& arena, int& count) : Placeable(arena), count_(count) { ++count_; }
    ~Probe() override { --count_; }

  private:
    int& count_;
};

TEST(Placeable, DeleteRunsTheDestructorWhereverTheObjectLives) {
    int count = 0;
    bits::Arena arena;
    const Placeable* onHeap = new Probe(count);
    const Placeable* inArena = new (arena) Probe(arena, count);
    EXPECT_EQ(count, 2);
    delete onHeap;
    delete inArena;
    EXPECT_EQ(count, 0);
}

TEST(Placeable, AnArenaMayGoWithoutDeletion) {
    int count = 0;
    bits::Arena arena;
    (void)new (arena) Probe(arena, count);
    arena.Reset();
    EXPECT_EQ(count, 1);
}

class OwnershipTest : public testing::Test {
  protected:
    OwnershipTest() {
        type_.AddMember("number", TEDClassReference(&number_, false), false);
        type_.AddMember("list", TEDClassReference(&list_, false), false);
        type_.AddMember("bits", TEDClassReference(&bits_, false), false);
    }

    TEDDataStruct* ArenaTree() {
        static constexpr std::array<std::uint8_t, 2> kOctets = {0xAB, 0xCD};
        auto* root = new (arena_) TEDDataStruct(arena_, kBare, &type_);
        root->SetMember(0, new (arena_) TEDDataInteger(arena_, &number_, 7));
        auto* list = new (arena_) TEDDataSequence(arena_, &list_, 1);
        for (int value = 0; value < 30; ++value) {
            list->Append(new (arena_) TEDDataInteger(arena_, &number_, value));
        }
        root->SetMember(1, list);
        root->SetMember(2, new (arena_) TEDDataBinary(arena_, &bits_, kOctets.data(), 16));
        return root;
    }

    TEDClassInteger number_{"number", 8};
    TEDClassSequence list_{"list", TEDClassReference(&number_, false), 20, false};
    TEDClassBinary bits_{"bits", 16, false};
    TEDClassStruct type_{"type"};
    bits::Arena arena_;
};

TEST_F(OwnershipTest, AnArenaTreeGoesWithItsArena) {
    EXPECT_TRUE(ArenaTree()->HasMember(2));
    arena_.Reset();
    EXPECT_TRUE(ArenaTree()->HasMember(2));
}

TEST_F(OwnershipTest, AnArenaTreeMayBeDeletedAsWell) {
    delete ArenaTree();
}

TEST_F(OwnershipTest, AHeapNodeInAnArenaTreeIsDeletedWithTheRoot) {
    TEDDataStruct* root = ArenaTree();
    root->SetMember(0, number_.NewData());
    root->SetMember(1, list_.NewData());
    delete root;
}

TEST_F(OwnershipTest, AnArenaNodeInAHeapTreeIsDeletedWithTheRoot) {
    auto* root = static_cast<TEDDataStruct*>(type_.NewData());
    root->SetMember(0, new (arena_) TEDDataInteger(arena_, &number_, 7));
    delete root;
}

TEST_F(OwnershipTest, CopiesOfArenaNodesLiveOnTheHeap) {
    const TEDDataStruct* root = ArenaTree();
    const std::unique_ptr<TEDDataBase> list(root->GetMember(1)->Clone());
    const std::unique_ptr<TEDDataBase> octets(root->GetMember(2)->Clone());
    arena_.Reset();
    EXPECT_EQ(static_cast<TEDDataSequence&>(*list).GetCount(), 30U);
    EXPECT_EQ(static_cast<TEDDataBinary&>(*octets).GetData()[1], 0xCD);
}

TEST_F(OwnershipTest, AssignmentToAnArenaNodeKeepsItsArraysInTheArena) {
    TEDDataStruct* root = ArenaTree();
    const TEDDataSequence list(&list_);
    const TEDDataBinary octets(&bits_);
    static_cast<TEDDataSequence&>(*root->GetMember(1)) = list;
    static_cast<TEDDataBinary&>(*root->GetMember(2)) = octets;
    const TEDDataStruct other(&type_);
    *root = other;
    EXPECT_FALSE(root->HasMember(0));
    arena_.Reset();
}

TEST_F(OwnershipTest, DescriptorsInAnArenaOwnTheirTypes) {
    auto* item = new (arena_) TEDClassInteger(arena_, "item", 8);
    TEDClassBase* sequence =
        new (arena_) TEDClassSequence(arena_, "sequence", item, true, 20, false);
    const std::unique_ptr<TEDClassBase> copy(sequence->Clone());
    sequence->SetName("a name that is copied to the heap");
    delete sequence;
    arena_.Reset();
    EXPECT_EQ(copy->GetName(), "sequence");
    EXPECT_EQ(static_cast<TEDClassSequence&>(*copy).GetItemType().GetTarget()->GetName(), "item");
}

}  // namespace
}  // namespace quorvane::reflect
