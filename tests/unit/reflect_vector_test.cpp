#include <cstdint>
#include <gtest/gtest.h>

#include "bits/arena.h"
#include "reflect/ted_vector.h"

namespace quorvane::reflect {
namespace {

/// Notes the order of deletions.
struct Item {
    Item(int itemNumber, std::string& deletions) : number(itemNumber), log(deletions) {}
    ~Item() { log += std::to_string(number) + " "; }

    int number;
    std::string& log;
};

using Vector = TEDVector<Item>;

TEST(TEDVector, IsEmptyWithoutAnArrayAtFirst) {
    const Vector vector;
    EXPECT_EQ(vector.GetItems(), nullptr);
    EXPECT_EQ(vector.GetCapacity(), 0U);
    EXPECT_EQ(vector.GetCount(), 0U);
}

TEST(TEDVector, GrowsInStepsOfEight) {
    std::string log;
    Vector vector;
    EXPECT_EQ(vector.PushBack(new Item(0, log)), 0U);
    EXPECT_EQ(vector.GetCapacity(), 8U);
    for (int number = 1; number < 8; ++number) {
        EXPECT_EQ(vector.PushBack(new Item(number, log)), static_cast<std::uint32_t>(number));
        EXPECT_EQ(vector.GetCapacity(), 8U);
    }
    EXPECT_EQ(vector.PushBack(new Item(8, log)), 8U);
    EXPECT_EQ(vector.GetCapacity(), 16U);
    for (std::uint32_t index = 0; index < 9; ++index) {
        EXPECT_EQ(vector[index]->number, static_cast<int>(index));
    }
    EXPECT_EQ(log, "");
}

TEST(TEDVector, SlotsBehindTheCountAreNull) {
    std::string log;
    Vector vector;
    vector.PushBack(new Item(0, log));
    for (std::uint32_t index = 1; index < 8; ++index) {
        EXPECT_EQ(vector[index], nullptr);
    }
}

TEST(TEDVector, AListOf119HasACapacityOf120) {
    std::string log;
    Vector vector;
    for (int number = 0; number < 119; ++number) {
        vector.PushBack(new Item(number, log));
    }
    EXPECT_EQ(vector.GetCount(), 119U);
    EXPECT_EQ(vector.GetCapacity(), 120U);
}

TEST(TEDVector, ReserveAddsTheExtraAndEightCutToEights) {
    Vector vector;
    vector.Reserve(0);
    EXPECT_EQ(vector.GetCapacity(), 0U);
    vector.Reserve(7);  // 15 cut to 8
    EXPECT_EQ(vector.GetCapacity(), 8U);
    vector.Reserve(8);  // fits
    EXPECT_EQ(vector.GetCapacity(), 8U);
    vector.Reserve(9);  // 17 cut to 16, on top of 8
    EXPECT_EQ(vector.GetCapacity(), 24U);
}

TEST(TEDVector, ReserveOfEightOnAnEmptyOneGivesSixteen) {
    Vector vector;
    vector.Reserve(8);
    EXPECT_EQ(vector.GetCapacity(), 16U);
}

TEST(TEDVector, ClearDeletesFromTheFirstToTheLast) {
    std::string log;
    Vector vector;
    vector.PushBack(new Item(1, log));
    vector.PushBack(nullptr);
    vector.PushBack(new Item(2, log));
    vector.Clear();
    EXPECT_EQ(log, "1 2 ");
    EXPECT_EQ(vector.GetItems(), nullptr);
    EXPECT_EQ(vector.GetCapacity(), 0U);
    EXPECT_EQ(vector.GetCount(), 0U);
    vector.Clear();
    EXPECT_EQ(vector.GetCapacity(), 0U);
}

TEST(TEDVector, ClearForgetsAReservationWithoutItems) {
    Vector vector;
    vector.Reserve(3);
    vector.Clear();
    EXPECT_EQ(vector.GetCapacity(), 0U);
}

TEST(TEDVector, DestructionDeletesTheItems) {
    std::string log;
    {
        Vector vector;
        vector.PushBack(new Item(1, log));
    }
    EXPECT_EQ(log, "1 ");
}

TEST(TEDVector, GrowsByTheSameRuleInAnArena) {
    std::string log;
    bits::Arena arena;
    Vector vector(&arena);
    for (int number = 0; number < 9; ++number) {
        vector.PushBack(new Item(number, log));
    }
    EXPECT_EQ(vector.GetCapacity(), 16U);
    EXPECT_EQ(vector[8]->number, 8);
    EXPECT_EQ(vector[9], nullptr);
}

}  // namespace
}  // namespace quorvane::reflect
