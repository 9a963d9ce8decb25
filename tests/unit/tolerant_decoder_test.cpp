// Tolerant reading of the codec, with tables made for it: what is set aside, and what stays a
// fault.

#include <array>
#include <gtest/gtest.h>
#include <string>

#include "codec_test_support.h"
#include "iecodec/ie_search.h"
#include "iecodec/message_decoder.h"

namespace quorvane::iecodec {
namespace {

constexpr std::uint8_t kPairIei = 0x20;

/// A message of one optional element of 1 or 2 octets, with 12 bits that are known.
class ToleratedMessage : public testing::Test {
  protected:
    ToleratedMessage() {
        values_[0].shape = Shape::kTruncatable;
        values_[0].members = 1;
        values_[0].count = 1;
        values_[1].shape = Shape::kInteger;
        values_[1].width = 12;
        field_.name = "Pair";
        field_.format = FieldRow::Format::kTlv;
        field_.presence = FieldRow::Presence::kOptional;
        field_.iei = kPairIei;
        field_.leastOctets = 1;
        field_.mostOctets = 2;
        message_.members = 1;
        message_.fieldCount = 1;
        tables_.values = values_;
        tables_.parts = parts_;
        tables_.orders = orders_;
        tables_.fields = {&field_, 1};
        tables_.formats = formats_;
        tables_.unknownFormats = unknown_;
    }

    bits::Outcome Decode(std::string_view hex, SurplusList* surplus) {
        octets_ = test::FromHex(hex);
        const auto size = static_cast<std::int64_t>(octets_.size());
        return Decode({octets_.data(), size}, 8 * size, surplus);
    }

    bits::Outcome Decode(bits::BitReader reader, std::int64_t length, SurplusList* surplus) {
        diagnostics_.Clear();
        surplus_.Clear();
        cell_ = {};
        DecodeContext context{tables_, reader, arena_, diagnostics_, surplus};
        return DecodeMessageBody(context, message_, 0, cell_, length);
    }

    bits::Outcome DecodeTolerantly(std::string_view hex) { return Decode(hex, &surplus_); }

    [[nodiscard]] bool HasPair() const { return cell_.cells[0].present; }

    void ExpectItem(std::size_t index, std::uint8_t iei, bool element, std::int64_t position,
                    std::int64_t bitCount, std::string_view hex) {
        ASSERT_LT(index, surplus_.Items().size());
        const Surplus& item = surplus_.Items()[index];
        EXPECT_EQ(item.iei, iei);
        EXPECT_EQ(item.element, element);
        EXPECT_EQ(item.cell, element ? &cell_ : &cell_.cells[0]);
        ExpectBits(item, position, bitCount, hex);
    }

    /// The last piece is all that is left of the message, of no element.
    void ExpectLast(std::size_t count, std::int64_t position, std::int64_t bitCount,
                    std::string_view hex) {
        ASSERT_EQ(surplus_.Items().size(), count);
        const Surplus& item = surplus_.Items().back();
        EXPECT_FALSE(item.iei);
        EXPECT_FALSE(item.element);
        EXPECT_EQ(item.cell, nullptr);
        ExpectBits(item, position, bitCount, hex);
    }

    static void ExpectBits(const Surplus& item, std::int64_t position, std::int64_t bitCount,
                           std::string_view hex) {
        EXPECT_EQ(item.position, position);
        EXPECT_EQ(item.bitCount, bitCount);
        const std::size_t size = bits::OctetsOf(static_cast<std::uint32_t>(bitCount));
        EXPECT_EQ(test::ToHex({item.octets, size}), hex);
    }

    SurplusList surplus_;
    Diagnostics diagnostics_;
    bits::Cell cell_{};
    FieldRow field_{};

  private:
    std::array<ValueRow, 2> values_{};
    std::array<PartRow, 1> parts_{{{PartRow::Kind::kInteger, 0, 0, 12, 1}}};
    std::array<IeOrderRow, 2> orders_{
        {{kPairIei, 0xFF, IeOrderRow::kWithIei}, {0, 0, IeOrderRow::kEnd}}};
    std::array<IeFormatRow, 5> formats_{{{kPairIei, 0xFF, -8},
                                         {0x2B, 0xFF, -8},
                                         {0x33, 0xFF, 24},
                                         {0x40, 0xF0, 8},
                                         {0x90, 0xFF, 0}}};
    std::array<IeFormatRow, 1> unknown_{{{0x7A, 0xFF, -16}}};
    MessageRow message_{};
    CodecTables tables_{};
    bits::Arena arena_;
    test::Octets octets_;
};

TEST_F(ToleratedMessage, KeepsBitsBehindAValue) {
    EXPECT_EQ(Decode("20 02 AB CD", nullptr), 32);
    EXPECT_FALSE(HasPair());
    EXPECT_EQ(diagnostics_.Faults().size(), 1U);

    EXPECT_EQ(DecodeTolerantly("20 02 AB CD"), 32);
    EXPECT_TRUE(HasPair());
    EXPECT_EQ(cell_.cells[0].cells[0].number, 0xABCU);
    EXPECT_EQ(diagnostics_.Lines(), "");
    ASSERT_EQ(surplus_.Items().size(), 1U);
    ExpectItem(0, kPairIei, false, 28, 4, "D0");
}

TEST_F(ToleratedMessage, KeepsOctetsBehindALimitWithWhatIsLeftAheadOfIt) {
    EXPECT_EQ(Decode("20 04 AB CD EF 01", nullptr), kSizeError);

    EXPECT_EQ(DecodeTolerantly("20 04 AB CD EF 01"), 48);
    EXPECT_TRUE(HasPair());
    EXPECT_EQ(diagnostics_.Lines(), "");
    ASSERT_EQ(surplus_.Items().size(), 1U);
    ExpectItem(0, kPairIei, false, 28, 20, "DE F0 10");
}

TEST_F(ToleratedMessage, LeavesFaultsAsTheyAre) {
    // Below the limit; beyond it, and past the end of the message; within it, and past the end.
    for (const char* octets : {"20 00", "20 03 AB CD", "20 FF AB CD EF"}) {
        EXPECT_EQ(DecodeTolerantly(octets), kSizeError) << octets;
        EXPECT_EQ(diagnostics_.Lines(), "<ERRID:0> Size error decoding IE Pair\n");
        EXPECT_TRUE(surplus_.Items().empty());
    }
    EXPECT_EQ(DecodeTolerantly("20 02 AB"), 24);
    EXPECT_FALSE(HasPair());
    EXPECT_TRUE(surplus_.Items().empty());
    // A value of 12 bits in an octet.
    EXPECT_EQ(DecodeTolerantly("20 01 AB"), 24);
    EXPECT_FALSE(HasPair());
    EXPECT_EQ(diagnostics_.Lines(), "<ERRID:0> Error decoding subfield Pair\n");
    EXPECT_TRUE(surplus_.Items().empty());
}

TEST_F(ToleratedMessage, KeepsUnknownElementsAsLongAsTheySay) {
    struct {
        const char* element;
        std::int64_t size;
    } const cases[] = {
        {"00 00", 16}, {"31 02 AA BB", 32}, {"7A 00 01 AA", 32}, {"79 00", 16},
        {"80", 8},     {"AF", 8},           {"FF", 8},
    };
    for (const auto& [element, size] : cases) {
        const std::string octets = std::string(element) + " 20 02 AB CD";
        EXPECT_EQ(Decode(octets, nullptr), kUnknownIei) << element;
        EXPECT_EQ(DecodeTolerantly(octets), size + 32) << element;
        EXPECT_TRUE(HasPair()) << element;
        ASSERT_EQ(surplus_.Items().size(), 2U) << element;
        ExpectItem(0, test::FromHex(element)[0], true, 0, size, element);
        ExpectItem(1, kPairIei, false, size + 28, 4, "D0");
    }
}

TEST_F(ToleratedMessage, KeepsElementsThatTheSearchSkips) {
    // Between two that have no row.
    EXPECT_EQ(DecodeTolerantly("81 33 AA BB 47 82 20 02 AB CD"), 80);
    EXPECT_TRUE(HasPair());
    ASSERT_EQ(surplus_.Items().size(), 5U);
    ExpectItem(0, 0x81, true, 0, 8, "81");
    ExpectItem(1, 0x33, true, 8, 24, "33 AA BB");
    ExpectItem(2, 0x40, true, 32, 8, "47");
    ExpectItem(3, 0x82, true, 40, 8, "82");
    ExpectItem(4, kPairIei, false, 76, 4, "D0");

    EXPECT_EQ(Decode("33 AA BB 47", nullptr), 32);
    EXPECT_EQ(DecodeTolerantly("33 AA BB 47"), 32);
    EXPECT_FALSE(HasPair());
    ASSERT_EQ(surplus_.Items().size(), 2U);
    ExpectItem(1, 0x40, true, 24, 8, "47");
}

TEST_F(ToleratedMessage, KeepsElementsBehindTheLastField) {
    const char* const octets = "20 02 AB CD 20 02 12 34 33 AA BB 90 7A 00 01 AA 31 00";
    EXPECT_EQ(Decode(octets, nullptr), 32);
    EXPECT_EQ(DecodeTolerantly(octets), 32);
    ASSERT_EQ(surplus_.Items().size(), 6U);
    ExpectItem(0, kPairIei, false, 28, 4, "D0");
    ExpectItem(1, kPairIei, true, 32, 32, "20 02 12 34");
    ExpectItem(2, 0x33, true, 64, 24, "33 AA BB");
    ExpectItem(3, 0x90, true, 88, 8, "90");
    ExpectItem(4, 0x7A, true, 96, 32, "7A 00 01 AA");
    ExpectItem(5, 0x31, true, 128, 16, "31 00");
}

TEST_F(ToleratedMessage, KeepsWhatIsNoWholeElementAsOnePiece) {
    EXPECT_EQ(DecodeTolerantly("20 02 AB CD 80 31 05 80 80"), 32);
    ExpectLast(3, 40, 32, "31 05 80 80");
    ExpectItem(1, 0x80, true, 32, 8, "80");
    EXPECT_EQ(DecodeTolerantly("20 02 AB CD 31"), 32);
    ExpectLast(2, 32, 8, "31");
    // The search skips it, and is past the end then.
    for (SurplusList* surplus : {static_cast<SurplusList*>(nullptr), &surplus_}) {
        EXPECT_EQ(Decode("47 33 AA", surplus), 32);
        EXPECT_FALSE(HasPair());
        EXPECT_EQ(diagnostics_.Lines(), "");
    }
    ExpectLast(2, 8, 16, "33 AA");
}

TEST_F(ToleratedMessage, KeepsNoPadding) {
    EXPECT_EQ(DecodeTolerantly("20 02 AB CD 2B 2B 2B"), 32);
    EXPECT_EQ(surplus_.Items().size(), 1U);
    EXPECT_EQ(DecodeTolerantly("20 02 AB CD 33 AA 2B 2B"), 32);
    ASSERT_EQ(surplus_.Items().size(), 2U);
    ExpectItem(1, 0x33, true, 32, 24, "33 AA 2B");
    EXPECT_EQ(DecodeTolerantly("20 02 AB CD 2B 2B 31"), 32);
    ExpectLast(2, 32, 24, "2B 2B 31");
    EXPECT_EQ(DecodeTolerantly("20 02 AB CD 2B 01 2B 80"), 32);
    ASSERT_EQ(surplus_.Items().size(), 3U);
    ExpectItem(1, 0x2B, true, 32, 24, "2B 01 2B");
    // The search skips it: 2 octets and 43.
    EXPECT_EQ(DecodeTolerantly("2B 2B 2B"), 45 * 8);
    EXPECT_TRUE(surplus_.Items().empty());
}

TEST_F(ToleratedMessage, KeepsNothingBehindAFieldWithoutIdentifier) {
    field_.format = FieldRow::Format::kLv;
    field_.presence = FieldRow::Presence::kMandatory;
    EXPECT_EQ(DecodeTolerantly("02 AB CD 31 00"), 24);
    ASSERT_EQ(surplus_.Items().size(), 1U);
    EXPECT_EQ(surplus_.Items()[0].position, 20);
}

TEST_F(ToleratedMessage, KeepsNothingBehindAFault) {
    EXPECT_EQ(DecodeTolerantly("20 00 31 00"), kSizeError);
    EXPECT_TRUE(surplus_.Items().empty());
    // Any length is allowed.
    field_.format = FieldRow::Format::kLv;
    field_.presence = FieldRow::Presence::kMandatory;
    const test::Octets octets = test::FromHex("02 AB CD");
    EXPECT_EQ(Decode({octets.data(), 3}, -8, &surplus_), kMandatoryError);
    EXPECT_TRUE(surplus_.Items().empty());
}

TEST_F(ToleratedMessage, EndsAtAnUnknownElementThatPassesTheEnd) {
    for (const char* octets :
         {"31", "31 01", "31 05 20 02 AB CD", "7A 00", "7A 01 00 20 02 AB CD"}) {
        EXPECT_EQ(DecodeTolerantly(octets), kUnknownIei) << octets;
        EXPECT_TRUE(surplus_.Items().empty()) << octets;
        EXPECT_FALSE(HasPair());
    }
}

TEST_F(ToleratedMessage, KeepsNothingThatCannotBeRead) {
    const test::Octets octets = test::FromHex("31 02 AA BB");
    EXPECT_EQ(Decode({octets.data(), 4}, 8 * 100, &surplus_), kUnknownIei);
    ASSERT_EQ(surplus_.Items().size(), 1U);
    ExpectItem(0, 0x31, true, 0, 32, "31 02 AA BB");
    EXPECT_EQ(Decode({octets.data(), 3}, 8 * 4, &surplus_), kUnknownIei);
    EXPECT_TRUE(surplus_.Items().empty());
}

TEST_F(ToleratedMessage, EndsWhereTheMessageEndsThoughMoreCanBeRead) {
    const test::Octets octets = test::FromHex("20 02 AB CD 31 02 AA BB");
    const auto readable = static_cast<std::int64_t>(octets.size());
    EXPECT_EQ(Decode({octets.data(), readable}, 8 * 3, &surplus_), 24);
    EXPECT_FALSE(HasPair());
    EXPECT_TRUE(surplus_.Items().empty());
    for (const std::int64_t length : {1, 2, 3}) {
        EXPECT_EQ(Decode({octets.data() + 4, readable - 4}, 8 * length, &surplus_), kUnknownIei);
        EXPECT_TRUE(surplus_.Items().empty()) << length;
    }
}

TEST_F(ToleratedMessage, KeepsOnlySoManyPieces) {
    std::string octets;
    for (std::size_t element = 0; element < SurplusList::kMostItems; ++element) {
        octets += "9F ";
    }
    EXPECT_EQ(DecodeTolerantly(octets), 8000);
    EXPECT_EQ(surplus_.Items().size(), SurplusList::kMostItems);
    // It reads the same without more room.
    EXPECT_EQ(DecodeTolerantly(octets + "9F 20 02 AB CD 31 00"), 8040);
    EXPECT_TRUE(HasPair());
    EXPECT_EQ(diagnostics_.Lines(), "");
    EXPECT_EQ(surplus_.Items().size(), SurplusList::kMostItems);
    ExpectItem(SurplusList::kMostItems - 1, 0x9F, true, 7992, 8, "9F");
}

TEST(UnknownIeSize, FollowsFromTheIdentifierOrTheRow) {
    const test::Octets octets = test::FromHex("79 01 02");
    const bits::BitReader reader(octets.data(), 3);
    constexpr std::array<IeFormatRow, 1> kRows{{{0x79, 0xFF, -16}}};
    EXPECT_EQ(UnknownIeSize(reader, 0, {}), 16 + 8);
    EXPECT_EQ(UnknownIeSize(reader, 0, kRows), 24 + 8 * 0x102);
    // An identifier that is the last octet there is.
    EXPECT_EQ(UnknownIeSize(reader, 16, kRows), 16);
}

}  // namespace
}  // namespace quorvane::iecodec
