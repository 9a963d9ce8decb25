#include "tools/function_name.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace quorvane::tool {
namespace {

char Lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A'))
                                                : character;
}

bool SameLetter(char left, char right) {
    return Lower(left) == Lower(right);
}

/// How many letters have to be put in, taken out, replaced or exchanged with the next one to make
/// one text the other.
std::size_t EditDistance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last;
    std::vector<std::size_t> row(to.size() + 1);
    for (std::size_t column = 0; column <= to.size(); ++column) {
        row[column] = column;
    }
    for (std::size_t line = 1; line <= from.size(); ++line) {
        beforeLast = last;
        last = row;
        row[0] = line;
        for (std::size_t column = 1; column <= to.size(); ++column) {
            const bool same = SameLetter(from[line - 1], to[column - 1]);
            row[column] = std::min(
                {last[column] + 1, row[column - 1] + 1, last[column - 1] + (same ? 0U : 1U)});
            if (line > 1 && column > 1 && SameLetter(from[line - 1], to[column - 2]) &&
                SameLetter(from[line - 2], to[column - 1])) {
                row[column] = std::min(row[column], beforeLast[column - 2] + 1);
            }
        }
    }
    return row.back();
}

}  // namespace

std::optional<Decoding> FindFunction(std::string_view name) {
    if (const auto decoding = FindDecoding(name)) {
        return decoding;
    }
    for (const DecodingInfo& info : Decodings()) {
        if (std::ranges::equal(info.name, name, SameLetter)) {
            return info.decoding;
        }
    }
    return std::nullopt;
}

std::string NearestFunctions(std::string_view name) {
    constexpr std::size_t kLongest = 64;
    if (name.size() > kLongest) {
        return {};
    }
    std::size_t least = std::max<std::size_t>(name.size() / 3, 1);
    std::string nearest;
    for (const DecodingInfo& info : Decodings()) {
        const std::size_t distance = EditDistance(name, info.name);
        if (distance < least) {
            nearest.clear();
        }
        if (distance <= least) {
            least = distance;
            nearest.append(nearest.empty() ? "" : " or ").append(info.name);
        }
    }
    return nearest;
}

std::string UnknownFunction(std::string_view name) {
    const std::string nearest = NearestFunctions(name);
    std::string words = "unknown function '" + std::string(name) + "'";
    return nearest.empty() ? words : words + "; the nearest is " + nearest;
}

}  // namespace quorvane::tool
