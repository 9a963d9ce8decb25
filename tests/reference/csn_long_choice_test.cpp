// Choices whose code is longer than a jump reaches: wherever their joins fall, the machine reads by
// them what the reference reads, and writes it again.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "bits/arena.h"
#include "bits/record.h"
#include "csn/csn_record.h"
#include "reference/csn_grammar.h"
#include "reference/csn_reference.h"

namespace quorvane::reference {
namespace {

// Four octets of code.
constexpr const char* kLiteral = "1010110011110001";

std::string Repeated(const std::string& text, std::size_t times) {
    std::string result;
    result.reserve(text.size() * times);
    for (; times > 0; --times) {
        result += text;
    }
    return result;
}

/// Fixed bits that take about as many octets of code.
std::string Fill(std::size_t octets) {
    return Repeated(kLiteral, octets / 4);
}

/// Unnamed bits of one octet of code each.
std::string Shift(std::size_t octets) {
    return Repeated("bit ", octets);
}

/// What encoding writes of the record that decoding makes of `bits`.
std::string Rewritten(Grammar& grammar, const std::string& bits) {
    const std::vector<std::uint8_t> octets = OctetsOf(bits);
    const bits::BitReader reader(octets.data(), static_cast<std::int64_t>(octets.size()));
    bits::Arena arena;
    bits::Cell record{};
    const auto width = static_cast<std::int32_t>(bits.size());
    const bits::Outcome read = csn::DecodeCsn(grammar.Structure(), reader, arena, 0, width, record);
    std::vector<std::uint8_t> written(octets.size() + 8, 0);
    bits::BitWriter writer(written.data(), static_cast<std::int64_t>(written.size()));
    const bits::Outcome result = csn::EncodeCsn(grammar.Structure(), writer, 0, record);
    return read != width     ? "not read"
           : result.Failed() ? "not written"
                             : BitsOf(written, static_cast<std::int32_t>(result.Bits()));
}

/// Reads each message, and the same cut in the middle and one bit short.
void Check(const std::string& rules, std::size_t octets, const std::vector<std::string>& messages) {
    Grammar grammar(rules);
    ASSERT_EQ(grammar.Errors(), "");
    EXPECT_GE(grammar.Image().code.size(), octets);
    // What helps jumps over the distance is little.
    EXPECT_LE(grammar.Image().code.size(), octets + octets / 100 + 250);
    Reference reference(grammar.Entry());
    for (const std::string& message : messages) {
        const std::size_t length = message.size();
        for (const std::size_t taken : {length, length / 2, length - 1}) {
            const std::string bits = message.substr(0, taken);
            const Reading expected = reference.Read(bits);
            const Reading actual = grammar.Decode(bits);
            ASSERT_EQ(actual.matches, expected.matches);
            ASSERT_EQ(actual.events, expected.events);
            ASSERT_EQ(actual.taken, expected.matches ? expected.taken : -1);
        }
        EXPECT_TRUE(Rewritten(grammar, message) == message) << "is written otherwise";
    }
}

/// Two branches of that many octets together, and a short one.
void CheckTwoLongBranches(std::size_t octets, std::size_t shift) {
    SCOPED_TRACE(std::to_string(octets) + " octets behind " + std::to_string(shift));
    const std::string fill = Fill(octets / 2);
    const std::string start = Repeated("0", shift);
    Check("< t > ::= " + Shift(shift) + "{ 1 " + fill + " < a : bit > 1 | 1 " + fill +
              " < b : bit (2) > | 0 < c : bit > } < d : bit (3) > ;",
          octets, {start + "1" + fill + "11101", start + "1" + fill + "10101", start + "01101"});
}

TEST(CsnLongChoice, OfAnyLengthAtAnyPlace) {
    for (const std::size_t octets : {3000U, 4080U, 4096U, 8192U, 20000U, 36800U, 36900U, 73800U}) {
        for (std::size_t shift = 0; shift < 8; ++shift) {
            CheckTwoLongBranches(octets, shift);
        }
    }
    for (const std::size_t shift : {0U, 3U}) {
        CheckTwoLongBranches(200000, shift);
    }
}

// Around the length from which a jump is too short, octet by octet.
TEST(CsnLongChoice, JustTooLong) {
    for (std::size_t shift = 0; shift < 40; ++shift) {
        SCOPED_TRACE(shift);
        const std::string fill = Fill(4060);
        const std::string some = Repeated("0", shift);
        Check("< t > ::= { 1 " + fill + " < a : bit > " + Shift(shift) +
                  "| 0 < c : bit > } < d : bit > ;",
              4060, {"1" + fill + "1" + some + "0", "011"});
    }
}

TEST(CsnLongChoice, OfManyBranches) {
    for (const std::size_t each : {20U, 200U, 800U}) {
        SCOPED_TRACE(each);
        std::string rules = "< t > ::= {";
        std::vector<std::string> messages;
        for (std::size_t branch = 0; branch < 256; ++branch) {
            std::string number;
            for (int bit = 7; bit >= 0; --bit) {
                number += (branch >> bit & 1U) != 0 ? '1' : '0';
            }
            rules += (branch == 0 ? " " : " | ") + number + Fill(each) + " < f" +
                     std::to_string(branch) + " : bit >";
            if (branch % 17 == 0) {
                messages.push_back(number + Fill(each) + "1010");
            }
        }
        Check(rules + " } < g : bit (3) > ;", 256 * (each + 10), messages);
    }
}

TEST(CsnLongChoice, InEachOther) {
    for (const std::size_t each : {1500U, 4500U, 14000U, 40000U}) {
        SCOPED_TRACE(each);
        const std::string fill = Fill(each);
        Check("< t > ::= { 1 " + fill + " { 1 " + fill + " { 1 " + fill +
                  " < a : bit > | 0 < b : " + "bit > } " + fill +
                  " | 0 < c : bit > } | 0 < d : bit > } < e : bit > ;",
              4 * each,
              {"1" + fill + "1" + fill + "1" + fill + "1" + fill + "0",
               "1" + fill + "1" + fill + "01" + fill + "1", "1" + fill + "011", "001"});
    }
}

TEST(CsnLongChoice, InOtherConstructs) {
    for (const std::size_t each : {1500U, 4500U, 14000U, 40000U}) {
        SCOPED_TRACE(each);
        const std::string fill = Fill(each);
        Check("< t > ::= { < a : bit > " + fill + " < b : bit > " + fill + " < c : bit > } // ;",
              2 * each, {"0" + fill + "1" + fill + "0"});
        Check("< t > ::= { 1 " + fill + " < a : bit > ! < e : bit (7) > } < f : bit > ;", each,
              {"1" + fill + "11", "01010101", "11111111"});
        Check("< t > ::= { 1 { 0 " + fill + " < a : bit > | 1 < b : bit > } } ** 0 ;", each,
              {"10" + fill + "1" + "10" + fill + "0" + "110" + "0", "0"});
        Check("< t > ::= { 1 " + fill + " < x : bit > | 0 { < a : bit (2) > " + fill +
                  " } - 11 } < f : bit > ;",
              2 * each, {"010" + fill + "1", "1" + fill + "10"});
    }
}

}  // namespace
}  // namespace quorvane::reference
