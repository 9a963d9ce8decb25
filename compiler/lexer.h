#pragma once

// Tokens of the description files, in both notations.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "compiler/reporter.h"

namespace quorvane::compiler {

/// What sets the notations apart.
struct Notation {
    std::string_view comment;  // starts one, which runs to the end of the line
    std::string_view signs;    // those of one character
    bool entriesAreLines;      // ends of lines are tokens, a run of them one
    bool isCsn;                // names in angle brackets, val(NAME), signs of several characters,
                               // decimal numbers alone
};

/// Files .qd: docs/description-notation.md.
inline constexpr Notation kDescriptionNotation = {"//", "{}[]:=-?&,.", true, false};
/// Files .csn1: docs/csn1-notation.md.
inline constexpr Notation kCsnNotation = {"--", "<>{}()[]|!&-+*=:;,@", false, true};

struct Token {
    enum class Kind {
        kWord,       // letters, digits, underscores, and "::" inside; not digits alone
        kDigits,     // digits: bits or a number, depending on context
        kText,       // a text in double quotes; `text` is what stands between them
        kSign,       // any other sign
        kField,      // "< NAME :", `text` is the name
        kReference,  // "< NAME >", `text` is the name
        kValue,      // "val(NAME)", `text` is the name
        kLineEnd,
        kEnd,
    };

    Kind kind;
    std::string text;
    Span span;
    bool cut = false;  // kText: the closing quote is missing, the rest of the line belongs to it
};

/// The tokens of a file, a kEnd last.
std::vector<Token> Lex(Reporter& reporter, std::uint32_t file, const Notation& notation);

}  // namespace quorvane::compiler
