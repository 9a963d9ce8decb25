#include "compiler/lexer.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "reflect/type_tables.h"

namespace quorvane::compiler {
namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsWordCharacter(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool IsPrintable(char c) {
    return c > ' ' && c <= '~';
}

// With a number of 32 bits in parentheses behind it still a text of the tables.
constexpr std::size_t kLongestText = 1000;
static_assert(kLongestText + std::string_view(" (4294967295)").size() <= reflect::kLongestText);

class Lexer {
  public:
    Lexer(Reporter& reporter, std::uint32_t file, const Notation& notation)
        : reporter_(reporter), file_(file), notation_(notation), text_(reporter.File(file).text) {}

    std::vector<Token> Run() {
        PassByteOrderMark();
        while (SkipBlanks()) {
            Step();
        }
        AddLineEnd();
        Add(Token::Kind::kEnd, position_, "");
        return std::move(tokens_);
    }

  private:
    /// Behind a mark of UTF-16 nothing can be read.
    void PassByteOrderMark() {
        for (const std::string_view mark : {"\xEF\xBB\xBF", "\xFE\xFF", "\xFF\xFE"}) {
            if (text_.starts_with(mark)) {
                position_ = mark.size();
                reporter_.Error(SpanFrom(0),
                                "the file begins with a byte order mark; save it as ASCII text");
                position_ = mark.size() == 3 ? position_ : text_.size();
            }
        }
    }

    /// Passes over blanks and comments; false at the end of the text.
    bool SkipBlanks() {
        for (; position_ < text_.size(); ++position_) {
            if (text_.substr(position_).starts_with(notation_.comment)) {
                position_ = std::min(text_.find('\n', position_), text_.size()) - 1;
            } else if (text_[position_] == '\n') {
                AddLineEnd();
            } else if (!IsBlank(text_[position_])) {
                return true;
            }
        }
        return false;
    }

    void Step() {
        const std::size_t begin = position_;
        const char c = text_[begin];
        if (c == '"') {
            LexText();
        } else if (c == '<' && notation_.isCsn) {
            LexBracket();
        } else if (IsWordCharacter(c)) {
            while (WordGoesOn()) {
                position_ += text_[position_] == ':' ? 2U : 1U;
            }
            const std::string word(text_.substr(begin, position_ - begin));
            if (std::all_of(word.begin(), word.end(), IsDigit)) {
                Add(Token::Kind::kDigits, begin, word);
            } else if (notation_.isCsn && word == "val") {
                LexValue(begin);
            } else {
                Add(Token::Kind::kWord, begin, word);
            }
        } else {
            LexSign();
        }
    }

    [[nodiscard]] bool WordGoesOn() const {
        const std::string_view rest = text_.substr(position_);
        return rest.starts_with("::") ? rest.size() > 2 && IsWordCharacter(rest[2])
                                      : !rest.empty() && IsWordCharacter(rest[0]);
    }

    void LexSign() {
        const std::size_t begin = position_;
        for (const std::string_view sign : {"::=", "**", "//", "==", ".."}) {
            if (notation_.isCsn && text_.substr(begin).starts_with(sign)) {
                position_ += sign.size();
                Add(Token::Kind::kSign, begin, std::string(sign));
                return;
            }
        }
        const char c = text_[position_++];
        if (notation_.signs.find(c) != std::string_view::npos) {
            Add(Token::Kind::kSign, begin, std::string(1, c));
        } else if (IsPrintable(c)) {
            reporter_.Error(SpanFrom(begin),
                            std::string("the character '") + c + "' has no meaning here");
        } else {
            while (position_ < text_.size() && !IsPrintable(text_[position_]) &&
                   !IsBlank(text_[position_])) {
                ++position_;
            }
            reporter_.Error(SpanFrom(begin), "a description is made of printable ASCII characters");
        }
    }

    void LexText() {
        const std::size_t begin = position_;
        const std::size_t end = std::min(text_.find_first_of("\"\n", begin + 1), text_.size());
        const bool closed = end < text_.size() && text_[end] == '"';
        position_ = end + (closed ? 1 : 0);
        if (!closed) {
            reporter_.Error(SpanFrom(begin), "the text has no closing quote on its line");
        }
        Add(Token::Kind::kText, begin, std::string(text_.substr(begin + 1, end - begin - 1)));
        tokens_.back().cut = !closed;
    }

    /// At "<": a name behind it decides what it opens.
    void LexBracket() {
        const std::size_t begin = position_++;
        std::string name;
        while (SkipBlanks()) {
            const char c = text_[position_];
            if (!IsWordCharacter(c) && c != '-' && c != '/' && c != '.') {
                break;
            }
            name += name.empty() || !IsBlank(text_[position_ - 1]) ? "" : " ";
            name += c;
            ++position_;
        }
        const bool isName = std::any_of(name.begin(), name.end(),
                                        [](char c) { return IsWordCharacter(c) && !IsDigit(c); });
        const std::string_view rest = text_.substr(position_);
        const bool isField = rest.starts_with(':') && !rest.starts_with("::=");
        if (isName && (isField || rest.starts_with('>'))) {
            ++position_;
            Add(isField ? Token::Kind::kField : Token::Kind::kReference, begin, name);
        } else {
            position_ = begin + 1;
            Add(Token::Kind::kSign, begin, "<");
        }
    }

    /// Behind "val": a name in parentheses belongs to it.
    void LexValue(std::size_t begin) {
        const std::size_t wordEnd = position_;
        SkipBlanks();
        const std::size_t close = text_.find_first_of(")\n", position_);
        if (position_ >= text_.size() || text_[position_] != '(' ||
            close == std::string_view::npos || text_[close] == '\n') {
            position_ = wordEnd;
            Add(Token::Kind::kWord, begin, "val");
            return;
        }
        std::string name(text_.substr(position_ + 1, close - position_ - 1));
        const auto first = std::find_if_not(name.begin(), name.end(), IsBlank);
        const auto last = std::find_if_not(name.rbegin(), name.rend(), IsBlank).base();
        name = first < last ? std::string(first, last) : "";
        position_ = close + 1;
        if (name.empty()) {
            reporter_.Error(SpanFrom(begin), "val() needs the name of a field");
        }
        Add(Token::Kind::kValue, begin, std::move(name));
    }

    void AddLineEnd() {
        if (notation_.entriesAreLines && !tokens_.empty() &&
            tokens_.back().kind != Token::Kind::kLineEnd) {
            Add(Token::Kind::kLineEnd, position_, "");
        }
    }

    [[nodiscard]] Span SpanFrom(std::size_t begin) const {
        return {file_, static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(position_)};
    }

    void Add(Token::Kind kind, std::size_t begin, std::string text) {
        if (kind != Token::Kind::kDigits && text.size() > kLongestText) {
            reporter_.Error(SpanFrom(begin), "a name or a text has at most " +
                                                 std::to_string(kLongestText) + " characters");
        }
        tokens_.push_back({kind, std::move(text), SpanFrom(begin), false});
    }

    Reporter& reporter_;
    std::uint32_t file_;
    const Notation& notation_;
    std::string_view text_;
    std::size_t position_ = 0;
    std::vector<Token> tokens_;
};

}  // namespace

std::vector<Token> Lex(Reporter& reporter, std::uint32_t file, const Notation& notation) {
    return Lexer(reporter, file, notation).Run();
}

}  // namespace quorvane::compiler
