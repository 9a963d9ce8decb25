#include "compiler/description_files.h"

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace quorvane::compiler {
namespace {

bool ReadFile(const std::string& name, std::string& text) {
    std::ifstream in(name, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    text = content.str();
    return in.good() || (in.eof() && !in.bad());
}

}  // namespace

bool IsDescriptionName(std::string_view name) {
    return name.ends_with(".qd") || name.ends_with(".csn1");
}

std::string ReadDescriptions(const std::string& output, const std::vector<std::string>& names,
                             std::vector<Source>& sources) {
    if (IsDescriptionName(output)) {
        return "OUTPUT is " + output + ", which would be a description; a C++ file goes there";
    }
    std::set<std::filesystem::path> read;
    for (const std::string& name : names) {
        std::error_code error;
        if (std::filesystem::is_directory(name, error)) {
            return "cannot read " + name + ": it is a directory";
        }
        Source source{name, ""};
        if (!ReadFile(name, source.text)) {
            return "cannot read " + name;
        }
        if (!read.insert(std::filesystem::weakly_canonical(name, error)).second) {
            return name + " is given twice";
        }
        sources.push_back(std::move(source));
    }
    return "";
}

}  // namespace quorvane::compiler
