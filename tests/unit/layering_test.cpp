// The rooms of the tree and which of the others each may know; and that no room but the families
// and the facade's own tables knows a family by name.

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "families/family.h"
#include "quorvane/decode.h"

namespace {

namespace fs = std::filesystem;

const fs::path kRoot = QUORVANE_SOURCE_DIR;

bool IsSource(const fs::path& path) {
    const std::string ending = path.extension().string();
    return ending == ".c" || ending == ".h" || ending == ".cpp" || ending == ".def";
}

std::vector<fs::path> SourcesIn(const fs::path& folder) {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (IsSource(entry.path())) {
            paths.push_back(entry.path());
        }
    }
    return paths;
}

std::vector<std::string> FoldersIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.is_directory()) {
            names.push_back(entry.path().filename().string());
        }
    }
    return names;
}

/// The rooms of the tree: those of src, the public headers, and what else at the top has sources.
std::set<std::string> Rooms() {
    std::set<std::string> rooms;
    for (const std::string& name : FoldersIn(kRoot / "src")) {
        rooms.insert("src/" + name);
    }
    for (const std::string& name : FoldersIn(kRoot / "include")) {
        rooms.insert("include/" + name);
    }
    for (const std::string& name : FoldersIn(kRoot)) {
        const bool made = name == "build" || name.starts_with('.');
        if (!made && name != "src" && name != "include" && !SourcesIn(kRoot / name).empty()) {
            rooms.insert(name);
        }
    }
    return rooms;
}

std::vector<std::string> LinesOf(const fs::path& path) {
    std::ifstream in(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// The first folder of what a line includes; empty if it is no such line or there is no folder.
std::string IncludedRoom(const std::string& line) {
    constexpr std::string_view kInclude = "#include ";
    const std::size_t slash = line.find('/');
    if (!line.starts_with(kInclude) || slash == std::string::npos) {
        return {};
    }
    return line.substr(kInclude.size() + 1, slash - kInclude.size() - 1);
}

bool IsUpper(char character) {
    return std::isupper(static_cast<unsigned char>(character)) != 0;
}
bool IsAlnum(char character) {
    return std::isalnum(static_cast<unsigned char>(character)) != 0;
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char character) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    });
    return text;
}

/// The words that names in a text are made of: "kOwnSet EPSSet own_set" has k, Own, Set, EPS, Set,
/// own, set.
std::vector<std::string> WordsOf(const std::string& text) {
    std::vector<std::string> words(1);
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char character = text[index];
        const char next = index + 1 < text.size() ? text[index + 1] : ' ';
        const bool starts = IsUpper(character) && (index == 0 || !IsUpper(text[index - 1]) ||
                                                   (IsAlnum(next) && !IsUpper(next)));
        if (!IsAlnum(character) || starts) {
            words.emplace_back();
        }
        if (IsAlnum(character)) {
            words.back() += character;
        }
    }
    std::erase(words, "");
    return words;
}

/// The names in a text as they sound: in lower case, without underscores.
std::vector<std::string> NamesOf(const std::string& text) {
    std::vector<std::string> names(1);
    for (const char character : text) {
        if (!IsAlnum(character) && character != '_') {
            names.emplace_back();
        } else if (character != '_') {
            names.back() += character;
        }
        names.back() = Lower(names.back());
    }
    std::erase(names, "");
    return names;
}

/// What only families have: their names, and the abbreviations that their decodings' names have.
std::set<std::string> FamilyWords() {
    std::set<std::string> found;
    for (const auto& family : quorvane::families::KnownFamilies()) {
        found.insert(std::string(family.name));
    }
    for (const auto& info : quorvane::Decodings()) {
        for (const std::string& word : WordsOf(std::string(info.name))) {
            if (word.size() > 1 && IsUpper(word[0]) && IsUpper(word[1])) {
                found.insert(Lower(word));
            }
        }
    }
    return found;
}

/// The types that only families have: messages and elements of the standards.
std::set<std::string> FamilyTypes() {
    constexpr std::size_t kShortest = 8;  // shorter ones may be words of the language
    std::set<std::string> found;
    for (const auto* family : quorvane::families::AllFamilies()) {
        for (const std::uint16_t type : family->types.named) {
            const auto names =
                NamesOf(std::string(family->types.NameOf(family->types.types[type])));
            if (!names.empty() && names.front().size() >= kShortest) {
                found.insert(names.front());
            }
        }
    }
    return found;
}

TEST(Layering, IncludesPointDownwards) {
    const std::set<std::string> sources = {"bits",     "csn",      "iecodec",  "reflect", "facade",
                                           "families", "compiler", "quorvane", "support", "tools"};
    std::set<std::string> tests = {"fuzz"};
    const auto ownFolders = FoldersIn(kRoot / "tests");
    tests.insert(ownFolders.begin(), ownFolders.end());
    tests.insert(sources.begin(), sources.end());
    const std::map<std::string, std::set<std::string>> allowed = {
        {"src/bits", {"bits"}},
        {"src/csn", {"bits", "csn"}},
        {"src/iecodec", {"bits", "csn", "iecodec"}},
        {"src/reflect", {"bits", "reflect"}},
        {"src/families", {"bits", "csn", "iecodec", "reflect", "families"}},
        {"src/facade", {"bits", "iecodec", "reflect", "families", "facade", "quorvane"}},
        {"include/quorvane", {"quorvane"}},
        {"compiler", {"bits", "csn", "iecodec", "reflect", "compiler"}},
        {"tools", {"bits", "csn", "iecodec", "reflect", "families", "facade", "quorvane", "tools"}},
        {"benchmarks", sources},
        {"examples", {"quorvane"}},
        {"fuzz", sources},
        {"tests", tests},
    };
    // What comes from outside.
    const std::set<std::string> others = {"CLI",  "benchmark", "gtest",    "linux",
                                          "pcap", "rapidjson", "valijson", "sys"};
    for (const std::string& room : Rooms()) {
        const auto rooms = allowed.find(room);
        ASSERT_NE(rooms, allowed.end()) << "which rooms may " << room << " know?";
        std::size_t checked = 0;
        for (const fs::path& path : SourcesIn(kRoot / room)) {
            for (const std::string& line : LinesOf(path)) {
                const std::string included = IncludedRoom(line);
                if (included.empty() || others.contains(included)) {
                    continue;
                }
                ++checked;
                EXPECT_TRUE(rooms->second.contains(included)) << path << ": " << line;
            }
        }
        EXPECT_GT(checked, 0U) << room;
    }
    EXPECT_EQ(Rooms().size(), allowed.size());
}

// Families and their elements are data: only their own rooms, the decodings, tests, examples, those
// of the tool's help included, the messages that are measured, and what finds messages of protocols
// in captures name them.
TEST(Layering, EnginesNameNoFamily) {
    const std::set<std::string> named = {"src/families", "include/quorvane", "tests", "examples"};
    const std::set<fs::path> tables = {
        kRoot / "src/facade/decodings.cpp", kRoot / "src/facade/engine.cpp",
        kRoot / "benchmarks/traffic.cpp", kRoot / "benchmarks/hand_written.cpp",
        kRoot / "tools/help.cpp"};
    const fs::path captures = kRoot / "tools/capture";
    const std::set<std::string> words = FamilyWords();
    const std::set<std::string> types = FamilyTypes();
    ASSERT_TRUE(words.contains("eps") && words.contains("rlc"));
    for (const std::string& room : Rooms()) {
        if (named.contains(room)) {
            continue;
        }
        for (const fs::path& path : SourcesIn(kRoot / room)) {
            if (tables.contains(path) || path.parent_path() == captures) {
                continue;
            }
            for (const std::string& line : LinesOf(path)) {
                const std::string code = line.substr(0, line.find("//"));
                for (const std::string& word : WordsOf(code)) {
                    EXPECT_FALSE(words.contains(Lower(word))) << path << ": " << line;
                }
                for (const std::string& name : NamesOf(code)) {
                    EXPECT_TRUE(std::none_of(types.begin(), types.end(),
                                             [&](const std::string& type) {
                                                 return name.find(type) != std::string::npos;
                                             }))
                        << path << ": " << line;
                }
            }
        }
    }
}

// What an engine does for the sake of one clause is an element or a table of that standard. TS
// 24.007 lays down what all elements have in common.
TEST(Layering, EnginesCiteNoStandardOfAFamily) {
    const std::regex citation("TS ?([0-9]{2}[.][0-9]{3})");
    for (const char* room : {"src/bits", "src/csn", "src/iecodec", "src/reflect"}) {
        for (const fs::path& path : SourcesIn(kRoot / room)) {
            for (const std::string& line : LinesOf(path)) {
                std::smatch match;
                const bool cites = std::regex_search(line, match, citation);
                EXPECT_TRUE(!cites || match[1] == "24.007") << path << ": " << line;
            }
        }
    }
}

TEST(Layering, HandWrittenFilesStayReadable) {
    constexpr std::size_t kMostLines = 600;
    for (const std::string& room : Rooms()) {
        for (const fs::path& path : SourcesIn(kRoot / room)) {
            EXPECT_LE(LinesOf(path).size(), kMostLines) << path;
        }
    }
}

TEST(Layering, SourcesAreAscii) {
    for (const std::string& room : Rooms()) {
        for (const fs::path& path : SourcesIn(kRoot / room)) {
            for (const std::string& line : LinesOf(path)) {
                for (const char character : line) {
                    ASSERT_LT(static_cast<unsigned char>(character), 0x80) << path << ": " << line;
                }
            }
        }
    }
}

TEST(Documentation, LinksLeadToFiles) {
    std::vector<fs::path> pages = {kRoot / "README.md", kRoot / "CONTRIBUTING.md",
                                   kRoot / "CHANGELOG.md", kRoot / "SECURITY.md"};
    for (const auto& entry : fs::directory_iterator(kRoot / "docs")) {
        pages.push_back(entry.path());
    }
    for (const fs::path& page : pages) {
        for (const std::string& line : LinesOf(page)) {
            for (std::size_t at = 0; (at = line.find("](", at)) != std::string::npos; ++at) {
                const std::string target =
                    line.substr(at + 2, line.find_first_of(")#", at) - at - 2);
                if (!target.empty() && target.find(':') == std::string::npos) {
                    EXPECT_TRUE(fs::exists(page.parent_path() / target)) << page << ": " << line;
                }
            }
        }
    }
}

}  // namespace
