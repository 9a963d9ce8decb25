// The message that the first octets tell, for all described sets.

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "families/family.h"
#include "iecodec/message_container.h"

namespace quorvane::iecodec {
namespace {

struct Dispatched {
    bits::Outcome result = 0;
    MessageContainer container;
    std::string message;  // empty: none
};

Dispatched Dispatch(const families::Family& family, std::string_view setName,
                    std::vector<std::uint8_t> octets) {
    const MessageSetRow* set = families::FindSet(family, setName);
    EXPECT_NE(set, nullptr) << setName;
    octets.resize(octets.size() + 64);
    bits::Arena arena;
    Diagnostics diagnostics;
    DecodeContext context{family.codec,
                          {octets.data(), static_cast<std::int64_t>(octets.size())},
                          arena,
                          diagnostics};
    Dispatched out{};
    out.result = DispatchMessage(context, *set, 16, out.container);
    if (out.container.tag != 0) {
        out.message = family.codec.messages[set->messages[out.container.tag - 1]].name;
    }
    out.container.body = {};
    return out;
}

Dispatched MmUp(std::vector<std::uint8_t> octets) {
    return Dispatch(families::kEpsFamily, "Message_set_EPS_MM_Uplink", std::move(octets));
}

Dispatched MmDown(std::vector<std::uint8_t> octets) {
    return Dispatch(families::kEpsFamily, "Message_set_EPS_MM_Downlink", std::move(octets));
}

TEST(Dispatch, PlainMessagesByTheirType) {
    EXPECT_EQ(MmUp({0x07, 0x41}).message, "ATTACH_REQUEST");
    EXPECT_EQ(MmUp({0x07, 0x41}).container.tag, 2U);
    EXPECT_EQ(MmDown({0x07, 0x42}).message, "ATTACH_ACCEPT");
    EXPECT_EQ(MmDown({0x07, 0x42}).container.tag, 1U);
}

TEST(Dispatch, SecurityHeadersAlone) {
    constexpr std::array<std::uint8_t, 4> kSecurityHeaders{0x17, 0x27, 0x37, 0x47};
    constexpr std::array<std::uint8_t, 4> kServiceHeaders{0xC7, 0xD7, 0xE7, 0xF7};
    for (const std::uint8_t first : kSecurityHeaders) {
        EXPECT_EQ(MmUp({first, 0x41}).message, "SECURITY_PROTECTED_NAS_MESSAGE");
        EXPECT_EQ(MmUp({first, 0x41}).container.tag, 13U);
        EXPECT_EQ(MmDown({first, 0xFF}).message, "SECURITY_PROTECTED_NAS_MESSAGE");
        EXPECT_EQ(MmDown({first, 0xFF}).container.tag, 14U);
    }
    for (const std::uint8_t first : kServiceHeaders) {
        EXPECT_EQ(MmUp({first, 0x41}).message, "SERVICE_REQUEST");
        const Dispatched down = MmDown({first, 0x41});
        EXPECT_EQ(down.result, kUnknownMessage);
    }
}

TEST(Dispatch, OtherHeadersLeaveTheKeyWhole) {
    for (std::uint32_t nibble = 5; nibble <= 11; ++nibble) {
        const auto first = static_cast<std::uint8_t>(nibble << 4 | 7U);
        EXPECT_EQ(MmUp({first, 0x41}).result, kUnknownMessage);
        EXPECT_EQ(MmDown({first, 0x42}).result, kUnknownMessage);
    }
    EXPECT_EQ(MmUp({0x18, 0x00}).result, kUnknownMessage);
}

TEST(Dispatch, AnUnknownKeyStillShowsItsOctets) {
    const Dispatched out = MmUp({0x97, 0x99});
    EXPECT_EQ(out.result, kUnknownMessage);
    EXPECT_EQ(out.container.tag, 0U);
    EXPECT_EQ(out.container.pd, 7U);
    EXPECT_EQ(out.container.messageType, 0x99U);
}

TEST(Dispatch, AnUnknownKeyEmptiesAContainerInUse) {
    const MessageSetRow* set = families::FindSet(families::kEpsFamily, "Message_set_EPS_MM_Uplink");
    const std::array<std::uint8_t, 2> octets{0x95, 0x99};
    bits::Arena arena;
    Diagnostics diagnostics;
    DecodeContext context{families::kEpsFamily.codec, {octets.data(), 2}, arena, diagnostics};
    MessageContainer container;
    SetTag(container, 3);
    bits::StructCells(arena, container.body, 5);
    container.pd = 7;
    container.messageType = 0x41;
    EXPECT_EQ(DispatchMessage(context, *set, 16, container), kUnknownMessage);
    EXPECT_EQ(container.tag, 0U);
    EXPECT_EQ(container.body.cells, nullptr);
    EXPECT_EQ(container.pd, 5U);
    EXPECT_EQ(container.messageType, 0x99U);
}

TEST(Dispatch, SessionManagementByItsThirdOctet) {
    const auto up = [](std::vector<std::uint8_t> octets) {
        return Dispatch(families::kEpsFamily, "Message_set_EPS_SM_Uplink", std::move(octets));
    };
    const auto down = [](std::vector<std::uint8_t> octets) {
        return Dispatch(families::kEpsFamily, "Message_set_EPS_SM_Downlink", std::move(octets));
    };
    EXPECT_EQ(up({0x52, 0x09, 0xE8}).container.tag, 9U);
    EXPECT_EQ(down({0x52, 0x09, 0xE8}).container.tag, 7U);
    // The second octet, the procedure transaction identity, stands where others show the type.
    EXPECT_EQ(up({0x52, 0x09, 0xE8}).container.messageType, 0x09U);
    EXPECT_EQ(up({0x52, 0x09, 0xE8}).container.pd, 2U);
    EXPECT_EQ(up({0x53, 0x09, 0xE8}).result, kUnknownMessage);
    EXPECT_EQ(up({0x02, 0x00, 0xD1}).result, kUnknownMessage);
    EXPECT_EQ(down({0x02, 0x00, 0xD1}).message, "PDN_CONNECTIVITY_REJECT");
}

TEST(Dispatch, TestModeIgnoresTheSkipIndicator) {
    const auto toUe = [](std::vector<std::uint8_t> octets) {
        return Dispatch(families::kEpcFamily, "Message_set_SS_to_UE", std::move(octets));
    };
    const auto toSs = [](std::vector<std::uint8_t> octets) {
        return Dispatch(families::kEpcFamily, "Message_set_UE_to_SS", std::move(octets));
    };
    EXPECT_EQ(toUe({0x0F, 0x84}).message, "ACTIVATE_TEST_MODE");
    EXPECT_EQ(toUe({0xFF, 0x84}).message, "ACTIVATE_TEST_MODE");
    EXPECT_EQ(toSs({0x0F, 0x88}).result, kUnknownMessage);
    EXPECT_EQ(toSs({0x0F, 0x89}).result, kUnknownMessage);
    EXPECT_EQ(toSs({0x0F, 0x8A}).message, "UE_TEST_LOOP_MODE_C_MBMS_PACKET_COUNTER_RESPONSE");
}

TEST(Dispatch, EveryKeyOfEverySetLeadsToItsMessage) {
    for (const families::Family* family : families::AllFamilies()) {
        for (const MessageSetRow& set : family->codec.sets) {
            for (std::size_t index = 1; index < set.keys.size(); ++index) {
                EXPECT_LT(set.keys[index - 1].key, set.keys[index].key) << set.name;
            }
            for (const KeyRow& key : set.keys) {
                ASSERT_GE(key.tag, 1U);
                ASSERT_LE(key.tag, set.messages.size());
            }
        }
    }
}

TEST(SetTag, AnotherTagEmptiesTheBody) {
    MessageContainer container;
    bits::Arena arena;
    bits::StructCells(arena, container.body, 3);
    SetTag(container, 0);
    EXPECT_NE(container.body.cells, nullptr);
    SetTag(container, 4);
    EXPECT_EQ(container.tag, 4U);
    EXPECT_EQ(container.body.cells, nullptr);
}

}  // namespace
}  // namespace quorvane::iecodec
