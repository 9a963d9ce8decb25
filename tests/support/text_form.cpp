#include "support/text_form.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace quorvane::test {
namespace {

constexpr std::string_view kErrorStart = "Decoder reported the following error: ";

bool CutLine(std::string_view& rest, std::string_view& line) {
    const std::size_t end = rest.find('\n');
    if (end == std::string_view::npos) {
        return false;
    }
    line = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    return true;
}

// ASCII but for U+00DF; no control characters but a tab, which two enumeration texts have.
bool IsClean(std::string_view line) {
    for (std::size_t index = 0; index < line.size(); ++index) {
        if (line.substr(index).starts_with("\xC3\x9F")) {
            ++index;
        } else if (line[index] != '\t' && (line[index] < ' ' || line[index] > '~')) {
            return false;
        }
    }
    return true;
}

std::string CheckFields(std::string_view rest) {
    std::vector<char> open;
    std::string_view line;
    bool first = true;
    while (!rest.empty()) {
        if (!CutLine(rest, line)) {
            return "the last line has no end";
        }
        if (!IsClean(line)) {
            return "characters that no text has: " + std::string(line);
        }
        if (!first && open.empty()) {
            return "lines follow the message's closing brace";
        }
        const std::size_t indent = std::min(line.find_first_not_of(' '), line.size());
        const std::string_view word = line.substr(indent);
        if (word == "}" || word == "]" || word == "],") {
            if (open.empty() || open.back() != (word == "}" ? '{' : '[')) {
                return "brackets do not match";
            }
            open.pop_back();
        } else if (first ? line != "{" : false) {
            return "the fields do not start with a brace";
        } else if (word.ends_with('{') || word.ends_with('[')) {
            open.push_back(word.back());
        } else if ((word.empty() || word == ",") && indent != 0 && open.back() != '[') {
            return "an indented empty line or comma outside of a list";
        }
        first = false;
    }
    return open.empty() && !first ? "" : "brackets stay open";
}

}  // namespace

std::string TextFormProblem(std::string_view name, bool found, std::string_view text) {
    if (!found) {
        const std::string wanted = "Failed to decode \"" + std::string(name) + "\" message";
        return text == wanted ? "" : "not the text of an unknown message";
    }
    std::string_view rest = text;
    std::string_view line;
    if (!CutLine(rest, line) || line != "Decoded using \"" + std::string(name) + "\".") {
        return "the first line";
    }
    if (!CutLine(rest, line)) {
        return "no second line";
    }
    if (line.empty()) {
        if (!CutLine(rest, line) || !line.starts_with(kErrorStart) || !line.ends_with('\r') ||
            !IsClean(line.substr(0, line.size() - 1))) {
            return "the error line";
        }
        if (!CutLine(rest, line) || !line.empty() || !CutLine(rest, line)) {
            return "no empty line behind the error";
        }
    }
    if (!line.starts_with("MESSAGE: ") || !IsClean(line)) {
        return "no line with the message's name";
    }
    return CheckFields(rest);
}

}  // namespace quorvane::test
