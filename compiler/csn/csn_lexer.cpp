#include "compiler/csn/csn_lexer.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

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

class Lexer {
  public:
    Lexer(CsnReporter& reporter, std::uint32_t file)
        : reporter_(reporter), file_(file), text_(reporter.File(file).text) {}

    std::vector<CsnToken> Run() {
        while (SkipBlanks()) {
            Step();
        }
        Add(CsnToken::Kind::kEnd, position_, "");
        return std::move(tokens_);
    }

  private:
    /// Passes over blanks and comments; false at the end of the text.
    bool SkipBlanks() {
        while (position_ < text_.size()) {
            if (text_.substr(position_, 2) == "--") {
                position_ = std::min(text_.find('\n', position_), text_.size());
            } else if (IsBlank(text_[position_])) {
                ++position_;
            } else {
                return true;
            }
        }
        return false;
    }

    void Step() {
        const std::size_t begin = position_;
        const char c = text_[position_];
        if (c == '<') {
            LexBracket();
        } else if (c == '"') {
            LexText();
        } else if (IsWordCharacter(c)) {
            while (position_ < text_.size() && IsWordCharacter(text_[position_])) {
                ++position_;
            }
            const std::string word(text_.substr(begin, position_ - begin));
            if (std::all_of(word.begin(), word.end(), IsDigit)) {
                Add(CsnToken::Kind::kDigits, begin, word);
            } else if (word != "val" && word != "p" && word != "q") {
                Add(CsnToken::Kind::kWord, begin, word);
            } else {
                LexValue(begin, word);
            }
        } else {
            LexMark();
        }
    }

    void LexMark() {
        constexpr std::array<std::string_view, 5> kLong = {"::=", "**", "//", "==", ".."};
        const std::size_t begin = position_;
        for (const std::string_view mark : kLong) {
            if (text_.substr(position_, mark.size()) == mark) {
                position_ += mark.size();
                Add(CsnToken::Kind::kMark, begin, std::string(mark));
                return;
            }
        }
        const char c = text_[position_++];
        if (std::string_view(">{}()[]|!&-+*=:;,@").find(c) == std::string_view::npos) {
            const bool isPrintable = c > ' ' && c <= '~';
            reporter_.Error(PlaceFrom(begin),
                            isPrintable
                                ? std::string("the character '") + c + "' has no meaning here"
                                : "a description is made of printable ASCII characters");
            return;
        }
        Add(CsnToken::Kind::kMark, begin, std::string(1, c));
    }

    void LexText() {
        const std::size_t begin = position_;
        const std::size_t end = text_.find_first_of("\"\n", begin + 1);
        if (end == std::string_view::npos || text_[end] == '\n') {
            position_ = std::min(end, text_.size());
            reporter_.Error(PlaceFrom(begin), "the text has no closing quotation mark");
            return;
        }
        position_ = end + 1;
        Add(CsnToken::Kind::kText, begin, std::string(text_.substr(begin + 1, end - begin - 1)));
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
        const char next = position_ < text_.size() ? text_[position_] : '\0';
        if (isName && next == '>') {
            ++position_;
            Add(CsnToken::Kind::kReference, begin, name);
        } else if (isName && next == ':' && text_.substr(position_, 3) != "::=") {
            ++position_;
            Add(CsnToken::Kind::kField, begin, name);
        } else {
            position_ = begin + 1;
            Add(CsnToken::Kind::kMark, begin, "<");
        }
    }

    /// Behind "val", "p" or "q": a name in parentheses belongs to it.
    void LexValue(std::size_t begin, const std::string& word) {
        const std::size_t wordEnd = position_;
        SkipBlanks();
        const std::size_t close = text_.find_first_of(")\n", position_);
        if (position_ >= text_.size() || text_[position_] != '(' ||
            close == std::string_view::npos || text_[close] == '\n') {
            position_ = wordEnd;
            Add(CsnToken::Kind::kWord, begin, word);
            return;
        }
        std::string name(text_.substr(position_ + 1, close - position_ - 1));
        const auto first = std::find_if_not(name.begin(), name.end(), IsBlank);
        const auto last = std::find_if_not(name.rbegin(), name.rend(), IsBlank).base();
        name = first < last ? std::string(first, last) : "";
        position_ = close + 1;
        if (name.empty()) {
            reporter_.Error(PlaceFrom(begin), word + "() needs the name of a field");
        }
        Add(CsnToken::Kind::kValue, begin, std::move(name), word);
    }

    [[nodiscard]] Span PlaceFrom(std::size_t begin) const {
        return {file_, static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(position_)};
    }

    void Add(CsnToken::Kind kind, std::size_t begin, std::string text, std::string function = {}) {
        tokens_.push_back({kind, std::move(text), std::move(function), PlaceFrom(begin)});
    }

    CsnReporter& reporter_;
    std::uint32_t file_;
    std::string_view text_;
    std::size_t position_ = 0;
    std::vector<CsnToken> tokens_;
};

}  // namespace

std::vector<CsnToken> LexCsn(CsnReporter& reporter, std::uint32_t file) {
    return Lexer(reporter, file).Run();
}

}  // namespace quorvane::compiler
