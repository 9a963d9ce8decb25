#pragma once

// Walking over the tokens of a file, with the checks that every part of the parser needs.

#include <optional>
#include <string>
#include <vector>

#include "compiler/lexer.h"
#include "compiler/syntax.h"

namespace quorvane::compiler {

/// The number that the digits tell, if they are digits; one with too many is the largest there is.
std::optional<WideNumber> ParseDigits(std::string_view digits, int base, Span place);

class TokenStream {
  public:
    TokenStream(Reporter& reporter, std::uint32_t file)
        : reporter_(reporter), tokens_(Lex(reporter, file)) {}

    [[nodiscard]] const Token& Peek(std::size_t ahead = 0) const {
        return tokens_[std::min(position_ + ahead, tokens_.size() - 1)];
    }
    const Token& Next();

    [[nodiscard]] bool At(std::string_view text) const {
        return Peek().kind != Token::Kind::kText && Peek().text == text &&
               Peek().kind != Token::Kind::kLineEnd;
    }
    [[nodiscard]] bool AtWord() const { return Peek().kind == Token::Kind::kWord; }
    [[nodiscard]] bool AtLineEnd() const { return Peek().kind == Token::Kind::kLineEnd || AtEnd(); }
    [[nodiscard]] bool AtEnd() const { return Peek().kind == Token::Kind::kEnd; }

    /// Takes the token if it is this one.
    bool Accept(std::string_view text);
    /// The same, and reports what was expected if it is not.
    bool Expect(std::string_view text);

    /// A name; `what` says what for.
    Name ExpectName(std::string_view what);
    /// A decimal number, or a hexadecimal one with 0x in front.
    WideNumber ExpectNumber(std::string_view what);
    /// Digits of a hexadecimal number without a prefix.
    WideNumber ExpectHexadecimal(std::string_view what);
    /// A number if one stands here.
    std::optional<WideNumber> AcceptNumber();

    /// The end of an entry; what stands before it is reported and passed over.
    void ExpectLineEnd();
    /// Passes over line ends.
    void SkipLineEnds();
    /// Passes over the rest of the line, blocks that open on it included.
    void SkipEntry();

    void Error(Span place, std::string message) { reporter_.Error(place, std::move(message)); }
    /// "X is expected here, not Y" at the token.
    void ErrorExpected(std::string_view expected);

  private:
    Reporter& reporter_;
    std::vector<Token> tokens_;
    std::size_t position_ = 0;
};

}  // namespace quorvane::compiler
