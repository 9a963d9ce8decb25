#include "compiler/token_stream.h"

#include <charconv>

namespace quorvane::compiler {
namespace {

std::optional<std::uint32_t> Parse(std::string_view text, int base) {
    std::uint32_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, base);
    if (error != std::errc() || stop != end || text.empty()) {
        return std::nullopt;
    }
    return value;
}

std::optional<std::uint32_t> ParseNumber(std::string_view text) {
    if (text.starts_with("0x")) {
        return Parse(text.substr(2), 16);
    }
    return Parse(text, 10);
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

std::uint32_t TokenStream::ExpectNumber(std::string_view what) {
    if (const auto value = AcceptNumber()) {
        return *value;
    }
    ErrorExpected(what);
    return 0;
}

std::optional<std::uint32_t> TokenStream::AcceptNumber() {
    if (!AtWord()) {
        return std::nullopt;
    }
    const auto value = ParseNumber(Peek().text);
    if (value) {
        Next();
    }
    return value;
}

std::uint32_t TokenStream::ExpectHexadecimal(std::string_view what) {
    const auto value = AtWord() ? Parse(Peek().text, 16) : std::nullopt;
    if (!value) {
        ErrorExpected(what);
        return 0;
    }
    Next();
    return *value;
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
