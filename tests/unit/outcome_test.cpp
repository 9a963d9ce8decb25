#include "bits/outcome.h"

#include <gtest/gtest.h>
#include <type_traits>

#include "support/print_outcome.h"

namespace quorvane::bits {
namespace {

// As cheap as the number that it holds.
static_assert(std::is_trivially_copyable_v<Outcome> && sizeof(Outcome) == sizeof(std::int64_t));

TEST(Outcome, IsACountOfBits) {
    const Outcome outcome = 12;
    EXPECT_FALSE(outcome.Failed());
    EXPECT_EQ(outcome.Bits(), 12);
    EXPECT_EQ(outcome.Plus(24).Bits(), 36);
    EXPECT_FALSE(Outcome(0).Failed());
}

TEST(Outcome, OrACode) {
    const Outcome outcome = Code::kSizeError;
    EXPECT_TRUE(outcome.Failed());
    EXPECT_EQ(outcome.Error(), Code::kSizeError);
    EXPECT_EQ(outcome.Plus(24), Code::kSizeError);
    EXPECT_NE(outcome, Code::kMandatoryError);
}

TEST(Outcome, ACountBelowZeroIsNoSuccess) {
    EXPECT_TRUE(Outcome(-8).Failed());
}

}  // namespace
}  // namespace quorvane::bits
