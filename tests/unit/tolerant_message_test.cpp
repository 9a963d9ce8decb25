// Tolerant reading as a user sees it. Octets and what they mean are those of the standards' tables,
// put together by hand; strict reading stands beside each.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "quorvane/message.h"
#include "support/golden_file.h"
#include "tools/hex.h"

namespace quorvane {
namespace {

using enum Decoding;

constexpr DecodeOptions kTolerant{.tolerant = true};
constexpr DecodeOptions kDeciphered{.tolerant = true, .deciphered = true};

std::vector<std::uint8_t> FromHex(const std::string& text) {
    std::vector<std::uint8_t> octets;
    EXPECT_EQ(tool::ParseHex(text, octets), "") << text;
    return octets;
}

class TolerantReading : public testing::Test {
  protected:
    /// The code of strict reading.
    int Strict(Decoding decoding, const std::string& hex) {
        message_.Decode(decoding, FromHex(hex));
        EXPECT_EQ(message_.SurplusCount(), 0U);
        EXPECT_FALSE(message_.Security());
        return message_.Code();
    }

    int Tolerant(Decoding decoding, const std::string& hex, DecodeOptions options = kTolerant) {
        message_.Decode(decoding, FromHex(hex), options);
        return message_.Code();
    }

    /// "path iei hex at offset", with - for what there is not.
    std::string Kept(std::size_t index) {
        const Surplus surplus = message_.GetSurplus(index);
        EXPECT_EQ(surplus.place.length, surplus.bitCount);
        std::string path;
        if (!message_.AppendPath(surplus.field, path)) {
            path = "-";
        }
        const std::uint8_t iei = surplus.iei.value_or(0);
        return (surplus.kind == Surplus::Kind::kElement ? "element in <" : "rest of <") + path +
               "> " + (surplus.iei ? tool::ToHex({&iei, 1}, "") : "-") + ": " +
               tool::ToHex(surplus.octets, " ") + " at " + std::to_string(surplus.place.offset) +
               "," + std::to_string(surplus.place.length);
    }

    Message message_;
};

// ATTACH ACCEPT, TS 24.301, 8.2.1: combined attach; T3412; a list of one tracking area; an ESM
// message container with ACTIVATE DEFAULT EPS BEARER CONTEXT REQUEST (8.3.6: QCI 9, access point
// "abc", IPv4 address 10.0.0.1). In front of the optional elements.
const std::string kAccept =
    "07 42 02 49 06 00 62 F2 10 00 01 "
    "00 10 52 01 C1 01 09 04 03 61 62 63 05 01 0A 00 00 01 ";
constexpr std::size_t kAcceptBits = 29 * 8;

TEST_F(TolerantReading, TakesFeatureSupportOfTwoOctets) {
    // 64: IMS voice over PS, and an octet of a later release. F: SMS only.
    const std::string octets = kAccept + "64 02 01 3F F2";
    EXPECT_EQ(Strict(EPS_MMDownlink, octets), -12);
    EXPECT_EQ(message_.FaultCount(), 1U);

    EXPECT_EQ(Tolerant(EPS_MMDownlink, octets), 0);
    EXPECT_EQ(message_.FaultCount(), 0U);
    EXPECT_EQ(message_.BitsConsumed(), 34 * 8);
    EXPECT_EQ(message_.Find("EPSNetworkFeatureSupport").Status(), FieldStatus::kDecoded);
    EXPECT_EQ(message_.Find("EPSNetworkFeatureSupport.IMS_VoPS").Number(), 1U);
    EXPECT_EQ(message_.Find("AdditionalUpdateResult").Number(), 2U);
    ASSERT_EQ(message_.SurplusCount(), 1U);
    EXPECT_EQ(Kept(0), "rest of <EPSNetworkFeatureSupport> 64: 3F at " +
                           std::to_string(kAcceptBits + 24) + ",8");
    EXPECT_FALSE(message_.Security());
    EXPECT_FALSE(message_.GetSurplus(1).field);
    EXPECT_TRUE(message_.GetSurplus(1).octets.empty());
}

TEST_F(TolerantReading, TakesAMandatoryElementBeyondItsLimit) {
    // SECURITY MODE COMMAND, 8.2.20: replayed capabilities of six octets, of which five are known.
    const std::string octets = "07 5D 11 00 06 F0 F0 C0 40 70 AB C1";
    EXPECT_EQ(Strict(EPS_MMDownlink, octets), -12);
    EXPECT_EQ(Tolerant(EPS_MMDownlink, octets), 0);
    EXPECT_EQ(message_.Find("IMEISVRequest").Number(), 1U);
    ASSERT_EQ(message_.SurplusCount(), 1U);
    EXPECT_EQ(Kept(0), "rest of <ReplayedUESecurityCapabilities> -: AB at 80,8");
}

TEST_F(TolerantReading, TakesWhatAStructureLeaves) {
    // Two emergency numbers, TS 24.008, 10.5.3.13, where there is room for one: 112 and 911.
    const std::string octets = kAccept + "34 08 03 1F 11 F2 03 01 19 F1 64 01 01";
    EXPECT_EQ(Strict(EPS_MMDownlink, octets), 0);
    EXPECT_EQ(message_.FaultCount(), 1U);
    EXPECT_EQ(message_.Find("epsEmergencyNumberList").Status(), FieldStatus::kRefused);

    EXPECT_EQ(Tolerant(EPS_MMDownlink, octets), 0);
    EXPECT_EQ(message_.FaultCount(), 0U);
    EXPECT_EQ(message_.Find("epsEmergencyNumberList").Status(), FieldStatus::kDecoded);
    ASSERT_EQ(message_.SurplusCount(), 1U);
    EXPECT_EQ(Kept(0), "rest of <epsEmergencyNumberList> 34: 03 01 19 F1 at " +
                           std::to_string(kAcceptBits + 48) + ",32");
}

TEST_F(TolerantReading, TakesWhatAStructureInCsnLeaves) {
    // CHANNEL MODE MODIFY, TS 44.018, 9.1.5: ciphering parameters with the cell identity 0A0B, and
    // two octets more.
    const std::string octets = "06 10 0C E3 E8 41 04 05 0D 0A 0B AA BB";
    EXPECT_EQ(Strict(RRDownlink, octets), 0);
    EXPECT_EQ(message_.Find("VGCSCipheringParameters").Status(), FieldStatus::kRefused);

    EXPECT_EQ(Tolerant(RRDownlink, octets), 0);
    EXPECT_EQ(message_.FaultCount(), 0U);
    EXPECT_EQ(message_.Find("VGCSCipheringParameters").Status(), FieldStatus::kDecoded);
    ASSERT_EQ(message_.SurplusCount(), 1U);
    EXPECT_EQ(Kept(0), "rest of <VGCSCipheringParameters> 04: AA BB at 88,16");
}

TEST_F(TolerantReading, TakesBitRatesOfALaterRelease) {
    // MODIFY EPS BEARER CONTEXT REQUEST, TS 24.301, 8.3.18: a quality of service of 13 octets, the
    // last four of which are the bit rates extended-2; the radio priority behind it.
    const std::string octets = "52 01 C9 5B 0D 01 02 03 04 05 06 07 08 09 F1 F2 F3 F4 82";
    EXPECT_EQ(Strict(EPS_SMDownlink, octets), -12);
    EXPECT_EQ(Tolerant(EPS_SMDownlink, octets), 0);
    EXPECT_EQ(message_.Find("NewEPSQoS.extended.GuaranteedBitRateForDownlinkExt").Number(), 9U);
    EXPECT_EQ(message_.Find("RadioPriority").Number(), 2U);
    ASSERT_EQ(message_.SurplusCount(), 1U);
    EXPECT_EQ(Kept(0), "rest of <NewEPSQoS> 5B: F1 F2 F3 F4 at 112,32");
}

TEST_F(TolerantReading, PassesUnknownElementsThatSayTheirLength) {
    // 6A of one octet, 79 of two behind a length of two octets, one octet of type 1 or 2.
    const std::string octets = kAccept + "6A 01 21 79 00 02 AA BB E3 64 01 01";
    EXPECT_EQ(Strict(EPS_MMDownlink, octets), -3);
    EXPECT_EQ(message_.Find("EPSNetworkFeatureSupport").Status(), FieldStatus::kAbsent);

    EXPECT_EQ(Tolerant(EPS_MMDownlink, octets), 0);
    EXPECT_EQ(message_.Find("EPSNetworkFeatureSupport.IMS_VoPS").Number(), 1U);
    ASSERT_EQ(message_.SurplusCount(), 3U);
    EXPECT_EQ(Kept(0), "element in <> 6A: 6A 01 21 at 232,24");
    EXPECT_EQ(Kept(1), "element in <> 79: 79 00 02 AA BB at 256,40");
    EXPECT_EQ(Kept(2), "element in <> E3: E3 at 296,8");
}

TEST_F(TolerantReading, KnowsLengthsOfTwoOctetsInEpsAlone) {
    // CM SERVICE REQUEST, TS 24.008, 9.2.9, with a TMSI: 79 has a length of one octet there.
    const std::string octets = "05 24 71 03 33 19 A2 05 F4 12 34 56 78 79 01 AA 81";
    EXPECT_EQ(Strict(L3Uplink, octets), -3);
    EXPECT_EQ(Tolerant(L3Uplink, octets), 0);
    EXPECT_EQ(message_.Find("Priority").Status(), FieldStatus::kDecoded);
    ASSERT_EQ(message_.SurplusCount(), 1U);
    EXPECT_EQ(Kept(0), "element in <> 79: 79 01 AA at 104,24");
}

TEST_F(TolerantReading, PassesAnElementThatComesAgainWhereStrictReadingEndsAtIt) {
    // SETUP, TS 24.008, 9.3.23: the priority twice, the second time as an octet that the search
    // over the skip table does not find, and the alerting pattern.
    const std::string octets = "03 05 81 8E 19 01 02";
    EXPECT_EQ(Strict(L3Downlink, octets), -3);
    EXPECT_EQ(Tolerant(L3Downlink, octets), 0);
    EXPECT_EQ(message_.Find("Alert").Status(), FieldStatus::kDecoded);
    ASSERT_EQ(message_.SurplusCount(), 1U);
    EXPECT_EQ(Kept(0), "element in <> 8E: 8E at 24,8");
    // As another octet strict reading passes it over without a word.
    EXPECT_EQ(Strict(L3Downlink, "03 05 81 82 19 01 02"), 0);
    EXPECT_EQ(Tolerant(L3Downlink, "03 05 81 82 19 01 02"), 0);
    ASSERT_EQ(message_.SurplusCount(), 1U);
    EXPECT_EQ(Kept(0), "element in <> 80: 82 at 24,8");
}

TEST_F(TolerantReading, TellsOfElementsKnownFromOtherMessages) {
    // 5E: T3412 extended value (TS 24.301, 9.9.3.16B), before or behind the last field that is
    // known.
    EXPECT_EQ(Strict(EPS_MMDownlink, kAccept + "5E 01 23"), 0);
    EXPECT_EQ(Tolerant(EPS_MMDownlink, kAccept + "5E 01 23"), 0);
    EXPECT_EQ(message_.BitsConsumed(), 32 * 8);
    ASSERT_EQ(message_.SurplusCount(), 1U);
    EXPECT_EQ(Kept(0), "element in <> 5E: 5E 01 23 at 232,24");

    EXPECT_EQ(Strict(EPS_MMDownlink, kAccept + "F2 5E 01 23 E3"), 0);
    EXPECT_EQ(Tolerant(EPS_MMDownlink, kAccept + "F2 5E 01 23 E3"), 0);
    EXPECT_EQ(message_.BitsConsumed(), 30 * 8);
    EXPECT_EQ(message_.Find("AdditionalUpdateResult").Number(), 2U);
    ASSERT_EQ(message_.SurplusCount(), 2U);
    EXPECT_EQ(Kept(0), "element in <> 5E: 5E 01 23 at 240,24");
    EXPECT_EQ(Kept(1), "element in <> E3: E3 at 264,8");
}

TEST_F(TolerantReading, TellsOfElementsOutOfOrderOrRepeated) {
    // T3402 (17) behind the feature support, which comes again.
    const std::string octets = kAccept + "64 01 01 17 21 64 01 00 F2";
    EXPECT_EQ(Strict(EPS_MMDownlink, octets), 0);
    EXPECT_EQ(Tolerant(EPS_MMDownlink, octets), 0);
    EXPECT_EQ(message_.Find("T3402Value").Status(), FieldStatus::kAbsent);
    EXPECT_EQ(message_.Find("EPSNetworkFeatureSupport.IMS_VoPS").Number(), 1U);
    EXPECT_EQ(message_.Find("AdditionalUpdateResult").Number(), 2U);
    ASSERT_EQ(message_.SurplusCount(), 2U);
    EXPECT_EQ(Kept(0), "element in <> 17: 17 21 at 256,16");
    EXPECT_EQ(Kept(1), "element in <> 64: 64 01 00 at 272,24");
}

TEST_F(TolerantReading, TellsOfAnElementThatIsCutShort) {
    for (const char* octets : {"F2 5E 05 23 64", "5E 05 23 64 01"}) {
        EXPECT_EQ(Strict(EPS_MMDownlink, kAccept + octets), 0);
        const std::int64_t consumed = message_.BitsConsumed();
        EXPECT_EQ(Tolerant(EPS_MMDownlink, kAccept + octets), 0);
        EXPECT_EQ(message_.BitsConsumed(), consumed);
        EXPECT_EQ(message_.FaultCount(), 0U);
        ASSERT_EQ(message_.SurplusCount(), 1U);
    }
    EXPECT_EQ(Kept(0), "rest of <-> -: 5E 05 23 64 01 at 232,40");
    EXPECT_FALSE(message_.GetSurplus(0).field);
}

TEST_F(TolerantReading, KnowsThePaddingOfFrames) {
    // CM SERVICE REQUEST with a priority, the last element, or without.
    const std::string request = "05 24 71 03 33 19 A2 05 F4 12 34 56 78 ";
    for (const char* octets : {"81 2B 2B 2B 2B", "2B 2B 2B 2B 2B"}) {
        EXPECT_EQ(Strict(L3Uplink, request + octets), 0);
        EXPECT_EQ(Tolerant(L3Uplink, request + octets), 0);
        EXPECT_EQ(message_.SurplusCount(), 0U) << octets;
    }
}

TEST_F(TolerantReading, KeepsNothingOfRestOctetsAndBehindFixedOnes) {
    // TS 44.018: PAGING REQUEST TYPE 1, whose first rest octet looks like an identifier; SYSTEM
    // INFORMATION TYPE 4, whose rest octets are padding; TYPE 2, which has no identifiers.
    const std::string sixteen = "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
    const std::string cases[] = {
        "15 06 21 00 01 F0 7C 00 00 2B 2B 2B",
        "31 06 1C 62 F2 10 00 01 65 08 79 00 00 2B 2B 2B",
        "59 06 1A " + sixteen + " FF 79 00 00 7C 00 00",
    };
    for (const std::string& octets : cases) {
        EXPECT_EQ(Strict(RRPLENDownlink, octets), 0) << octets;
        EXPECT_EQ(Tolerant(RRPLENDownlink, octets), 0) << octets;
        EXPECT_EQ(message_.SurplusCount(), 0U) << octets;
    }
}

TEST_F(TolerantReading, GoesIntoTheMessageInside) {
    // ATTACH COMPLETE, TS 24.301, 8.2.2, with ACTIVATE DEFAULT EPS BEARER CONTEXT ACCEPT, in which
    // protocol configuration options (27) stand behind an unknown element.
    const std::string octets = "07 43 00 0A 52 00 C2 7B 00 01 55 27 01 80";
    EXPECT_EQ(Strict(EPS_MMUplink, octets), -7);
    EXPECT_EQ(Tolerant(EPS_MMUplink, octets), 0);
    ASSERT_EQ(message_.SurplusCount(), 1U);
    EXPECT_EQ(Kept(0),
              "element in <ESMMessageContainer.pACTIVATE_DEFAULT_EPS_BEARER_CONTEXT_ACCEPT> 7B: "
              "7B 00 01 55 at 56,32");
    EXPECT_TRUE(
        message_.Find("ESMMessageContainer.pACTIVATE_DEFAULT_EPS_BEARER_CONTEXT_ACCEPT."
                      "ProtocolConfigurationOptions"));
}

TEST_F(TolerantReading, TakesWhatTheMessageInsideLeaves) {
    // ESM STATUS has no optional elements.
    const std::string octets = "07 43 00 05 52 01 E8 6F 27";
    EXPECT_EQ(Strict(EPS_MMUplink, octets), -7);
    EXPECT_EQ(Tolerant(EPS_MMUplink, octets), 0);
    EXPECT_EQ(message_.FaultCount(), 0U);
    ASSERT_EQ(message_.SurplusCount(), 1U);
    EXPECT_EQ(Kept(0), "rest of <ESMMessageContainer> -: 27 at 64,8");
}

TEST_F(TolerantReading, TellsWhatIsBehindTheLastFieldOfTheMessageInside) {
    // ATTACH COMPLETE as above, with the options first: an unknown element, whole or cut short;
    // octets that the message inside does not tell of are the container's rest.
    const std::string inside =
        "element in <ESMMessageContainer."
        "pACTIVATE_DEFAULT_EPS_BEARER_CONTEXT_ACCEPT> ";
    const struct {
        const char* octets;
        std::vector<std::string> kept;
    } cases[] = {
        {"07 43 00 0A 52 00 C2 27 01 80 7B 00 01 55", {inside + "7B: 7B 00 01 55 at 80,32"}},
        {"07 43 00 0A 52 00 C2 27 01 80 7B 00 02 55", {"rest of <-> -: 7B 00 02 55 at 80,32"}},
        {"07 43 00 08 52 00 C2 27 01 80 2B 2B",
         {"rest of <ESMMessageContainer> -: 2B 2B at 80,16"}},
        {"07 43 00 09 52 00 C2 27 01 80 E1 2B 2B",
         {inside + "E1: E1 at 80,8", "rest of <ESMMessageContainer> -: 2B 2B at 88,16"}},
    };
    for (const auto& [octets, kept] : cases) {
        EXPECT_EQ(Strict(EPS_MMUplink, octets), -7) << octets;
        EXPECT_EQ(Tolerant(EPS_MMUplink, octets), 0) << octets;
        EXPECT_EQ(message_.FaultCount(), 0U) << octets;
        ASSERT_EQ(message_.SurplusCount(), kept.size()) << octets;
        for (std::size_t index = 0; index < kept.size(); ++index) {
            EXPECT_EQ(Kept(index), kept[index]);
        }
    }
}

TEST_F(TolerantReading, LeavesFaultsAsTheyAre) {
    struct {
        std::string octets;
        int code;
    } const cases[] = {
        {kAccept + "64 00", -12},                 // too short
        {kAccept + "64 02 01", -12},              // past the end
        {kAccept + "6A 02 21", -3},               // unknown, and past the end
        {kAccept + "79 00", -3},                  // half a length
        {"07 42 02", -7},                         // nothing behind the header
        {"07 42 02 49 06 60 62 F2 10 00 01", -7}  // a list of a type that does not exist
    };
    for (const auto& [octets, code] : cases) {
        EXPECT_EQ(Strict(EPS_MMDownlink, octets), code) << octets;
        const std::size_t faults = message_.FaultCount();
        EXPECT_EQ(Tolerant(EPS_MMDownlink, octets), code) << octets;
        EXPECT_EQ(message_.FaultCount(), faults) << octets;
        EXPECT_EQ(message_.SurplusCount(), 0U) << octets;
    }
    // A container whose message is unknown.
    EXPECT_EQ(Strict(EPS_MMUplink, "07 43 00 04 52 01 EB 00"), -7);
    EXPECT_EQ(Tolerant(EPS_MMUplink, "07 43 00 04 52 01 EB 00"), -7);
    EXPECT_EQ(message_.SurplusCount(), 0U);
}

TEST_F(TolerantReading, ReadsNothingBehindTheCapacity) {
    const std::vector<std::uint8_t> octets = FromHex(kAccept + "6A 01 21");
    const PaddedMessage padded(octets.data(), 100, octets.size());
    message_.Decode(EPS_MMDownlink, padded, kTolerant);
    EXPECT_EQ(message_.Code(), -3);
    ASSERT_EQ(message_.SurplusCount(), 1U);
    EXPECT_EQ(Kept(0), "element in <> 6A: 6A 01 21 at 232,24");
    message_.Decode(EPS_MMDownlink, padded);
    EXPECT_EQ(message_.SurplusCount(), 0U);
}

TEST_F(TolerantReading, KeepsNothingBehindTheMessageThoughAContainerReachesThere) {
    // ATTACH COMPLETE as above, cut short in the message inside: behind the options' length, and
    // behind an element that follows.
    const std::vector<std::uint8_t> octets =
        FromHex("07 43 00 0E 52 00 C2 27 01 80 E1 E2 7B 00 01 55 81 82");
    for (const int length : {9, 12}) {
        const PaddedMessage padded(octets.data(), length, octets.size());
        message_.Decode(EPS_MMUplink, padded);
        const std::size_t faults = message_.FaultCount();
        message_.Decode(EPS_MMUplink, padded, kTolerant);
        EXPECT_EQ(message_.Code(), -7);
        EXPECT_EQ(message_.FaultCount(), faults);
        EXPECT_EQ(message_.SurplusCount(), length == 9 ? 0U : 2U);
    }
}

TEST_F(TolerantReading, IsThatOfStrictReadingWhereThatHasNoFault) {
    Message strict;
    std::size_t compared = 0;
    for (const auto& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        const auto golden = test::ReadGoldenFile(path, problem);
        ASSERT_TRUE(golden) << problem;
        const PaddedMessage padded(golden->octets.data(), golden->length, golden->octets.size());
        strict.Decode(golden->decoding, padded);
        message_.Decode(golden->decoding, padded, kTolerant);
        if (message_.Security()) {
            continue;
        }
        EXPECT_EQ(message_.TypeName(), strict.TypeName()) << path;
        if (strict.Code() != 0 || strict.FaultCount() != 0) {
            continue;
        }
        ++compared;
        std::string texts[2];
        strict.AppendText(texts[0]);
        message_.AppendText(texts[1]);
        EXPECT_EQ(texts[0], texts[1]) << path;
        EXPECT_EQ(message_.BitsConsumed(), strict.BitsConsumed()) << path;
        EXPECT_EQ(message_.Code(), 0) << path;
        EXPECT_EQ(message_.FaultCount(), 0U) << path;
    }
    EXPECT_GT(compared, 100U);
}

// Security headers, TS 24.301, 9.1.

TEST_F(TolerantReading, FollowsIntoIntegrityProtectedMessages) {
    for (const char* type : {"1", "3"}) {
        const std::string octets = std::string(type) + "7 11 22 33 44 05 07 5D 11 00 02 F0 F0";
        EXPECT_EQ(Strict(EPS_MMDownlink, octets), 0);
        EXPECT_EQ(message_.TypeName(), "SECURITY_PROTECTED_NAS_MESSAGE");

        EXPECT_EQ(Tolerant(EPS_MMDownlink, octets), 0);
        EXPECT_EQ(message_.TypeName(), "SECURITY_MODE_COMMAND");
        const auto header = static_cast<std::uint8_t>(*type - '0');
        EXPECT_EQ(message_.Security(), (SecurityHeader{header, 0x11223344, 0x05}));
        EXPECT_EQ(message_.BitsConsumed(), 13 * 8);
        EXPECT_EQ(message_.Find("SecurityHeaderType").Number(), 0U);
        const auto place =
            message_.Find("SelectedNASSecurityAlgorithms.TypeOfCipheringAlg").GetPlace();
        ASSERT_TRUE(place);
        EXPECT_EQ(place->offset, 65U);
        std::string text;
        message_.AppendText(text);
        EXPECT_TRUE(text.starts_with(
            "Decoded using \"EPS_MMDownlink\".\nMESSAGE: SECURITY_MODE_COMMAND\n{\n"))
            << text;
    }
}

TEST_F(TolerantReading, FollowsIntoCipheredMessagesIfTheyAreDeciphered) {
    for (const char* type : {"2", "4"}) {
        const std::string octets = std::string(type) + "7 AA BB CC DD FE 07 54";
        EXPECT_EQ(Tolerant(EPS_MMDownlink, octets), 0);
        EXPECT_EQ(message_.TypeName(), "SECURITY_PROTECTED_NAS_MESSAGE");
        EXPECT_FALSE(message_.Security());
        // Deciphered or not, strict reading does not look.
        EXPECT_EQ(Tolerant(EPS_MMDownlink, octets, {.tolerant = false, .deciphered = true}), 0);
        EXPECT_EQ(message_.TypeName(), "SECURITY_PROTECTED_NAS_MESSAGE");

        EXPECT_EQ(Tolerant(EPS_MMDownlink, octets, kDeciphered), 0);
        EXPECT_EQ(message_.TypeName(), "AUTHENTICATION_REJECT");
        ASSERT_TRUE(message_.Security());
        EXPECT_EQ(message_.Security()->authenticationCode, 0xAABBCCDDU);
        EXPECT_EQ(message_.Security()->sequenceNumber, 0xFEU);
    }
}

TEST_F(TolerantReading, FollowsIntoSessionManagementOfTheDirection) {
    EXPECT_EQ(Tolerant(EPS_MMDownlink, "27 AA BB CC DD 01 02 13 D9", kDeciphered), 0);
    EXPECT_EQ(message_.TypeName(), "ESM_INFORMATION_REQUEST");
    EXPECT_EQ(message_.Find("ProcedureTransactionIdentity").Number(), 0x13U);
    EXPECT_EQ(message_.BitsConsumed(), 9 * 8);
    EXPECT_EQ(Tolerant(EPS_MMUplink, "27 AA BB CC DD 01 02 13 DA 28 01 61", kDeciphered), 0);
    EXPECT_EQ(message_.TypeName(), "ESM_INFORMATION_RESPONSE");
    // The other direction's is unknown.
    EXPECT_EQ(Tolerant(EPS_MMUplink, "27 AA BB CC DD 01 02 13 D9", kDeciphered), 0);
    EXPECT_EQ(message_.TypeName(), "SECURITY_PROTECTED_NAS_MESSAGE");
}

TEST_F(TolerantReading, SetsAsideBehindASecurityHeader) {
    const std::string octets = "27 AA BB CC DD 01 " + kAccept + "64 02 01 3F 6A 01 21";
    EXPECT_EQ(Tolerant(EPS_MMDownlink, octets, kDeciphered), 0);
    EXPECT_EQ(message_.TypeName(), "ATTACH_ACCEPT");
    ASSERT_EQ(message_.SurplusCount(), 2U);
    EXPECT_EQ(Kept(0), "rest of <EPSNetworkFeatureSupport> 64: 3F at " +
                           std::to_string(48 + kAcceptBits + 24) + ",8");
    EXPECT_EQ(Kept(1),
              "element in <> 6A: 6A 01 21 at " + std::to_string(48 + kAcceptBits + 32) + ",24");
    // A message inside that ends in a fault is found all the same.
    EXPECT_EQ(Tolerant(EPS_MMDownlink, "17 AA BB CC DD 01 07 42 02"), -7);
    EXPECT_EQ(message_.TypeName(), "ATTACH_ACCEPT");
    EXPECT_EQ(message_.BitsConsumed(), 0);
    EXPECT_TRUE(message_.Security());
}

TEST_F(TolerantReading, FollowsOnce) {
    EXPECT_EQ(Tolerant(EPS_MMDownlink, "17 AA BB CC DD 01 37 11 22 33 44 02 07 54"), 0);
    EXPECT_EQ(message_.TypeName(), "SECURITY_PROTECTED_NAS_MESSAGE");
    ASSERT_TRUE(message_.Security());
    EXPECT_EQ(message_.Security()->type, 1U);
    EXPECT_EQ(message_.Find("SecurityHeaderType").Number(), 3U);
    const auto place = message_.Find("NASMessage").GetPlace();
    ASSERT_TRUE(place);
    EXPECT_EQ(place->offset, 96U);
    EXPECT_EQ(place->length, 16U);
}

TEST_F(TolerantReading, LeavesOtherMessagesAsTheyAre) {
    struct {
        Decoding decoding;
        const char* octets;
        const char* name;
    } const cases[] = {
        {EPS_MMUplink, "C7 A5 12 34", "SERVICE_REQUEST"},
        {EPS_MMUplink, "17 AA BB CC DD 01", "SECURITY_PROTECTED_NAS_MESSAGE"},  // nothing inside
        {EPS_MMUplink, "17 AA BB CC DD 01 07 FF", "SECURITY_PROTECTED_NAS_MESSAGE"},  // unknown
        {EPS_MMUplink, "17 AA BB CC DD 01 05 24", "SECURITY_PROTECTED_NAS_MESSAGE"},  // another's
        {EPS_MMDownlink, "57 AA BB CC DD 01 07 54", ""},
        {EPS_MMDownlink, "12 AA BB CC DD 01 07 54", ""},
        {EPS_SMDownlink, "17 AA BB CC DD 01 02 13 D9", ""},
        {L3Downlink, "17 AA BB CC DD 01 07 54", ""},
    };
    for (const auto& [decoding, octets, name] : cases) {
        const int code = Strict(decoding, octets);
        EXPECT_EQ(message_.TypeName(), name) << octets;
        EXPECT_EQ(Tolerant(decoding, octets, kDeciphered), code) << octets;
        EXPECT_EQ(message_.TypeName(), name) << octets;
        EXPECT_FALSE(message_.Security()) << octets;
        EXPECT_EQ(message_.SurplusCount(), 0U) << octets;
    }
    // What lies behind the message's length is none inside.
    const std::vector<std::uint8_t> octets = FromHex("17 AA BB CC DD 01 07 54");
    EXPECT_TRUE(message_.Decode(EPS_MMDownlink, PaddedMessage(octets.data(), 6, 8), kTolerant));
    EXPECT_EQ(message_.TypeName(), "SECURITY_PROTECTED_NAS_MESSAGE");
}

TEST_F(TolerantReading, HasTheTextOfTheFunctions) {
    std::string text = "before ";
    message_.AppendText(text);
    EXPECT_EQ(text, "before ");
    for (const auto& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        const auto golden = test::ReadGoldenFile(path, problem);
        ASSERT_TRUE(golden) << problem;
        const PaddedMessage padded(golden->octets.data(), golden->length, golden->octets.size());
        message_.Decode(golden->decoding, padded);
        text = "before ";
        message_.AppendText(text);
        EXPECT_EQ(text, "before " + Decode(golden->decoding, padded).text) << path;
    }
}

}  // namespace
}  // namespace quorvane
