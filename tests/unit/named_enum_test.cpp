// Enumerations that print their enumerators.

#include "bits/named_enum.h"

#include <gtest/gtest.h>

#include "iecodec/tables.h"

namespace quorvane::bits {
namespace {

QUORVANE_NAMED_ENUM(Colour,
                    kRed,    // with a comment, and a comma in it
                    kGreen,  // in the middle
                    kBlue)

TEST(NamedEnum, GivesEachEnumeratorAsItIsWritten) {
    EXPECT_EQ(EnumeratorText(Colour::kRed), "Colour::kRed");
    EXPECT_EQ(EnumeratorText(Colour::kGreen), "Colour::kGreen");
    EXPECT_EQ(EnumeratorText(Colour::kBlue), "Colour::kBlue");
}

TEST(NamedEnum, TakesTheNamesOfAList) {
    EXPECT_EQ(EnumeratorText(iecodec::FieldFormat::kV), "FieldFormat::kV");
    EXPECT_EQ(EnumeratorText(iecodec::FieldFormat::kTlvE), "FieldFormat::kTlvE");
    EXPECT_EQ(EnumeratorText(iecodec::FieldFormat::kEndCheck), "FieldFormat::kEndCheck");
}

// TS 24.007, 11.2.1.1: identifiers and length fields of the formats.
TEST(FieldFormats, KnowTheOctetsInFrontOfTheValue) {
    using iecodec::FieldFormat;
    EXPECT_EQ(InfoOf(FieldFormat::kLvE).ieiWidth, 0);
    EXPECT_EQ(InfoOf(FieldFormat::kLvE).lengthWidth, 16);
    EXPECT_EQ(InfoOf(FieldFormat::kTvHalf).ieiWidth, 4);
    EXPECT_EQ(InfoOf(FieldFormat::kTlv).ieiWidth, 8);
    EXPECT_EQ(InfoOf(FieldFormat::kTlv).lengthWidth, 8);
}

}  // namespace
}  // namespace quorvane::bits
