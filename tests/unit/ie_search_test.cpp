#include "iecodec/ie_search.h"

#include <array>
#include <gtest/gtest.h>
#include <vector>

namespace quorvane::iecodec {
namespace {

// Rows as in a family's table: half-octet, type-only, fixed-size and counted elements.
constexpr std::array<IeFormatRow, 8> kFormats{{{0x11, 0xFF, -8},
                                               {0x17, 0xFF, 16},
                                               {0x50, 0xFF, 0},
                                               {0x78, 0xFF, -16},
                                               {0x80, 0xF0, 8},
                                               {0x8C, 0xFF, 8},
                                               {0x90, 0xF0, 8},
                                               {0xC0, 0xF0, 8}}};

struct Search {
    explicit Search(std::vector<std::uint8_t> message)
        : octets(std::move(message)),
          reader(octets.data(), static_cast<std::int64_t>(octets.size())),
          end(8 * static_cast<std::int64_t>(octets.size())) {}

    IeSearch Find(std::uint8_t iei, std::int32_t width, const IeOrderRow* order) {
        return FindIe(iei, width, reader, cursor, end, kFormats, order);
    }

    std::vector<std::uint8_t> octets;
    bits::BitReader reader;
    std::int64_t cursor = 0;
    std::int64_t end;
};

constexpr std::array<IeOrderRow, 4> kOrder{{{0x11, 0xFF, IeOrderRow::kWithIei},
                                            {0x90, 0xF0, IeOrderRow::kWithIei},
                                            {0x23, 0xFF, IeOrderRow::kWithIei},
                                            {0, 0, IeOrderRow::kEnd}}};

TEST(LookupIeFormat, FindsFullAndHalfOctetRows) {
    EXPECT_EQ(LookupIeFormat(0x11, kFormats), &kFormats[0]);
    EXPECT_EQ(LookupIeFormat(0x9F, kFormats), &kFormats[6]);
    EXPECT_EQ(LookupIeFormat(0xC3, kFormats), &kFormats[7]);
    EXPECT_EQ(LookupIeFormat(0x12, kFormats), nullptr);
    EXPECT_EQ(LookupIeFormat(0xFF, kFormats), nullptr);
    EXPECT_EQ(LookupIeFormat(0x11, {}), nullptr);
}

TEST(LookupIeFormat, ComparesIdentifiersUnmaskedOnItsWay) {
    // Probes 78, 8C, then right: the half-octet row 80 is never probed for 8D to 8F.
    EXPECT_EQ(LookupIeFormat(0x8C, kFormats), &kFormats[5]);
    EXPECT_EQ(LookupIeFormat(0x8B, kFormats), &kFormats[4]);
    EXPECT_EQ(LookupIeFormat(0x8D, kFormats), nullptr);
    EXPECT_EQ(LookupIeFormat(0x8F, kFormats), nullptr);
}

TEST(SkipIe, PassesFixedAndCountedElements) {
    Search fixed({0x17, 0xAA, 0x11});
    EXPECT_TRUE(SkipIe(fixed.reader, fixed.cursor, kFormats));
    EXPECT_EQ(fixed.cursor, 16);

    Search counted({0x11, 0x03, 1, 2, 3, 0x17});
    EXPECT_TRUE(SkipIe(counted.reader, counted.cursor, kFormats));
    EXPECT_EQ(counted.cursor, 8 + 8 + 24);

    Search extended({0x78, 0x00, 0x02, 1, 2});
    EXPECT_TRUE(SkipIe(extended.reader, extended.cursor, kFormats));
    EXPECT_EQ(extended.cursor, 8 + 16 + 16);

    Search half({0x95});
    EXPECT_TRUE(SkipIe(half.reader, half.cursor, kFormats));
    EXPECT_EQ(half.cursor, 8);
}

TEST(SkipIe, MayPassTheEnd) {
    Search counted({0x11, 0x03});
    EXPECT_TRUE(SkipIe(counted.reader, counted.cursor, kFormats));
    EXPECT_EQ(counted.cursor, 40);
}

TEST(SkipIe, LeavesTheCursorAtWhatItCannotSkip) {
    Search unknown({0x12, 0x00});
    EXPECT_FALSE(SkipIe(unknown.reader, unknown.cursor, kFormats));
    EXPECT_EQ(unknown.cursor, 0);
    Search sizeZero({0x50, 0x00});
    EXPECT_FALSE(SkipIe(sizeZero.reader, sizeZero.cursor, kFormats));
    EXPECT_EQ(sizeZero.cursor, 0);
}

TEST(FindIe, FindsTheIdentifierAtTheCursor) {
    Search search({0x11, 0x00});
    EXPECT_EQ(search.Find(0x11, 8, kOrder.data()), IeSearch::kFound);
    EXPECT_EQ(search.cursor, 0);
    Search half({0x93});
    EXPECT_EQ(half.Find(0x9, 4, &kOrder[1]), IeSearch::kFound);
}

TEST(FindIe, EndsWithTheMessage) {
    Search empty({});
    EXPECT_EQ(empty.Find(0x11, 8, kOrder.data()), IeSearch::kAbsent);
    EXPECT_EQ(empty.Find(0x11, 8, nullptr), IeSearch::kAbsent);
}

TEST(FindIe, ReportsWhatCannotBeSkipped) {
    Search search({0x12, 0x00, 0x11});
    EXPECT_EQ(search.Find(0x11, 8, nullptr), IeSearch::kBlocked);
    EXPECT_EQ(search.Find(0x11, 8, kOrder.data()), IeSearch::kBlocked);
}

TEST(FindIe, LeavesALaterFieldForItsTurn) {
    Search later({0x9A, 0x11});
    EXPECT_EQ(later.Find(0x11, 8, kOrder.data()), IeSearch::kAbsent);
    EXPECT_EQ(later.cursor, 0);
}

TEST(FindIe, TellsWhichFieldClaimsWhatItEndsAt) {
    const auto claimOf = [](std::vector<std::uint8_t> message) {
        const Search search(std::move(message));
        std::int64_t cursor = 0;
        const IeOrderRow* claim = nullptr;
        static_cast<void>(
            FindIe(0x11, 8, search.reader, cursor, search.end, kFormats, kOrder.data(), &claim));
        return claim;
    };
    EXPECT_EQ(claimOf({0x9A}), &kOrder[1]);
    EXPECT_EQ(claimOf({0x17, 0x00, 0x23}), &kOrder[2]);
    EXPECT_EQ(claimOf({0x11}), nullptr);  // found
    EXPECT_EQ(claimOf({}), nullptr);
    EXPECT_EQ(claimOf({0x12}), nullptr);  // in the way
}

TEST(FindIe, SkipsAFieldWhosePlaceHasPassed) {
    Search earlier({0x11, 0x01, 0xFF, 0x23});
    EXPECT_EQ(earlier.Find(0x23, 8, &kOrder[2]), IeSearch::kFound);
    EXPECT_EQ(earlier.cursor, 24);
}

TEST(FindIe, SkipsEverythingForAMandatoryField) {
    Search search({0x9A, 0x17, 0x00, 0x23});
    EXPECT_EQ(search.Find(0x23, 8, nullptr), IeSearch::kFound);
    EXPECT_EQ(search.cursor, 24);
}

TEST(FindIe, StopsAtAFieldWithoutIdentifierAhead) {
    constexpr std::array<IeOrderRow, 4> order{{{0x11, 0xFF, IeOrderRow::kWithIei},
                                               {0, 0, IeOrderRow::kWithoutIei},
                                               {0x17, 0xFF, IeOrderRow::kWithIei},
                                               {0, 0, IeOrderRow::kEnd}}};
    Search search({0x55, 0x11});
    EXPECT_EQ(search.Find(0x11, 8, order.data()), IeSearch::kAbsent);
    EXPECT_EQ(search.cursor, 0);
}

TEST(FindIe, NotesThatSkippingPassedTheEnd) {
    Search search({0x11, 0x7F, 0x00});
    EXPECT_EQ(search.Find(0x23, 8, &kOrder[2]), IeSearch::kAbsent);
    Search mandatory({0x11, 0x7F, 0x00});
    EXPECT_EQ(mandatory.Find(0x23, 8, nullptr), IeSearch::kAbsent);
}

TEST(FindIe, ReadsTheWholeOctetBehindAHalfOctetIdentifier) {
    // Looking for 9-, a 17 stands in the way and is skipped by its own row.
    Search search({0x17, 0x00, 0x95});
    EXPECT_EQ(search.Find(0x9, 4, &kOrder[1]), IeSearch::kFound);
    EXPECT_EQ(search.cursor, 16);
}

}  // namespace
}  // namespace quorvane::iecodec
