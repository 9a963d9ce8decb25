// Counts that descriptions compute: one-bits, fields that are there, one less, handed on. Modelled
// on the timeslot allocations of TS 44.060; values are counted by hand.

#include <gtest/gtest.h>
#include <string>

#include "compiler/csn_codec.h"

namespace quorvane::compiler {
namespace {

TEST(CsnCounts, OnesOfTheLastBits) {
    CsnCodec codec(
        "< t > ::= < m : bit (8) > @set(N, ones(8)) { < u : bit (3) > } * (val(N)) < e : bit > ;");
    ASSERT_EQ(codec.Errors(), "");
    EXPECT_EQ(codec.Decode("01000010 101 010 1"), "15: e=1 m=66 u=[5 2]");
    EXPECT_EQ(codec.Encode(), "010000101010101");
    EXPECT_EQ(codec.Decode("00000000 1"), "9: e=1 m=0 u=[]");
    EXPECT_EQ(codec.Decode("11111111 000 001 010 011 100 101 110 111 0"),
              "33: e=0 m=255 u=[0 1 2 3 4 5 6 7]");
}

TEST(CsnCounts, OfNumbersAlone) {
    CsnCodec codec("< t > ::= < a : bit (1 + 2) > < b : bit (6 - 2) > < c : bit (2 * 4) > ;");
    ASSERT_EQ(codec.Errors(), "");
    EXPECT_EQ(codec.Decode("101 0110 10000001"), "15: a=5 b=6 c=129");
    EXPECT_EQ(codec.Encode(), "101011010000001");
}

// N: the timeslots of both carriers. The allocation has N bits; M, which follows from it or is N,
// is the count of the fields, of which the first one always is there.
constexpr const char* kAllocation =
    "< t > ::= < d : < description > > < a : < assignment > > ;\n"
    "< description > ::=\n"
    "    {   0 < C1 : bit (8) > @set(N, ones(8))\n"
    "        { 0 | 1 < C2 : bit (8) > @add(N, ones(8)) }\n"
    "    |   1 @set(N, 0)\n"
    "        { 0 | 1 < G0 : bit (5) > @add(N, 1) }\n"
    "        { 0 | 1 < G1 : bit (5) > @add(N, 1) }\n"
    "        { 0 | 1 < G2 : bit (5) > @add(N, 1) } } ;\n"
    "< assignment > ::=\n"
    "    {   0 @set(M, val(N))\n"
    "    |   1 < TBF : bit (val(N)) > @set(M, ones(val(N))) }\n"
    "    < U : bit (3) [most 8] >\n"
    "    { 0 | 1 < U : bit (3) > } * (val(M) - 1) ;\n";

TEST(CsnCounts, OfTwoFieldsTogether) {
    CsnCodec codec(kAllocation);
    ASSERT_EQ(codec.Errors(), "");
    EXPECT_EQ(codec.Decode("0 00000011 1 10000000  0  001 0 1 111"),
              "27: a={ U=[1 7] } d={ C1=3 C2=128 }");
    EXPECT_EQ(codec.Encode(), "000000011110000000000111110");
}

TEST(CsnCounts, OfABitStringOfComputedWidth) {
    CsnCodec codec(kAllocation);
    EXPECT_EQ(codec.Decode("0 00110011 0  1 1011  101 1 110 0"),
              "23: a={ TBF='1011' U=[5 6] } d={ C1=51 }");
    EXPECT_EQ(codec.Encode(), "00011001101101110111100");
}

TEST(CsnCounts, OfFieldsThatAreThere) {
    CsnCodec codec(kAllocation);
    EXPECT_EQ(codec.Decode("1 1 00001 0 1 00010  0  000 1 001"),
              "22: a={ U=[0 1] } d={ G0=1 G2=2 }");
    EXPECT_EQ(codec.Encode(), "1100001010001000001001");
}

TEST(CsnCounts, BelowZeroFailsTheRun) {
    CsnCodec codec(kAllocation);
    // No timeslot: M - 1 is -1.
    EXPECT_EQ(codec.Decode("1 0 0 0  0  101 1 111").substr(0, 7), "failed:");
}

TEST(CsnCounts, MistakesAreTold) {
    const auto errors = [](const std::string& rules) { return CsnCodec(rules).Errors(); };
    EXPECT_EQ(errors("< t > ::= < a : bit (val(n)) > @set(n, 2) ;"),
              "T.csn1:2:22: error: 'n' is not known here on every way that reading can take; it "
              "must be set before\n"
              "T.csn1:2:22: error: 'n' is not known here on every way that writing can take; it "
              "must be set before\n");
    EXPECT_EQ(errors("< t > ::= @add(n, 1) < a : bit > @set(n, val(n) + 1) ;").substr(0, 36),
              "T.csn1:2:16: error: 'n' is not known");
    EXPECT_EQ(errors("< t > ::= < a : bit (ones(33)) > ;"),
              "T.csn1:2:22: error: ones() counts among the last 1 to 32 bits\n");
    EXPECT_EQ(errors("< t > ::= @set(n, m) < a : bit (val(n)) > ;"),
              "T.csn1:2:19: error: a count is expected here\n");
}

}  // namespace
}  // namespace quorvane::compiler
