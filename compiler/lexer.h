#pragma once

// Tokens of a description file (.qd). Ends of lines are tokens: an entry of a block is one line.

#include <cstdint>
#include <string_view>
#include <vector>

#include "compiler/reporter.h"

namespace quorvane::compiler {

struct Token {
    enum class Kind {
        kWord,  // letters, digits, underscores, and "::" inside
        kText,  // a text in double quotes; `text` is what stands between them
        kMark,  // one of { } [ ] : = - ? & ,
        kLineEnd,
        kEnd,
    };

    Kind kind;
    std::string_view text;
    Span place;
};

/// The tokens of a file, a kEnd last. Comments run from // to the end of the line. Runs of line
/// ends are one token.
std::vector<Token> Lex(Reporter& reporter, std::uint32_t file);

}  // namespace quorvane::compiler
