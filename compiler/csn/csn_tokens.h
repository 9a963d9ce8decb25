#pragma once

// Walking over the tokens of a CSN.1 description.

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "compiler/csn/csn_lexer.h"
#include "compiler/csn/csn_syntax.h"

namespace quorvane::compiler {

class CsnTokens {
  public:
    using Kind = CsnToken::Kind;
    static constexpr std::uint32_t kMostNumber = 0x7FFFFFFF;

    CsnTokens(CsnReporter& reporter, std::uint32_t file)
        : reporter_(reporter), tokens_(LexCsn(reporter, file)) {}

    [[nodiscard]] const CsnToken& Peek(std::size_t ahead = 0) const {
        return tokens_[std::min(position_ + ahead, tokens_.size() - 1)];
    }
    [[nodiscard]] bool At(Kind kind) const { return Peek().kind == kind; }
    [[nodiscard]] bool At(Kind kind, std::string_view text) const {
        return Peek().kind == kind && Peek().text == text;
    }
    [[nodiscard]] bool AtMark(std::string_view text) const { return At(Kind::kMark, text); }
    [[nodiscard]] bool AtWord(std::string_view text) const { return At(Kind::kWord, text); }
    [[nodiscard]] bool AtEnd() const { return At(Kind::kEnd); }

    const CsnToken& Next() {
        const CsnToken& token = Peek();
        position_ = std::min(position_ + 1, tokens_.size() - 1);
        return token;
    }

    bool AcceptMark(std::string_view text) {
        const bool found = AtMark(text);
        if (found) {
            Next();
        }
        return found;
    }

    bool AcceptWord(std::string_view text) {
        const bool found = AtWord(text);
        if (found) {
            Next();
        }
        return found;
    }

    bool ExpectMark(std::string_view text) {
        if (AcceptMark(text)) {
            return true;
        }
        ErrorExpected("'" + std::string(text) + "'");
        return false;
    }

    /// A decimal number of up to `most`; 0 after an error.
    std::uint32_t ExpectNumber(std::uint32_t most = kMostNumber) {
        if (!At(Kind::kDigits)) {
            ErrorExpected("a number");
            return 0;
        }
        const CsnToken& token = Next();
        std::uint64_t value = 0;
        for (const char digit : token.text) {
            value = std::min<std::uint64_t>(value * 10 + static_cast<std::uint64_t>(digit - '0'),
                                            std::uint64_t{most} + 1);
        }
        if (value > most) {
            Error(token.place, "the number " + token.text + " is above " + std::to_string(most) +
                                   ", the most that is possible here");
            return 0;
        }
        return static_cast<std::uint32_t>(value);
    }

    /// A name made of letters, digits and underscores.
    CsnName ExpectName(std::string_view what) {
        if (At(Kind::kWord) || At(Kind::kDigits)) {
            const CsnToken& token = Next();
            return {token.text, token.place};
        }
        ErrorExpected(std::string(what));
        return {{}, Peek().place};
    }

    void Error(Span place, std::string message) { reporter_.Error(place, std::move(message)); }

    /// "X is expected here, not Y" at the token. The first such error of a declaration is told;
    /// others are mostly its follow-ups.
    void ErrorExpected(const std::string& expected) {
        Fail(Peek().place, expected + " is expected here, not " + Describe(Peek()));
    }

    /// An error behind which the declaration makes no sense any more.
    void Fail(Span place, std::string message) {
        if (!broken_) {
            Error(place, std::move(message));
        }
        broken_ = true;
    }

    /// Whether this declaration had such an error.
    [[nodiscard]] bool Broken() const { return broken_; }
    void BeginDeclaration() { broken_ = false; }

    static std::string Describe(const CsnToken& token) {
        switch (token.kind) {
            case Kind::kField:
                return "the field '" + token.text + "'";
            case Kind::kReference:
                return "'< " + token.text + " >'";
            case Kind::kValue:
                return "'" + token.function + "(" + token.text + ")'";
            case Kind::kText:
                return "a text";
            case Kind::kEnd:
                return "the end of the file";
            case Kind::kWord:
            case Kind::kDigits:
            case Kind::kMark:
                break;
        }
        return "'" + token.text + "'";
    }

    /// From the start of `from` to the end of the token before this one.
    [[nodiscard]] Span PlaceFrom(Span from) const {
        if (position_ > 0) {
            from.end = std::max(from.end, tokens_[position_ - 1].place.end);
        }
        return from;
    }

  private:
    CsnReporter& reporter_;
    std::vector<CsnToken> tokens_;
    std::size_t position_ = 0;
    bool broken_ = false;
};

}  // namespace quorvane::compiler
