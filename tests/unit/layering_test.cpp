// The rooms of src and which of the others each may know; and that no room but the families and
// the facade's own tables knows a family by name.

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const fs::path kRoot = QUORVANE_SOURCE_DIR;

std::vector<fs::path> SourcesIn(const fs::path& folder) {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string ending = entry.path().extension().string();
        if (ending == ".h" || ending == ".cpp" || ending == ".def") {
            paths.push_back(entry.path());
        }
    }
    return paths;
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

/// The words that names in a line are made of, in lower case: "kOwnSet own_set" has k, own, set.
std::set<std::string> WordsOf(const std::string& line) {
    std::set<std::string> words;
    std::string word;
    char before = ' ';
    for (const char character : line + " ") {
        const auto octet = static_cast<unsigned char>(character);
        const bool starts = std::isupper(octet) != 0 && std::isupper(before) == 0;
        if (starts || std::isalnum(octet) == 0) {
            words.insert(word);
            word.clear();
        }
        if (std::isalnum(octet) != 0) {
            word += static_cast<char>(std::tolower(octet));
        }
        before = character;
    }
    return words;
}

TEST(Layering, IncludesPointDownwards) {
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
    };
    // What comes from outside: the tool's libraries and the wide string of another platform.
    const std::set<std::string> others = {"CLI", "rapidjson", "sys"};
    std::size_t checked = 0;
    for (const auto& [room, rooms] : allowed) {
        for (const fs::path& path : SourcesIn(kRoot / room)) {
            for (const std::string& line : LinesOf(path)) {
                const std::string included = IncludedRoom(line);
                if (included.empty() || others.contains(included)) {
                    continue;
                }
                ++checked;
                EXPECT_TRUE(rooms.contains(included)) << path << ": " << line;
            }
        }
    }
    EXPECT_GT(checked, 50U);
}

TEST(Layering, TheSourcesHaveNoOtherRooms) {
    std::set<std::string> rooms;
    for (const auto& entry : fs::directory_iterator(kRoot / "src")) {
        rooms.insert(entry.path().filename().string());
    }
    EXPECT_EQ(rooms,
              (std::set<std::string>{"bits", "csn", "facade", "families", "iecodec", "reflect"}));
}

TEST(Layering, EnginesNameNoFamily) {
    const std::set<std::string> families = {"eps", "epc", "l3", "rr", "rlc", "rlcmac"};
    const std::set<std::string> tables = {"decodings.cpp", "engine.cpp"};
    for (const char* room : {"bits", "csn", "iecodec", "reflect", "facade"}) {
        for (const fs::path& path : SourcesIn(kRoot / "src" / room)) {
            if (tables.contains(path.filename().string())) {
                continue;
            }
            for (const std::string& line : LinesOf(path)) {
                for (const std::string& word : WordsOf(line.substr(0, line.find("//")))) {
                    EXPECT_FALSE(families.contains(word)) << path << ": " << line;
                }
            }
        }
    }
}

TEST(Layering, HandWrittenFilesStayReadable) {
    constexpr std::size_t kMostLines = 650;
    for (const char* folder : {"src", "include", "compiler", "tools", "tests", "fuzz"}) {
        for (const fs::path& path : SourcesIn(kRoot / folder)) {
            EXPECT_LE(LinesOf(path).size(), kMostLines) << path;
        }
    }
}

TEST(Layering, SourcesAreAscii) {
    for (const char* folder : {"src", "include", "compiler", "tools"}) {
        for (const fs::path& path : SourcesIn(kRoot / folder)) {
            for (const std::string& line : LinesOf(path)) {
                for (const char character : line) {
                    ASSERT_LT(static_cast<unsigned char>(character), 0x80) << path << ": " << line;
                }
            }
        }
    }
}

TEST(Documentation, LinksLeadToFiles) {
    std::vector<fs::path> pages = {kRoot / "README.md"};
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
