#include "reference/csn_random_grammar.h"

#include <array>

namespace quorvane::reference {

std::string RandomGrammar::Next() {
    counters_ = 0;
    std::string text;
    const std::uint32_t rules = Below(3);
    rules_ = rules;
    text += "< t > ::= " + Expression(4);
    // Each rule is referred to at least once.
    for (std::uint32_t rule = 1; rule <= rules; ++rule) {
        text += " < r" + std::to_string(rule) + " >";
    }
    text += " ;\n";
    for (std::uint32_t rule = 1; rule <= rules; ++rule) {
        rules_ = rule - 1;
        const std::string self = "< r" + std::to_string(rule) + " >";
        text += self + " ::= " + Expression(3);
        text += Below(3) == 0 ? " { 0 | 1 " + self + " }" : "";
        text += " ;\n";
    }
    return text;
}

std::string RandomGrammar::Bits(std::uint32_t most, std::uint32_t ones) {
    std::string bits;
    for (std::uint32_t left = Below(most + 1); left > 0; --left) {
        bits += Below(8) < ones ? '1' : '0';
    }
    return bits;
}

/// A name always has the same width, so that its fields are counted together.
std::string RandomGrammar::Leaf() {
    static constexpr std::array<const char*, 16> kLeaves = {"0",
                                                            "1",
                                                            "L",
                                                            "H",
                                                            "01",
                                                            "1 L 0",
                                                            "bit",
                                                            "bit (3)",
                                                            "null",
                                                            "< a : bit >",
                                                            "< b : bit (2) >",
                                                            "< c : 1 >",
                                                            "< d : 01 >",
                                                            "< e : { 00 | 1 } >",
                                                            "< f : { L | H } >",
                                                            "< m : null >"};
    return kLeaves[Below(kLeaves.size())];
}

std::string RandomGrammar::Repetition(int depth) {
    const std::string body = Expression(depth);
    switch (Below(7)) {
        case 0:
            return "{ " + body + " } * 2";
        case 1:
            return "{ " + body + " } * (1..3)";
        case 2:
            return "{ 1 " + body + " } * (0..2)";
        case 3:
            return "{ 1 < a : bit > " + body + " } **";
        case 4:
            return "{ 0 " + body + " } ** = < no string >";
        case 5:
            return "{ 1 " + body + " } ** write (octet_end()) 0";
        default:
            break;
    }
    const std::string name = "n" + std::to_string(++counters_);
    return "< " + name + " : bit (2) > { " + body + " } * (val(" + name + "))";
}

std::string RandomGrammar::Expression(int depth) {
    if (depth == 0) {
        return Leaf();
    }
    const auto inner = [&] { return Expression(depth - 1); };
    switch (Below(16)) {
        case 0:
        case 1:
        case 2:
            return inner() + " " + inner();
        case 3:
            return "{ 0 " + inner() + " | 1 " + inner() + " }";
        case 4:
            return "{ " + inner() + " | " + inner() + " | " + inner() + " }";
        case 5:
            return "{ [in order] " + inner() + " | " + inner() + " }";
        case 6:
            return "{ " + inner() + (Below(2) == 0 ? " ! read " : " ! ") + inner() + " }";
        case 7:
        case 8:
            return Repetition(depth - 1);
        case 9:
            return "{ " + inner() + " " + inner() + " " + inner() + " } //";
        case 10:
            return "{ " + inner() + " } & { " + inner() + " }";
        case 11:
            return "{ " + inner() + " } exclude { 11 | 0 }";
        case 12:
            return "< g : < a : bit > " + inner() + " >";
        case 13:
            return "< k : bit (3) > in 2..5 " + inner();
        case 14:
            return rules_ == 0 ? inner() : "< r" + std::to_string(1 + Below(rules_)) + " >";
        default:
            break;
    }
    return Leaf();
}

}  // namespace quorvane::reference
