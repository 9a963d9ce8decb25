#include "compiler/csn/csn_count_parser.h"

#include <array>

namespace quorvane::compiler {
namespace {

using Form = CsnCount::Form;
using Kind = Token::Kind;

/// Functions that are written like a call. All but the first two take the name of a position.
struct FunctionRow {
    std::string_view name;
    Form form;
    bool hasNumber;
};
constexpr std::array<FunctionRow, 6> kFunctions = {{
    {"ones", Form::kOnes, false},
    {"octet_end", Form::kOctetEnd, false},
    {"left", Form::kLeft, true},
    {"left_or_none", Form::kLeftOrNone, true},
    {"left_or_zero", Form::kLeftOrZero, true},
    {"until", Form::kUntil, false},
}};

}  // namespace

/// val(NAME) or a number.
struct CsnCountParser::Term {
    bool isNumber = true;
    std::int64_t number = 0;
    CsnCount value;
};

std::uint32_t CsnCountParser::Number(std::uint32_t most) {
    return Narrow<std::uint32_t>(reporter_, tokens_.ExpectNumber("a number"),
                                 {0, most, "that is possible here"});
}

CsnCount CsnCountParser::Operand() {
    if (tokens_.Accept("(")) {
        CsnCount count = Expression();
        tokens_.Expect(")");
        return count;
    }
    const Term term = ReadTerm();
    CsnCount count = term.value;
    count.number = term.number;
    return count;
}

CsnCount CsnCountParser::Expression() {
    if (tokens_.At(Kind::kWord)) {
        return Function();
    }
    const Span span = tokens_.Peek().span;
    const Term left = ReadTerm();
    for (const char sign : {'+', '-', '*'}) {
        if (tokens_.Accept(std::string(1, sign))) {
            const Term right = ReadTerm();
            CsnCount count = Combine(left, sign, right, tokens_.SpanFrom(span));
            count.span = tokens_.SpanFrom(span);
            return count;
        }
    }
    CsnCount count = left.value;
    count.number = left.number;
    return count;
}

CsnCountParser::Term CsnCountParser::ReadTerm() {
    // val(NAME) may stand in parentheses of its own: "(val(NAME))".
    const bool enclosed = tokens_.Accept("(");
    Term term;
    term.value.span = tokens_.Peek().span;
    if (tokens_.At(Kind::kValue)) {
        const Token& token = tokens_.Next();
        term.isNumber = false;
        term.value.form = Form::kValue;
        term.value.name = {token.text, token.span};
    } else {
        term.number = Number(kMostBits);
    }
    if (enclosed) {
        tokens_.Expect(")");
    }
    return term;
}

CsnCount CsnCountParser::Combine(const Term& left, char sign, const Term& right, Span span) {
    CsnCount count = left.isNumber ? right.value : left.value;
    const std::int64_t number = left.isNumber ? left.number : right.number;
    const bool oneValue = left.isNumber != right.isNumber && count.form == Form::kValue;
    if (left.isNumber && right.isNumber) {
        count.form = Form::kNumber;
        count.number = sign == '+'   ? left.number + right.number
                       : sign == '-' ? left.number - right.number
                                     : left.number * right.number;
    } else if (oneValue && sign == '+') {
        count.number = number;
    } else if (oneValue && sign == '-') {
        count.form = left.isNumber ? Form::kRest : Form::kValue;
        count.number = left.isNumber ? number : -number;
    } else if (oneValue && sign == '*') {
        count.form = Form::kTimes;
        count.number = number;
    } else {
        tokens_.Error(span, "a count combines one val(NAME) with one number");
    }
    return count;
}

CsnCount CsnCountParser::Function() {
    const Token& word = tokens_.Next();
    CsnCount count;
    count.span = word.span;
    if (const auto declared = functions_.find(word.text); declared != functions_.end()) {
        count.form = Form::kDeclared;
        count.function = &declared->second;
        tokens_.Expect("(");
        count.name = tokens_.ExpectName("the name of a field");
        tokens_.Expect(")");
        return count;
    }
    for (const FunctionRow& row : kFunctions) {
        if (row.name != word.text) {
            continue;
        }
        count.form = row.form;
        tokens_.Expect("(");
        if (row.form == Form::kOnes) {
            const Term bits = ReadTerm();
            count.number = bits.number;
            count.name = bits.value.name;
        } else if (row.form != Form::kOctetEnd) {
            count.name = tokens_.ExpectName("the name of a position");
        }
        if (row.hasNumber && tokens_.Expect(",")) {
            count.number = Number();
        }
        tokens_.Expect(")");
        return count;
    }
    tokens_.Fail(
        word.span,
        "'" + word.text +
            "' is no count; there are numbers, val(NAME), ones(n), octet_end(), left(NAME, n), "
            "left_or_none(NAME, n), left_or_zero(NAME, n), until(NAME) and "
            "what 'function' declares");
    return count;
}

CsnArgument CsnCountParser::Argument() {
    CsnArgument argument;
    argument.span = tokens_.Peek().span;
    const bool isCall = tokens_.At(Kind::kWord) && tokens_.Peek(1).text == "(";
    if (isCall || tokens_.At(Kind::kDigits) || tokens_.At(Kind::kValue)) {
        argument.count = Expression();
    } else {
        argument.name = tokens_.ExpectName("the name of a variable or a count");
    }
    return argument;
}

}  // namespace quorvane::compiler
