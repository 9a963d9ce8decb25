#include "tools/octet_text.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>

#include "tools/hex.h"

namespace quorvane::tool {
namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string_view WithoutBlanksAhead(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text;
}

std::string_view WithoutBlanksBehind(std::string_view text) {
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);  // npos + 1 is 0
}

std::size_t CountDigits(std::string_view text) {
    return static_cast<std::size_t>(
        std::distance(text.begin(), std::find_if_not(text.begin(), text.end(), [](char character) {
                          return DigitOf(character).has_value();
                      })));
}

/// Appends the octets of an even number of digits.
void AppendDigits(std::string_view digits, std::vector<std::uint8_t>& octets) {
    for (std::size_t index = 0; index < digits.size(); index += 2) {
        octets.push_back(
            static_cast<std::uint8_t>(*DigitOf(digits[index]) << 4 | *DigitOf(digits[index + 1])));
    }
}

/// A line of the text that is neither blank nor a comment.
struct Line {
    std::string_view text;
    std::size_t number = 0;  // from 1
};

std::vector<Line> LinesOf(std::string_view text) {
    std::vector<Line> lines;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::string_view whole = text.substr(0, text.find('\n'));
        const std::string_view line = WithoutBlanksBehind(whole);
        if (const auto start = WithoutBlanksAhead(line); !start.empty() && start.front() != '#') {
            lines.push_back({line, number});
        }
        text.remove_prefix(std::min(whole.size() + 1, text.size()));
    }
    return lines;
}

/// Tells where in the text something is wrong: with the line's number if there are several.
class Locator {
  public:
    explicit Locator(bool severalLines) : severalLines_(severalLines) {}

    [[nodiscard]] std::string At(const Line& line, std::size_t index,
                                 const std::string& problem) const {
        return InLine(line, "character " + std::to_string(index + 1) + ": " + problem);
    }

    [[nodiscard]] std::string InLine(const Line& line, const std::string& problem) const {
        return severalLines_ ? "line " + std::to_string(line.number) + ", " + problem : problem;
    }

  private:
    bool severalLines_;
};

/// Digits in groups, apart by blanks and at most one mark, perhaps in brackets or quotes.
class GroupReader {
  public:
    GroupReader(Locator locator, std::vector<std::uint8_t>& octets)
        : locator_(locator), octets_(octets) {
        octets_.clear();
    }

    /// Reads a line. Returns what is wrong, or nothing.
    std::string Read(const Line& line) {
        line_ = line;
        for (index_ = 0; index_ < line.text.size();) {
            if (std::string problem = ReadNext(line.text[index_]); !problem.empty()) {
                return problem;
            }
        }
        return {};
    }

    /// Behind the last line. Returns what is wrong, or nothing.
    [[nodiscard]] std::string Finish() const {
        return open_.empty()
                   ? std::string()
                   : locator_.InLine(line_, std::string("there is no ") + ClosingOf(open_.back()) +
                                                " for the " + open_.back());
    }

  private:
    static char ClosingOf(char opening) {
        switch (opening) {
            case '{':
                return '}';
            case '[':
                return ']';
            case '(':
                return ')';
            default:
                return opening;  // a quote
        }
    }

    static bool IsBlank(char character) { return kBlanks.find(character) != kBlanks.npos; }
    static bool IsMark(char character) {
        return std::string_view(",;:-").find(character) != std::string_view::npos;
    }

    /// Whether it closes the innermost bracket or quote that is open.
    [[nodiscard]] bool Closes(char next) const {
        return !open_.empty() && next == ClosingOf(open_.back());
    }

    [[nodiscard]] std::string At(std::size_t index, const std::string& problem) const {
        return locator_.At(line_, index, problem);
    }

    std::string ReadNext(char next) {
        if (IsBlank(next)) {
            ++index_;
            return {};
        }
        if (IsMark(next)) {
            if (!markMayFollow_) {
                return At(index_, std::string("there is no octet ahead of '") + next + "'");
            }
            markMayFollow_ = false;
            ++index_;
            return {};
        }
        if (Closes(next) && (!octets_.empty() || next != open_.back())) {
            open_.pop_back();
            closed_ = true;
            ++index_;
            markMayFollow_ = true;
            return {};
        }
        if (std::string_view("{[(\"'").find(next) != std::string_view::npos) {
            if (!octets_.empty() || closed_) {
                return At(index_, std::string("'") + next +
                                      "' opens behind octets; brackets and quotes stand around "
                                      "all octets");
            }
            open_ += next;
            ++index_;
            return {};
        }
        if (closed_) {
            return At(index_,
                      "brackets and quotes stand around all octets, and here they have "
                      "been closed");
        }
        return ReadGroup();
    }

    /// A group: perhaps a prefix, pairs of digits, perhaps an h.
    std::string ReadGroup() {
        const std::string_view rest = line_.text.substr(index_);
        const std::size_t start = index_;
        const bool escape = rest.starts_with("\\x") || rest.starts_with("\\X");
        const bool prefix = escape || rest.starts_with("0x") || rest.starts_with("0X");
        const std::size_t ahead = prefix ? 2 : 0;
        const std::size_t count = CountDigits(rest.substr(ahead));
        const std::size_t end = ahead + count;
        if (count == 0) {
            return prefix ? At(start, "no digits follow " + std::string(rest.substr(0, ahead)))
                          : At(start, QuotedCharacter(rest.front()) + kNoDigit);
        }
        if (escape && count > 2) {
            return At(start, R"(\x stands ahead of each octet, here ahead of more than one)");
        }
        const bool suffix = !prefix && end < rest.size() && (rest[end] == 'h' || rest[end] == 'H');
        const std::size_t behind = end + (suffix ? 1 : 0);
        if (behind < rest.size() && !MayFollowGroup(rest[behind], escape)) {
            return At(start + behind, QuotedCharacter(rest[behind]) + kNoDigit);
        }
        if (count % 2 != 0) {
            return At(start + end - 1, kHalfOctet);
        }
        AppendDigits(rest.substr(ahead, count), octets_);
        markMayFollow_ = true;
        index_ += behind;
        return {};
    }

    [[nodiscard]] bool MayFollowGroup(char next, bool escape) const {
        return IsBlank(next) || IsMark(next) || (escape && next == '\\') || Closes(next);
    }

    Locator locator_;
    std::vector<std::uint8_t>& octets_;
    Line line_;
    std::size_t index_ = 0;       // of the line's next character
    std::string open_;            // the brackets and quotes that are open
    bool closed_ = false;         // one of them has been closed
    bool markMayFollow_ = false;  // an octet stands ahead, and no mark since
};

/// The start of a dump's line.
struct Offset {
    std::string_view digits;
    bool colon = false;
    std::size_t end = 0;  // where the rest of the line begins

    /// Whether it can be nothing else.
    [[nodiscard]] bool IsSure() const {
        return colon || digits.find_first_not_of('0') == std::string_view::npos;
    }
    /// Nothing if it has more than 64 bits.
    [[nodiscard]] std::optional<std::uint64_t> Value() const {
        std::uint64_t value = 0;
        const char* last = digits.data() + digits.size();
        const auto status = std::from_chars(digits.data(), last, value, 16).ec;
        return status == std::errc() ? std::optional(value) : std::nullopt;
    }
};

constexpr std::size_t kFewestOffsetDigits = 4;

/// The offset that a line may begin with: digits, perhaps behind 0x, with a colon and a blank
/// behind them, or digits that are more than those of the first group.
std::optional<Offset> OffsetOf(std::string_view line) {
    std::size_t begin = line.size() - WithoutBlanksAhead(line).size();
    const std::string_view start = line.substr(begin);
    const bool prefix = start.starts_with("0x") || start.starts_with("0X");
    begin += prefix ? 2 : 0;
    Offset offset;
    offset.digits = line.substr(begin, CountDigits(line.substr(begin)));
    offset.end = begin + offset.digits.size();
    if (offset.digits.size() < kFewestOffsetDigits) {
        return std::nullopt;
    }
    std::string_view rest = line.substr(offset.end);
    if (rest.starts_with(':')) {
        offset.colon = true;
        ++offset.end;
        rest.remove_prefix(1);
    } else if (prefix) {
        return std::nullopt;
    }
    if (rest.empty()) {
        return offset.colon ? std::nullopt : std::optional(offset);
    }
    if (kBlanks.find(rest.front()) == kBlanks.npos) {
        return std::nullopt;
    }
    const std::size_t group = CountDigits(WithoutBlanksAhead(rest));
    const bool fits = offset.colon || group < offset.digits.size();
    return fits && group > 0 ? std::optional(offset) : std::nullopt;
}

/// What the text column of a dump shows of octets.
std::string TextColumn(const std::uint8_t* octets, std::size_t count) {
    std::string text;
    for (std::size_t index = 0; index < count; ++index) {
        const bool printable = octets[index] >= 0x20 && octets[index] < 0x7F;
        text += printable ? static_cast<char>(octets[index]) : '.';
    }
    return text;
}

/// Whether `rest` is the text column of those octets, bare or between bars.
bool IsTextColumn(std::string_view rest, std::string_view shown) {
    const std::string_view column = WithoutBlanksAhead(rest);
    if (rest.size() - column.size() < 2) {
        return false;
    }
    if (column.size() == shown.size() + 2 && column.starts_with('|') && column.ends_with('|')) {
        return column.substr(1, shown.size()) == shown;
    }
    // A blank may be the octet 20, and at the end of the line it may have been lost.
    const std::string_view bare = WithoutBlanksBehind(shown);
    return rest.ends_with(bare) &&
           WithoutBlanksAhead(rest.substr(0, rest.size() - bare.size())).empty();
}

/// A dump: lines with an offset, groups of digits and perhaps a text column.
class DumpReader {
  public:
    DumpReader(Locator locator, std::vector<std::uint8_t>& octets)
        : locator_(locator), octets_(octets) {}

    /// Reads a line. Returns what is wrong, or nothing.
    std::string Read(const Line& line) {
        if (WithoutBlanksAhead(line.text) == "*") {
            return locator_.InLine(
                line, "'*' stands for lines that the dump leaves out; hexdump -v shows them");
        }
        const std::optional<Offset> offset = OffsetOf(line.text);
        const std::optional<std::uint64_t> value = offset ? offset->Value() : std::nullopt;
        if (!value) {
            return locator_.InLine(line, "this line has no offset, and the first one has");
        }
        if (!any_) {
            start_ = *value;
            any_ = true;
        }
        if (*value - start_ != octets_.size()) {
            return locator_.InLine(line, "the offset is " + std::string(offset->digits) + ", and " +
                                             std::to_string(octets_.size()) +
                                             " octets (decimal) stand ahead of it");
        }
        const std::size_t before = octets_.size();
        std::string problem = ReadGroups(line, *offset);
        if (!problem.empty()) {
            octets_.resize(before);
        }
        return problem;
    }

    /// Whether a text column has confirmed the octets of the last line.
    [[nodiscard]] bool Confirmed() const { return confirmed_; }

  private:
    std::string ReadGroups(const Line& line, const Offset& offset) {
        const std::size_t before = octets_.size();
        confirmed_ = false;
        for (std::size_t index = offset.end; index < line.text.size();) {
            const std::string_view rest = line.text.substr(index);
            const std::size_t read = octets_.size() - before;
            if (read > 0 && IsTextColumn(rest, TextColumn(octets_.data() + before, read))) {
                confirmed_ = true;
                return {};
            }
            const std::string_view group = WithoutBlanksAhead(rest);
            const std::size_t blanks = rest.size() - group.size();
            const std::size_t count = CountDigits(group);
            const std::size_t start = index + blanks;
            const bool whole = count == group.size() || kBlanks.find(group[count]) != kBlanks.npos;
            constexpr std::size_t kHalfLine = 8;  // hexdump -C has a gap behind it
            const bool gap = blanks > 1 && read > 0 && read != kHalfLine;
            if (count == 0 || count % 2 != 0 || !whole || gap) {
                return locator_.At(line, start,
                                   "this is neither an octet nor the text column, which shows the "
                                   "octets ahead of it");
            }
            if (!offset.colon && count != 2) {
                return locator_.At(line, start,
                                   "behind an offset without a colon, digits in groups of other "
                                   "than two may be numbers of either byte order; xxd and "
                                   "hexdump -C show octets");
            }
            AppendDigits(group.substr(0, count), octets_);
            index = start + count;
        }
        return {};
    }

    Locator locator_;
    std::vector<std::uint8_t>& octets_;
    std::uint64_t start_ = 0;
    bool any_ = false;
    bool confirmed_ = false;
};

std::string ReadDump(const std::vector<Line>& lines, Locator locator,
                     std::vector<std::uint8_t>& octets) {
    DumpReader reader(locator, octets);
    for (const Line& line : lines) {
        if (std::string problem = reader.Read(line); !problem.empty()) {
            return problem;
        }
    }
    const bool offsetsAgree = lines.size() > 1;
    return offsetsAgree || reader.Confirmed()
               ? std::string()
               : "'" + std::string(OffsetOf(lines.front().text)->digits) +
                     "' may be the offset of a dump or octets; leave it out, or write all octets "
                     "without blanks";
}

std::string ReadGroups(const std::vector<Line>& lines, Locator locator,
                       std::vector<std::uint8_t>& octets) {
    GroupReader reader(locator, octets);
    for (const Line& line : lines) {
        if (std::string problem = reader.Read(line); !problem.empty()) {
            return problem;
        }
    }
    return reader.Finish();
}

/// Whether lines that begin with an offset are those of a dump.
bool IsDump(const std::vector<Line>& lines, const Offset& offset) {
    if (offset.IsSure()) {
        return true;
    }
    // Another start of a dump; the second line tells it from groups.
    std::vector<std::uint8_t> octets;
    DumpReader reader(Locator(false), octets);
    return lines.size() > 1 && reader.Read(lines[0]).empty() && reader.Read(lines[1]).empty();
}

}  // namespace

bool BeginsWithOffset(std::string_view line) {
    const std::optional<Offset> offset = OffsetOf(line);
    return offset && offset->IsSure();
}

std::string ParseOctets(std::string_view text, std::vector<std::uint8_t>& octets) {
    octets.clear();
    const std::vector<Line> lines = LinesOf(text);
    const Locator locator(text.find('\n') < text.size() - 1);
    const std::optional<Offset> offset =
        lines.empty() ? std::nullopt : OffsetOf(lines.front().text);
    const bool alone = offset && offset->end == lines.front().text.size();
    if (!alone && offset && IsDump(lines, *offset)) {
        return ReadDump(lines, locator, octets);
    }
    return ParseHex(text, octets).empty() ? std::string() : ReadGroups(lines, locator, octets);
}

}  // namespace quorvane::tool
