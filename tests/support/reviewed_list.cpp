#include "support/reviewed_list.h"

#include <fstream>

namespace quorvane::test {

std::map<std::string, std::string> ReadReviewedList(const std::filesystem::path& path,
                                                    std::vector<std::string>& problems) {
    std::map<std::string, std::string> reviewed;
    std::ifstream in(path);
    if (!in) {
        problems.push_back("not readable: " + path.string());
    }
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line.starts_with('#')) {
            continue;
        }
        const std::size_t colon = line.find(": ");
        if (colon == std::string::npos || colon + 2 == line.size()) {
            problems.push_back("no reason: " + line);
        } else if (!reviewed.emplace(line.substr(0, colon), line.substr(colon + 2)).second) {
            problems.push_back("named twice: " + line);
        }
    }
    return reviewed;
}

}  // namespace quorvane::test
