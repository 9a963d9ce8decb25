// A message as data. Octets and what they mean are those of the standards' tables, put together by
// hand; that the data are those of the text is tested with all golden messages.

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "quorvane/message.h"
#include "support/golden_file.h"
#include "tools/hex.h"

namespace quorvane {
namespace {

using Octets = std::vector<std::uint8_t>;

static_assert(std::forward_iterator<Field::Iterator>);
static_assert(std::is_trivially_copyable_v<Field> && sizeof(Field) <= 5 * sizeof(void*));
static_assert(std::is_trivially_copyable_v<Type> && sizeof(Type) <= 2 * sizeof(void*));
static_assert(std::is_nothrow_move_constructible_v<Message>);

// PDN CONNECTIVITY REQUEST, TS 24.301, 8.3.20: bearer 0, transaction 1, PDN type IPv4v6, initial
// request; protocol configuration options with a protocol of two octets, and one of none.
const Octets kPdnRequest = {0x02, 0x01, 0xD0, 0x31, 0x27, 0x09, 0x80, 0x00,
                            0x0D, 0x02, 0xAB, 0xCD, 0x00, 0x0A, 0x00};

std::vector<std::string> NamesIn(const Field& field) {
    std::vector<std::string> names;
    for (const Field child : field) {
        names.emplace_back(child.Name());
    }
    return names;
}

class MessageTest : public testing::Test {
  protected:
    void Decode(Decoding decoding, const Octets& octets) {
        ASSERT_TRUE(message_.Decode(decoding, octets));
    }

    Message message_;
};

TEST_F(MessageTest, SaysWhatItIs) {
    EXPECT_FALSE(message_.IsFound());
    EXPECT_FALSE(message_.GetDecoding());
    Decode(Decoding::EPS_SMUplink, kPdnRequest);
    EXPECT_EQ(message_.GetDecoding(), Decoding::EPS_SMUplink);
    EXPECT_TRUE(message_.IsFound());
    EXPECT_EQ(message_.TypeName(), "PDN_CONNECTIVITY_REQUEST");
    EXPECT_EQ(message_.GetType().Name(), "PDN_CONNECTIVITY_REQUEST");
    EXPECT_EQ(message_.Code(), 0);
    EXPECT_EQ(message_.CodeWords(), "");
    EXPECT_EQ(message_.BitsConsumed(), 8 * 15);
    EXPECT_EQ(message_.FaultCount(), 0U);
    EXPECT_EQ(message_.Root().Name(), "PDN_CONNECTIVITY_REQUEST");
    EXPECT_EQ(message_.Root().Kind(), FieldKind::kStruct);
    EXPECT_EQ(message_.Root().Status(), FieldStatus::kDecoded);
    EXPECT_EQ(NamesIn(message_.Root()),
              (std::vector<std::string>{"EPSBearerIdentity", "ProcedureTransactionIdentity",
                                        "RequestType", "PDNType", "ESMInformationTransferFlag",
                                        "AccessPointName", "ProtocolConfigurationOptions"}));
    EXPECT_EQ(std::distance(message_.begin(), message_.end()), 7);
}

TEST_F(MessageTest, NumbersAndEnumerations) {
    Decode(Decoding::EPS_SMUplink, kPdnRequest);
    const Field transaction = message_.Find("ProcedureTransactionIdentity");
    EXPECT_EQ(transaction.Kind(), FieldKind::kNumber);
    EXPECT_EQ(transaction.Number(), 1U);
    EXPECT_EQ(transaction.Words(), "");
    EXPECT_FALSE(transaction.GetPlace());  // a header field
    EXPECT_EQ(transaction.Status(), FieldStatus::kDecoded);
    EXPECT_TRUE(transaction.empty());

    const Field type = message_.Find("PDNType");
    EXPECT_EQ(type.Kind(), FieldKind::kEnumerated);
    EXPECT_EQ(type.Number(), 3U);
    EXPECT_EQ(type.Words(), "IPv4v6");
    ASSERT_TRUE(type.GetPlace());
    EXPECT_EQ(type.GetPlace()->offset, 24U);
    EXPECT_EQ(type.GetPlace()->length, 4U);
    EXPECT_EQ(type.BitCount(), 0U);
    EXPECT_TRUE(type.Octets().empty());
}

TEST_F(MessageTest, SequencesStructsAndBits) {
    Decode(Decoding::EPS_SMUplink, kPdnRequest);
    const Field list = message_.Find("ProtocolConfigurationOptions.ProtocolCfgs");
    EXPECT_EQ(list.Kind(), FieldKind::kSequence);
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].Name(), "");
    EXPECT_EQ(list[0].Kind(), FieldKind::kStruct);
    EXPECT_EQ(list[0].Status(), FieldStatus::kDecoded);
    EXPECT_FALSE(list[2]);
    const Field contents = list[0].Find("Contents");
    EXPECT_EQ(contents.Kind(), FieldKind::kBits);
    EXPECT_EQ(contents.BitCount(), 16U);
    EXPECT_EQ(Octets(contents.Octets().begin(), contents.Octets().end()), (Octets{0xAB, 0xCD}));
    EXPECT_EQ(contents.Number(), 0U);
    EXPECT_EQ(list[1].Find("ProtocolId").Number(), 10U);
    EXPECT_EQ(list[1].Find("Contents").BitCount(), 0U);
    EXPECT_EQ(list[1].Find("Contents").Status(), FieldStatus::kDecoded);
}

// ATTACH REQUEST, TS 24.301, 8.2.4: of a GUTI with MCC 262, MNC 01, group 0x8001, code 1, M-TMSI
// 0x12345678; UE network capability of two octets; no ESM message container in reach.
const Octets kAttachRequest = {0x07, 0x41, 0x71, 0x0B, 0xF6, 0x62, 0xF2, 0x10, 0x80, 0x01,
                               0x01, 0x12, 0x34, 0x56, 0x78, 0x02, 0xE0, 0xE0, 0x00, 0x00};

TEST_F(MessageTest, UnionsHoldOneAlternative) {
    Decode(Decoding::EPS_MMUplink, kAttachRequest);
    const Field identity = message_.Find("EPSMobileIdentity");
    EXPECT_EQ(identity.Kind(), FieldKind::kUnion);
    ASSERT_EQ(identity.size(), 1U);
    EXPECT_EQ(identity[0].Name(), "GUTI");
    EXPECT_FALSE(identity[0].IsOptional());
    EXPECT_FALSE(identity[1]);
    EXPECT_EQ(identity.Find("GUTI.MMEGroupID").Number(), 0x8001U);
    EXPECT_FALSE(identity.Find("IMSI"));  // not chosen
}

TEST_F(MessageTest, PathsLeadToFields) {
    Decode(Decoding::EPS_SMUplink, kPdnRequest);
    const Field found = message_.Find("ProtocolConfigurationOptions.ProtocolCfgs[1].ProtocolId");
    EXPECT_EQ(found.Words(), "IP address allocation via NAS signalling");
    EXPECT_TRUE(message_.Find(""));
    const Field options = message_.Find("ProtocolConfigurationOptions");
    EXPECT_EQ(options.Find("ProtocolCfgs")[1].Find("ProtocolId").Number(), 10U);
    EXPECT_EQ(options.Find("ProtocolCfgs").Find("[1].ProtocolId").Number(), 10U);
    for (const char* wrong : {"pdntype", "PDNType.", ".PDNType", "PDNType.x", "PDNType[0]", "[0]",
                              ".", "..", "ProtocolConfigurationOptions.ProtocolCfgs[2]",
                              "ProtocolConfigurationOptions.ProtocolCfgs[0",
                              "ProtocolConfigurationOptions.ProtocolCfgs[]",
                              "ProtocolConfigurationOptions.ProtocolCfgs[-1]",
                              "ProtocolConfigurationOptions.ProtocolCfgs[99999999999999999999]",
                              "ProtocolConfigurationOptions.ProtocolCfgs.ProtocolId",
                              "ProtocolConfigurationOptions.ProtocolCfgs[0]ProtocolId",
                              "ProtocolConfigurationOptions.ProtocolCfgs."}) {
        EXPECT_FALSE(message_.Find(wrong)) << wrong;
    }
}

TEST_F(MessageTest, AbsentFieldsAreThereWithoutContents) {
    Decode(Decoding::EPS_SMUplink, {0x02, 0x01, 0xD0, 0x31});
    const Field options = message_.Find("ProtocolConfigurationOptions");
    ASSERT_TRUE(options);
    EXPECT_TRUE(options.IsOptional());
    EXPECT_EQ(options.Status(), FieldStatus::kAbsent);
    EXPECT_TRUE(options.empty());
    EXPECT_FALSE(options.Find("ProtocolCfgs"));
    EXPECT_EQ(message_.Find("PDNType").Status(), FieldStatus::kDecoded);
    EXPECT_FALSE(message_.Find("PDNType").IsOptional());
}

TEST_F(MessageTest, DefaultsStandWhereDecodingDidNotCome) {
    // The identity's length, 0, is outside of 4 to 11: the decoding ends there with -12.
    Decode(Decoding::EPS_MMUplink, {0x07, 0x41, 0x71, 0x00});
    EXPECT_EQ(message_.Code(), -12);
    EXPECT_EQ(message_.CodeWords(), "");
    EXPECT_EQ(message_.BitsConsumed(), 0);
    EXPECT_EQ(message_.Find("EPSMobileIdentity").Status(), FieldStatus::kRefused);
    const Field capability = message_.Find("UENetworkCapability");
    EXPECT_EQ(capability.Status(), FieldStatus::kDefault);
    ASSERT_FALSE(capability.empty());  // with members, as the text shows them
    EXPECT_EQ(capability[0].Status(), FieldStatus::kDefault);
    EXPECT_EQ(message_.Find("EPSMobileIdentity")[0].Status(), FieldStatus::kDefault);
    EXPECT_EQ(message_.Root()[0].Status(), FieldStatus::kDecoded);
}

TEST_F(MessageTest, HeaderFieldsAreDecodedWhateverBecomesOfTheBody) {
    Decode(Decoding::EPS_SMUplink, {0x02, 0x00, 0xD0});
    EXPECT_EQ(message_.Code(), -7);
    EXPECT_EQ(message_.CodeWords(), "MANDATORY IE SYNTAX ERROR");
    EXPECT_EQ(message_.Find("ProcedureTransactionIdentity").Number(), 0U);
    EXPECT_EQ(message_.Find("ProcedureTransactionIdentity").Status(), FieldStatus::kDecoded);
}

TEST_F(MessageTest, AHeaderFieldOfZeroIsDecodedWithoutABody) {
    Decode(Decoding::EPS_SMUplink, {0x02, 0x00, 0xCE});
    EXPECT_EQ(message_.TypeName(), "DEACTIVATE_EPS_BEARER_CONTEXT_ACCEPT");
    EXPECT_EQ(message_.Find("ProcedureTransactionIdentity").Status(), FieldStatus::kDecoded);
}

TEST_F(MessageTest, FaultsNameTheirFieldAndPlace) {
    Decode(Decoding::EPS_MMUplink, {0x07, 0x41, 0x71, 0x00});
    ASSERT_EQ(message_.FaultCount(), 1U);
    const Fault fault = message_.GetFault(0);
    EXPECT_EQ(fault.words, "Size error decoding IE EPSMobileIdentity");
    EXPECT_EQ(fault.field.Name(), "EPSMobileIdentity");
    EXPECT_EQ(fault.offset, 32U);
    std::string path;
    EXPECT_TRUE(message_.AppendPath(fault.field, path));
    EXPECT_EQ(path, "EPSMobileIdentity");
    const Result result = quorvane::Decode(Decoding::EPS_MMUplink, Octets{0x07, 0x41, 0x71, 0x00});
    EXPECT_EQ(result.diagnostics,
              "<ERRID:" + std::to_string(fault.number) + "> " + std::string(fault.words) + "\n");
    EXPECT_EQ(message_.GetFault(1).words, "");
    EXPECT_FALSE(message_.GetFault(1).field);
}

TEST_F(MessageTest, RefusedOptionalFieldsKeepWhatWasStored) {
    // The second protocol announces two octets, and has one.
    Octets octets = kPdnRequest;
    octets[5] = 8;
    octets = {0x02, 0x01, 0xD0, 0x31, 0x27, 0x06, 0x80, 0x00, 0x0D, 0x02, 0xAB, 0xCD};
    octets[9] = 0x03;
    Decode(Decoding::EPS_SMUplink, octets);
    EXPECT_EQ(message_.Code(), 0);
    const Field options = message_.Find("ProtocolConfigurationOptions");
    EXPECT_EQ(options.Status(), FieldStatus::kRefused);
    EXPECT_EQ(options.Find("ProtocolCfgs[0].ProtocolId").Number(), 13U);
    ASSERT_GE(message_.FaultCount(), 1U);
    const std::string text = quorvane::Decode(Decoding::EPS_SMUplink, octets).text;
    EXPECT_NE(text.find("ProtocolConfigurationOptions: MISSING"), std::string::npos);
}

TEST_F(MessageTest, PathsOfFieldsLeadBack) {
    Decode(Decoding::EPS_SMUplink, kPdnRequest);
    std::string path = "x";
    EXPECT_TRUE(message_.AppendPath(message_.Root(), path));
    EXPECT_EQ(path, "x");
    const char* deep = "ProtocolConfigurationOptions.ProtocolCfgs[1].Contents";
    path.clear();
    EXPECT_TRUE(message_.AppendPath(message_.Find(deep), path));
    EXPECT_EQ(path, deep);
    EXPECT_TRUE(message_.AppendPath(message_.Find(deep), path));
    EXPECT_EQ(path, std::string(deep) + deep);
    EXPECT_FALSE(message_.AppendPath(Field(), path));
    Message other;
    EXPECT_FALSE(other.AppendPath(message_.Find(deep), path));
    EXPECT_TRUE(other.Decode(Decoding::EPS_SMUplink, kPdnRequest));
    EXPECT_FALSE(other.AppendPath(message_.Find(deep), path));
}

TEST_F(MessageTest, OfNothing) {
    EXPECT_EQ(message_.TypeName(), "");
    EXPECT_FALSE(message_.GetType());
    EXPECT_FALSE(message_.Root());
    EXPECT_EQ(message_.begin(), message_.end());
    EXPECT_EQ(message_.Code(), -2);
    EXPECT_EQ(message_.CodeWords(), "UNKNOWN MESSAGE");
    EXPECT_EQ(message_.BitsConsumed(), 0);
    EXPECT_FALSE(message_.Decode(Decoding::EPS_SMUplink, Octets{0xFF, 0xFF, 0xFF}));
    EXPECT_FALSE(message_.IsFound());
    EXPECT_EQ(message_.GetDecoding(), Decoding::EPS_SMUplink);
    EXPECT_EQ(message_.FaultCount(), 0U);
    const Field none;
    EXPECT_EQ(none.Name(), "");
    EXPECT_FALSE(none.GetType());
    EXPECT_EQ(none.Kind(), FieldKind::kNumber);
    EXPECT_EQ(none.Status(), FieldStatus::kAbsent);
    EXPECT_FALSE(none.IsOptional());
    EXPECT_EQ(none.Number(), 0U);
    EXPECT_EQ(none.Words(), "");
    EXPECT_EQ(none.BitCount(), 0U);
    EXPECT_TRUE(none.Octets().empty());
    EXPECT_FALSE(none.GetPlace());
    EXPECT_TRUE(none.empty());
    EXPECT_FALSE(none[0]);
    EXPECT_FALSE(none.Find("x"));
}

TEST_F(MessageTest, IsUsedAgainAndMoved) {
    Decode(Decoding::EPS_SMUplink, kPdnRequest);
    Message moved = std::move(message_);
    EXPECT_EQ(moved.Find("PDNType").Number(), 3U);
    EXPECT_FALSE(message_.IsFound());  // NOLINT(bugprone-use-after-move): it is as good as new
    Decode(Decoding::EPC_UE2SS, {0x0F, 0x87});
    EXPECT_EQ(message_.TypeName(), "DEACTIVATE_TEST_MODE_COMPLETE");
    EXPECT_TRUE(message_.Root().empty());
    message_ = std::move(moved);
    EXPECT_EQ(message_.Find("PDNType").Words(), "IPv4v6");
}

TEST_F(MessageTest, OutlivesItsOctetsAndTakesPaddedOnes) {
    {
        Octets octets = kPdnRequest;
        octets.resize(octets.size() + kReadAhead);
        const PaddedMessage padded(octets.data(), 15, octets.size());
        ASSERT_TRUE(message_.Decode(Decoding::EPS_SMUplink, padded));
        std::fill(octets.begin(), octets.end(), std::uint8_t{0xFF});
    }
    EXPECT_EQ(message_.Code(), 0);
    EXPECT_EQ(message_.Find("ProtocolConfigurationOptions.ProtocolCfgs[0].Contents").Octets()[1],
              0xCD);
}

TEST_F(MessageTest, VisitorsGoDownAsFarAsTheyAsk) {
    Decode(Decoding::EPS_SMUplink, kPdnRequest);
    std::string seen;
    Visit(message_.Root(), [&](const Field& field, unsigned depth) {
        seen.append(2 * depth, ' ').append(field.Name()).append("\n");
        return field.Name() != "ProtocolCfgs";
    });
    EXPECT_EQ(seen,
              "PDN_CONNECTIVITY_REQUEST\n"
              "  EPSBearerIdentity\n"
              "  ProcedureTransactionIdentity\n"
              "  RequestType\n"
              "  PDNType\n"
              "  ESMInformationTransferFlag\n"
              "  AccessPointName\n"
              "  ProtocolConfigurationOptions\n"
              "    spare\n"
              "    ConfigurationProtocol\n"
              "    ProtocolCfgs\n");
}

TEST(MessageTypes, SayWhatAMessageCouldHold) {
    std::vector<std::string_view> names;
    for (std::size_t index = 0; index < MessageTypes::Count(Decoding::EPC_UE2SS); ++index) {
        names.push_back(MessageTypes::At(Decoding::EPC_UE2SS, index).Name());
    }
    EXPECT_EQ(std::count(names.begin(), names.end(), "DEACTIVATE_TEST_MODE_COMPLETE"), 1);
    EXPECT_FALSE(MessageTypes::At(Decoding::EPC_UE2SS, names.size()));

    Message message;
    ASSERT_TRUE(message.Decode(Decoding::EPS_SMUplink, kPdnRequest));
    const Type type = message.GetType();
    EXPECT_EQ(type, message.Root().GetType());
    EXPECT_EQ(type.Kind(), FieldKind::kStruct);
    ASSERT_EQ(type.MemberCount(), 7U);
    EXPECT_EQ(type.Member(3).name, "PDNType");
    EXPECT_FALSE(type.Member(3).optional);
    EXPECT_TRUE(type.Member(6).optional);
    EXPECT_FALSE(type.Member(7).type);

    const Type pdn = type.Member(3).type;
    EXPECT_EQ(pdn.Kind(), FieldKind::kEnumerated);
    EXPECT_EQ(pdn.WordsOf(1), "IPv4");
    bool listed = false;
    for (std::size_t index = 0; index < pdn.ValueCount(); ++index) {
        listed = listed || (pdn.Value(index).number == 3 && pdn.Value(index).words == "IPv4v6");
    }
    EXPECT_TRUE(listed);
    EXPECT_EQ(pdn.Value(pdn.ValueCount()).words, "");

    const Type list = message.Find("ProtocolConfigurationOptions.ProtocolCfgs").GetType();
    EXPECT_EQ(list.Kind(), FieldKind::kSequence);
    EXPECT_GT(list.MostItems(), 1U);
    EXPECT_EQ(list.ItemType().Kind(), FieldKind::kStruct);
    EXPECT_EQ(list.MemberCount(), 0U);
    const Type contents = list.ItemType().Member(1).type;
    EXPECT_EQ(contents.Kind(), FieldKind::kBits);
    EXPECT_FALSE(contents.IsFixed());
    EXPECT_GT(contents.Bits(), 0U);
    const Type identity = message.Find("EPSBearerIdentity").GetType();
    EXPECT_EQ(identity.Kind(), FieldKind::kNumber);
    EXPECT_FALSE(identity.IsFixed());
}

TEST(MessageTypes, OfNothing) {
    const Type none;
    EXPECT_FALSE(none);
    EXPECT_EQ(none.Name(), "");
    EXPECT_EQ(none.Bits(), 0U);
    EXPECT_EQ(none.MostItems(), 0U);
    EXPECT_FALSE(none.ItemType());
    EXPECT_EQ(none.MemberCount(), 0U);
    EXPECT_EQ(none.ValueCount(), 0U);
    EXPECT_EQ(none.OtherWords(), "");
    EXPECT_EQ(none.WordsOf(0), "");
    EXPECT_FALSE(none.IsFixed());
}

/// The text of a field as docs/result-text.md has it, by the public interface alone.
class TextOfFields {
  public:
    std::string text;

    void Value(const Field& field, std::size_t indent) {
        switch (field.Kind()) {
            case FieldKind::kNumber:
                Place(field);
                text += std::to_string(static_cast<std::int32_t>(field.Number()));
                break;
            case FieldKind::kEnumerated:
                Place(field);
                text += field.Words().empty() ? std::to_string(field.Number())
                                              : std::string(field.Words()) + " (" +
                                                    std::to_string(field.Number()) + ")";
                break;
            case FieldKind::kBits:
                Place(field);
                Bits(field);
                break;
            case FieldKind::kStruct:
                text += "{\n";
                for (const Field member : field) {
                    text.append(2 * indent + 2, ' ').append(member.Name()).append(": ");
                    if (member.Status() == FieldStatus::kAbsent || WasDropped(member)) {
                        text += "MISSING";
                    } else {
                        Value(member, indent + 1);
                    }
                    text += "\n";
                }
                text.append(2 * indent, ' ').append("}\n");
                break;
            case FieldKind::kUnion:
                text.append(field[0].Name()).append(": ");
                Value(field[0], indent + 1);
                break;
            case FieldKind::kSequence:
                text += "[\n";
                for (std::size_t index = 0; index < field.size(); ++index) {
                    text.append(2 * indent + 2, ' ');
                    Value(field[index], indent + 2);
                    text += index + 1 < field.size() ? ",\n" : "\n";
                }
                text.append(2 * indent, ' ').append("]");
                break;
        }
    }

    /// The text that tells which of the refused fields it shows.
    std::string_view shown;

  private:
    /// Whether the text shows a refused field as MISSING: not one of a wrong length.
    [[nodiscard]] bool WasDropped(const Field& field) const {
        return field.Status() == FieldStatus::kRefused && field.IsOptional() &&
               shown.substr(text.size()).starts_with("MISSING\n");
    }

    void Place(const Field& field) {
        if (const auto place = field.GetPlace()) {
            text += "LOC:[" + std::to_string(place->offset) + "," + std::to_string(place->length) +
                    "] ";
        }
    }

    void Bits(const Field& field) {
        const Type type = field.GetType();
        const std::uint32_t bits = type.IsFixed() ? type.Bits() : field.BitCount();
        Octets octets(field.Octets().begin(), field.Octets().end());
        octets.resize((bits + 7) / 8);
        text += tool::ToHex(octets, " ");
    }
};

std::string WithoutSharpS(std::string text) {
    for (std::size_t at = text.find("\xC3\x9F"); at != std::string::npos;
         at = text.find("\xC3\x9F")) {
        text.replace(at, 2, "\xDF");
    }
    return text;
}

TEST(Messages, AreTheirTexts) {
    Message message;
    std::size_t fields = 0;
    for (const auto& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        const auto golden = test::ReadGoldenFile(path, problem);
        ASSERT_TRUE(golden) << problem;
        for (std::size_t length = 0; length <= golden->octets.size(); ++length) {
            const std::span octets(golden->octets.data(), length);
            const Result result = Decode(golden->decoding, octets);
            ASSERT_EQ(message.Decode(golden->decoding, octets), result.found);
            const auto lines =
                std::count(result.diagnostics.begin(), result.diagnostics.end(), '\n');
            ASSERT_EQ(message.FaultCount(), static_cast<std::size_t>(lines));
            if (!result.found) {
                continue;
            }
            const std::string expected =
                WithoutSharpS(result.text.substr(result.text.find("MESSAGE: ")));
            TextOfFields printer;
            printer.shown = expected;
            printer.text = "MESSAGE: " + std::string(message.TypeName()) + "\n";
            printer.Value(message.Root(), 0);
            ASSERT_EQ(printer.text, expected) << path.string() << ", " << length << " octets";
            EXPECT_EQ(result.text.find("Decoder reported") == std::string::npos,
                      message.Code() == 0);
            for (std::size_t index = 0; index < message.FaultCount(); ++index) {
                const Fault fault = message.GetFault(index);
                if (fault.field) {
                    EXPECT_EQ(fault.field.Status(), FieldStatus::kRefused) << fault.words;
                }
            }
            if (length < golden->octets.size()) {
                continue;
            }
            // Every field is found again by its path, if no other of its name stands before it.
            Visit(message.Root(), [&](const Field& field, unsigned) {
                std::string way;
                if (message.AppendPath(field, way)) {
                    ++fields;
                    const Field found = message.Find(way);
                    EXPECT_TRUE(found) << way;
                    EXPECT_EQ(found.Name(), field.Name()) << way;
                }
                return fields % 16 != 0;
            });
        }
    }
    EXPECT_GT(fields, 1000U);
}

}  // namespace
}  // namespace quorvane
