#include "codec_test_support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>

#include "iecodec/message_encoder.h"
#include "iecodec/value_decoder.h"
#include "iecodec/value_encoder.h"
#include "reflect/convert.h"
#include "support/entry_points.h"
#include "tools/hex.h"

namespace quorvane::iecodec::test {
namespace {

const reflect::Catalogue& CatalogueOf(const families::Family& family) {
    static std::map<const families::Family*, std::unique_ptr<reflect::Catalogue>> catalogues;
    auto& catalogue = catalogues[&family];
    if (catalogue == nullptr) {
        catalogue = std::make_unique<reflect::Catalogue>(family.types);
    }
    return *catalogue;
}

/// Runs an encoder on octets of ones.
template <typename Encoder>
Written WriteOverOnes(const CodecTables& tables, Encoder encode) {
    Octets octets(2048, 0xFF);
    bits::BitWriter writer(octets.data(), static_cast<std::int64_t>(octets.size()));
    Diagnostics diagnostics;
    EncodeContext context{tables, writer, diagnostics};
    Written out;
    out.bits = encode(context);
    EXPECT_FALSE(writer.Overflowed());
    out.diagnostics = quorvane::test::WithoutNumbers(diagnostics.Lines());
    if (!out.bits.Failed()) {
        octets.resize(static_cast<std::size_t>((out.bits.Bits() + 7) / 8));
    } else {
        while (!octets.empty() && octets.back() == 0xFF) {
            octets.pop_back();
        }
    }
    out.hex = ToHex(octets);
    return out;
}

/// The member that `path` tells of the struct in `cell`.
bits::Cell& MemberAt(const families::Family& family, bits::Arena& arena, std::uint16_t type,
                     bits::Cell& cell, std::string_view path) {
    const reflect::TypeRow& row = family.types.types[type];
    const std::size_t dot = path.find('.');
    const auto elements = family.types.ElementsOf(row);
    const auto element =
        std::find_if(elements.begin(), elements.end(), [&](const reflect::ElementRow& candidate) {
            return family.types.NameOf(candidate) == path.substr(0, dot);
        });
    EXPECT_NE(element, elements.end()) << path;
    bits::Cell& member = bits::StructCells(arena, cell, row.count)[element - elements.begin()];
    return dot == std::string_view::npos
               ? member
               : MemberAt(family, arena, element->type, member, path.substr(dot + 1));
}

}  // namespace

Octets FromHex(std::string_view text) {
    Octets octets;
    EXPECT_EQ(tool::ParseHex(std::string(text), octets), "") << text;
    return octets;
}

std::string ToHex(std::span<const std::uint8_t> octets) {
    return tool::ToHex(octets, " ");
}

std::string Zeros(std::size_t count) {
    std::string text;
    for (std::size_t octet = 0; octet < count; ++octet) {
        text += "00 ";
    }
    return text;
}

std::string TextOf(const families::Family& family, std::uint16_t type, const bits::Cell& cell) {
    bits::Arena arena;
    reflect::TextBuffer text;
    reflect::ToTree(CatalogueOf(family), type, cell, arena)->Print(text, 0);
    return std::string(text.View());
}

TypeUnderTest::TypeUnderTest(const families::Family& family, std::string_view type)
    : family_(family) {
    const auto values = family.codec.values;
    const auto value = std::find_if(values.begin(), values.end(),
                                    [&](const ValueRow& row) { return row.name == type; });
    EXPECT_NE(value, values.end()) << type;
    row_ = &*value;
    const auto named = family.types.named;
    const auto index = std::find_if(named.begin(), named.end(), [&](std::uint16_t candidate) {
        return family.types.NameOf(family.types.types[candidate]) == type;
    });
    EXPECT_NE(index, named.end()) << type;
    type_ = *index;
}

bits::Outcome TypeUnderTest::Decode(std::string_view hex, std::optional<std::int64_t> length,
                                    std::int64_t position) {
    const Octets octets = FromHex(hex);
    const auto size = static_cast<std::int64_t>(octets.size());
    iecodec::Diagnostics diagnostics;
    DecodeContext context{family_.codec, {octets.data(), size}, arena_, diagnostics};
    cell_ = {};
    const bits::Outcome result =
        DecodeValue(context, *row_, position, cell_, length.value_or(8 * size - position));
    diagnostics_ = quorvane::test::WithoutNumbers(diagnostics.Lines());
    return result;
}

std::string TypeUnderTest::Text() {
    return TextOf(family_, type_, cell_);
}

bits::Cell& TypeUnderTest::Member(std::string_view path) {
    return MemberAt(family_, arena_, type_, cell_, path);
}

Written TypeUnderTest::Encode() const {
    return WriteOverOnes(family_.codec, [&](EncodeContext& context) {
        return EncodeValue(context, *row_, 0, cell_);
    });
}

std::string TypeUnderTest::ThereAndBack(std::string_view hex) {
    EXPECT_EQ(Decode(hex), 8 * static_cast<std::int64_t>(FromHex(hex).size())) << hex;
    EXPECT_EQ(diagnostics_, "") << hex;
    const Written written = Encode();
    EXPECT_EQ(written.diagnostics, "") << hex;
    EXPECT_EQ(written.bits.Bits() % 8, 0) << hex;
    return written.hex;
}

SetUnderTest::SetUnderTest(const families::Family& family, std::string_view set)
    : family_(family), set_(families::FindSet(family, set)) {
    EXPECT_NE(set_, nullptr) << set;
}

bits::Outcome SetUnderTest::Decode(std::string_view hex, std::optional<std::int64_t> length) {
    const Octets octets = FromHex(hex);
    const auto size = static_cast<std::int64_t>(octets.size());
    iecodec::Diagnostics diagnostics;
    DecodeContext context{family_.codec, {octets.data(), size}, arena_, diagnostics};
    container_ = {};
    const bits::Outcome result =
        DispatchMessage(context, *set_, length.value_or(8 * size), container_);
    diagnostics_ = quorvane::test::WithoutNumbers(diagnostics.Lines());
    return result;
}

std::string SetUnderTest::Name() const {
    if (container_.tag == 0) {
        return {};
    }
    return std::string(family_.codec.messages[set_->messages[container_.tag - 1]].name);
}

std::string SetUnderTest::Text() {
    return TextOf(family_, set_->memberTypes[container_.tag - 1], container_.body);
}

bits::Cell& SetUnderTest::Member(std::string_view path) {
    return MemberAt(family_, arena_, set_->memberTypes[container_.tag - 1], container_.body, path);
}

Written SetUnderTest::Encode() const {
    return WriteOverOnes(family_.codec, [&](EncodeContext& context) {
        return EncodeContainer(context, *set_, container_);
    });
}

const MessageRow& SetUnderTest::Message(std::string_view name) const {
    const auto found = std::find_if(
        set_->messages.begin(), set_->messages.end(),
        [&](std::uint16_t index) { return family_.codec.messages[index].name == name; });
    EXPECT_NE(found, set_->messages.end()) << name;
    return family_.codec.messages[*found];
}

}  // namespace quorvane::iecodec::test
