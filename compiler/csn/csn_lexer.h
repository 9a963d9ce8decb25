#pragma once

// Tokens of a CSN.1 description (.csn1). Names in angle brackets are one token, blanks included.

#include <string>
#include <vector>

#include "compiler/csn/csn_reporter.h"

namespace quorvane::compiler {

struct CsnToken {
    enum class Kind {
        kField,      // "< NAME :", `text` is the name
        kReference,  // "< NAME >", `text` is the name
        kValue,      // "val(NAME)", "p(NAME)" or "q(NAME)": `text` is the name, `function` the word
        kWord,       // letters, digits and underscores, not all of them digits
        kDigits,     // digits: bits or a number, as the place has it
        kText,       // a text in double quotes
        kMark,       // any other sign
        kEnd,
    };

    Kind kind;
    std::string text;
    std::string function;
    Span place;
};

/// The tokens of a file, a kEnd last. Comments run from -- to the end of the line.
std::vector<CsnToken> LexCsn(CsnReporter& reporter, std::uint32_t file);

}  // namespace quorvane::compiler
