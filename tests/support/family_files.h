#pragma once

// The descriptions of the families, also of those that this build leaves out.

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::test {

/// The family's descriptions with that ending (".qd", ".csn1"), as paths below the tree's root in
/// the order in which they are compiled.
std::vector<std::string> DescriptionsOf(std::string_view family, std::string_view ending);

/// The family's CSN.1 descriptions, all in one.
std::string CsnTextOf(std::string_view family);

/// The names of the family's enumerations.
std::set<std::string> EnumerationsOf(std::string_view family);

/// What a file of the tree holds; empty if there is none.
std::string SourceText(const std::string& path);

}  // namespace quorvane::test
