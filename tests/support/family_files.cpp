#include "support/family_files.h"

#include <fstream>
#include <iterator>
#include <sstream>

namespace quorvane::test {
namespace {

struct FamilyFiles {
    std::string_view family;
    std::vector<std::string_view> descriptions;
};

const std::vector<FamilyFiles>& AllFiles() {
#define QUORVANE_FAMILY(variable, name, title, ...) {name, {__VA_ARGS__}},
#define QUORVANE_LEFT_OUT_FAMILY(name, title, ...) {name, {__VA_ARGS__}},
    static const std::vector<FamilyFiles> kFiles = {
#include "families/family_list.def"
    };
#undef QUORVANE_FAMILY
#undef QUORVANE_LEFT_OUT_FAMILY
    return kFiles;
}

}  // namespace

std::vector<std::string> DescriptionsOf(std::string_view family, std::string_view ending) {
    std::vector<std::string> paths;
    for (const FamilyFiles& files : AllFiles()) {
        for (const std::string_view path : files.descriptions) {
            if (files.family == family && path.ends_with(ending)) {
                paths.emplace_back(path);
            }
        }
    }
    return paths;
}

std::string CsnTextOf(std::string_view family) {
    std::string text;
    for (const std::string& path : DescriptionsOf(family, ".csn1")) {
        text += SourceText(path);
    }
    return text;
}

std::set<std::string> EnumerationsOf(std::string_view family) {
    std::set<std::string> names;
    for (const std::string& path : DescriptionsOf(family, ".qd")) {
        std::istringstream lines(SourceText(path));
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("enum ")) {
                names.insert(line.substr(5, line.find(' ', 5) - 5));
            }
        }
    }
    return names;
}

std::string SourceText(const std::string& path) {
    std::ifstream in(std::string(QUORVANE_SOURCE_DIR "/") + path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace quorvane::test
