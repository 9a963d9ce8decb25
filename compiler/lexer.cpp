#include "compiler/lexer.h"

#include <algorithm>
#include <string>
#include <utility>

namespace quorvane::compiler {
namespace {

bool IsWordCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

class Lexer {
  public:
    Lexer(Reporter& reporter, std::uint32_t file)
        : reporter_(reporter), file_(file), text_(reporter.File(file).text) {}

    std::vector<Token> Run() {
        while (position_ < text_.size()) {
            Step();
        }
        AddLineEnd();
        Add(Token::Kind::kEnd, position_, position_);
        return std::move(tokens_);
    }

  private:
    void Step() {
        const char c = text_[position_];
        const std::size_t begin = position_;
        if (c == '\n') {
            AddLineEnd();
            ++position_;
        } else if (c == ' ' || c == '\t' || c == '\r') {
            ++position_;
        } else if (text_.substr(position_, 2) == "//") {
            position_ = std::min(text_.find('\n', position_), text_.size());
        } else if (c == '"') {
            LexText();
        } else if (IsWordCharacter(c)) {
            while (position_ < text_.size() && WordGoesOn()) {
                position_ += text_[position_] == ':' ? 2U : 1U;
            }
            Add(Token::Kind::kWord, begin, position_);
        } else if (std::string_view("{}[]:=-?&,.").find(c) != std::string_view::npos) {
            ++position_;
            Add(Token::Kind::kMark, begin, position_);
        } else {
            ++position_;
            reporter_.Error(PlaceOf(begin, position_),
                            std::string("the character '") + c + "' has no meaning here");
        }
    }

    [[nodiscard]] bool WordGoesOn() const {
        const bool scope = text_.substr(position_, 2) == "::" && position_ + 2 < text_.size() &&
                           IsWordCharacter(text_[position_ + 2]);
        return scope || IsWordCharacter(text_[position_]);
    }

    void LexText() {
        const std::size_t begin = position_;
        const std::size_t close = text_.find_first_of("\"\n", begin + 1);
        if (close == std::string_view::npos || text_[close] == '\n') {
            position_ = std::min(close, text_.size());
            reporter_.Error(PlaceOf(begin, position_), "the text has no closing quote on its line");
            return;
        }
        position_ = close + 1;
        Add(Token::Kind::kText, begin + 1, close);
    }

    void AddLineEnd() {
        if (!tokens_.empty() && tokens_.back().kind != Token::Kind::kLineEnd) {
            Add(Token::Kind::kLineEnd, position_, position_);
        }
    }

    void Add(Token::Kind kind, std::size_t begin, std::size_t end) {
        tokens_.push_back({kind, text_.substr(begin, end - begin), PlaceOf(begin, end)});
    }

    [[nodiscard]] Span PlaceOf(std::size_t begin, std::size_t end) const {
        return {file_, static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end)};
    }

    Reporter& reporter_;
    std::uint32_t file_;
    std::string_view text_;
    std::size_t position_ = 0;
    std::vector<Token> tokens_;
};

}  // namespace

std::vector<Token> Lex(Reporter& reporter, std::uint32_t file) {
    return Lexer(reporter, file).Run();
}

}  // namespace quorvane::compiler
