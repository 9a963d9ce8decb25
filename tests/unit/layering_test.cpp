// The rooms of src and which of the others each may know; and that no room but the families and
// the facade's own tables knows a family by name.

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <regex>
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
    const std::regex include("^#include [\"<]([a-z_A-Z0-9]+)/");
    std::size_t checked = 0;
    for (const auto& [room, rooms] : allowed) {
        for (const fs::path& path : SourcesIn(kRoot / room)) {
            for (const std::string& line : LinesOf(path)) {
                std::smatch match;
                if (!std::regex_search(line, match, include) || others.contains(match[1])) {
                    continue;
                }
                ++checked;
                EXPECT_TRUE(rooms.contains(match[1])) << path << ": " << line;
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
    const std::regex family("(^|[^a-z])(eps|epc|l3|rr|rlc_?mac)([^a-z]|$)", std::regex::icase);
    const std::set<std::string> tables = {"decodings.cpp", "engine.cpp"};
    for (const char* room : {"bits", "csn", "iecodec", "reflect", "facade"}) {
        for (const fs::path& path : SourcesIn(kRoot / "src" / room)) {
            if (tables.contains(path.filename().string())) {
                continue;
            }
            for (const std::string& line : LinesOf(path)) {
                const std::string code = line.substr(0, line.find("//"));
                EXPECT_FALSE(std::regex_search(code, family)) << path << ": " << line;
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

}  // namespace
