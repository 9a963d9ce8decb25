#pragma once

// Reads counts, "bit (val(Length) + 1)" and the like, and arguments of actions.

#include "compiler/csn/csn_syntax.h"
#include "compiler/csn/csn_tokens.h"

namespace quorvane::compiler {

class CsnCountParser {
  public:
    explicit CsnCountParser(CsnTokens& tokens) : tokens_(tokens) {}

    /// A number, val(NAME), or an expression in parentheses.
    CsnCount Operand();

    /// What may stand in the parentheses: a sum, difference or product of val(NAME) and a number,
    /// or one of the functions.
    CsnCount Expression();

    /// A number or the name of a variable.
    CsnArgument Argument();

  private:
    struct Term;
    Term ReadTerm();
    CsnCount Function();
    CsnCount Combine(const Term& left, char sign, const Term& right, Span place);

    CsnTokens& tokens_;
};

}  // namespace quorvane::compiler
