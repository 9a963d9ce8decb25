#pragma once

#include <cstddef>
#include <string_view>

namespace quorvane::tool {

/// Whether two texts are the same but for the case of their letters.
bool EqualsInAnyCase(std::string_view left, std::string_view right);

/// How many letters have to be put in, taken out, replaced or exchanged with the next one to make
/// one text the other, their case aside. Takes time of the product of their lengths.
std::size_t EditDistance(std::string_view from, std::string_view to);

}  // namespace quorvane::tool
