#include "tools/notes.h"

#include <algorithm>
#include <vector>

namespace quorvane::tool {
namespace {

struct TextLine {
    std::string text;  // with its line feed, if it has one
    std::size_t indent = 0;
    std::string notes;  // that stand behind it
};

std::vector<TextLine> LinesOf(std::string_view text) {
    std::vector<TextLine> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
        const std::string_view line = text.substr(0, end);
        lines.push_back({std::string(line), std::min(line.find_first_not_of(' '), end), {}});
        text.remove_prefix(end);
    }
    return lines;
}

/// The line below `around` that begins with the member `name`; `around` if there is none.
std::size_t FindMember(const std::vector<TextLine>& lines, std::size_t around,
                       std::string_view name) {
    for (std::size_t index = around + 1; index < lines.size(); ++index) {
        const std::string_view line =
            std::string_view(lines[index].text).substr(lines[index].indent);
        const bool empty = line.empty() || line == "\n" || line == "{\n";
        if (!empty && lines[index].indent <= lines[around].indent) {
            break;
        }
        if (line.starts_with(name) && line.substr(name.size()).starts_with(':')) {
            return index;
        }
    }
    return around;
}

/// The line of the field at `path`, or of the innermost one around it that has a line. Items of a
/// list are not told from each other: it is that of the list.
std::size_t FindField(const std::vector<TextLine>& lines, std::size_t start,
                      std::string_view path) {
    path = path.substr(0, path.find('['));
    std::size_t found = start;
    while (!path.empty()) {
        const std::string_view name = path.substr(0, path.find('.'));
        found = FindMember(lines, found, name);
        path.remove_prefix(std::min(name.size() + 1, path.size()));
    }
    return found;
}

}  // namespace

std::string WithNotes(std::string_view text, const Message& message) {
    std::vector<TextLine> lines = LinesOf(text);
    const auto start = std::find_if(lines.begin(), lines.end(), [](const TextLine& line) {
        return line.text.starts_with("MESSAGE: ");
    });
    if (start == lines.end()) {
        return std::string(text);
    }
    const auto first = static_cast<std::size_t>(start - lines.begin());
    for (std::size_t index = 0; index < message.FaultCount(); ++index) {
        const Fault fault = message.GetFault(index);
        std::string path;
        message.AppendPath(fault.field, path);
        TextLine& line = lines[FindField(lines, first, path)];
        std::string note = path;
        if (fault.offset) {
            note += (note.empty() ? "bit " : ", bit ") + std::to_string(*fault.offset);
        }
        note += note.empty() ? "" : ": ";
        line.notes.append(line.indent, ' ').append("^ ").append(note).append(fault.words);
        line.notes += '\n';
    }
    std::string noted;
    for (const TextLine& line : lines) {
        noted.append(line.text).append(line.notes);
    }
    return noted;
}

}  // namespace quorvane::tool
