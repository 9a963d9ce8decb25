#include "tools/message_line.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "tools/function_name.h"
#include "tools/hex.h"
#include "tools/octet_text.h"

namespace quorvane::tool {
namespace {

constexpr std::string_view kMarks = ",;:";
constexpr const char* kForm = "expected FUNCTION LENGTH HEX, or FUNCTION HEX";

// Blanks are looked for one by one: find_first_of calls a function for each character.
bool IsBlank(char character) {
    return character == ' ' || character == '\t' || character == '\r';
}

void CutBlanks(std::string_view& text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
}

std::string_view WithoutBlanks(std::string_view text) {
    CutBlanks(text);
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::string_view CutWord(std::string_view& text) {
    const char* const end = text.data() + text.size();
    const char* const first = std::find_if_not(text.data(), end, IsBlank);
    const char* const last = std::find_if(first, end, IsBlank);
    text = {last, static_cast<std::size_t>(end - last)};
    return {first, static_cast<std::size_t>(last - first)};
}

std::string_view WithoutMark(std::string_view word) {
    return word.substr(0, word.find_last_not_of(kMarks) + 1);
}

bool AreDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char each) { return DigitOf(each).has_value(); });
}

/// Whether `length` may be octets that no LENGTH goes ahead of: the words behind it are as long as
/// it is, but for the last one.
bool ReadsAsHex(std::string_view length, std::string_view hex) {
    if (length.size() % 2 != 0 || length.front() == '-') {
        return false;
    }
    while (!hex.empty()) {
        const std::size_t size = CutWord(hex).size();
        if (hex.empty() ? size > length.size() : size != length.size()) {
            return false;
        }
    }
    return true;
}

/// Whether all words of a text have the form of the first one: digits at the same places, and the
/// same characters elsewhere. The last one may be shorter and have no mark at its end.
bool AreAlike(std::string_view text) {
    const std::string_view first = CutWord(text);
    const auto sameForm = [](char left, char right) {
        return left == right || (DigitOf(left) && DigitOf(right));
    };
    while (!text.empty()) {
        std::string_view word = CutWord(text);
        std::string_view form = first;
        if (text.empty()) {
            word = WithoutMark(word);
            form = WithoutMark(form);
            form = AreDigits(form) ? form.substr(0, word.size()) : form;
        }
        if (!std::equal(form.begin(), form.end(), word.begin(), word.end(), sameForm)) {
            return false;
        }
    }
    return true;
}

/// The digits of a word that may be a number: in any base, with or without a mark behind it.
/// Nothing of other words.
std::string_view DigitsOf(std::string_view word) {
    word = WithoutMark(word);
    if (word.starts_with("0x") || word.starts_with("0X")) {
        word.remove_prefix(2);
    } else if (word.ends_with('h') || word.ends_with('H')) {
        word.remove_suffix(1);
    }
    return AreDigits(word) ? word : std::string_view();
}

/// Whether digits are such as people write numbers with.
bool IsNumber(std::string_view digits) {
    return digits.size() > 2 && digits.front() != '0' &&
           digits.find_first_not_of("0123456789") == std::string_view::npos;
}

/// The text behind FUNCTION, and its parts if it begins with LENGTH.
struct Text {
    std::string_view whole;
    std::string_view first;                             // its first word
    std::string_view behind;                            // the rest
    std::optional<std::int32_t> number = std::nullopt;  // that the first word is, if it is one

    explicit Text(std::string_view text) : whole(text), behind(text) {
        first = CutWord(behind);
        CutBlanks(behind);
        std::int32_t value = 0;
        const char* last = first.data() + first.size();
        const auto [end, status] = std::from_chars(first.data(), last, value);
        if (status == std::errc() && end == last) {
            number = value;
        }
    }

    [[nodiscard]] bool HasLeadingZero() const { return first.front() == '0'; }

    /// A number that is as many as there are octets behind it.
    [[nodiscard]] bool IsCount(std::size_t octets) const {
        return !HasLeadingZero() && std::cmp_equal(*number, octets);
    }
};

std::string Problem(std::string_view part, const std::string& problem) {
    return problem.empty() ? problem : std::string(part) + ", " + problem;
}

/// Reads a text without LENGTH whose first word is no number.
std::string ReadOctets(const Text& text, std::vector<std::uint8_t>& octets) {
    if (text.behind.empty() && ParseHex(text.whole, octets).empty()) {
        return {};  // all digits in one word, as most lines have them
    }
    if (const std::string problem = ParseOctets(text.whole, octets); !problem.empty()) {
        return Problem("HEX", problem);
    }
    const std::string_view digits = DigitsOf(text.first);
    if (text.behind.empty() || digits.empty() || BeginsWithOffset(text.whole)) {
        return {};
    }
    // A LENGTH in hexadecimal, or of more than 32 bits, is none, and must not be taken for octets.
    const bool mayBeCount = digits.size() == 2 && octets.size() - 1 == octets.front();
    return mayBeCount || IsNumber(text.first) || !AreAlike(text.whole) ? DoubtfulLength(text.first)
                                                                       : std::string();
}

/// Reads a number alone.
std::string ReadNumber(const Text& text, std::vector<std::uint8_t>& octets) {
    constexpr std::int32_t kLongest = 65535;
    if (*text.number <= kLongest && (!text.HasLeadingZero() || text.first.size() % 2 != 0)) {
        return text.first.size() % 2 == 0 ? DoubtfulLength(text.first) : kForm;
    }
    return Problem("HEX", ParseOctets(text.whole, octets));
}

/// Reads a text that begins with a number that is not LENGTH for sure, with more behind it.
std::string ReadBehindNumber(const Text& text, MessageLine& message,
                             std::vector<std::uint8_t>& octets) {
    const bool plain = ParseHex(text.behind, octets).empty();
    const std::string problem = plain ? std::string() : ParseOctets(text.behind, octets);
    if (!problem.empty()) {
        // It may be the offset of a dump.
        return BeginsWithOffset(text.whole) && ParseOctets(text.whole, octets).empty()
                   ? std::string()
                   : Problem("HEX", problem);
    }
    const bool noOctets = text.first.size() % 2 != 0 || text.first.front() == '-';
    std::string_view behind = text.behind;
    const bool otherForm =
        !AreDigits(WithoutMark(CutWord(behind))) || (!plain && BeginsWithOffset(text.behind));
    if (noOctets || text.IsCount(octets.size()) || (otherForm && !text.HasLeadingZero())) {
        message.length = *text.number;
        message.hex = text.behind;
        return {};
    }
    const bool isCount = std::cmp_equal(*text.number, octets.size());
    if (!text.HasLeadingZero() || isCount || !AreAlike(text.whole)) {
        return DoubtfulLength(text.first);
    }
    message.hexBehindDoubt = text.behind;
    return Problem("HEX", ParseOctets(text.whole, octets));
}

}  // namespace

std::string ParseMessageLine(std::string_view line, MessageLine& message,
                             std::vector<std::uint8_t>& octets) {
    const std::string_view name = CutWord(line);
    const Text text(WithoutBlanks(line));
    if (text.whole.empty()) {
        return kForm;
    }
    const std::optional<Function> function = FindFunction(name);
    if (!function) {
        return UnknownFunction(name);
    }
    message.function = *function;
    message.hexBehindDoubt.reset();
    const bool complete = text.number && (!text.behind.empty() || *text.number <= 0);
    if (complete && ParseHex(text.behind, octets).empty() &&
        (text.IsCount(octets.size()) || !ReadsAsHex(text.first, text.behind))) {
        message.length = *text.number;
        message.hex = text.behind;
        return {};
    }
    message.hex = {};
    const std::string problem = !text.number          ? ReadOctets(text, octets)
                                : text.behind.empty() ? ReadNumber(text, octets)
                                                      : ReadBehindNumber(text, message, octets);
    if (problem.empty() && message.hex.empty()) {
        message.length = static_cast<std::int32_t>(octets.size());
        message.hex = text.whole;
    }
    return problem;
}

std::string DoubtfulLength(std::string_view digits) {
    return "'" + std::string(digits) +
           "' may be LENGTH or the first octets; write LENGTH ahead of it, or all octets without "
           "blanks";
}

}  // namespace quorvane::tool
