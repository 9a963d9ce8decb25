// The JSON of the one enumeration whose words are not all ASCII.

#include <gtest/gtest.h>

#include "json/json_of.h"

namespace quorvane {
namespace {

// PROGRESS, TS 24.008, 9.3.17: coding standard 3, location user, description 1.
TEST(Json, IsUtf8) {
    EXPECT_TRUE(test::Has(test::JsonOf(Decoding::L3Downlink, {0x03, 0x03, 0x02, 0xE0, 0x81}),
                          "\"CodingStandard\":{\"value\":3,\"words\":\"Standard defined for the "
                          "GSM\xC3\x9FPLMNS as described below\",\"at\":[25,2]}"));
}

}  // namespace
}  // namespace quorvane
