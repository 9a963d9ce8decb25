#include "compiler/token_stream.h"

#include <charconv>

namespace quorvane::compiler {

std::optional<WideNumber> ParseDigits(Reporter& reporter, std::string_view digits, int base,
                                      Span span) {
    WideNumber number{0, span, base == 16};
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number.value, base);
    if (stop != end || digits.empty()) {
        return std::nullopt;
    }
    if (error == std::errc::result_out_of_range || number.value == kUnknownNumber) {
        number.value = kUnknownNumber;
        reporter.Error(span, "the number is too large");
    }
    return number;
}

namespace {

std::string Shown(const Token& token) {
    switch (token.kind) {
        case Token::Kind::kWord:
        case Token::Kind::kDigits:
        case Token::Kind::kSign:
            break;
        case Token::Kind::kText:
            return "a text";
        case Token::Kind::kField:
            return "the field '" + token.text + "'";
        case Token::Kind::kReference:
            return "'< " + token.text + " >'";
        case Token::Kind::kValue:
            return "'val(" + token.text + ")'";
        case Token::Kind::kLineEnd:
            return "the end of the line";
        case Token::Kind::kEnd:
            return "the end of the file";
    }
    return "'" + token.text + "'";
}

}  // namespace

const Token& TokenStream::Next() {
    const Token& token = Peek();
    broken_ = broken_ || token.cut;
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

void TokenStream::ErrorExpected(std::string_view expected, std::string_view advice) {
    Fail(Peek().span,
         std::string(expected) + " is expected here, not " + Shown(Peek()) + std::string(advice));
}

void TokenStream::Fail(Span span, std::string message) {
    if (!broken_) {
        Error(span, std::move(message));
    }
    broken_ = true;
}

Span TokenStream::SpanFrom(Span from) const {
    if (position_ > 0) {
        from.end = std::max(from.end, tokens_[position_ - 1].span.end);
    }
    return from;
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
        return {"", Peek().span};
    }
    const Token& token = Next();
    return {token.text, token.span};
}

WideNumber TokenStream::ExpectNumber(std::string_view what) {
    if (const auto number = AcceptNumber()) {
        return *number;
    }
    ErrorExpected(what);
    return {kUnknownNumber, Peek().span};
}

std::optional<WideNumber> TokenStream::AcceptNumber() {
    if (!AtWord()) {
        return std::nullopt;
    }
    const Token& token = Peek();
    const bool isHexadecimal = !decimal_ && token.text.starts_with("0x");
    const auto number =
        ParseDigits(reporter_, std::string_view(token.text).substr(isHexadecimal ? 2 : 0),
                    isHexadecimal ? 16 : 10, token.span);
    if (number) {
        Next();
    }
    return number;
}

WideNumber TokenStream::ExpectHexadecimal(std::string_view what) {
    const auto number =
        AtWord() ? ParseDigits(reporter_, Peek().text, 16, Peek().span) : std::nullopt;
    if (!number) {
        ErrorExpected(what);
        return {kUnknownNumber, Peek().span};
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
    while (At(Kind::kLineEnd)) {
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
