// The failure that a golden file shows, and its update.

#include "support/golden_check.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <unistd.h>

namespace quorvane::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFile =
    "# DEACTIVATE TEST MODE COMPLETE\n"
    "function: EPC_UE2SS\n"
    "length: 2\n"
    "hex: 0F 87\n"
    "return: 1\n"
    "--- text\n"
    "Decoded using \"EPC_UE2SS\".\n"
    "\n"
    "Decoder reported the following error: SYNTAX ERROR\\r\n"
    "\n"
    "MESSAGE: DEACTIVATE_TEST_MODE_COMPLETE\n"
    "--- diagnostics\n"
    "<ERRID:*> Error\n"
    "--- end\n";

class GoldenCheck : public testing::Test {
  protected:
    void SetUp() override {
        path_ = fs::temp_directory_path() /
                ("quorvane_golden_check_" + std::to_string(getpid()) + ".golden");
        std::ofstream(path_, std::ios::binary) << kFile;
        std::string problem;
        const auto golden = ReadGoldenFile(path_, problem);
        ASSERT_TRUE(golden) << problem;
        golden_ = *golden;
    }
    void TearDown() override { fs::remove(path_); }

    [[nodiscard]] std::string Contents() const {
        std::ifstream in(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    fs::path path_;
    GoldenFile golden_;
};

TEST_F(GoldenCheck, FindsNoDifferenceWhereThereIsNone) {
    EXPECT_EQ(GoldenDifference(path_, golden_, {{"one", golden_}, {"two", golden_}}), "");
}

TEST_F(GoldenCheck, TellsFileAndOctetsAndWhatIsExpected) {
    GoldenAnswer other = golden_;
    other.text.replace(other.text.find("SYNTAX"), 6, "SINTAX");
    EXPECT_EQ(GoldenDifference(path_, golden_, {{"one", other}, {"two", other}}),
              path_.string() +
                  "\n"
                  "EPC_UE2SS 2 0F 87\n"
                  "--- expected\n"
                  "+++ one, two\n"
                  "@@ -3,5 +3,5 @@\n"
                  " Decoded using \"EPC_UE2SS\".\n"
                  " \n"
                  "-Decoder reported the following error: SYNTAX ERROR\\r\n"
                  "+Decoder reported the following error: SINTAX ERROR\\r\n"
                  " \n"
                  " MESSAGE: DEACTIVATE_TEST_MODE_COMPLETE\n");
}

TEST_F(GoldenCheck, TellsInterfacesThatDisagreeApart) {
    GoldenAnswer other = golden_;
    other.diagnostics.clear();
    const std::string difference =
        GoldenDifference(path_, golden_, {{"one", golden_}, {"two", other}});
    EXPECT_NE(difference.find("+++ two\n"), std::string::npos);
    EXPECT_NE(difference.find("-<ERRID:*> Error\n"), std::string::npos);
    EXPECT_EQ(difference.find("one"), std::string::npos);
}

TEST_F(GoldenCheck, TellsAResultThatDiffers) {
    GoldenAnswer other = golden_;
    other.result = 0;
    EXPECT_NE(GoldenDifference(path_, golden_, {{"one", other}}).find("-return: 1\n+return: 0\n"),
              std::string::npos);
}

TEST_F(GoldenCheck, AnUpdateWithTheSameAnswerChangesNothing) {
    ASSERT_TRUE(UpdateGoldenFile(path_, golden_));
    EXPECT_EQ(Contents(), kFile);
}

TEST_F(GoldenCheck, AnUpdateKeepsWhatStandsAheadOfTheAnswer) {
    ASSERT_TRUE(UpdateGoldenFile(path_, {0, "Failed to decode \"EPC_UE2SS\" message", ""}));
    EXPECT_EQ(Contents(),
              "# DEACTIVATE TEST MODE COMPLETE\n"
              "function: EPC_UE2SS\n"
              "length: 2\n"
              "hex: 0F 87\n"
              "return: 0\n"
              "--- text\n"
              "Failed to decode \"EPC_UE2SS\" message\n"
              "--- diagnostics\n"
              "--- end\n");
    std::string problem;
    const auto read = ReadGoldenFile(path_, problem);
    ASSERT_TRUE(read) << problem;
    EXPECT_EQ(read->text, "Failed to decode \"EPC_UE2SS\" message");
}

TEST_F(GoldenCheck, RefusesAFileWithoutAnAnswer) {
    std::ofstream(path_, std::ios::binary) << "function: EPC_UE2SS\n";
    EXPECT_FALSE(UpdateGoldenFile(path_, golden_));
    EXPECT_EQ(Contents(), "function: EPC_UE2SS\n");
}

}  // namespace
}  // namespace quorvane::test
