#include "tools/edit_distance.h"

#include <algorithm>
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

}  // namespace

bool EqualsInAnyCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), SameLetter);
}

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

}  // namespace quorvane::tool
