#pragma once

// Reads counts, "bit (val(Length) + 1)" and the like, and arguments of actions.

#include "compiler/csn/csn_syntax.h"
#include "compiler/token_stream.h"

namespace quorvane::compiler {

/// Widest run of bits that may stand in one place.
inline constexpr std::uint32_t kMostBits = 1U << 20;

class CsnCountParser {
  public:
    CsnCountParser(Reporter& reporter, TokenStream& tokens, const CsnFunctions& functions)
        : reporter_(reporter), tokens_(tokens), functions_(functions) {}

    /// A number of up to `most`.
    std::uint32_t Number(std::uint32_t most = 0x7FFFFFFF);

    /// A number, val(NAME), or an expression in parentheses.
    CsnCount Operand();

    /// What may stand in the parentheses: a sum, difference or product of val(NAME) and a number,
    /// or one of the functions.
    CsnCount Expression();

    /// A count or the name of a variable.
    CsnArgument Argument();

  private:
    struct Term;
    Term ReadTerm();
    CsnCount Function();
    CsnCount Combine(const Term& left, char sign, const Term& right, Span span);

    Reporter& reporter_;
    TokenStream& tokens_;
    const CsnFunctions& functions_;  // those that descriptions declare
};

}  // namespace quorvane::compiler
