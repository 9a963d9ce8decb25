#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <string>

#include "facade/decodings.h"
#include "quorvane/json.h"
#include "quorvane/message.h"
#include "support/entry_points.h"

namespace quorvane {
namespace {

TEST(Decodings, StandInTheOrderOfTheEntryPoints) {
    ASSERT_EQ(Decodings().size(), 17U);
    ASSERT_EQ(test::EntryPoints().size(), 17U);
    for (std::size_t index = 0; index < 17; ++index) {
        EXPECT_EQ(static_cast<std::size_t>(Decodings()[index].decoding), index);
        EXPECT_EQ(Decodings()[index].name, test::EntryPoints()[index].name);
        EXPECT_FALSE(Decodings()[index].purpose.empty());
    }
}

TEST(Decodings, AreFoundByName) {
    for (const DecodingInfo& info : Decodings()) {
        EXPECT_EQ(FindDecoding(info.name), info.decoding);
    }
}

TEST(Decodings, AreNotFoundByOtherNames) {
    for (const char* name : {"", "eps_smuplink", "EPS_SMUplink ", "RRShortPD", "DecodeRRSPD"}) {
        EXPECT_EQ(FindDecoding(name), std::nullopt) << name;
    }
}

// The names in texts are those of the entry points but for these.
TEST(Decodings, HaveFiveNamesOfTheirOwnInTexts) {
    const auto expected = [](const DecodingInfo& info) -> std::string_view {
        switch (info.decoding) {
            case Decoding::RRSPD:
                return "RRShortPD";
            case Decoding::RLC_MACDownlink:
                return "RLC_MAC_Downlink";
            case Decoding::RLC_MACUplink:
                return "RLC_MAC_Uplink";
            case Decoding::Packet_Control_Acknowledgement_8:
                return "Packet_channel_request_8_bit_message_content";
            case Decoding::Packet_Control_Acknowledgement_11:
                return "Packet_Control_Acknowledgement_11bit_a";
            default:
                return info.name;
        }
    };
    for (const DecodingInfo& info : Decodings()) {
        EXPECT_EQ(facade::RowOf(info.decoding).textName, expected(info));
    }
}

TEST(Decodings, TakeTheLengthOfThreeMessagesAsFixed) {
    for (const DecodingInfo& info : Decodings()) {
        const std::int32_t expected =
            info.decoding == Decoding::ChannelRequest                      ? 8
            : info.decoding == Decoding::Packet_Control_Acknowledgement_8  ? 8
            : info.decoding == Decoding::Packet_Control_Acknowledgement_11 ? 11
                                                                           : 0;
        EXPECT_EQ(facade::RowOf(info.decoding).fixedBits, expected) << info.name;
    }
}

TEST(Decodings, OfOneFamilyShareItsTables) {
    const facade::Binding uplink = facade::BindingOf(Decoding::EPS_MMUplink);
    const facade::Binding session = facade::BindingOf(Decoding::EPS_SMDownlink);
    const facade::Binding testMode = facade::BindingOf(Decoding::EPC_SS2UE);
    ASSERT_NE(uplink.set, nullptr);
    ASSERT_NE(testMode.set, nullptr);
    EXPECT_EQ(uplink.family, session.family);
    EXPECT_NE(uplink.family, testMode.family);
    EXPECT_NE(uplink.set, session.set);
    EXPECT_EQ(facade::BindingOf(Decoding::EPS_MMUplink).set, uplink.set);  // not looked up again
}

TEST(Decodings, NameFamiliesThatAreKnown) {
    const auto known = families::KnownFamilies();
    for (const DecodingInfo& info : Decodings()) {
        const std::string_view name = facade::RowOf(info.decoding).family;
        EXPECT_EQ(std::count_if(known.begin(), known.end(),
                                [&](const auto& family) { return family.name == name; }),
                  1)
            << info.name;
    }
}

TEST(Decodings, SayWhichAreDescribed) {
    for (const DecodingInfo& info : Decodings()) {
        const facade::Binding binding = facade::BindingOf(info.decoding);
        EXPECT_EQ(info.described, binding.set != nullptr) << info.name;
        EXPECT_EQ(info.described, binding.family != nullptr) << info.name;
    }
    for (const families::FamilyInfo& family : families::KnownFamilies()) {
        EXPECT_EQ(family.tables != nullptr,
                  std::any_of(Decodings().begin(), Decodings().end(),
                              [&](const auto& info) {
                                  return info.described &&
                                         facade::RowOf(info.decoding).family == family.name;
                              }))
            << family.name;
    }
}

TEST(Decodings, AreBoundToTheSetsOfTheirNames) {
    for (const DecodingInfo& info : Decodings()) {
        const facade::Binding binding = facade::BindingOf(info.decoding);
        if (binding.set != nullptr) {
            EXPECT_EQ(binding.set->name, facade::RowOf(info.decoding).set);
        }
    }
}

// Out of range by one, and by all.
TEST(Decodings, WhatIsNoneFindsNoMessage) {
    const std::uint8_t octets[] = {0x0F, 0x87};
    for (const int number : {17, 255}) {
        const auto none = static_cast<Decoding>(number);
        const Result result = Decode(none, octets);
        EXPECT_FALSE(result.found);
        EXPECT_EQ(result.text, "Failed to decode \"\" message");
        EXPECT_EQ(result.diagnostics, "");

        Message message;
        for (const bool tolerant : {false, true}) {
            EXPECT_FALSE(message.Decode(none, octets, {.tolerant = tolerant}));
            EXPECT_EQ(message.GetDecoding(), std::nullopt);
            std::string json;
            AppendJson(message, json);
            EXPECT_EQ(json, R"({"decoding":null,"type":null,"code":-2})");
        }
        EXPECT_TRUE(message.New(none, "ACTIVATE_TEST_MODE"));
        EXPECT_EQ(MessageTypes::Count(none), 0U);
        EXPECT_FALSE(MessageTypes::At(none, 0));
    }
}

}  // namespace
}  // namespace quorvane
