#include "support/golden_file.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <fstream>
#include <map>

#include "families/family.h"
#include "tools/hex.h"

namespace quorvane::test {
namespace {

/// Lines up to the line `end`, which is passed over; false if there is no such line.
bool ReadSection(std::istream& in, const std::string& end, std::string& section) {
    for (std::string line; std::getline(in, line); section += line + "\n") {
        if (line == end) {
            return true;
        }
    }
    return false;
}

std::string WithCarriageReturns(std::string text) {
    for (std::size_t at = 0; (at = text.find("\\r", at)) != std::string::npos; ++at) {
        text.replace(at, 2, "\r");
    }
    return text;
}

/// Appends the lines of `text`, without their line feeds.
void AppendLines(std::vector<std::string>& lines, const std::string& text) {
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
}

std::string ReadInto(GoldenFile& golden, std::istream& in) {
    std::map<std::string, std::string> fields;
    for (std::string line; std::getline(in, line) && line != "--- text";) {
        if (line.starts_with('#')) {
            continue;
        }
        const std::size_t colon = line.find(": ");
        if (colon == std::string::npos && !line.ends_with(':')) {
            return "neither a comment nor a field: " + line;
        }
        const std::size_t end = std::min(colon, line.size() - 1);
        fields[line.substr(0, end)] = colon == std::string::npos ? "" : line.substr(colon + 2);
    }
    for (const char* name : {"function", "length", "hex", "return"}) {
        if (!fields.contains(name)) {
            return std::string("no field ") + name;
        }
    }
    if (fields.size() != 4) {
        return "a field that no one reads";
    }
    const std::optional<Decoding> decoding = FindDecoding(fields["function"]);
    if (!decoding) {
        return "unknown function " + fields["function"];
    }
    golden.decoding = *decoding;
    golden.length = std::stoi(fields["length"]);
    golden.result = std::stoi(fields["return"]);
    if (std::string problem = tool::ParseHex(fields["hex"], golden.octets); !problem.empty()) {
        return "hex: " + problem;
    }
    if (!ReadSection(in, "--- diagnostics", golden.text) ||
        !ReadSection(in, "--- end", golden.diagnostics)) {
        return "no line \"--- diagnostics\" or \"--- end\"";
    }
    golden.text = WithCarriageReturns(golden.text);
    if (golden.result == 0 && golden.text.ends_with('\n')) {
        golden.text.pop_back();
    }
    return {};
}

}  // namespace

std::optional<GoldenFile> ReadGoldenFile(const std::filesystem::path& path, std::string& problem) {
    std::ifstream in(path, std::ios::binary);
    GoldenFile golden;
    try {
        problem = ReadInto(golden, in);
    } catch (const std::exception& error) {
        problem = error.what();
    }
    if (!problem.empty()) {
        return std::nullopt;
    }
    return golden;
}

std::vector<std::string> AnswerLines(const GoldenAnswer& answer) {
    std::vector<std::string> lines = {"return: " + std::to_string(answer.result), "--- text"};
    AppendLines(lines, answer.text);
    for (std::string& line : lines) {
        for (std::size_t at = 0; (at = line.find('\r', at)) != std::string::npos; ++at) {
            line.replace(at, 1, "\\r");
        }
    }
    lines.emplace_back("--- diagnostics");
    AppendLines(lines, answer.diagnostics);
    lines.emplace_back("--- end");
    return lines;
}

bool UpdateGoldenFile(const std::filesystem::path& path, const GoldenAnswer& answer) {
    std::ifstream in(path, std::ios::binary);
    std::string contents;
    for (std::string line; std::getline(in, line) && !line.starts_with("return: ");) {
        contents += line + "\n";
    }
    if (!in) {
        return false;
    }
    for (const std::string& line : AnswerLines(answer)) {
        contents += line + "\n";
    }
    std::ofstream out(path, std::ios::binary);
    out << contents;
    return static_cast<bool>(out.flush());
}

bool OfLeftOutFamily(std::string_view name) {
    const std::string_view folder = name.substr(0, name.find('/'));
    const auto known = families::KnownFamilies();
    return std::any_of(known.begin(), known.end(), [&](const families::FamilyInfo& family) {
        return family.name == folder && family.tables == nullptr;
    });
}

std::vector<std::filesystem::path> FindGoldenFiles(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        const std::string name = entry.path().lexically_relative(folder).generic_string();
        if (entry.path().extension() == ".golden" && !OfLeftOutFamily(name)) {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

}  // namespace quorvane::test
