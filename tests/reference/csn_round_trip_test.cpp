// What was decoded by a description in which bits have only one meaning encodes to the same bits.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "bits/arena.h"
#include "bits/record.h"
#include "csn/csn_record.h"
#include "reference/csn_grammar.h"

namespace quorvane::reference {
namespace {

/// Constructs with one way to write a record; `number` tells their names apart.
std::vector<std::string> Items(const std::string& number) {
    std::vector<std::string> items = {
        "0 1",
        "{ 0 | 1 < b# : bit (2) > }",
        "{ 1 < r# : bit > } ** 0",
        "{ 0 < r# : bit (2) > } ** 1",
        "< s# : < a : bit > 1 >",
        "< n# : bit (2) > { < d# : bit > } * (val(n#))",
        "{ L | H < e# : bit > }",
        "< v# : { 01 | 10 | 11 } >",
        "{ 00 | 01 < p# : bit > | 1 < q# : bit (2) > }",
        "< l# : bit (2) > < t# : bit (val(l#) + 1) >",
        "{ 1 < w# : < i : bit > { 0 | 1 < j : bit > } > } ** 0",
        "{ 0 < m# : null > | 1 < f# : 10 > }",
        "< y# : bit (3) > exclude 000",
    };
    for (std::string& item : items) {
        for (std::size_t at = item.find('#'); at != std::string::npos; at = item.find('#')) {
            item.replace(at, 1, number);
        }
    }
    return items;
}

/// Decodes and encodes every bit string of up to `most` bits.
void CheckRoundTrips(const std::string& body, std::size_t most, std::size_t& count) {
    Grammar grammar("< t > ::= " + body + " ;");
    ASSERT_EQ(grammar.Errors(), "") << body;
    const csn::CsnStructure& structure = grammar.Structure();
    bits::Arena arena;
    for (std::size_t length = 0; length <= most; ++length) {
        for (std::uint32_t value = 0; value < 1U << length; ++value) {
            const std::vector<std::uint8_t> octets = {
                static_cast<std::uint8_t>(value << (16 - length) >> 8),
                static_cast<std::uint8_t>(value << (16 - length))};
            const auto width = static_cast<std::int32_t>(length);
            bits::Cell record{};
            const bits::BitReader reader(octets.data(), 2);
            if (csn::DecodeCsn(structure, reader, arena, 0, width, record) != width) {
                continue;
            }
            std::vector<std::uint8_t> written(8, 0);
            bits::BitWriter writer(written.data(), 8);
            const bits::Outcome result = csn::EncodeCsn(structure, writer, 0, record);
            ASSERT_EQ(result, width) << body << "\n" << BitsOf(octets, width);
            ASSERT_EQ(BitsOf(written, width), BitsOf(octets, width)) << body;
            ++count;
        }
        arena.Reset();
    }
}

TEST(CsnRoundTrip, SmallGrammars) {
    std::size_t count = 0;
    for (const std::string& first : Items("1")) {
        CheckRoundTrips(first, 12, count);
        for (const std::string& second : Items("2")) {
            CheckRoundTrips(first + " " + second, 10, count);
            for (const std::string& third : Items("3")) {
                CheckRoundTrips(first + " " + second + " " + third, 7, count);
            }
        }
    }
    EXPECT_GT(count, 10000U);
}

/// Decodes `bits` and gives what encoding writes of the record.
std::string Rewritten(const std::string& rules, const std::string& bits) {
    Grammar grammar(rules);
    EXPECT_EQ(grammar.Errors(), "");
    const std::vector<std::uint8_t> octets = OctetsOf(bits);
    const bits::BitReader reader(octets.data(), static_cast<std::int64_t>(octets.size()));
    bits::Arena arena;
    bits::Cell record{};
    const auto width = static_cast<std::int32_t>(bits.size());
    EXPECT_EQ(csn::DecodeCsn(grammar.Structure(), reader, arena, 0, width, record), width);
    std::vector<std::uint8_t> written(16, 0);
    bits::BitWriter writer(written.data(), 16);
    const bits::Outcome result = csn::EncodeCsn(grammar.Structure(), writer, 0, record);
    return result.Failed() ? "not written"
                           : BitsOf(written, static_cast<std::int32_t>(result.Bits()));
}

// Every branch of a choice is written in an open repetition, and each repetition ends.
TEST(CsnRoundTrip, ChoicesInOpenRepetitions) {
    const std::string list = "< t > ::= { 1 { 0 < a : bit > | 1 < b : bit (2) > } } ** 0 ;";
    EXPECT_EQ(Rewritten(list, "0"), "0");
    EXPECT_EQ(Rewritten(list, "1010"), "1010");
    EXPECT_EQ(Rewritten(list, "11100"), "11100");
    EXPECT_EQ(Rewritten(list, "10110011010"), "10110011010");
    const std::string gaps = "< t > ::= { 1 { 0 | 1 < a : bit > } } ** 0 ;";
    EXPECT_EQ(Rewritten(gaps, "1111100"), "1111100");
    // Entries without an item are not in the record.
    EXPECT_EQ(Rewritten(gaps, "101110"), "1110");
    EXPECT_EQ(Rewritten("< t > ::= < r > ;\n< r > ::= { 1 < s > } ** 0 ;\n"
                        "< s > ::= { 0 < a : bit > | 1 < b : bit > } ;",
                        "1001110"),
              "1001110");
}

TEST(CsnRoundTrip, PaddingIsWrittenToTheOctet) {
    const std::string burst = "< t > ::= 001 < a : bit (2) > { L | H } ** write (octet_end()) ;";
    EXPECT_EQ(Rewritten(burst, "00110"), "00110011");
    EXPECT_EQ(Rewritten(burst, "001101111111"), "00110011");
}

TEST(CsnRoundTrip, WhatIsLeftOutIsNotWritten) {
    EXPECT_EQ(Rewritten("< t > ::= < a : bit > bit ** = < no string > ;", "1010"), "1");
    EXPECT_EQ(Rewritten("< t > ::= < a : bit > bit (2) = 11 ;", "100"), "111");
    const std::string cause = "< t > ::= < a : bit (2) = { 00 | 10 } > ;";
    EXPECT_EQ(Rewritten(cause, "10"), "10");
    EXPECT_EQ(Rewritten(cause, "01"), "not written");
}

TEST(CsnRoundTrip, ErrorBranches) {
    const std::string both = "< t > ::= { 1 < a : bit > ! < e : bit ** > } ;";
    EXPECT_EQ(Rewritten(both, "11"), "11");
    EXPECT_EQ(Rewritten(both, "0110"), "0110");
    EXPECT_EQ(Rewritten("< t > ::= { 1 < a : bit > ! read < e : bit ** > } ;", "0110"),
              "not written");
}

TEST(CsnRoundTrip, LengthsAreWrittenBack) {
    const std::string scope =
        "< t > ::= < a : bit > < n : bit (7) > @writing note(x) @reading open_behind_length(y, 7) "
        "{ 1 < b : bit > } ** bit ** = < no string > @writing write_back(x, 7, 0, 7) "
        "@reading close(y) < c : bit > ;";
    EXPECT_EQ(Rewritten(scope,
                        "1"
                        "0000100"
                        "1110"
                        "1"),
              "1"
              "0000100"
              "1110"
              "1");
    // Two spare bits in the section are not written, and the length says so.
    EXPECT_EQ(Rewritten(scope,
                        "0"
                        "0000100"
                        "1100"
                        "1"),
              "0"
              "0000010"
              "11"
              "1");
}

}  // namespace
}  // namespace quorvane::reference
