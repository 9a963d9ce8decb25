#pragma once

// Reviewed exceptions: a file with lines "name: reason", '#' starting a comment line. A test fails
// for what is not named there, and for a name that it no longer needs.

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace quorvane::test {

/// The reasons by name. Lines of another form are noted as problems.
std::map<std::string, std::string> ReadReviewedList(const std::filesystem::path& path,
                                                    std::vector<std::string>& problems);

}  // namespace quorvane::test
