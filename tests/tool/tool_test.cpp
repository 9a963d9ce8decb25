// The command-line tool as a user runs it: output, messages, exit status.

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "families/family.h"
#include "quorvane/decode.h"
#include "support/golden_file.h"
#include "tool/tool_runner.h"
#include "tools/hex.h"

namespace quorvane {
namespace {

using tool::test::JsonLines;
using tool::test::Outcome;
using tool::test::ToolTest;

TEST_F(ToolTest, DecodePrintsTheText) {
    const Outcome outcome = Run("decode EPC_UE2SS 0F87");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output,
              "Decoded using \"EPC_UE2SS\".\nMESSAGE: DEACTIVATE_TEST_MODE_COMPLETE\n{\n}\n");
    EXPECT_EQ(outcome.errors, "");
}

TEST_F(ToolTest, DecodePrintsJson) {
    const Outcome good = Run("decode --json EPC_UE2SS 0F87");
    EXPECT_EQ(good.status, 0);
    EXPECT_EQ(good.output,
              R"({"decoding":"EPC_UE2SS","type":"DEACTIVATE_TEST_MODE_COMPLETE","code":0,)"
              R"("bits":16,"fields":{}})"
              "\n");
    EXPECT_EQ(good.errors, "");
    const Outcome faulty = Run("decode EPC_SS2UE 0F84 --json");
    EXPECT_EQ(faulty.status, 0);
    EXPECT_EQ(faulty.errors, "");  // its faults are in the object
    EXPECT_EQ(JsonLines(faulty.output).at(0)["faults"].Size(), 1U);
    const Outcome unknown = Run("decode --json EPC_UE2SS FF FF");
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.output, "{\"decoding\":\"EPC_UE2SS\",\"type\":null,\"code\":-2}\n");
}

TEST_F(ToolTest, DecodeTakesHexInManyForms) {
    const std::string expected = Run("decode EPC_UE2SS 0F87").output;
    for (const char* hex : {"0f 87", "'0F 87'", "0F:87", "0x0F 0x87", "0x0f87", "' 0X0F : 87 '"}) {
        const Outcome outcome = Run(std::string("decode EPC_UE2SS ") + hex);
        EXPECT_EQ(outcome.status, 0) << hex;
        EXPECT_EQ(outcome.output, expected) << hex;
    }
}

TEST_F(ToolTest, DecodeTakesOctetsFromFilesAndStandardInput) {
    const std::string expected = Run("decode EPC_UE2SS 0F87").output;
    const std::string dump =
        "\xEF\xBB\xBF# a dump\n00000000: 0f                .\n00000001: 87  .\n";
    std::ofstream(Path("dump")) << dump;
    EXPECT_EQ(Run("decode EPC_UE2SS -", dump).output, expected);
    EXPECT_EQ(Run("decode EPC_UE2SS --file -", "0F\n87\n").output, expected);
    EXPECT_EQ(Run("decode EPC_UE2SS --file " + Path("dump")).output, expected);
    EXPECT_EQ(Run("diff \"EPC_UE2SS 0F 87\" \"EPC_UE2SS {0x0F, 0x87}\"").status, 0);

    const Outcome bad = Run("decode EPC_UE2SS -", "0F\n8\n");
    EXPECT_EQ(bad.status, 2);
    EXPECT_EQ(bad.errors,
              "quorvane: -, line 2, character 1: an octet needs two hexadecimal digits, this one "
              "has one\n");
    EXPECT_EQ(Run("decode EPC_UE2SS").errors,
              "quorvane: HEX or --file is required; - stands for standard input\n");
    EXPECT_EQ(Run("decode EPC_UE2SS 0F87 --file " + Path("dump")).status, 2);
}

// As many characters as a line may have, 655,360, in one line or in many.
TEST_F(ToolTest, DecodeRefusesFilesThatAreTooLong) {
    const std::string words = ": more than 655360 characters are no message\n";
    std::string lines;
    while (lines.size() <= 655360) {
        lines += std::string(99, ' ') + "\n";
    }
    for (const std::string& text : {std::string(655361, ' '), lines, lines + "\n0F87\n"}) {
        std::ofstream(Path("long"), std::ios::binary) << text;
        const Outcome outcome = Run("decode EPC_UE2SS --file " + Path("long"));
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_NE(outcome.errors.find(Path("long") + words), std::string::npos) << outcome.errors;
    }
}

TEST_F(ToolTest, DecodeOfAnUnknownMessageExitsWith1) {
    const Outcome outcome = Run("decode EPC_UE2SS FF FF");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "Failed to decode \"EPC_UE2SS\" message");
}

TEST_F(ToolTest, DecodeWritesDiagnosticsToStandardError) {
    const Outcome outcome = Run("decode EPC_SS2UE 0F84");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors.compare(0, 7, "<ERRID:"), 0) << outcome.errors;
    EXPECT_NE(outcome.errors.find("> Message too short decoding subfield UETestLoopMode\n"),
              std::string::npos);
}

TEST_F(ToolTest, WrongUseExitsWith2AndSaysWhatAndWhere) {
    const std::vector<std::pair<std::string, std::string>> uses = {
        {"decode NOPE 00",
         "quorvane: unknown function 'NOPE'; the command \"quorvane list\" shows "
         "all\n"},
        {"decode EPS_SMUplink 0G", "quorvane: HEX, character 2: 'G' is not a hexadecimal digit\n"},
        {"decode EPS_SMUplink 02 1 D0",
         "quorvane: HEX, character 4: an octet needs two hexadecimal digits, this one has one\n"},
        {"decode EPS_SMUplink 02 0x", "quorvane: HEX, character 4: no digits follow 0x\n"},
        {"catalogue nope",
         "quorvane: unknown family 'nope'; the families are eps, epc, l3, rr and rlcmac\n"},
        {"batch /nonexistent/file",
         "quorvane: cannot open '/nonexistent/file': No such file or directory\n"},
        {"batch ''", "quorvane: cannot open '': No such file or directory\n"},
    };
    for (const auto& [arguments, message] : uses) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_EQ(outcome.output, "") << arguments;
        EXPECT_EQ(outcome.errors, message) << arguments;
    }
}

TEST_F(ToolTest, FunctionsAreNamedInAnyCase) {
    const Outcome outcome = Run("decode epc_ue2SS 0F87");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(outcome.output.starts_with("Decoded using \"EPC_UE2SS\".\n")) << outcome.output;
    EXPECT_EQ(Run("batch", "epc_UE2ss 2 0F87\n").status, 0);
    EXPECT_EQ(Run("diff 'epc_ue2ss 0F87' 'EPC_UE2SS 0F87'").status, 0);
    EXPECT_EQ(Run("generate epc_ue2ss 1").status, 0);
    EXPECT_EQ(Run("encode epc_ue2ss", Run("decode --json EPC_UE2SS 0F87").output).output, "0F87\n");
}

TEST_F(ToolTest, SlipsInFunctionsNameTheNearest) {
    const std::string words = "unknown function 'EPC_UE2S'; the nearest is EPC_UE2SS";
    const std::string end = "; the command \"quorvane list\" shows all\n";
    EXPECT_EQ(Run("decode EPC_UE2S 0F87").errors, "quorvane: " + words + end);
    EXPECT_EQ(Run("encode EPC_UE2S").errors, "quorvane: " + words + end);
    EXPECT_EQ(Run("generate EPC_UE2S 1").errors, "quorvane: " + words + end);
    EXPECT_EQ(Run("diff 'EPC_UE2S 0F87' 'EPC_UE2SS 0F87'").errors,
              "quorvane: EPC_UE2S 0F87: " + words + "\n");
    EXPECT_STREQ(JsonLines(Run("batch", "EPC_UE2S 2 0F87\n").output)[0]["error"].GetString(),
                 words.c_str());
}

TEST_F(ToolTest, WrongArgumentsExitWith2) {
    for (const char* arguments :
         {"", "nonsense", "decode", "decode EPS_SMUplink", "catalogue", "catalogue eps --nonsense",
          "catalogue eps --census --elements", "list more", "generate EPC_UE2SS -1",
          "generate EPC_UE2SS 18446744073709551616", "generate EPC_UE2SS 1 --seed -1",
          "generate EPC_UE2SS 1 --seed 18446744073709551616"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_NE(outcome.errors, "") << arguments;
    }
}

TEST_F(ToolTest, GenerateNamesTheNearestMessage) {
    const Outcome outcome = Run("generate EPC_UE2SS 1 --message DEACTIVATE_TESTMODE_COMPLETE");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors,
              "quorvane: EPC_UE2SS has no message DEACTIVATE_TESTMODE_COMPLETE; the nearest is "
              "DEACTIVATE_TEST_MODE_COMPLETE; the line \"MESSAGE: \" of a text shows a message's "
              "name\n");
}

TEST_F(ToolTest, HelpAndVersionExitWith0) {
    EXPECT_EQ(Run("--help").status, 0);
    EXPECT_EQ(Run("decode --help").status, 0);
    EXPECT_EQ(Run("--version").status, 0);
}

TEST_F(ToolTest, OutputThatIsLostExitsWith2) {
    for (const char* command : {"--version", "--help", "help", "list"}) {
        EXPECT_EQ(Run(std::string(command) + " >/dev/full 2>/dev/null; exit $?; true").status, 2)
            << command;
    }
}

TEST_F(ToolTest, BatchAnswersEachLineInOrder) {
    const Outcome outcome = Run("batch",
                                "EPC_UE2SS 2 0F87\n"
                                "  EPC_UE2SS\t-1   0f 87 \r\n"
                                "EPC_SS2UE 2 0F:84\n"
                                "EPC_UE2SS 2 FFFF");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    const auto lines = JsonLines(outcome.output);
    ASSERT_EQ(lines.size(), 4U);

    std::vector<std::string> keys;
    for (const auto& member : lines[0].GetObject()) {
        keys.emplace_back(member.name.GetString());
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"line", "fn", "length", "hex", "ret", "text",
                                              "diagnostics"}));
    EXPECT_EQ(lines[0]["line"].GetInt(), 1);
    EXPECT_EQ(lines[3]["line"].GetInt(), 4);
    EXPECT_STREQ(lines[0]["fn"].GetString(), "EPC_UE2SS");
    EXPECT_EQ(lines[0]["length"].GetInt(), 2);
    EXPECT_STREQ(lines[0]["hex"].GetString(), "0F87");
    EXPECT_EQ(lines[0]["ret"].GetInt(), 1);
    EXPECT_STREQ(lines[0]["text"].GetString(),
                 "Decoded using \"EPC_UE2SS\".\nMESSAGE: DEACTIVATE_TEST_MODE_COMPLETE\n{\n}\n");
    EXPECT_TRUE(lines[0]["diagnostics"].GetArray().Empty());

    EXPECT_EQ(lines[1]["length"].GetInt(), -1);
    EXPECT_STREQ(lines[1]["hex"].GetString(), "0f 87");
    EXPECT_EQ(lines[1]["ret"].GetInt(), 1);

    ASSERT_EQ(lines[2]["diagnostics"].Size(), 1U);
    const std::string diagnostic = lines[2]["diagnostics"][0].GetString();
    EXPECT_TRUE(diagnostic.starts_with("<ERRID:"));
    EXPECT_TRUE(diagnostic.ends_with("> Message too short decoding subfield UETestLoopMode"));

    EXPECT_EQ(lines[3]["ret"].GetInt(), 0);
    EXPECT_STREQ(lines[3]["text"].GetString(), "Failed to decode \"EPC_UE2SS\" message");
}

TEST_F(ToolTest, BatchAnswersWithMessagesAsJson) {
    const Outcome outcome =
        Run("batch --json", "EPC_UE2SS 2 0F87\nEPC_SS2UE 2 0F:84\nNOPE 2 00\nEPC_UE2SS 2 FFFF\n");
    EXPECT_EQ(outcome.status, 1);
    const auto lines = JsonLines(outcome.output);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(outcome.output.substr(0, outcome.output.find('\n')),
              R"({"line":1,"fn":"EPC_UE2SS","length":2,"hex":"0F87","ret":1,"message":)"
              R"({"decoding":"EPC_UE2SS","type":"DEACTIVATE_TEST_MODE_COMPLETE","code":0,)"
              R"("bits":16,"fields":{}}})");
    EXPECT_EQ(lines[1]["message"]["faults"].Size(), 1U);
    EXPECT_STREQ(lines[2]["error"].GetString(), "unknown function 'NOPE'");
    EXPECT_EQ(lines[3]["ret"].GetInt(), 0);
    EXPECT_TRUE(lines[3]["message"]["type"].IsNull());
}

TEST_F(ToolTest, BatchGoesOnBehindBadLines) {
    const Outcome outcome = Run("batch",
                                "EPC_UE2SS 2\n"
                                "NOPE 2 00\n"
                                "EPC_UE2SS\n"
                                "EPC_UE2SS two 0F87\n"
                                "EPC_UE2SS 2147483648 0F87\n"
                                "EPC_UE2SS 2 0F8\n"
                                "EPC_UE2SS 2 0F87\n");
    EXPECT_EQ(outcome.status, 1);
    const auto lines = JsonLines(outcome.output);
    ASSERT_EQ(lines.size(), 7U);
    const std::string doubtful =
        "'2147483648' may be LENGTH or the first octets; write LENGTH ahead of it, or all octets "
        "without blanks";
    const std::string errors[] = {
        "expected FUNCTION LENGTH HEX, or FUNCTION HEX",
        "unknown function 'NOPE'",
        "expected FUNCTION LENGTH HEX, or FUNCTION HEX",
        "HEX, character 1: 't' is not a hexadecimal digit",
        doubtful,
        "HEX, character 3: an octet needs two hexadecimal digits, this one has one",
    };
    for (unsigned index = 0; index < 6; ++index) {
        EXPECT_EQ(lines[index].MemberCount(), 2U);
        EXPECT_EQ(lines[index]["line"].GetUint(), index + 1);
        EXPECT_EQ(lines[index]["error"].GetString(), errors[index]);
    }
    EXPECT_EQ(lines[6]["ret"].GetInt(), 1);
}

TEST_F(ToolTest, BatchTakesLinesWithoutLength) {
    const Outcome outcome = Run(
        "batch", "EPC_UE2SS 0F87\nEPC_UE2SS {0x0F,0x87}\nEPC_UE2SS 2 0F87\nEPC_UE2SS 0x0F 0x87\n");
    EXPECT_EQ(outcome.status, 0);
    for (const auto& line : JsonLines(outcome.output)) {
        EXPECT_EQ(line["length"].GetInt(), 2);
        EXPECT_EQ(line["ret"].GetInt(), 1);
    }
}

// TS 24.301, 8.3.20: PDN CONNECTIVITY REQUEST, and 8.3.15: ESM STATUS.
TEST_F(ToolTest, BatchTakesDoubtfulDigitsForOctetsIfTheFunctionKnowsThem) {
    const std::string good[] = {"EPS_SMUplink 02 01 D0 31", "auto 02 01 D0 31",
                                "EPS_SMUplink 02 01 D0 31 28 04"};
    for (const std::string& line : good) {
        const Outcome outcome = Run("batch", line + "\n");
        EXPECT_EQ(outcome.status, 0) << line;
        EXPECT_STREQ(JsonLines(outcome.output)[0]["fn"].GetString(), "EPS_SMUplink") << line;
    }
    const std::string refused[] = {"EPS_SMUplink 09 02 01 D0 31",  // a message behind the digits
                                   "EPS_SMUplink 02 02 E8 E8 6F",  // one with and without them
                                   "EPS_SMUplink 03 04 05",        // none
                                   "auto 09 02 01 D0 31", "auto 01 01 01"};
    for (const std::string& line : refused) {
        const Outcome outcome = Run("batch", line + "\n");
        EXPECT_EQ(outcome.status, 1) << line;
        EXPECT_NE(outcome.output.find("may be LENGTH or the first octets"), std::string::npos)
            << outcome.output;
    }
}

TEST_F(ToolTest, BatchTakesMessagesOfNoOctets) {
    const Outcome outcome = Run("batch", "EPC_UE2SS 0 \nEPC_UE2SS 0\r\nEPC_UE2SS -2\n");
    EXPECT_EQ(outcome.status, 0);
    const auto lines = JsonLines(outcome.output);
    ASSERT_EQ(lines.size(), 3U);
    for (const auto& line : lines) {
        EXPECT_STREQ(line["hex"].GetString(), "");
        EXPECT_EQ(line["ret"].GetInt(), 0);
    }
    EXPECT_EQ(Run("batch", "EPC_UE2SS\n").status, 1);
}

TEST_F(ToolTest, BatchWritesNothingButUtf8) {
    const Outcome outcome = Run("batch",
                                "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x93\xA1 0 00\n"
                                "\xFF\xC3 0 00\n"
                                "EPC_UE2SS \xE4 00\n"
                                "\xC0\x80\xED\xA0\x80\xF4\x90\x80\x80 0 00\n"
                                "EPC_UE2SS 1 \xE4\n");
    EXPECT_EQ(outcome.status, 1);
    const auto lines = JsonLines(outcome.output);
    ASSERT_EQ(lines.size(), 5U);
    const std::string mark = "\xEF\xBF\xBD";  // U+FFFD
    const std::string nine = mark + mark + mark + mark + mark + mark + mark + mark + mark;
    const std::string errors[] = {
        "unknown function '\xC3\xA4\xE2\x82\xAC\xF0\x9F\x93\xA1'",
        "unknown function '" + mark + mark + "'",
        "HEX, character 1: an unprintable character is not a hexadecimal digit",
        "unknown function '" + nine + "'",
        "HEX, character 1: an unprintable character is not a hexadecimal digit",
    };
    for (std::size_t index = 0; index < lines.size(); ++index) {
        EXPECT_EQ(lines[index]["error"].GetString(), errors[index]);
    }
}

TEST_F(ToolTest, BatchReadsBehindTheLengthAndZerosBehindTheBuffer) {
    std::string lines;
    std::vector<std::string> expected;
    for (const auto& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        const auto golden = test::ReadGoldenFile(path, problem);
        if (!golden || golden->octets.empty()) {
            continue;
        }
        std::ostringstream line;
        line << Decodings()[static_cast<std::size_t>(golden->decoding)].name << ' '
             << golden->length << ' ' << tool::ToHex(golden->octets, "");
        lines += line.str() + "\n";
        const PaddedMessage message(golden->octets.data(), golden->length, golden->octets.size());
        expected.push_back(Decode(golden->decoding, message).text);
    }
    std::ofstream(Path("messages")) << lines;
    const Outcome outcome = Run("batch " + Path("messages"));
    EXPECT_EQ(outcome.status, 0);
    const auto answers = JsonLines(outcome.output);
    ASSERT_EQ(answers.size(), expected.size());
    for (std::size_t index = 0; index < answers.size(); ++index) {
        EXPECT_EQ(answers[index]["text"].GetString(), expected[index]);
    }
}

TEST_F(ToolTest, BatchTakesLinesOfAnyLength) {
    const std::string longLine = "EPC_UE2SS 2 0F87" + std::string(3000000, ' ');
    std::string fitting = "EPC_UE2SS 2 0F87";
    while (fitting.size() < 600000) {
        fitting += "00";
    }
    const Outcome outcome =
        Run("batch", longLine + "\n" + fitting + "\nEPC_UE2SS 2 0F87\n" + longLine);
    EXPECT_EQ(outcome.status, 1);
    const auto lines = JsonLines(outcome.output);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_STREQ(lines[0]["error"].GetString(), "the line is longer than 655360 characters");
    EXPECT_EQ(lines[1]["ret"].GetInt(), 1);
    EXPECT_EQ(lines[2]["ret"].GetInt(), 1);
    EXPECT_EQ(lines[3]["line"].GetInt(), 4);
}

TEST_F(ToolTest, BatchOfNothingIsNothing) {
    const Outcome outcome = Run("batch", "");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "");
}

TEST_F(ToolTest, CatalogueFormsHaveTheirLines) {
    const Outcome definitions = Run("catalogue epc");
    EXPECT_EQ(definitions.status, 0);
    EXPECT_NE(definitions.output.find("union Message_set_SS_to_UE {\n"), std::string::npos);
    EXPECT_EQ(Run("catalogue epc --census").output,
              "named 17\nstruct 14\nunion 2\nsequence 1\ninteger 12\nenumerated 2\nbinary 1\n"
              "elements 28\noptional 3\n");
    EXPECT_NE(Run("catalogue epc --elements")
                  .output.find("CLOSE_UE_TEST_LOOP.UE_test_loop_mode\tenumerated\t8\tfixed\t"
                               "mandatory\n"),
              std::string::npos);
    EXPECT_NE(Run("catalogue epc --enumerations")
                  .output.find("CLOSE_UE_TEST_LOOP.UE_test_loop_mode\t1\tUE test loop mode b\n"),
              std::string::npos);
}

TEST_F(ToolTest, DisassembleListsRulesAndFieldsByName) {
    // TS 24.301, 9.9.4.3: QCI, then the optional bit rates.
    const Outcome one = Run("disassemble eps EPS_QOS");
    EXPECT_EQ(one.status, 0);
    EXPECT_EQ(one.output.compare(0, 9, "EPS_QOS:\n"), 0) << one.output;
    for (const char* name :
         {"; QCI\n", "; MaximumBitRateForUplink\n", "; GuaranteedBitRateForDownlinkExt\n"}) {
        EXPECT_NE(one.output.find(name), std::string::npos) << name;
    }
    const Outcome all = Run("disassemble eps");
    EXPECT_EQ(all.status, 0);
    EXPECT_NE(all.output.find(one.output), std::string::npos);
    EXPECT_NE(all.output.find("UENetworkCapability:\n"), std::string::npos);
}

TEST_F(ToolTest, DisassembleListsTheStructuresOfAllFamilies) {
    for (const families::Family* family : families::AllFamilies()) {
        const Outcome all = Run("disassemble " + std::string(family->name));
        const bool has = !family->codec.structures.empty();
        EXPECT_EQ(all.status, has ? 0 : 2) << family->name;
        EXPECT_EQ(all.errors.empty(), has) << family->name;
        EXPECT_EQ(all.output.find("RET") != std::string::npos, has) << family->name;
    }
}

TEST_F(ToolTest, DisassembleNamesTheStructuresThatThereAre) {
    const Outcome unknown = Run("disassemble eps Nope");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_NE(unknown.errors.find("no structure 'Nope'; it has "), std::string::npos);
    EXPECT_NE(unknown.errors.find("EPS_QOS"), std::string::npos);
    const Outcome none = Run("disassemble epc");
    EXPECT_EQ(none.status, 2);
    EXPECT_EQ(none.errors, "quorvane: the family epc has no CSN.1 structures\n");
}

}  // namespace
}  // namespace quorvane
