#pragma once

// Walking over the tokens of a file, with the checks that every part of a parser needs.

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "compiler/lexer.h"
#include "compiler/number.h"

namespace quorvane::compiler {

/// The number that the digits write, if they are digits. One that is too large is reported and
/// becomes kUnknownNumber.
std::optional<WideNumber> ParseDigits(Reporter& reporter, std::string_view digits, int base,
                                      Span span);

class TokenStream {
  public:
    using Kind = Token::Kind;

    TokenStream(Reporter& reporter, std::uint32_t file, const Notation& notation)
        : reporter_(reporter), tokens_(Lex(reporter, file, notation)), decimal_(notation.isCsn) {}

    [[nodiscard]] const Token& Peek(std::size_t ahead = 0) const {
        return tokens_[std::min(position_ + ahead, tokens_.size() - 1)];
    }
    const Token& Next();

    [[nodiscard]] bool At(Kind kind) const { return Peek().kind == kind; }
    /// At this sign or word.
    [[nodiscard]] bool At(std::string_view text) const {
        return (At(Kind::kSign) || AtWord()) && Peek().text == text;
    }
    [[nodiscard]] bool AtWord() const { return At(Kind::kWord) || At(Kind::kDigits); }
    [[nodiscard]] bool AtLineEnd() const { return At(Kind::kLineEnd) || AtEnd(); }
    [[nodiscard]] bool AtEnd() const { return At(Kind::kEnd); }

    /// Takes the sign or word if it is this one.
    bool Accept(std::string_view text);
    /// The same, and reports what was expected if it is not.
    bool Expect(std::string_view text);

    /// A name; `what` says what for.
    Name ExpectName(std::string_view what);
    /// A decimal number, or in a .qd file a hexadecimal one with 0x in front; unknown after an
    /// error.
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

    void Error(Span span, std::string message) { reporter_.Error(span, std::move(message)); }
    /// "X is expected here, not Y" at the token, and `advice` behind it; see Fail.
    void ErrorExpected(std::string_view expected, std::string_view advice = {});

    /// An error behind which the entry makes no sense any more. Only the first one of an entry is
    /// told: others are mostly its follow-ups.
    void Fail(Span span, std::string message);
    [[nodiscard]] bool Broken() const { return broken_; }
    void BeginEntry() { broken_ = false; }

    /// From the start of `from` to the end of the token before this one.
    [[nodiscard]] Span SpanFrom(Span from) const;

  private:
    Reporter& reporter_;
    std::vector<Token> tokens_;
    bool decimal_;  // numbers are
    std::size_t position_ = 0;
    bool broken_ = false;
};

}  // namespace quorvane::compiler
