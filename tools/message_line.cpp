#include "tools/message_line.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "tools/function_name.h"
#include "tools/hex.h"

namespace quorvane::tool {
namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr const char* kForm = "expected FUNCTION LENGTH HEX";

std::string_view CutWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
    text.remove_prefix(word.size());
    return word;
}

/// Whether `length` may be octets that no LENGTH goes ahead of: the groups of digits behind it are
/// as long as it is, but for the last one.
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

}  // namespace

std::string ParseMessageLine(std::string_view line, MessageLine& message,
                             std::vector<std::uint8_t>& octets) {
    message.function = CutWord(line);
    const std::string_view length = CutWord(line);
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    message.hex = line.substr(0, line.find_last_not_of(kBlanks) + 1);  // npos + 1 is 0
    if (length.empty()) {
        return kForm;
    }
    const std::optional<Decoding> decoding = FindFunction(message.function);
    if (!decoding) {
        return UnknownFunction(message.function);
    }
    message.decoding = *decoding;
    const char* lengthEnd = length.data() + length.size();
    const auto [parsedEnd, status] = std::from_chars(length.data(), lengthEnd, message.length);
    if (status != std::errc() || parsedEnd != lengthEnd) {
        return "LENGTH, '" + std::string(length) + "' is not a whole number of 32 bits";
    }
    if (message.hex.empty() && message.length > 0) {
        return kForm;
    }
    const std::string problem = ParseHex(message.hex, octets);
    if (!problem.empty()) {
        return "HEX, " + problem;
    }
    const bool isCount = length.front() != '0' && std::cmp_equal(message.length, octets.size());
    if (!isCount && ReadsAsHex(length, message.hex)) {
        return "LENGTH, '" + std::string(length) +
               "' reads as the first octets of HEX; the length in octets goes ahead of them";
    }
    return {};
}

}  // namespace quorvane::tool
