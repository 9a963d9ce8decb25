#include "compiler/description_files.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace quorvane::compiler {
namespace {

/// A folder with two descriptions and a folder that is named like one.
class DescriptionFiles : public testing::Test {
  protected:
    DescriptionFiles()
        : folder_(std::filesystem::path(testing::TempDir()) /
                  ("quorvane_files_" + std::to_string(getpid()))) {
        std::filesystem::create_directories(folder_ / "folder.qd");
        std::ofstream(folder_ / "a.qd") << "family f\n";
        std::ofstream(folder_ / "b.csn1") << "shared ;\n";
    }
    ~DescriptionFiles() override { std::filesystem::remove_all(folder_); }

    [[nodiscard]] std::string Path(const std::string& name) const { return folder_ / name; }

    std::string Read(const std::vector<std::string>& names, const std::string& output = "out.cpp") {
        sources_.clear();
        return ReadDescriptions(output, names, sources_);
    }

    std::filesystem::path folder_;
    std::vector<Source> sources_;
};

TEST_F(DescriptionFiles, AreReadInTheirOrder) {
    EXPECT_EQ(Read({Path("b.csn1"), Path("a.qd")}), "");
    ASSERT_EQ(sources_.size(), 2U);
    EXPECT_EQ(sources_[0].name, Path("b.csn1"));
    EXPECT_EQ(sources_[0].text, "shared ;\n");
    EXPECT_EQ(sources_[1].text, "family f\n");
}

TEST_F(DescriptionFiles, AreNeverWritten) {
    EXPECT_EQ(Read({Path("a.qd")}, "b.csn1"),
              "OUTPUT is b.csn1, which would be a description; a C++ file goes there");
    EXPECT_EQ(Read({Path("a.qd")}, "b.qd"),
              "OUTPUT is b.qd, which would be a description; a C++ file goes there");
}

TEST_F(DescriptionFiles, AreNoFolders) {
    EXPECT_EQ(Read({Path("folder.qd")}),
              "cannot read " + Path("folder.qd") + ": it is a directory");
}

TEST_F(DescriptionFiles, AreThere) {
    EXPECT_EQ(Read({Path("none.qd")}), "cannot read " + Path("none.qd"));
}

TEST_F(DescriptionFiles, AreGivenOnce) {
    EXPECT_EQ(Read({Path("a.qd"), Path("b.csn1"), Path("a.qd")}), Path("a.qd") + " is given twice");
    EXPECT_EQ(Read({Path("a.qd"), Path("folder.qd/../a.qd")}),
              Path("folder.qd/../a.qd") + " is given twice");
}

}  // namespace
}  // namespace quorvane::compiler
