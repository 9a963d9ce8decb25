// Traffic flow templates of both NAS families.

#include <array>
#include <gtest/gtest.h>
#include <string>

#include "codec_test_support.h"

namespace quorvane::iecodec {
namespace {

using bits::Cell;
using test::Zeros;

class TrafficFlowTemplate : public testing::Test {
  protected:
    static const Cell& Filters(test::TypeUnderTest& value) { return value.Record().cells[1]; }
    static const Cell& Parameters(test::TypeUnderTest& value) { return value.Record().cells[2]; }

    /// Components of the filter.
    static const Cell& Components(test::TypeUnderTest& value, std::uint32_t filter) {
        return Filters(value).cells[filter].cells[3];
    }

    std::array<test::TypeUnderTest, 2> templates_{{{families::kEpsFamily, "epsTrafficFlowTemplate"},
                                                   {families::kL3Family, "TrafficFlowTemplate"}}};
};

TEST_F(TrafficFlowTemplate, AWholeFilter) {
    for (auto& value : templates_) {
        EXPECT_EQ(value.Decode("21 31 0A 02 30 11"), 48);
        EXPECT_EQ(value.Text(),
                  "{\n"
                  "  TFTOperationCode: Create new TFT (1)\n"
                  "  PacketFilters: [\n"
                  "    {\n"
                  "        PacketFilterId: 1\n"
                  "        PacketFilterDirection: bidirectional (3)\n"
                  "        PacketFilterEvalPrecedence: 10\n"
                  "        FilterContents: [\n"
                  "          {\n"
                  "              ComponentTypeId: Protocol identifier/Next header type (48)\n"
                  "              ComponentData: 11\n"
                  "            }\n"
                  "\n"
                  "        ]\n"
                  "      }\n"
                  "\n"
                  "  ]\n"
                  "  PacketParameters: [\n"
                  "  ]\n"
                  "}\n");
        // Operations 3 and 4 have the same form; the two upper bits are passed over.
        EXPECT_EQ(value.Decode("61 F1 0A 02 30 11"), 48);
        EXPECT_EQ(value.Decode("81 31 0A 02 30 11"), 48);
        EXPECT_EQ(Components(value, 0).number, 1U);
    }
}

TEST_F(TrafficFlowTemplate, IdentifiersAlone) {
    for (auto& value : templates_) {
        EXPECT_EQ(value.Decode("A2 31 22"), 24);
        EXPECT_EQ(value.Text(),
                  "{\n"
                  "  TFTOperationCode: Delete packet filters from existing TFT (5)\n"
                  "  PacketFilters: [\n"
                  "    {\n"
                  "        PacketFilterId: 1\n"
                  "        PacketFilterDirection: bidirectional (3)\n"
                  "        PacketFilterEvalPrecedence: 0\n"
                  "        FilterContents: [\n"
                  "        ]\n"
                  "      }\n"
                  ",\n"
                  "    {\n"
                  "        PacketFilterId: 2\n"
                  "        PacketFilterDirection: uplink only (2)\n"
                  "        PacketFilterEvalPrecedence: 0\n"
                  "        FilterContents: [\n"
                  "        ]\n"
                  "      }\n"
                  "\n"
                  "  ]\n"
                  "  PacketParameters: [\n"
                  "  ]\n"
                  "}\n");
    }
}

TEST_F(TrafficFlowTemplate, OtherOperationsReadNothingOfTheirFilters) {
    for (auto& value : templates_) {
        EXPECT_EQ(value.Decode("40"), 8);
        EXPECT_EQ(value.Text(),
                  "{\n"
                  "  TFTOperationCode: Delete existing TFT (2)\n"
                  "  PacketFilters: [\n"
                  "  ]\n"
                  "  PacketParameters: [\n"
                  "  ]\n"
                  "}\n");
        for (const char* octets : {"02 31 32", "42 31 32", "C2 31 32", "E2 31 32"}) {
            EXPECT_EQ(value.Decode(octets), 8) << octets;
            EXPECT_EQ(Filters(value).number, 2U) << octets;
            EXPECT_EQ(Filters(value).cells[1].cells, nullptr) << octets;
        }
    }
}

TEST_F(TrafficFlowTemplate, MoreFiltersThanEightAreNone) {
    for (auto& value : templates_) {
        EXPECT_EQ(value.Decode("28 " + Zeros(24)), 8 + 8 * 24);
        EXPECT_EQ(Filters(value).number, 8U);
        EXPECT_EQ(value.Decode("29 " + Zeros(27)), 8);
        EXPECT_EQ(Filters(value).number, 0U);
        EXPECT_EQ(value.Decode("AF 01"), 8);
        EXPECT_EQ(Filters(value).number, 0U);
        // What stands there is read as parameters then.
        EXPECT_EQ(value.Decode("39 01 01 AA"), 32);
        EXPECT_EQ(Filters(value).number, 0U);
        EXPECT_EQ(Parameters(value).number, 2U);
    }
}

TEST_F(TrafficFlowTemplate, EveryComponentType) {
    const std::string first =
        "10 01 20 10 01 02 03 04 05 06 07 08 30 09 40 0A 0B 41 0C 0D 0E 0F 50 10 11 51 12 13 14 15 "
        "60 16 17 18 19 ";
    const std::string second = "21 02 28 20 " + Zeros(31) + "AA 70 1A 1B 80 1C 1D 1E";
    struct {
        std::uint32_t filter;
        std::uint32_t type;
        std::uint32_t bits;
        std::uint8_t last;
    } const components[] = {{0, 0x10, 64, 0x08}, {0, 0x30, 8, 0x09},   {0, 0x40, 16, 0x0B},
                            {0, 0x41, 32, 0x0F}, {0, 0x50, 16, 0x11},  {0, 0x51, 32, 0x15},
                            {0, 0x60, 32, 0x19}, {1, 0x20, 256, 0xAA}, {1, 0x70, 16, 0x1B},
                            {1, 0x80, 24, 0x1E}};
    for (auto& value : templates_) {
        EXPECT_EQ(value.Decode("22 " + first + second), 8 * (1 + 3 + 32 + 3 + 40));
        EXPECT_EQ(Components(value, 0).number, 7U);
        EXPECT_EQ(Components(value, 1).number, 3U);
        std::uint32_t index = 0;
        for (const auto& [filter, type, bits, last] : components) {
            index = type == 0x20 ? 0 : index;
            const Cell* component = Components(value, filter).cells[index++].cells;
            EXPECT_EQ(component[0].number, type);
            EXPECT_EQ(component[1].number, bits);
            EXPECT_EQ(component[1].octets[bits / 8 - 1], last);
            EXPECT_EQ(component[1].location, 0U);
        }
    }
}

TEST_F(TrafficFlowTemplate, OfAnUnknownComponentOnlyTheTypeIsPassedOver) {
    for (auto& value : templates_) {
        EXPECT_EQ(value.Decode("21 31 0A 03 99 30 11"), 56);
        EXPECT_EQ(Components(value, 0).number, 1U);
        EXPECT_EQ(value.Decode("21 31 0A 02 99 98"), 48);
        EXPECT_EQ(Components(value, 0).number, 0U);
        EXPECT_EQ(value.Decode("21 31 0A 00"), 32);
        EXPECT_EQ(Components(value, 0).number, 0U);
    }
}

TEST_F(TrafficFlowTemplate, AFilterHasSevenComponentsAtMost) {
    const std::string eight = "30 01 30 02 30 03 30 04 30 05 30 06 30 07 30 08 ";
    for (auto& value : templates_) {
        EXPECT_EQ(value.Decode("21 10 01 10 " + eight), 160);
        EXPECT_EQ(Components(value, 0).number, 7U);
        // The walk stands ahead of the eighth, and what follows is read from there: a parameter
        // 30 of 8 octets.
        EXPECT_EQ(value.Decode("31 10 01 10 " + eight + "03 01 AA"), 160 + 16 + 64);
        EXPECT_EQ(Parameters(value).number, 2U);
        const Cell* parameter = Parameters(value).cells[0].cells;
        EXPECT_EQ(parameter[0].number, 0x30U);
        EXPECT_EQ(parameter[1].number, 64U);
        EXPECT_EQ(parameter[1].octets[0], 0x03);
        EXPECT_EQ(parameter[1].octets[2], 0xAA);
    }
}

TEST_F(TrafficFlowTemplate, ALengthThatTheComponentsMissRunsOnToSeven) {
    for (auto& value : templates_) {
        // Three octets are declared; the second component goes one beyond, and so on to the
        // seventh.
        EXPECT_EQ(value.Decode("22 10 01 03 30 01 30 02 30 03 30 04 30 05 30 06 30 07 21 02 00"),
                  8 + 24 + 24 + 24);
        EXPECT_EQ(Components(value, 0).number, 7U);
        // The next filter is read where the walk stands.
        EXPECT_EQ(Filters(value).cells[1].cells[0].number, 1U);
        EXPECT_EQ(Filters(value).cells[1].cells[2].number, 2U);
    }
}

TEST_F(TrafficFlowTemplate, ALengthThatTheComponentsMissEndsWithTheElement) {
    for (auto& value : templates_) {
        EXPECT_EQ(value.Decode("21 10 01 04 10 01 02 03 04 05 06 07 08 30 11 30 12"), 8 + 24 + 32);
        EXPECT_EQ(Components(value, 0).number, 3U);
        // The component itself may reach past the end: zeros stand there.
        EXPECT_EQ(value.Decode("21 10 01 01 10"), 40);
        ASSERT_EQ(Components(value, 0).number, 1U);
        EXPECT_EQ(Components(value, 0).cells[0].cells[1].number, 64U);
        EXPECT_EQ(Components(value, 0).cells[0].cells[1].octets[0], 0);
    }
}

TEST_F(TrafficFlowTemplate, AFilterMayDeclareMoreThanThereIs) {
    for (auto& value : templates_) {
        // The zeros behind the element are components of an unknown type.
        EXPECT_EQ(value.Decode("31 10 01 FF 30 11"), 8 + 24 + 2040);
        EXPECT_EQ(Components(value, 0).number, 1U);
        EXPECT_EQ(Parameters(value).number, 0U);
        EXPECT_EQ(value.Decode("21", 8), 32);
        EXPECT_EQ(Filters(value).number, 1U);
    }
}

TEST_F(TrafficFlowTemplate, EachParameterCountsTwice) {
    for (auto& value : templates_) {
        EXPECT_EQ(value.Decode("D0 01 02 AA BB 02 00"), 56);
        EXPECT_EQ(value.Text(),
                  "{\n"
                  "  TFTOperationCode: No TFT operation (6)\n"
                  "  PacketFilters: [\n"
                  "  ]\n"
                  "  PacketParameters: [\n"
                  "    {\n"
                  "        ParameterId: 1\n"
                  "        Contents: AA BB\n"
                  "      }\n"
                  ",\n"
                  "    {\n"
                  "        ParameterId: 2\n"
                  "        Contents: \n"
                  "      }\n"
                  ",\n"
                  "    {\n"
                  "        ParameterId: 0\n"
                  "        Contents: \n"
                  "      }\n"
                  ",\n"
                  "    {\n"
                  "        ParameterId: 0\n"
                  "        Contents: \n"
                  "      }\n"
                  "\n"
                  "  ]\n"
                  "}\n");
    }
}

TEST_F(TrafficFlowTemplate, ANinthParameterIsCountedButNotStored) {
    std::string octets = "D0";
    for (int parameter = 1; parameter <= 8; ++parameter) {
        octets += " 0" + std::to_string(parameter) + " 01 A" + std::to_string(parameter);
    }
    for (auto& value : templates_) {
        EXPECT_EQ(value.Decode(octets), 8 + 8 * 24);
        EXPECT_EQ(Parameters(value).number, 16U);
        EXPECT_EQ(value.Decode(octets + " 09 01 A9"), 8 + 9 * 24);
        ASSERT_EQ(Parameters(value).number, 16U);
        for (std::uint32_t index = 0; index < 8; ++index) {
            const Cell* parameter = Parameters(value).cells[index].cells;
            EXPECT_EQ(parameter[0].number, index + 1);
            EXPECT_EQ(parameter[1].octets[0], 0xA1 + index);
        }
        for (std::uint32_t index = 8; index < 16; ++index) {
            EXPECT_EQ(Parameters(value).cells[index].cells, nullptr);
        }
        EXPECT_EQ(value.Decode("D0 " + Zeros(250)), 8 + 125 * 16);
        EXPECT_EQ(Parameters(value).number, 16U);
    }
}

TEST_F(TrafficFlowTemplate, ParametersNeedTheBitAndRoom) {
    for (auto& value : templates_) {
        EXPECT_EQ(value.Decode("C0 01 02 AA BB"), 8);
        EXPECT_EQ(Parameters(value).number, 0U);
        EXPECT_EQ(value.Decode("D0"), 8);
        EXPECT_EQ(Parameters(value).number, 0U);
        EXPECT_EQ(value.Decode("31 10 01 00"), 32);
        EXPECT_EQ(Parameters(value).number, 0U);
        EXPECT_EQ(value.Decode("31 10 01 00 02 01 55"), 56);
        EXPECT_EQ(Parameters(value).number, 2U);
    }
}

TEST_F(TrafficFlowTemplate, AParameterMayDeclareMoreThanThereIs) {
    for (auto& value : templates_) {
        EXPECT_EQ(value.Decode("D0 01 FF AA"), 8 + 16 + 2040);
        ASSERT_EQ(Parameters(value).number, 2U);
        const Cell& contents = Parameters(value).cells[0].cells[1];
        EXPECT_EQ(contents.number, 256U);
        EXPECT_EQ(contents.octets[0], 0xAA);
        EXPECT_EQ(contents.octets[31], 0);
        EXPECT_EQ(value.Decode("D0 01"), 8 + 16);
    }
}

TEST_F(TrafficFlowTemplate, IsWrittenBack) {
    for (auto& value : templates_) {
        for (const char* octets : {"40", "42", "21 31 0A 02 30 11", "A2 31 22",
                                   "D0 01 02 AA BB 02 00", "31 10 01 00 02 01 55"}) {
            EXPECT_EQ(value.ThereAndBack(octets), octets);
        }
        // Half of the parameters are those that were sent.
        EXPECT_EQ(value.ThereAndBack("D0 01 00 02 00 03 00"), "D0 01 00 02 00 03 00");
        // Spare bits, and components of unknown types, are not kept.
        EXPECT_EQ(value.ThereAndBack("21 F1 0A 03 99 30 11"), "21 31 0A 02 30 11");
    }
}

TEST_F(TrafficFlowTemplate, ComponentsAreWrittenAsLongAsTheirTypeIs) {
    for (auto& value : templates_) {
        ASSERT_EQ(value.Decode("21 31 0A 03 40 12 34"), 56);
        Cell* component = value.Record().cells[1].cells[0].cells[3].cells[0].cells;
        component[1].number = 8;
        EXPECT_EQ(value.Encode().hex, "21 31 0A 03 40 12 00");
        component[0].number = 0x30;
        component[1].number = 16;
        EXPECT_EQ(value.Encode().hex, "21 31 0A 02 30 12");
    }
}

}  // namespace
}  // namespace quorvane::iecodec
