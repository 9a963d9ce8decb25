// What the message generator says of values that it drops, and where its messages end.

#include "tools/message_generator.h"

#include <array>
#include <gtest/gtest.h>

#include "families/element_draw.h"
#include "support/sample_family.h"

namespace quorvane::tool {
namespace {

using iecodec::FieldRow;
using iecodec::MessageSetRow;
using iecodec::ValueRow;

// An element of one octet whose encoder does with a drawn value what the test wants.

enum class Fault { kNone, kRefuses, kOverflows, kTakesNoBits };
Fault fault = Fault::kNone;

bits::Outcome DecodeFaulty(iecodec::DecodeContext& /*context*/, const ValueRow& /*row*/,
                           std::int64_t /*position*/, bits::Cell& /*cell*/,
                           std::int64_t /*length*/) {
    return 8;
}

bits::Outcome EncodeFaulty(iecodec::EncodeContext& context, const ValueRow& /*row*/,
                           std::int64_t position, const bits::Cell& /*cell*/) {
    constexpr std::int64_t kFar = std::int64_t{1} << 40;
    context.writer.Write(fault == Fault::kOverflows ? kFar : position, 0x2A, 8);
    return fault == Fault::kRefuses       ? bits::Outcome(bits::Code::kSyntaxError)
           : fault == Fault::kTakesNoBits ? 0
                                          : 8;
}

constexpr iecodec::SpecialElement kFaulty{"kFaulty", DecodeFaulty, EncodeFaulty};

const families::ElementDraw kDrawFaulty(kFaulty, [](families::Draw&, const ValueRow&, bits::Cell&,
                                                    std::int64_t) { return true; });

/// What is dropped of a message of one field that holds a value of the first row.
Drops DropsOf(std::span<const ValueRow> values) {
    static constexpr std::array<const iecodec::SpecialElement*, 1> kSpecials{&kFaulty};
    FieldRow field{};
    field.format = FieldRow::Format::kLv;
    field.presence = FieldRow::Presence::kMandatory;
    field.leastOctets = 1;
    field.mostOctets = 1;
    iecodec::MessageRow message{};
    message.members = 1;
    message.fieldCount = 1;
    constexpr std::array<std::uint16_t, 1> kMessages{0};
    MessageSetRow set{};
    set.messages = kMessages;
    families::Family family = families::kSampleFamily;
    family.codec = {};
    family.codec.values = values;
    family.codec.fields = {&field, 1};
    family.codec.messages = {&message, 1};
    family.codec.specials = kSpecials;
    MessageGenerator generator(family, 1);
    static_cast<void>(generator.Generate(set));
    return generator.Dropped();
}

ValueRow Special() {
    ValueRow row{};
    row.name = "Faulty";
    row.shape = iecodec::Shape::kSpecial;
    return row;
}

ValueRow SequenceOfSpecials() {
    ValueRow row{};
    row.name = "Items";
    row.shape = iecodec::Shape::kSequence;
    row.capacity = 1;
    row.item = 1;
    return row;
}

TEST(GeneratorDrops, SayThatAnEncoderRefuses) {
    const std::pair<DropReason, std::string_view> reason{DropReason::kDoesNotComeBack, "Faulty"};
    for (const Fault each : {Fault::kRefuses, Fault::kOverflows}) {
        fault = each;
        EXPECT_TRUE(DropsOf(std::array{Special()}).contains(reason));
        EXPECT_TRUE(DropsOf(std::array{SequenceOfSpecials(), Special()}).contains(reason));
    }
    fault = Fault::kNone;
    EXPECT_TRUE(DropsOf(std::array{Special()}).empty());
}

TEST(GeneratorDrops, SayThatAnItemTakesNoBits) {
    fault = Fault::kTakesNoBits;
    EXPECT_TRUE(DropsOf(std::array{SequenceOfSpecials(), Special()})
                    .contains({DropReason::kLength, "Faulty"}));
}

TEST(GeneratorDrops, SayThatAWidthIsNotThatOfTheField) {
    ValueRow integer{};
    integer.name = "Narrow";
    integer.shape = iecodec::Shape::kInteger;
    integer.width = 4;
    EXPECT_TRUE(DropsOf(std::array{integer}).contains({DropReason::kDoesNotComeBack, "Narrow"}));
}

TEST(MessageEnds, AreAtAnyBitOrAnOctet) {
    const MessageSetRow& set = *families::FindSet(families::kSampleFamily, "Sample_short");
    MessageGenerator anywhere(families::kSampleFamily, 1);
    MessageGenerator octets(families::kSampleFamily, 1, MessageEnd::kOctet);
    // SAMPLE_SHORT has 9 bits and six for each item, SAMPLE_LIST_AND_REST has 48.
    EXPECT_EQ(anywhere.Generate(set, 1)->bits % 6, 3);
    EXPECT_FALSE(octets.Generate(set, 1).has_value());
    EXPECT_EQ(octets.Generate(set, 3)->bits, 48);
    for (int count = 0; count < 10; ++count) {
        EXPECT_EQ(octets.Generate(set)->bits, 48);
    }
}

}  // namespace
}  // namespace quorvane::tool
