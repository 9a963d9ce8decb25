// Whole structures of the standards: the members that they give, and the machine against the
// reference reader over messages that grow into them.

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "compiler/csn_type_text.h"
#include "csn/csn_record.h"
#include "families/family.h"
#include "reference/csn_grammar.h"
#include "reference/csn_reference.h"
#include "reflect/convert.h"
#include "support/golden_file.h"
#include "support/plain_decode.h"
#include "support/sanitized.h"

namespace quorvane::compiler {
namespace {

using reference::Grammar;
using reference::Reading;
using reference::Reference;

std::string Structure(const std::string& name) {
    return SourceText("tests/compiler/csn_structures/" + name + ".csn1");
}

/// The members of a file's structure, in their order, with blanks between.
std::string MemberNames(const std::string& name) {
    const Grammar grammar(Structure(name));
    std::string names = grammar.Errors();
    if (names.empty()) {
        for (const ElementModel& element : grammar.Types().type->elements) {
            names += (names.empty() ? "" : " ") + element.name;
        }
    }
    return names;
}

TEST(CsnStructures, MembersOfRlcMacMessages) {
    EXPECT_EQ(MemberNames("psi3"),
              "CCN_Support_Description CELL_BAR_QUALIFY_3 COMPACT_Information "
              "Distribution_part_error General_Cell_Selection_parameter "
              "Iu_Mode_Neighbour_Cell_Parameters Iu_mode_Only_Neighbour_Cell_Parameters "
              "LSA_Parameters Neighbour_Cell_parameters PAGE_MODE PSI3_BIS_COUNT PSI3_CHANGE_MARK "
              "Serving_Cell_LSA_ID_information Serving_Cell_parameters");
    EXPECT_EQ(MemberNames("packet_uplink_assignment"),
              "ARAC_RETRANSMISSION_REQUEST Access_Technologies_Request "
              "Address_information_part_error Assignment_Info BEP_PERIOD2 CHANNEL_CODING_COMMAND "
              "COMPACT_reduced_MA CONTENTION_RESOLUTION_TLLI Distribution_part_error "
              "Dual_Carrier_Frequency_Parameters Dynamic_Allocation Dynamic_Allocation_2 "
              "EGPRS_Channel_Coding_Command EGPRS_Window_Size EMST_NW_Capability "
              "Enhanced_Flexible_Timeslot_Assignment Frequency_Parameters Frequency_Parameters_C1 "
              "Frequency_Parameters_C2 Frequency_Parameters_error G_RNTI_extension Global_TFI "
              "Indication_of_Upper_Layer_PDU_Start_for_RLC_UM MTTI_UPLINK_ASSIGNMENT_C1 "
              "MTTI_UPLINK_ASSIGNMENT_C2 Message_escape Multi_Block_Allocation NPM_Transfer_Time "
              "Non_distribution_part_error PAGE_MODE PDCH_Pairs_Description PERSISTENCE_LEVEL PFI "
              "Packet_Extended_Timing_Advance Packet_Request_Reference Packet_Timing_Advance "
              "Pulse_Format RB_Id REPORTED_TIMESLOTS_C1 REPORTED_TIMESLOTS_C2 RESEGMENT "
              "RLC_Entity_2 RLC_Entity_3 RLC_MODE RTTI_USF_MODE Single_Block_Allocation "
              "TLLI_BLOCK_CHANNEL_CODING TLLI_G_RNTI TQI TSH Uplink_EGPRS_Level");
    EXPECT_EQ(MemberNames("egprs_packet_downlink_ack_nack"),
              "Channel_Request_Description DOWNLINK_TFI EGPRS_Ack_Nack_Description "
              "EGPRS_Channel_Quality_Report MS_OUT_OF_MEMORY PFI ext");
    EXPECT_EQ(MemberNames("packet_serving_cell_data"),
              "Address_information_part_error CONTAINER CONTAINER_INDEX Distribution_part_error "
              "Global_TFI Non_distribution_part_error PAGE_MODE spare");
    EXPECT_EQ(MemberNames("packet_measurement_order"),
              "Address_information_part_error CCN_ACTIVE CCN_Support_Description "
              "Distribution_part_error ENH_Measurement_Parameters EXT_Measurement_Parameters "
              "GPRS_3G_Additional_Measurement_Parameters_Description_2 G_RNTI_extension Global_TFI "
              "Iu_Mode_Neighbour_Cell_Parameters LSA_Parameters NC_Iu_MODE_ONLY_CAPABLE_CELL_LIST "
              "NC_Measurement_Parameters Non_distribution_part_error PAGE_MODE PMO_COUNT PMO_INDEX "
              "TLLI_G_RNTI _3G_CCN_ACTIVE _700_REPORTING_OFFSET _700_REPORTING_THRESHOLD "
              "_810_REPORTING_OFFSET _810_REPORTING_THRESHOLD");
    EXPECT_EQ(MemberNames("psi5"),
              "Distribution_part_error ENH_Reporting_Parameters EXT_Measurement_Parameters "
              "GPRS_3G_Additional_Measurement_Parameters_Description_2 NC_Measurement_Parameters "
              "PAGE_MODE PSI5_CHANGE_MARK PSI5_COUNT PSI5_INDEX _700_REPORTING_OFFSET "
              "_700_REPORTING_THRESHOLD _810_REPORTING_OFFSET _810_REPORTING_THRESHOLD");
    EXPECT_EQ(MemberNames("packet_tbf_release"),
              "Address_information_part_error DOWNLINK_RELEASE Distribution_part_error GLOBAL_TFI "
              "Non_distribution_part_error PAGE_MODE TBF_RELEASE_CAUSE UPLINK_RELEASE");
}

TEST(CsnStructures, MembersOfRadioResourceElements) {
    EXPECT_EQ(MemberNames("si2quater_rest_octets"),
              "BA_IND CCN_Support_Description CSG_Cells_Reporting_Description "
              "E_UTRAN_CSG_Description Enhanced_Cell_Reselection_Parameters_Description "
              "GPRS_3G_MEASUREMENT_Parameters_Description GPRS_BSIC_Description "
              "GPRS_MEASUREMENT_Parameters_Description GPRS_REPORT_PRIORITY_Description "
              "GPRS_Real_Time_Difference_Description MP_CHANGE_MARK "
              "Measurement_Parameters_Description NC_Measurement_Parameters "
              "Priority_and_E_UTRAN_Parameters_Description SI2quater_COUNT SI2quater_INDEX "
              "_3G_ADDITIONAL_MEASUREMENT_Parameters_Description_2 "
              "_3G_Additional_Measurement_Parameters_Description _3G_CCN_ACTIVE "
              "_3G_CSG_Description _700_REPORTING_OFFSET _700_REPORTING_THRESHOLD "
              "_810_REPORTING_OFFSET _810_REPORTING_THRESHOLD extension_length p3G_BA_IND "
              "p3G_Measurement_Parameters_Description p3G_Neighbour_Cell_Description");
    EXPECT_EQ(MemberNames("measurement_information"),
              "BA_IND BSIC_Description E_UTRAN_CSG_Description E_UTRAN_Parameters_Description "
              "INVALID_BSIC_REPORTING MEASUREMENT_Parameters_Description MI_COUNT MI_INDEX "
              "MP_CHANGE_MARK PWRC REPORTING_RATE REPORT_PRIORITY_Description REPORT_TYPE "
              "Real_Time_Difference_Description Short_layer_2_header "
              "UTRAN_CSG_Cells_Reporting_Description "
              "_3G_ADDITIONAL_MEASUREMENT_Parameters_Description_2 _3G_BA_IND _3G_CSG_Description "
              "_3G_MEASUREMENT_Parameters_Description _3G_Neighbour_Cell_Description "
              "_3G_Supplementary_Parameters_Description _700_REPORTING_OFFSET "
              "_700_REPORTING_THRESHOLD _810_REPORTING_OFFSET _810_REPORTING_THRESHOLD "
              "extension_length");
}

/// Bit strings that the structure takes ever more of: each is an earlier one, or one of `messages`,
/// with a few bits changed, kept if it gives more fields.
class Growth {
  public:
    Growth(std::uint32_t seed, std::vector<std::string> messages)
        : random_(seed), messages_(std::move(messages)) {}

    std::string Next() {
        const bool fromMessage = !messages_.empty() && Below(2) == 0;
        if (!fromMessage && (best_.empty() || Below(8) == 0)) {
            return Random(Below(200));
        }
        std::string bits =
            fromMessage ? messages_[Below(messages_.size())]
                        : best_[best_.size() - 1 - Below(std::min<std::size_t>(best_.size(), 6))];
        for (std::size_t change = 1 + Below(4); change > 0 && !bits.empty(); --change) {
            char& bit = bits[Below(bits.size())];
            bit = bit == '0' ? '1' : '0';
        }
        if (Below(3) == 0) {
            bits.resize(Below(bits.size() + 1));
        }
        return Below(2) == 0 ? bits + Random(Below(60)) : bits;
    }

    void Keep(const std::string& bits, std::size_t fields) {
        if (fields > most_) {
            most_ = fields;
            best_.push_back(bits);
        }
    }

    [[nodiscard]] std::size_t Most() const { return most_; }

  private:
    std::size_t Below(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random_);
    }
    std::string Random(std::size_t length) {
        std::string bits;
        for (; length > 0; --length) {
            bits += Below(2) == 0 ? '0' : '1';
        }
        return bits;
    }

    std::mt19937 random_;
    std::vector<std::string> messages_;
    std::vector<std::string> best_;
    std::size_t most_ = 0;
};

/// Messages of each structure.
constexpr int kRounds = test::kSanitized ? 600 : 3000;

using Also = std::function<void(const std::string& bits)>;

/// Compares the two over `rounds` messages, for each of which `also` is called; returns the most
/// fields that one of them gave.
std::size_t Compare(
    Grammar& grammar, std::size_t structure, int rounds, std::uint32_t seed,
    std::vector<std::string> messages = {}, const Also& also = [](const std::string&) {}) {
    Reference reference(grammar.Entry(structure));
    Growth growth(seed, std::move(messages));
    for (int round = 0; round < rounds; ++round) {
        const std::string bits = growth.Next();
        const Reading expected = reference.Read(bits);
        const Reading actual = grammar.Decode(bits, 0, structure);
        also(bits);
        if ((grammar.Machine().flags & csn::kFlagAbort) != 0) {
            continue;  // more fields than a run can record
        }
        EXPECT_EQ(actual.matches, expected.matches) << bits;
        EXPECT_EQ(actual.events, expected.events) << bits;
        if (expected.matches) {
            EXPECT_EQ(actual.taken, expected.taken) << bits;
        }
        if (testing::Test::HasFailure()) {
            break;
        }
        growth.Keep(bits, actual.events.size() / 2);
    }
    return growth.Most();
}

std::uint32_t Seed() {
    const char* given = std::getenv("QUORVANE_TEST_SEED");
    return given == nullptr ? 20240607U
                            : static_cast<std::uint32_t>(std::strtoul(given, nullptr, 0));
}

TEST(CsnStructures, AgreeWithTheReference) {
    SCOPED_TRACE("seed " + std::to_string(Seed()));
    for (const std::string name :
         {"egprs_packet_downlink_ack_nack", "ia_rest_octets", "measurement_information",
          "packet_control_acknowledgement_11bit", "packet_measurement_order",
          "packet_serving_cell_data", "packet_tbf_release", "packet_uplink_assignment", "psi3",
          "psi5", "si2quater_rest_octets"}) {
        SCOPED_TRACE(name);
        Grammar grammar(Structure(name));
        ASSERT_EQ(grammar.Errors(), "");
        const std::size_t fields = Compare(grammar, 0, kRounds, Seed());
        EXPECT_GT(fields, name == "packet_control_acknowledgement_11bit" ? 0U : 4U);
    }
}

TEST(CsnStructures, PacketTbfReleaseHasTenTags) {
    for (const families::Family* family : families::AllFamilies()) {
        for (const csn::CsnStructure& structure : family->codec.structures) {
            if (structure.name == "Packet_TBF_Release_message_content") {
                EXPECT_EQ(structure.fields.size(), 10U);
            }
        }
    }
}

/// The golden messages whose contents the structure is, without their message type of 6 bits.
std::vector<std::string> MessagesOf(const std::string& structure,
                                    const std::vector<test::GoldenFile>& golden) {
    std::vector<std::string> messages;
    for (const test::GoldenFile& file : golden) {
        const std::size_t start = file.text.find("MESSAGE: ") + 9;
        const std::string name = file.text.substr(start, file.text.find('\n', start) - start);
        if (structure == name + "_message_content" || structure == name + "_content" ||
            structure == name + "_BODY" || structure == name) {
            const auto count = static_cast<std::int32_t>(8 * file.octets.size());
            messages.push_back(reference::BitsOf(file.octets, count).substr(6));
        }
    }
    return messages;
}

std::vector<test::GoldenFile> GoldenFilesOf(const families::Family& family) {
    std::vector<test::GoldenFile> files;
    const std::string folder = QUORVANE_SOURCE_DIR "/tests/golden/" + std::string(family.name);
    for (const auto& path : test::FindGoldenFiles(folder)) {
        std::string problem;
        if (const auto file = test::ReadGoldenFile(path, problem); file && !file->octets.empty()) {
            files.push_back(*file);
        }
    }
    return files;
}

std::uint16_t TypeNamed(const reflect::TypeTables& tables, const std::string& name) {
    return *std::find_if(tables.named.begin(), tables.named.end(), [&](std::uint16_t type) {
        return tables.NameOf(tables.types[type]) == name;
    });
}

/// The record that the library stores against the one of the machine's field records; also stored
/// over what is there from another message.
class Records {
  public:
    Records(const families::Family& family, const std::string& name)
        : tables_(family.types), type_(TypeNamed(family.types, name)) {
        for (const csn::CsnStructure& structure : family.codec.structures) {
            structure_ = structure.name == name ? &structure : structure_;
        }
    }

    void Check(const std::string& bits) {
        const std::vector<std::uint8_t> octets = reference::OctetsOf(bits);
        const bits::BitReader reader(octets.data(), static_cast<std::int64_t>(octets.size()));
        const auto count = static_cast<std::int32_t>(bits.size());
        bits::Arena arena;
        bits::Cell expected{};
        bits::Cell actual{};
        for (std::int32_t length : {count, count / 2}) {
            const bits::Outcome result =
                csn::test::DecodePlainly(*structure_, reader, arena, 0, length, expected);
            EXPECT_EQ(csn::DecodeCsn(*structure_, reader, arena, 0, length, actual), result)
                << bits;
            EXPECT_TRUE(reflect::RecordsEqual(tables_, type_, expected, actual, true)) << bits;
        }
    }

  private:
    const reflect::TypeTables& tables_;
    const std::uint16_t type_;
    const csn::CsnStructure* structure_ = nullptr;
};

TEST(CsnStructures, FamiliesAgreeWithTheReference) {
    SCOPED_TRACE("seed " + std::to_string(Seed()));
    for (const families::Family* family : families::AllFamilies()) {
        if (family->codec.structures.empty()) {
            continue;
        }
        Grammar grammar(*family);
        ASSERT_EQ(grammar.Errors(), "");
        const std::vector<test::GoldenFile> golden = GoldenFilesOf(*family);
        for (std::size_t structure = 0; structure < grammar.StructureCount(); ++structure) {
            const std::string& name = grammar.Types(structure).type->name;
            SCOPED_TRACE(name);
            const std::size_t fields = grammar.Types(structure).fields.size();
            Records records(*family, name);
            EXPECT_GE(Compare(grammar, structure, kRounds, Seed(), MessagesOf(name, golden),
                              [&](const std::string& bits) { records.Check(bits); }),
                      std::min<std::size_t>(fields / 2, 4));
        }
    }
}

}  // namespace
}  // namespace quorvane::compiler
