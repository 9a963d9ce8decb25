// The recipes with tshark, over captures made for them: NAS messages in S1AP, and interfaces of
// several link types.

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "capture/capture_writer.h"
#include "tool/tool_runner.h"

namespace quorvane::capture {
namespace {

using test::CaptureWriter;
using test::Hex;
using test::Octets;
using tool::test::JsonLines;

void Append(Octets& octets, const Octets& more) {
    octets.insert(octets.end(), more.begin(), more.end());
}

Octets Short(std::size_t number) {
    return {static_cast<std::uint8_t>(number)};
}

/// An initiating message of S1AP in aligned PER (TS 36.413, 9.3), with the two identities of the UE
/// and the NAS message as its elements.
Octets S1ap(unsigned procedure, const Octets& nas) {
    Octets elements = Hex("00 00 03 00 00 00 02 00 01 00 08 00 02 00 01 00 1A 00");
    Append(elements, Short(nas.size() + 1));
    Append(elements, Short(nas.size()));
    Append(elements, nas);
    Octets octets = {0x00, static_cast<std::uint8_t>(procedure), 0x40};
    Append(octets, Short(elements.size()));
    Append(octets, elements);
    return octets;
}

/// A DATA chunk of SCTP (RFC 4960, 3.3.1) whose payload protocol is S1AP.
Octets Chunk(unsigned number, const Octets& s1ap) {
    Octets chunk = Hex("00 03 00");
    Append(chunk, Short(16 + s1ap.size()));
    Append(chunk, Hex("00 00 00"));
    Append(chunk, Short(number));
    Append(chunk, Hex("00 00 00 00 00 00 00 12"));
    Append(chunk, s1ap);
    chunk.resize((chunk.size() + 3) / 4 * 4);
    return chunk;
}

Octets Sctp(const std::vector<Octets>& chunks) {
    Octets octets = Hex("8E 3C 8E 3C 00 00 00 01 00 00 00 00");
    for (const Octets& chunk : chunks) {
        Append(octets, chunk);
    }
    constexpr unsigned kSctp = 132;
    return test::Ethernet(test::Ipv4(octets, kSctp));
}

class RecipesTest : public tool::test::ToolTest {
  protected:
    void SetUp() override {
        if (std::system("tshark --version >/dev/null 2>&1") != 0) {
            GTEST_SKIP() << "tshark is not here";
        }
    }

    /// What the tool answers to what the script makes of a capture.
    std::vector<rapidjson::Document> Answers(const std::string& script,
                                             const CaptureWriter& capture,
                                             const std::string& command) {
        std::ofstream(Path("log.pcap"), std::ios::binary) << capture.File();
        const tool::test::Outcome outcome =
            RunShell(QUORVANE_SOURCE_DIR "/examples/" + script + " " + Path("log.pcap") +
                     " | quorvane " + command);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return JsonLines(outcome.output);
    }
};

TEST_F(RecipesTest, GiveNasMessagesOfS1apWithTheirDirection) {
    const Octets attachReject = Hex("07 44 0F");
    const Octets attachComplete = Hex("27 01 02 03 04 05 07 43 00 03 52 00 C2");
    CaptureWriter writer;
    writer.Add(Sctp({Chunk(1, S1ap(11, attachReject))}));  // downlink
    writer.Add(
        Sctp({Chunk(2, S1ap(13, attachComplete)), Chunk(3, S1ap(11, attachReject))}));  // both
    const auto lines = Answers("s1ap_to_batch.sh", writer, "batch --json --tolerant --deciphered");
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_STREQ(lines[0]["fn"].GetString(), "EPS_MMDownlink");
    EXPECT_STREQ(lines[0]["message"]["type"].GetString(), "ATTACH_REJECT");
    EXPECT_STREQ(lines[1]["fn"].GetString(), "EPS_MMUplink");
    EXPECT_STREQ(lines[1]["message"]["type"].GetString(), "ATTACH_COMPLETE");
    EXPECT_STREQ(lines[2]["fn"].GetString(), "EPS_MMDownlink");
    EXPECT_STREQ(lines[2]["message"]["type"].GetString(), "ATTACH_REJECT");
}

TEST_F(RecipesTest, GiveAllPacketsOneLinkType) {
    const auto answers =
        Answers("one_link_type.sh", test::TwoLinkTypes(Hex("07 44 0F")), "capture --json");
    ASSERT_EQ(answers.size(), 3U);
    for (const auto& answer : answers) {
        EXPECT_STREQ(answer["hex"].GetString(), "07440F");
        EXPECT_STREQ(answer["time"].GetString(), "2023-11-14T22:13:20.123456000Z");
    }
}

}  // namespace
}  // namespace quorvane::capture
