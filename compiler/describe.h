#pragma once

// The whole run of the description compiler, from texts to text.

#include <string>
#include <vector>

namespace quorvane::compiler {

struct Source {
    std::string name;  // its ending tells the notation: .qd or .csn1
    std::string text;
};

struct Description {
    std::string code;    // C++, empty if there are errors
    std::string errors;  // lines `name:line:column: error: message`
};

/// Compiles the descriptions of one family.
Description Describe(const std::vector<Source>& sources);

}  // namespace quorvane::compiler
