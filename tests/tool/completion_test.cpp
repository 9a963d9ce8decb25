// The scripts by which shells complete command lines, run by these shells.

#include <fstream>
#include <string>
#include <vector>

#include "families/family.h"
#include "quorvane/decode.h"
#include "tool/tool_runner.h"

namespace quorvane {
namespace {

using tool::test::Outcome;
using tool::test::ToolTest;

std::string Lines(const std::vector<std::string>& words) {
    std::string lines;
    for (const std::string& word : words) {
        lines += word + "\n";
    }
    return lines;
}

std::string FunctionLines() {
    std::string lines;
    for (const DecodingInfo& info : Decodings()) {
        lines += std::string(info.name) + "\n";
    }
    return lines;
}

class CompletionTest : public ToolTest {
  protected:
    /// What the shell that `line` starts prints, with the script of `shell` as $script.
    Outcome RunIn(const std::string& shell, const std::string& line) {
        std::ofstream(Path("script")) << Run("completion " + shell).output;
        return RunShell("script=" + Path("script") + "; cd " + Path(".") + "; " + line);
    }

    /// What bash offers for the last of the words, a line each.
    std::string BashOffers(const std::string& words) {
        const Outcome outcome = RunIn("bash", "bash -c '. \"$0\"; COMP_WORDS=(" + words +
                                                  "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); "
                                                  "_quorvane; printf \"%s\\n\" "
                                                  "\"${COMPREPLY[@]}\"' $script");
        EXPECT_EQ(outcome.status, 0) << words;
        EXPECT_EQ(outcome.errors, "") << words;
        return outcome.output;
    }

    bool Has(const std::string& shell) { return RunShell("command -v " + shell).status == 0; }
};

TEST_F(CompletionTest, OfBashOffersCommands) {
    EXPECT_EQ(BashOffers("quorvane de"), "decode\n");
    EXPECT_EQ(BashOffers("quorvane --v"), "--version\n");
    EXPECT_EQ(BashOffers("quorvane help ca"), "capture\ncatalogue\n");
    EXPECT_EQ(BashOffers("quorvane completion \"\""), Lines({"bash", "zsh", "fish"}));
}

TEST_F(CompletionTest, OfBashOffersFunctionsAndFamiliesInTheirPlaces) {
    EXPECT_EQ(BashOffers("quorvane encode \"\""), FunctionLines());
    EXPECT_EQ(BashOffers("quorvane decode \"\""),
              "auto\nauto-downlink\nauto-uplink\n" + FunctionLines());
    EXPECT_EQ(BashOffers("quorvane decode --json --strict EPC_U"), "EPC_UE2SS\n");
    EXPECT_EQ(BashOffers("quorvane capture x.pcap --function EPC_S"), "EPC_SS2UE\n");
    std::string families;
    for (const families::FamilyInfo& family : families::KnownFamilies()) {
        families += std::string(family.name) + "\n";
    }
    EXPECT_EQ(BashOffers("quorvane catalogue \"\""), families);
}

TEST_F(CompletionTest, OfBashOffersOptionsAndTheirValues) {
    EXPECT_EQ(BashOffers("quorvane decode --de"), "--deciphered\n");
    EXPECT_EQ(BashOffers("quorvane catalogue eps --e"), Lines({"--elements", "--enumerations"}));
    EXPECT_EQ(BashOffers("quorvane capture --format \"\""), Lines({"text", "json", "csv"}));
}

TEST_F(CompletionTest, OfBashOffersFiles) {
    std::ofstream(Path("two words.txt")) << "";
    for (const char* words : {"encode EPC_UE2SS", "batch", "batch a b", "batch --jobs 2", "diff",
                              "diff a", "capture", "decode --file"}) {
        EXPECT_EQ(BashOffers("quorvane " + std::string(words) + " tw"), "two words.txt\n") << words;
    }
    EXPECT_EQ(BashOffers("quorvane catalogue tw"), "\n");
}

TEST_F(CompletionTest, OfZshIsReadByZsh) {
    if (!Has("zsh")) {
        GTEST_SKIP() << "zsh is not installed";
    }
    EXPECT_EQ(RunIn("zsh", "zsh -n $script").errors, "");
    // _arguments refuses specifications that it does not understand.
    const Outcome outcome =
        RunIn("zsh",
              "zsh -fc 'autoload -U compinit; compinit -D; . $0; words=(quorvane decode x); "
              "CURRENT=3; _arguments() { printf \"%s\\n\" \"$@\" }; _quorvane' $script");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_NE(outcome.output.find("\n--json[Show the message as a JSON object on one line, with "
                                  "its faults]\n"),
              std::string::npos)
        << outcome.output;
    EXPECT_NE(outcome.output.find("\n:FUNCTION:(auto auto-downlink auto-uplink "),
              std::string::npos)
        << outcome.output;
}

TEST_F(CompletionTest, OfFishOffersWhatItShould) {
    if (!Has("fish")) {
        GTEST_SKIP() << "fish is not installed";
    }
    const auto offers = [&](const std::string& line) {
        const Outcome outcome =
            RunIn("fish", "HOME=. fish -c 'source $argv[1]; complete -C \"" + line +
                              "\" | string replace -r \"\\t.*\" \"\"' $script");
        EXPECT_EQ(outcome.errors, "") << line;
        return outcome.output;
    };
    EXPECT_EQ(offers("quorvane dec"), "decode\n");
    EXPECT_EQ(offers("quorvane decode EPC_U"), "EPC_UE2SS\n");
    EXPECT_EQ(offers("quorvane decode --js"), "--json\n");
    EXPECT_EQ(offers("quorvane capture --format c"), "csv\n");
}

}  // namespace
}  // namespace quorvane
