// quorvane capture, run by a shell.

#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "capture/capture_writer.h"
#include "quorvane/json.h"
#include "support/golden_file.h"
#include "support/sanitized.h"
#include "tool/tool_runner.h"
#include "tools/field_condition.h"

namespace quorvane::capture {
namespace {

using test::Block;
using test::CaptureWriter;
using test::GoldenMessages;
using test::GsmtapPacket;
using test::Hex;
using test::LapdmSegments;
using test::LteNas;
using test::Octets;
using test::Um;
using test::WrittenPacket;
using tool::test::JsonLines;
using tool::test::Outcome;

class CaptureCommandTest : public tool::test::ToolTest {
  protected:
    /// Runs over the capture as a file.
    Outcome Capture(const std::string& options, const CaptureWriter& capture) {
        return Run("capture - " + options, capture.File());
    }
};

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

CaptureWriter Nas(const std::vector<std::string>& messages, bool uplink = false) {
    CaptureWriter writer;
    for (const std::string& message : messages) {
        writer.Add(GsmtapPacket(LteNas(uplink), Hex(message)));
    }
    return writer;
}

/// A golden message as it is sent, and what has to be found of it in the last packet.
struct Sent {
    std::vector<Octets> packets;
    Decoding decoding{};
    Octets octets;
};

std::vector<Sent> AllGoldenMessages() {
    std::vector<Sent> all;
    const auto add = [&all](Decoding decoding, auto&& packetsOf) {
        for (Octets message : GoldenMessages(decoding)) {
            std::vector<Octets> packets = packetsOf(message);
            if (!packets.empty()) {
                all.push_back({std::move(packets), decoding, std::move(message)});
            }
        }
    };
    const auto in = [](GsmtapHeader header) {
        return [header](Octets& message) {
            return std::vector<Octets>{GsmtapPacket(header, message)};
        };
    };
    const auto inSegments = [](bool uplink) {
        return [uplink, number = 0U](const Octets& message) mutable {
            constexpr std::size_t kLongest = 512;
            std::vector<Octets> packets;
            if (message.size() <= kLongest) {
                for (const Octets& block : LapdmSegments(message, number)) {
                    packets.push_back(GsmtapPacket(Um(kUmSdcch8, uplink, 5), block));
                }
            }
            number += static_cast<unsigned>(packets.size());
            return packets;
        };
    };
    const auto inBlocks = [](bool uplink) {
        return [uplink](Octets& message) {
            message.resize(22, 0x2B);
            Octets block = {0x40};
            block.insert(block.end(), message.begin(), message.end());
            return std::vector<Octets>{GsmtapPacket(Um(kUmPdch, uplink), block)};
        };
    };
    add(Decoding::EPS_MMDownlink, in(LteNas(false)));
    add(Decoding::EPS_MMUplink, in(LteNas(true)));
    add(Decoding::EPS_SMDownlink, in(LteNas(false)));
    add(Decoding::EPS_SMUplink, in(LteNas(true)));
    add(Decoding::EPC_SS2UE, in(LteNas(false)));
    add(Decoding::EPC_UE2SS, in(LteNas(true)));
    add(Decoding::RRPLENDownlink, in(Um(kUmBcch)));
    add(Decoding::RLC_MACDownlink, inBlocks(false));
    add(Decoding::RLC_MACUplink, inBlocks(true));
    // One link each way, so that the numbers of frames go on from function to function.
    auto downlink = inSegments(false);
    add(Decoding::L3Downlink, downlink);
    add(Decoding::RRDownlink, downlink);
    auto uplink = inSegments(true);
    add(Decoding::L3Uplink, uplink);
    add(Decoding::RRUplink, uplink);
    return all;
}

TEST_F(CaptureCommandTest, GivesGoldenMessagesAsTheLibraryDoes) {
    const std::vector<Sent> sent = AllGoldenMessages();
    CaptureWriter writer;
    std::size_t packets = 0;
    std::vector<std::size_t> last;
    for (const Sent& each : sent) {
        for (const Octets& packet : each.packets) {
            writer.Add(packet);
            ++packets;
        }
        last.push_back(packets);
    }
    ASSERT_GT(sent.size(), 50U);
    std::string one;
    for (const char* jobs : {"1", "3"}) {
        const Outcome outcome = Capture("--json --jobs " + std::string(jobs), writer);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_TRUE(one.empty() || outcome.output == one) << "the answers differ by threads";
        one = outcome.output;
    }
    const auto lines = JsonLines(one);
    ASSERT_EQ(lines.size(), sent.size());
    std::vector<std::string> texts;
    std::istringstream in(one);
    for (std::string text; std::getline(in, text);) {
        texts.push_back(text);
    }
    Message message;
    for (std::size_t index = 0; index < sent.size(); ++index) {
        const Sent& expected = sent[index];
        const auto& line = lines[index];
        const std::string name(Decodings()[static_cast<std::size_t>(expected.decoding)].name);
        ASSERT_EQ(line["frame"].GetUint64(), last[index]);
        EXPECT_EQ(line["fn"].GetString(), name);
        EXPECT_EQ(Hex(line["hex"].GetString()), expected.octets);
        DecodeOptions options;
        options.tolerant = name.starts_with("EPS_MM") && expected.octets[0] >> 4 != 0;
        EXPECT_EQ(message.Decode(expected.decoding, expected.octets, options),
                  line["ret"].GetInt() == 1);
        std::string json;
        AppendJson(message, json);
        const std::string end = ",\"message\":" + json + "}";
        EXPECT_TRUE(texts[index].ends_with(end)) << texts[index] << "\n" << end;
    }
}

TEST_F(CaptureCommandTest, TellsWhereAMessageWasFound) {
    CaptureWriter writer;
    GsmtapHeader header = Um(kUmRach, true, 2);
    header.isPcs = true;
    writer.Add({GsmtapPacket(header, Hex("E5")), 0, 1'000, 0});
    writer.Add({GsmtapPacket(test::Abis(), Hex("02 06 01 38 02 00 0B 00 02 05 24")), 951'782'399});
    const Outcome text = Capture("", writer);
    EXPECT_EQ(text.output.substr(0, text.output.find('\n')),
              "Frame 1, 1970-01-01T00:00:00.000001000Z, Um, RACH uplink, timeslot 1, subslot 2, "
              "ARFCN 871 (PCS), TDMA frame 1234567:");
    // The last second of February 28th in a leap year.
    EXPECT_TRUE(Has(text.output,
                    "\nFrame 2, 2000-02-28T23:59:59.123456000Z, Abis, SDCCH/4 uplink, timeslot 0, "
                    "subslot 3:\n"))
        << text.output;
    const auto lines = JsonLines(Capture("--json", writer).output);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_STREQ(lines[0]["time"].GetString(), "1970-01-01T00:00:00.000001000Z");
    EXPECT_STREQ(lines[0]["interface"].GetString(), "Um");
    EXPECT_STREQ(lines[0]["channel"].GetString(), "RACH");
    EXPECT_STREQ(lines[0]["direction"].GetString(), "uplink");
    EXPECT_EQ(lines[0]["timeslot"].GetInt(), 1);
    EXPECT_EQ(lines[0]["subslot"].GetInt(), 2);
    EXPECT_EQ(lines[0]["arfcn"].GetInt(), 871);
    EXPECT_TRUE(lines[0]["pcs"].GetBool());
    EXPECT_EQ(lines[0]["tdma"].GetInt(), 1234567);
    EXPECT_STREQ(lines[1]["interface"].GetString(), "Abis");
    EXPECT_FALSE(lines[1].HasMember("arfcn"));
}

TEST_F(CaptureCommandTest, FollowsIntoProtectedNas) {
    // ATTACH REJECT behind an integrity protected header, and behind one that says "ciphered".
    const CaptureWriter writer = Nas({"17 01 02 03 04 05 07 44 0F", "27 01 02 03 04 05 07 44 0F"});
    auto lines = JsonLines(Capture("--json", writer).output);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_STREQ(lines[0]["message"]["type"].GetString(), "ATTACH_REJECT");
    EXPECT_STREQ(lines[1]["message"]["type"].GetString(), "SECURITY_PROTECTED_NAS_MESSAGE");
    lines = JsonLines(Capture("--json --deciphered", writer).output);
    EXPECT_STREQ(lines[1]["message"]["type"].GetString(), "ATTACH_REJECT");
}

TEST_F(CaptureCommandTest, TakesNasThatDownlinkDoesNotKnowForUplink) {
    const auto lines = JsonLines(Capture("--json", Nas({"07 44 0F", "07 43", "07 99"})).output);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_STREQ(lines[0]["direction"].GetString(), "downlink");
    EXPECT_STREQ(lines[1]["direction"].GetString(), "uplink");  // ATTACH COMPLETE
    EXPECT_STREQ(lines[1]["fn"].GetString(), "EPS_MMUplink");
    EXPECT_EQ(lines[1]["ret"].GetInt(), 1);
    EXPECT_STREQ(lines[2]["fn"].GetString(), "EPS_MMDownlink");  // neither knows it
    EXPECT_EQ(lines[2]["ret"].GetInt(), 0);
}

TEST_F(CaptureCommandTest, QuotesCsv) {
    // ESM STATUS with cause 111, whose words have a comma, and an APN, a bit string.
    const Outcome outcome = Capture("--format csv", Nas({"02 00 E8 6F"}));
    EXPECT_EQ(outcome.output,
              "frame,function,path,value,words,offset,bits\n"
              "1,EPS_SMDownlink,,,ESM_STATUS,0,32\n"
              "1,EPS_SMDownlink,EPSBearerIdentity,0,,,\n"
              "1,EPS_SMDownlink,ProcedureTransactionIdentity,0,,,\n"
              "1,EPS_SMDownlink,ESMCause,111,\"Protocol error, unspecified\",24,8\n");
}

TEST_F(CaptureCommandTest, IsUtf8InCsv) {
    // ALERTING with a progress indicator of coding standard 3, the one text that is not ASCII.
    CaptureWriter writer;
    for (const auto& segment : LapdmSegments(Hex("83 01 1E 02 E2 81"))) {
        writer.Add(GsmtapPacket(Um(kUmSdcch8), segment));
    }
    EXPECT_TRUE(Has(Capture("--format csv", writer).output,
                    ",3,Standard defined for the GSM\xC3\x9FPLMNS as described below,"));
}

TEST_F(CaptureCommandTest, ShowsListsInCsv) {
    // PDN CONNECTIVITY REQUEST with one protocol option, 000D, of two octets.
    const Outcome outcome = Capture("--format csv --function EPS_SMUplink",
                                    Nas({"02 01 D0 31 27 06 80 00 0D 02 AB CD"}, true));
    EXPECT_TRUE(
        Has(outcome.output,
            "\n1,EPS_SMUplink,ProtocolConfigurationOptions.ProtocolCfgs[0].ProtocolId,13,,,\n"
            "1,EPS_SMUplink,ProtocolConfigurationOptions.ProtocolCfgs[0].Contents,ABCD,,,"
            "16\n"))
        << outcome.output;
}

// ATTACH REJECT without its cause, which the decoder refuses.
TEST_F(CaptureCommandTest, LeavesOutOfCsvWhatWasRefused) {
    EXPECT_EQ(Capture("--format csv", Nas({"07 44"})).output,
              "frame,function,path,value,words,offset,bits\n"
              "1,EPS_MMDownlink,,,ATTACH_REJECT,0,16\n"
              "1,EPS_MMDownlink,SecurityHeaderType,0,,,\n");
}

TEST_F(CaptureCommandTest, ShowsUnknownMessagesInEachForm) {
    const CaptureWriter writer = Nas({"07 99"});
    EXPECT_TRUE(Has(Capture("", writer).output,
                    ", downlink:\nFailed to decode \"EPS_MMDownlink\" message\n\n"));
    EXPECT_TRUE(Has(Capture("--format csv", writer).output, "\n1,EPS_MMDownlink,,,,0,16\n"));
    EXPECT_TRUE(Has(Capture("--json", writer).output, "\"ret\":0,"));
}

/// The frames that are left, "1 3 ".
std::string Frames(const std::string& json) {
    std::string frames;
    for (const auto& line : JsonLines(json)) {
        frames += std::to_string(line["frame"].GetUint64()) + " ";
    }
    return frames;
}

TEST_F(CaptureCommandTest, Filters) {
    CaptureWriter writer = Nas({"07 44 0F", "07 44 16", "07 60 0F", "02 00 E8 6F"});
    writer.Add(GsmtapPacket(LteNas(true), Hex("02 01 D0 31 27 06 80 00 0D 02 AB CD")));
    const auto frames = [&](const std::string& options) {
        const Outcome outcome = Capture("--json " + options, writer);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return Frames(outcome.output);
    };
    EXPECT_EQ(frames("--function EPS_SMDownlink"), "4 ");
    EXPECT_EQ(frames("--function EPS_SMDownlink --function EPS_MMDownlink"), "1 2 3 4 ");
    EXPECT_EQ(frames("--type ATTACH_REJECT"), "1 2 ");
    EXPECT_EQ(frames("--type ATTACH_REJECT --where EMMCause=15"), "1 ");
    EXPECT_EQ(frames("--where EMMCause=0xf"), "1 3 ");
    EXPECT_EQ(frames("--where 'EMMCause=congestion'"), "2 ");
    EXPECT_EQ(frames("--where 'EMMCause!=15'"), "2 ");
    EXPECT_EQ(frames("--where EMMCause"), "1 2 3 ");
    EXPECT_EQ(frames("--where EMMCause --where SecurityHeaderType=1"), "");
    EXPECT_EQ(frames("--where ProtocolId=13"), "5 ");
    EXPECT_EQ(frames("--where ProtocolCfgs.Contents=abcd"), "5 ");
    EXPECT_EQ(frames("--where ProtocolConfigurationOptions.ProtocolCfgs.Contents=abcd"), "5 ");
    EXPECT_EQ(frames("--where PDNType.Contents=abcd"), "");
    EXPECT_EQ(frames("--where EMMCause=0XF"), "1 3 ");
    EXPECT_EQ(frames("--where ProtocolCfgs"), "5 ");

    // ATTACH REQUEST, TS 24.301, 8.2.4, with the IMSI 262011234567890: one of its digits, or none.
    writer = CaptureWriter();
    writer.Add(GsmtapPacket(LteNas(true), Hex("07 41 71 08 29 26 10 21 43 65 87 09 02 E0 E0 00 04 "
                                              "02 01 D0 11")));
    EXPECT_EQ(frames("--where IdentityDigit=9"), "1 ");
    EXPECT_EQ(frames("--where IMSI.IdentityDigit=9"), "1 ");
    EXPECT_EQ(frames("--where IdentityDigit=15"), "");
    EXPECT_EQ(frames("--where 'IdentityDigit!=9'"), "");
    EXPECT_EQ(frames("--where EPSMobileIdentity"), "1 ");
    writer = Nas({"07 44 0F", "07 44 16", "07 60 0F", "02 00 E8 6F"});

    // FILE may stand behind them.
    std::ofstream(Path("log.pcap"), std::ios::binary) << writer.File();
    for (const char* filter :
         {"--type ATTACH_REJECT", "--function EPS_SMDownlink", "--where EMMCause=15"}) {
        const Outcome outcome =
            Run(std::string("capture --json ") + filter + " " + Path("log.pcap"));
        EXPECT_EQ(Frames(outcome.output), frames(filter)) << outcome.errors;
    }
}

// Wherever in a message it stands, a field can be asked for.
TEST_F(CaptureCommandTest, KnowsTheNamesOfAllFields) {
    std::set<std::string> names;
    for (const auto& path : quorvane::test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        const auto golden = quorvane::test::ReadGoldenFile(path, problem);
        ASSERT_TRUE(golden) << problem;
        Message message;
        message.Decode(golden->decoding,
                       {golden->octets.data(), golden->length, golden->octets.size()});
        Visit(message.Root(), [&](const Field& field, unsigned depth) {
            if (depth > 0 && !field.Name().empty()) {
                names.emplace(field.Name());
            }
            return true;
        });
    }
    std::string path;
    for (const std::string& name : names) {
        path.append(path.empty() ? "" : ".").append(name);
    }
    EXPECT_GT(names.size(), 500U);
    EXPECT_NO_THROW(tool::FieldCondition{path});
}

TEST_F(CaptureCommandTest, RefusesWrongFilters) {
    const CaptureWriter writer = Nas({"07 44 0F"});
    const auto refusal = [&](const std::string& options) {
        const Outcome outcome = Capture(options, writer);
        EXPECT_EQ(outcome.status, 2) << options;
        EXPECT_EQ(outcome.output, "") << options;
        return outcome.errors;
    };
    EXPECT_EQ(refusal("--where EMMCuase=15"),
              "quorvane: --where EMMCuase=15: no message has a field 'EMMCuase'; the nearest is "
              "EMMCause; expected PATH=VALUE, PATH!=VALUE or PATH with names that \"quorvane "
              "decode\" shows\n");
    EXPECT_EQ(refusal("--where EMMCause=congestoin"),
              "quorvane: --where EMMCause=congestoin: no field 'EMMCause' can have that value; the "
              "nearest is Congestion; expected a number, words or digits that \"quorvane decode\" "
              "shows\n");
    for (const char* value : {"EMMCause=15x", "ProtocolCfgs=abcd", "EPSMobileIdentity=9"}) {
        EXPECT_TRUE(Has(refusal(std::string("--where ") + value), " can have that value; "));
    }
    EXPECT_TRUE(Has(refusal("--where ProtocolCfgs.Contents=abcx"),
                    ": no field 'Contents' can have that value; expected a number, "));
    EXPECT_TRUE(Has(refusal("--where PTI!=x"), "no message has a field 'PTI'"));
    EXPECT_TRUE(Has(refusal("--where ProcedureTransactionIdentity!=x"), "can have that value"));
    EXPECT_EQ(refusal("--where EMMCause="),
              "quorvane: --where EMMCause=: a value was expected behind =\n");
    EXPECT_EQ(refusal("--type ATTACH"),
              "quorvane: --type ATTACH: no message has that name; the line \"MESSAGE: \" of a text "
              "shows it\n");
    EXPECT_TRUE(Has(refusal("--type attach-reject"), "the nearest is ATTACH_REJECT; the line "));
    EXPECT_TRUE(Has(refusal("--function EPS"), "unknown function 'EPS'"));
    EXPECT_TRUE(Has(refusal("--format xml"), "--format: xml not in {text,json,csv}"));
    EXPECT_TRUE(Has(refusal("--port 65536"), "--port: Value 65536 not in range 0 to 65535"));
}

TEST_F(CaptureCommandTest, CountsWhatItPasses) {
    // The third is cut short; the fourth ends in an error, an unknown element, without a fault.
    CaptureWriter writer = Nas({"07 44 0F", "07 99", "02 01 D0",
                                "07 42 01 49 06 00 62 F2 10 00 01 00 04 52 01 E8 6F 6E 01 00"});
    writer.Add(test::Ethernet(test::Ipv4(test::Udp(Hex("00"), 53))));
    writer.Add({GsmtapPacket(LteNas(false), Hex("07 44")), 0, 0, 1});
    WrittenPacket cut{GsmtapPacket(LteNas(false), Hex("07 44 0F"))};
    cut.octets.resize(40);
    cut.missing = 30;
    writer.Add(cut);
    const auto segments = LapdmSegments(Octets(45, 5));
    for (const std::size_t index : {0U, 2U, 0U}) {
        writer.Add(GsmtapPacket(Um(kUmSdcch8), segments[index]));
    }
    const Outcome outcome = Capture("--json --where EMMCause", writer);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors,
              "          10 packets\n"
              "           5 messages\n"
              "           4   EPS_MMDownlink\n"
              "           1   EPS_SMUplink\n"
              "           1 unknown messages\n"
              "           3 messages with faults\n"
              "           1 messages shown\n"
              "           5 packets without a message\n"
              "           1   packets cut by the capture\n"
              "           1   UDP packets of other ports\n"
              "           3   LAPDm segments of messages that are not whole\n"
              "           2 gaps in the numbers of LAPDm frames\n");
}

TEST_F(CaptureCommandTest, TellsOfCapturesThatEndTooEarly) {
    const CaptureWriter writer = Nas({"07 44 0F", "07 44 0F"});
    const std::string& file = writer.File();
    const Outcome cut = Run("capture - --json", file.substr(0, file.size() - 1));
    EXPECT_EQ(cut.status, 1);
    EXPECT_EQ(Frames(cut.output), "1 ");
    EXPECT_TRUE(Has(cut.errors, "\nquorvane: the capture cannot be read behind packet 1: "))
        << cut.errors;

    const Outcome none = Run("capture", "no capture");
    EXPECT_EQ(none.status, 2);
    EXPECT_TRUE(Has(none.errors, "quorvane: standard input is no capture in pcap or pcapng: "))
        << none.errors;
    const Outcome missing = Run("capture " + Path("missing"));
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.errors,
              "quorvane: cannot open '" + Path("missing") + "': No such file or directory\n");
}

// libpcap reads no further than to the first interface of another type.
TEST_F(CaptureCommandTest, TellsOfInterfacesOfSeveralLinkTypes) {
    const Outcome outcome = Capture("--json", test::TwoLinkTypes(Hex("07 44 0F")));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(Frames(outcome.output), "1 ");
    EXPECT_TRUE(Has(outcome.errors, "\nquorvane: the capture cannot be read behind packet 1: "))
        << outcome.errors;
    EXPECT_TRUE(
        outcome.errors.ends_with("; examples/one_link_type.sh gives all packets one type\n"))
        << outcome.errors;
}

TEST_F(CaptureCommandTest, TellsOfOutputThatCannotBeWritten) {
    const CaptureWriter writer = Nas({"07 44 0F"});
    std::ofstream(Path("log.pcap"), std::ios::binary) << writer.File();
    for (const char* jobs : {"1", "2"}) {
        const std::string command = QUORVANE_TOOL_PATH " capture " + Path("log.pcap") +
                                    " --json --jobs " + jobs + " >/dev/full 2>" + Path("words");
        const int status = std::system(command.c_str());
        EXPECT_EQ(WEXITSTATUS(status), 2);
        EXPECT_EQ(tool::test::ReadAll(Path("words")),
                  "quorvane: cannot write to standard output: No space left on device\n");
    }
}

// What is there is shown ahead of a wait, also if there is nothing yet.
TEST_F(CaptureCommandTest, AnswersAheadOfAPause) {
    std::ofstream(Path("log.pcap"), std::ios::binary) << Nas({"07 44 0F", "07 44 16"}).File();
    for (const std::string jobs : {"1", "2"}) {
        const std::string pipe = Path("pipe") + jobs;
        const std::string command = "mkfifo " + pipe + "; (sleep 0.1; cat " + Path("log.pcap") +
                                    "; timeout 20 cat " + pipe +
                                    ") | timeout 20 " QUORVANE_TOOL_PATH " capture --json --jobs " +
                                    jobs + " 2>/dev/null | { read -r line; echo go >" + pipe +
                                    "; printf '%s\\n' \"$line\"; cat; } >" + Path("answers");
        ASSERT_EQ(std::system(command.c_str()), 0);
        EXPECT_EQ(Frames(tool::test::ReadAll(Path("answers"))), "1 2 ") << jobs;
    }
}

TEST_F(CaptureCommandTest, ShowsItsProgressAndTakesItAway) {
    const std::vector<std::string> messages(5'000, "07 44 0F");
    std::ofstream(Path("log.pcap"), std::ios::binary) << Nas(messages).File();
    const std::string shown = ShownOnTerminal(QUORVANE_TOOL_PATH " capture " + Path("log.pcap") +
                                              " | { sleep 0.5; cat >/dev/null; }");
    EXPECT_TRUE(std::regex_search(shown, std::regex(R"(\r\d+ packets, \d+ packets/s, .* left)")))
        << shown;
    EXPECT_TRUE(Has(shown, "\r\x1B[K        5000 packets\r\n")) << shown;
}

// What was read by then is answered and summed up.
TEST_F(CaptureCommandTest, AnswersWhatItHasReadWhenInterrupted) {
    std::ofstream(Path("log.pcap"), std::ios::binary) << Nas({"07 44 0F", "07 44 16"}).File();
    const std::string pipe = Path("pipe");
    for (const std::string jobs : {"1", "2"}) {
        const Outcome outcome = RunShell(
            "rm -f " + pipe + "; mkfifo " + pipe +
            "; env --default-signal=INT " QUORVANE_TOOL_PATH " capture --json --jobs " + jobs +
            " " + pipe + " >" + Path("answers") + " & exec 3>" + pipe + "; cat " +
            Path("log.pcap") + " >&3; until [ $(wc -l <" + Path("answers") +
            ") -ge 2 ] || [ $((tries += 1)) -gt 3000 ]; do sleep 0.01; done; kill -INT $!; "
            "wait $!");
        EXPECT_EQ(outcome.status, 130) << jobs;
        EXPECT_EQ(Frames(tool::test::ReadAll(Path("answers"))), "1 2 ");
        EXPECT_TRUE(Has(outcome.errors, "           2 packets\n")) << outcome.errors;
        EXPECT_TRUE(outcome.errors.ends_with("\nquorvane: interrupted behind packet 2\n"))
            << outcome.errors;
    }
}

TEST_F(CaptureCommandTest, InterruptedInTheMidstEndsWithAWholeLine) {
    const std::vector<std::string> messages(1'000, "07 44 0F");
    const CaptureWriter writer = Nas(messages);
    const std::size_t header = CaptureWriter().File().size();
    std::ofstream(Path("header"), std::ios::binary) << writer.File().substr(0, header);
    std::ofstream(Path("body"), std::ios::binary) << writer.File().substr(header);
    for (const std::string jobs : {"1", "2"}) {
        const Outcome outcome = RunShell(
            ": >" + Path("answers") + "; { cat " + Path("header") + "; while cat " + Path("body") +
            "; do :; done; } 2>/dev/null | env --default-signal=INT " QUORVANE_TOOL_PATH
            " capture --json --jobs " +
            jobs + " >" + Path("answers") + " & until [ -s " + Path("answers") +
            " ] || [ $((tries += 1)) -gt 3000 ]; do sleep 0.01; done; kill -INT $!; wait $!");
        EXPECT_EQ(outcome.status, 130) << jobs;
        const std::string answers = tool::test::ReadAll(Path("answers"));
        EXPECT_TRUE(answers.ends_with("}\n")) << jobs;
        // All packets that were read are answered, and the last one is told.
        const auto last = JsonLines(answers.substr(answers.rfind('\n', answers.size() - 2) + 1));
        ASSERT_EQ(last.size(), 1U) << jobs;
        EXPECT_TRUE(outcome.errors.ends_with("\nquorvane: interrupted behind packet " +
                                             std::to_string(last[0]["frame"].GetUint64()) + "\n"))
            << outcome.errors;
    }
}

TEST_F(CaptureCommandTest, EndsWithItsReader) {
    const std::vector<std::string> messages(5'000, "07 44 0F");
    std::ofstream(Path("log.pcap"), std::ios::binary) << Nas(messages).File();
    for (const std::string jobs : {"1", "2"}) {
        const std::string command = "capture --json --jobs " + jobs + " " + Path("log.pcap");
        const Outcome killed = RunShell("{ quorvane " + command + " 2>/dev/null; echo $? >" +
                                        Path("status") + "; } | head -1");
        EXPECT_EQ(Frames(killed.output), "1 ") << jobs;
        EXPECT_EQ(tool::test::ReadAll(Path("status")), "141\n") << jobs;  // 128 + SIGPIPE
        const Outcome told =
            RunShell("{ (trap '' PIPE; quorvane " + command + " 2>" + Path("words") +
                     "; echo $? >" + Path("status") + "); } | head -1");
        EXPECT_EQ(Frames(told.output), "1 ") << jobs;
        EXPECT_EQ(tool::test::ReadAll(Path("status")), "2\n") << jobs;
        EXPECT_EQ(tool::test::ReadAll(Path("words")),
                  "quorvane: cannot write to standard output: Broken pipe\n");
    }
}

// Packets of many links with a message in the making, each more often than links are remembered.
TEST_F(CaptureCommandTest, NeedsNoMoreMemoryForMorePackets) {
    if (quorvane::test::kSanitized) {
        GTEST_SKIP() << "the address sanitizer takes more memory than a limit could allow for";
    }
    CaptureWriter writer;
    const std::size_t header = writer.File().size();
    const Octets first = LapdmSegments(Octets(250, 5)).front();
    constexpr unsigned kLinks = 16'000;
    for (unsigned link = 0; link < kLinks; ++link) {
        GsmtapHeader um = Um(kUmSdcch8, link % 2 != 0, link / 2 % 8);
        um.arfcn = static_cast<std::uint16_t>(link / 16);
        writer.Add(GsmtapPacket(um, first));
    }
    std::ofstream(Path("header"), std::ios::binary) << writer.File().substr(0, header);
    std::ofstream(Path("body"), std::ios::binary) << writer.File().substr(header);
    const std::string command =
        "(cat " + Path("header") + "; for i in 1 2 3 4 5 6 7 8 9 10; do cat " + Path("body") +
        "; done) | (ulimit -v 30000; " QUORVANE_TOOL_PATH " capture --json >/dev/null 2>" +
        Path("words") + "; echo $? >" + Path("status") + ")";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(tool::test::ReadAll(Path("status")), "0\n") << tool::test::ReadAll(Path("words"));
    EXPECT_TRUE(Has(tool::test::ReadAll(Path("words")), "      160000 packets\n"));
}

}  // namespace
}  // namespace quorvane::capture
