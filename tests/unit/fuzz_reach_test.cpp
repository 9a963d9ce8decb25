// How fuzz targets count what they reach.

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <utility>
#include <vector>

#include "facade/decodings.h"
#include "fuzz/reach.h"
#include "quorvane/message.h"

namespace quorvane::fuzz {
namespace {

class FuzzReach : public testing::Test {
  protected:
    void Note(Decoding decoding, const std::vector<std::uint8_t>& octets) {
        std::fill(counters_.begin(), counters_.end(), std::uint8_t{0});
        reach_.NoteMessage(decoding, octets);
    }
    /// What the last message has reached.
    [[nodiscard]] std::ptrdiff_t Counters() const {
        return std::count(counters_.begin(), counters_.end(), std::uint8_t{1});
    }

    std::vector<std::uint8_t> counters_ = std::vector<std::uint8_t>(std::size_t{1} << 15);
    Reach reach_{counters_};
};

TEST_F(FuzzReach, CountsAMessageAndItsFieldsOnce) {
    EXPECT_EQ(reach_.Messages().reached, 0U);
    EXPECT_EQ(reach_.Fields().reached, 0U);
    // DETACH ACCEPT of the network has a security header type and no element.
    for (int round = 0; round < 2; ++round) {
        Note(Decoding::EPS_MMUplink, {0x07, 0x46});
        EXPECT_EQ(Counters(), 2);
        EXPECT_EQ(reach_.Messages().reached, 1U);
        EXPECT_EQ(reach_.Fields().reached, 1U);
    }
}

TEST_F(FuzzReach, CountsOptionalFieldsThatAreThereAndMandatoryOnesThatWereCut) {
    // PDN CONNECTIVITY REQUEST: two identities, request type and PDN type.
    Note(Decoding::EPS_SMUplink, {0x02, 0x01, 0xD0, 0x31});
    EXPECT_EQ(Counters(), 1 + 4);
    // With an ESM information transfer flag, which has one member.
    Note(Decoding::EPS_SMUplink, {0x02, 0x01, 0xD0, 0x31, 0xD1});
    EXPECT_EQ(reach_.Messages().reached, 1U);
    EXPECT_GT(reach_.Fields().reached, 4U);
    const std::size_t before = reach_.Fields().reached;
    Note(Decoding::EPS_SMUplink, {0x02, 0x01, 0xD0});
    EXPECT_EQ(reach_.Fields().reached, before);
}

TEST_F(FuzzReach, CountsNothingOfAnUnknownMessage) {
    Note(Decoding::EPS_SMUplink, {0x02, 0x01, 0x00});
    EXPECT_EQ(Counters(), 0);
    Note(Decoding::EPS_SMUplink, {});
    EXPECT_EQ(Counters(), 0);
}

TEST_F(FuzzReach, KnowsHowManyThereAre) {
    std::set<std::pair<const families::Family*, std::string_view>> messages;
    std::size_t elements = 0;
    for (const DecodingInfo& info : Decodings()) {
        for (std::size_t index = 0; index < MessageTypes::Count(info.decoding); ++index) {
            messages.emplace(facade::BindingOf(info.decoding).family,
                             MessageTypes::At(info.decoding, index).Name());
        }
    }
    for (const families::Family* family : families::AllFamilies()) {
        elements += family->types.elements.size();
    }
    EXPECT_EQ(reach_.Messages().all, messages.size());
    EXPECT_LE(reach_.Fields().all, elements);
    EXPECT_GT(reach_.Fields().all, messages.size());
}

}  // namespace
}  // namespace quorvane::fuzz
