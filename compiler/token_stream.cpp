#include "compiler/token_stream.h"

#include <charconv>

namespace quorvane::compiler {
std::optional<WideNumber> ParseDigits(std::string_view digits, int base, Span place) {
    WideNumber number{0, place, base == 16};
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number.value, base);
    if (stop != end || digits.empty()) {
        return std::nullopt;
    }
    if (error == std::errc::result_out_of_range) {
        number.value = MostOf(64);
    }
    return number;
}

namespace {

std::optional<WideNumber> ParseNumber(const Token& token) {
    if (token.text.starts_with("0x")) {
        return ParseDigits(token.text.substr(2), 16, token.place);
    }
    return ParseDigits(token.text, 10, token.place);
}

std::string Shown(const Token& token) {
    switch (token.kind) {
        case Token::Kind::kLineEnd:
            return "the end of the line";
        case Token::Kind::kEnd:
            return "the end of the file";
        case Token::Kind::kText:
            return "a text";
        default:
            return "'" + std::string(token.text) + "'";
    }
}

}  // namespace

const Token& TokenStream::Next() {
    const Token& token = Peek();
    if (position_ + 1 < tokens_.size()) {
        ++position_;
    }
    return token;
}

bool TokenStream::Accept(std::string_view text) {
    if (!At(text)) {
        return false;
    }
    Next();
    return true;
}

void TokenStream::ErrorExpected(std::string_view expected) {
    Error(Peek().place, std::string(expected) + " is expected here, not " + Shown(Peek()));
}

bool TokenStream::Expect(std::string_view text) {
    if (Accept(text)) {
        return true;
    }
    ErrorExpected("'" + std::string(text) + "'");
    return false;
}

Name TokenStream::ExpectName(std::string_view what) {
    if (!AtWord()) {
        ErrorExpected(what);
        return {"", Peek().place};
    }
    const Token& token = Next();
    return {std::string(token.text), token.place};
}

WideNumber TokenStream::ExpectNumber(std::string_view what) {
    if (const auto number = AcceptNumber()) {
        return *number;
    }
    ErrorExpected(what);
    return {0, Peek().place};
}

std::optional<WideNumber> TokenStream::AcceptNumber() {
    if (!AtWord()) {
        return std::nullopt;
    }
    const auto number = ParseNumber(Peek());
    if (number) {
        Next();
    }
    return number;
}

WideNumber TokenStream::ExpectHexadecimal(std::string_view what) {
    const auto number = AtWord() ? ParseDigits(Peek().text, 16, Peek().place) : std::nullopt;
    if (!number) {
        ErrorExpected(what);
        return {0, Peek().place};
    }
    Next();
    return *number;
}

void TokenStream::ExpectLineEnd() {
    if (!AtLineEnd() && !At("}")) {
        ErrorExpected("the end of the line");
        SkipEntry();
    }
    SkipLineEnds();
}

void TokenStream::SkipLineEnds() {
    while (Peek().kind == Token::Kind::kLineEnd) {
        Next();
    }
}

void TokenStream::SkipEntry() {
    int depth = 0;
    while (!AtEnd()) {
        if (At("{")) {
            ++depth;
        } else if (At("}")) {
            if (depth == 0) {
                return;
            }
            --depth;
        } else if (AtLineEnd() && depth == 0) {
            return;
        }
        Next();
    }
}

}  // namespace quorvane::compiler
