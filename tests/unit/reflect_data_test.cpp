#include <algorithm>
#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

#include "reflect/ted_class.h"
#include "reflect/ted_data.h"
#include "reflect_test_types.h"

namespace quorvane::reflect {
namespace {

using test::At;

/// A node that counts its objects.
class CountedNode : public TEDDataBase {
  public:
    CountedNode() : TEDDataBase(TypeKind::kInteger) { ++alive; }
    ~CountedNode() override { --alive; }

    [[nodiscard]] TEDDataBase* Clone() const override { return new CountedNode; }
    [[nodiscard]] const TEDClassBase* GetClass() const override { return nullptr; }
    void Print(TextBuffer&, std::uint32_t) const override {}

    static inline int alive = 0;
};

/// An integer type whose default values are counted.
class CountedType : public TEDClassInteger {
  public:
    CountedType() : TEDClassInteger("counted", 8) {}
    [[nodiscard]] TEDDataBase* NewData() const override { return new CountedNode; }
};

class DataTest : public testing::Test {
  protected:
    DataTest() { CountedNode::alive = 0; }

    CountedType counted_;
    TEDClassReference toCounted_{&counted_, false};
};

TEST_F(DataTest, LocationsAreSplitIntoOffsetAndLength) {
    const TEDClassInteger type("i", 8);
    TEDDataInteger node(&type, 5);
    EXPECT_EQ(node.location, 0U);
    EXPECT_EQ(node.GetLocationOffset(), -1);
    EXPECT_EQ(node.GetLocationLength(), -1);
    node.location = 1;
    EXPECT_EQ(node.GetLocationOffset(), 0);
    EXPECT_EQ(node.GetLocationLength(), 1);
    node.location = At(65535, 65535);
    EXPECT_EQ(node.GetLocationOffset(), 65535);
    EXPECT_EQ(node.GetLocationLength(), 65535);
}

TEST_F(DataTest, DefaultNumbersAreZero) {
    const TEDClassInteger integer("i", 8);
    const TEDClassEnumerated enumerated("e", 8);
    const std::unique_ptr<TEDDataBase> a(integer.NewData());
    const std::unique_ptr<TEDDataBase> b(enumerated.NewData());
    EXPECT_EQ(static_cast<TEDDataInteger&>(*a).GetValue(), 0);
    EXPECT_EQ(static_cast<TEDDataEnumerated&>(*b).GetValue(), 0);
    EXPECT_EQ(a->GetClass(), &integer);
    EXPECT_EQ(b->GetClass(), &enumerated);
    EXPECT_EQ(a->GetNodeKind(), TypeKind::kInteger);
    EXPECT_EQ(b->GetNodeKind(), TypeKind::kEnumerated);
}

TEST_F(DataTest, ANewFixedBinaryIsAllZero) {
    const TEDClassBinary type("b", 36, true);
    const TEDDataBinary node(&type);
    EXPECT_EQ(node.GetByteCapacity(), 5U);
    EXPECT_EQ(node.GetBitCount(), 36U);
    EXPECT_TRUE(std::all_of(node.GetData(), node.GetData() + 5, [](auto o) { return o == 0; }));
}

TEST_F(DataTest, ANewDynamicBinaryIsEmpty) {
    const TEDClassBinary type("b", 36, false);
    const TEDDataBinary node(&type);
    EXPECT_EQ(node.GetByteCapacity(), 5U);
    EXPECT_EQ(node.GetBitCount(), 0U);
}

TEST_F(DataTest, AFixedBinaryMadeOfBitsHasThoseBits) {
    const TEDClassBinary type("b", 36, true);
    const std::array<std::uint8_t, 2> source = {0xFF, 0xFF};
    const TEDDataBinary node(&type, source.data(), 12);
    EXPECT_EQ(node.GetBitCount(), 12U);
    EXPECT_EQ(node.GetByteCapacity(), 5U);
    EXPECT_EQ(node.GetData()[0], 0xFF);
    EXPECT_EQ(node.GetData()[1], 0xF0);
    EXPECT_EQ(node.GetData()[2], 0);
}

TEST_F(DataTest, SetBitsLeavesTheBitsBehindAsTheyWere) {
    const TEDClassBinary type("b", 16, false);
    const std::array<std::uint8_t, 2> ones = {0xFF, 0xFF};
    const std::array<std::uint8_t, 2> zeros = {0, 0};
    TEDDataBinary node(&type, ones.data(), 16);
    node.SetBits(zeros.data(), 4);
    EXPECT_EQ(node.GetBitCount(), 4U);
    EXPECT_EQ(node.GetData()[0], 0x0F);
    EXPECT_EQ(node.GetData()[1], 0xFF);
}

TEST_F(DataTest, SetBitsTakesMoreThanTheDescriptorAllows) {
    const TEDClassBinary type("b", 8, false);
    const std::array<std::uint8_t, 4> source = {1, 2, 3, 4};
    const TEDDataBinary node(&type, source.data(), 32);
    EXPECT_EQ(node.GetBitCount(), 32U);
    EXPECT_GE(node.GetByteCapacity(), 4U);
    EXPECT_TRUE(std::equal(source.begin(), source.end(), node.GetData()));
}

// The first count that is negative as a number of 32 bits with sign.
TEST_F(DataTest, SetBitsTakesMoreThanHalfOfAllCounts) {
    constexpr std::uint32_t kBits = 0x80000004;
    std::vector<std::uint8_t> octets(kBits / 8 + 1);
    octets.front() = 0x12;
    octets.back() = 0xFF;
    const TEDClassBinary type("b", 8, false);
    const TEDDataBinary node(&type, octets.data(), kBits);
    EXPECT_EQ(node.GetBitCount(), kBits);
    EXPECT_EQ(node.GetData()[0], 0x12);
    EXPECT_EQ(node.GetData()[kBits / 8], 0xF0);
}

TEST_F(DataTest, ClearBitsStartsAfresh) {
    const TEDClassBinary type("b", 16, true);
    const std::array<std::uint8_t, 2> ones = {0xFF, 0xFF};
    TEDDataBinary node(&type, ones.data(), 16);
    node.ClearBits();
    EXPECT_EQ(node.GetBitCount(), 0U);
    EXPECT_EQ(node.GetByteCapacity(), 2U);
    EXPECT_EQ(node.GetData()[0], 0);
    EXPECT_EQ(node.GetData()[1], 0);
}

TEST_F(DataTest, AViewingBinaryCopiesBeforeItIsWritten) {
    bits::Arena arena;
    const TEDClassBinary type("b", 16, false);
    const std::array<std::uint8_t, 2> viewed = {0xAB, 0xC0};
    auto* node = new (arena) TEDDataBinary(arena, &type, viewed.data(), 12);
    EXPECT_EQ(node->GetData(), viewed.data());
    EXPECT_EQ(node->GetByteCapacity(), 2U);
    const std::uint8_t change = 0x10;
    node->SetBits(&change, 4);
    EXPECT_EQ(node->GetData()[0], 0x1B);
    EXPECT_EQ(node->GetData()[1], 0xC0);
    EXPECT_EQ(viewed[0], 0xAB);
    node->ClearBits();
    EXPECT_EQ(node->GetByteCapacity(), 2U);
    EXPECT_EQ(node->GetData()[1], 0);
}

TEST_F(DataTest, ANewDynamicSequenceIsEmpty) {
    const TEDClassSequence type("q", toCounted_, 3, false);
    TEDDataSequence node(&type);
    EXPECT_EQ(node.GetCount(), 0U);
    EXPECT_EQ(CountedNode::alive, 0);
}

TEST_F(DataTest, ANewFixedSequenceHasItsItems) {
    const TEDClassSequence type("q", toCounted_, 3, true);
    {
        const TEDDataSequence node(&type);
        EXPECT_EQ(node.GetCount(), 3U);
        EXPECT_EQ(CountedNode::alive, 3);
    }
    EXPECT_EQ(CountedNode::alive, 0);
}

TEST_F(DataTest, AppendDoesNotLookAtTheBound) {
    const TEDClassSequence type("q", toCounted_, 1, false);
    TEDDataSequence node(&type);
    auto* second = new CountedNode;
    EXPECT_EQ(node.Append(new CountedNode), 0U);
    EXPECT_EQ(node.Append(second), 1U);
    EXPECT_EQ(node.GetCount(), 2U);
    EXPECT_EQ(node.GetItem(1), second);
}

TEST_F(DataTest, ANewStructHasItsMandatoryMembers) {
    TEDClassStruct type("s");
    type.AddMember("a", toCounted_, true);
    type.AddMember("b", toCounted_, false);
    {
        const TEDDataStruct node(&type);
        EXPECT_FALSE(node.HasMember(0));
        EXPECT_EQ(node.GetMember(0), nullptr);
        EXPECT_TRUE(node.HasMember(1));
        EXPECT_EQ(CountedNode::alive, 1);
    }
    EXPECT_EQ(CountedNode::alive, 0);
}

TEST_F(DataTest, ANewStructOfOptionalMembersHasNone) {
    TEDClassStruct type("s");
    for (const char* name : {"a", "b", "c"}) {
        type.AddMember(name, toCounted_, true);
    }
    const TEDDataStruct node(&type);
    for (std::uint32_t index = 0; index < 3; ++index) {
        EXPECT_EQ(node.GetMember(index), nullptr);
    }
}

TEST_F(DataTest, DefaultsGoAllTheWayDown) {
    TEDClassStruct inner("i");
    inner.AddMember("deep", toCounted_, false);
    TEDClassUnion choice("u");
    choice.AddAlternative("first", TEDClassReference(&inner, false));
    choice.AddAlternative("second", toCounted_);
    TEDClassStruct outer("o");
    outer.AddMember("choice", TEDClassReference(&choice, false), false);
    const TEDDataStruct node(&outer);
    const auto& chosen = static_cast<TEDDataUnion&>(*node.GetMember(0));
    EXPECT_EQ(chosen.GetChoiceIndex(), 0U);
    EXPECT_EQ(chosen.GetChoice()->GetClass(), &inner);
    EXPECT_TRUE(static_cast<TEDDataStruct*>(chosen.GetChoice())->HasMember(0));
}

TEST_F(DataTest, SetMemberDeletesTheDefaultOnce) {
    TEDClassStruct type("s");
    type.AddMember("a", toCounted_, false);
    TEDDataStruct node(&type);
    EXPECT_EQ(CountedNode::alive, 1);
    auto* member = new CountedNode;
    node.SetMember(0, member);
    EXPECT_EQ(CountedNode::alive, 1);
    EXPECT_EQ(node.GetMember(0), member);
}

TEST_F(DataTest, SetChoiceDeletesTheDefault) {
    TEDClassUnion type("u");
    type.AddAlternative("a", toCounted_);
    type.AddAlternative("b", toCounted_);
    TEDDataUnion node(&type);
    EXPECT_EQ(CountedNode::alive, 1);
    EXPECT_EQ(node.GetChoiceIndex(), 0U);
    node.SetChoice(1, new CountedNode);
    EXPECT_EQ(CountedNode::alive, 1);
    EXPECT_EQ(node.GetChoiceIndex(), 1U);
    node.SetChoice(1, nullptr);
    EXPECT_EQ(CountedNode::alive, 0);
    EXPECT_EQ(node.GetChoice(), nullptr);
}

TEST_F(DataTest, AMemberSetToItselfStays) {
    TEDClassStruct type("s");
    type.AddMember("a", toCounted_, false);
    TEDDataStruct node(&type);
    node.SetMember(0, node.GetMember(0));
    EXPECT_EQ(CountedNode::alive, 1);
    EXPECT_TRUE(node.HasMember(0));
}

TEST_F(DataTest, AChoiceSetToItselfStays) {
    TEDClassUnion type("u");
    type.AddAlternative("a", toCounted_);
    type.AddAlternative("b", toCounted_);
    TEDDataUnion node(&type);
    node.SetChoice(1, node.GetChoice());
    EXPECT_EQ(CountedNode::alive, 1);
    EXPECT_EQ(node.GetChoiceIndex(), 1U);
}

TEST_F(DataTest, CopiesOfNumbersHaveNoDescriptor) {
    const TEDClassEnumerated type("e", 8);
    TEDDataEnumerated node(&type, -7);
    node.location = At(8, 8);
    const std::unique_ptr<TEDDataBase> copy(node.Clone());
    EXPECT_EQ(copy->GetNodeKind(), TypeKind::kEnumerated);
    EXPECT_EQ(copy->location, At(8, 8));
    EXPECT_EQ(static_cast<TEDDataEnumerated&>(*copy).GetValue(), -7);
    EXPECT_EQ(copy->GetClass(), nullptr);

    const TEDClassInteger integerType("i", 8);
    TEDDataInteger integer(&integerType, 1);
    integer = node;  // the value and location of an enumerated node in an integer one
    EXPECT_EQ(integer.GetNodeKind(), TypeKind::kInteger);
    EXPECT_EQ(integer.GetValue(), -7);
    EXPECT_EQ(integer.location, At(8, 8));
    EXPECT_EQ(integer.GetClass(), nullptr);
}

TEST_F(DataTest, CopiesOfBinariesAreWhole) {
    const TEDClassBinary type("b", 32, false);
    const std::array<std::uint8_t, 2> source = {0xAB, 0xCD};
    TEDDataBinary node(&type, source.data(), 12);
    node.location = At(8, 12);
    const std::unique_ptr<TEDDataBase> copyOfNode(node.Clone());
    const auto& copy = static_cast<TEDDataBinary&>(*copyOfNode);
    EXPECT_EQ(copy.location, At(8, 12));
    EXPECT_EQ(copy.GetClass(), &type);
    EXPECT_EQ(copy.GetBitCount(), 12U);
    EXPECT_EQ(copy.GetByteCapacity(), 4U);
    EXPECT_NE(copy.GetData(), node.GetData());
    EXPECT_EQ(copy.GetData()[1], 0xC0);

    TEDDataBinary target(&type);
    target = node;
    EXPECT_EQ(target.location, At(8, 12));
    EXPECT_EQ(target.GetBitCount(), 12U);
    EXPECT_EQ(target.GetData()[0], 0xAB);
}

TEST_F(DataTest, CopiesOfSequencesHaveCopiesOfTheItems) {
    const TEDClassSequence type("q", toCounted_, 20, false);
    TEDDataSequence node(&type);
    node.location = At(1, 2);
    node.Append(new CountedNode);
    node.Append(new CountedNode);
    const std::unique_ptr<TEDDataBase> copyOfNode(node.Clone());
    const auto& copy = static_cast<TEDDataSequence&>(*copyOfNode);
    EXPECT_EQ(copy.location, At(1, 2));
    EXPECT_EQ(copy.GetClass(), &type);
    EXPECT_EQ(copy.GetCount(), 2U);
    EXPECT_NE(copy.GetItem(0), node.GetItem(0));
    EXPECT_EQ(CountedNode::alive, 4);

    TEDDataSequence target(&type);
    target.Append(new CountedNode);
    target = node;
    EXPECT_EQ(target.GetCount(), 2U);
    EXPECT_EQ(CountedNode::alive, 6);
}

TEST_F(DataTest, CopiesOfStructsHaveNoMembers) {
    TEDClassStruct type("s");
    for (const char* name : {"a", "b", "c"}) {
        type.AddMember(name, toCounted_, false);
    }
    TEDDataStruct node(&type);
    node.location = At(3, 4);
    EXPECT_EQ(CountedNode::alive, 3);
    const std::unique_ptr<TEDDataBase> copyOfNode(node.Clone());
    const auto& copy = static_cast<TEDDataStruct&>(*copyOfNode);
    EXPECT_EQ(copy.location, At(3, 4));
    EXPECT_EQ(copy.GetClass(), &type);
    for (std::uint32_t index = 0; index < 3; ++index) {
        EXPECT_FALSE(copy.HasMember(index));
    }
    EXPECT_EQ(CountedNode::alive, 3);

    TEDDataStruct target(&type);
    EXPECT_EQ(CountedNode::alive, 6);
    target = node;
    EXPECT_EQ(CountedNode::alive, 3);
    EXPECT_FALSE(target.HasMember(0));
    target.SetMember(0, new CountedNode);
    EXPECT_TRUE(target.HasMember(0));
}

TEST_F(DataTest, ANodeAssignedToItselfStays) {
    const TEDClassBinary binaryType("b", 32, false);
    const std::array<std::uint8_t, 2> source = {0xAB, 0xCD};
    TEDDataBinary binary(&binaryType, source.data(), 16);
    const TEDDataBinary& sameBinary = binary;
    binary = sameBinary;
    EXPECT_EQ(binary.GetBitCount(), 16U);
    EXPECT_EQ(binary.GetData()[1], 0xCD);

    const TEDClassSequence sequenceType("q", toCounted_, 20, false);
    TEDDataSequence sequence(&sequenceType);
    sequence.Append(new CountedNode);
    const TEDDataSequence& sameSequence = sequence;
    sequence = sameSequence;
    EXPECT_EQ(sequence.GetCount(), 1U);

    TEDClassUnion unionType("u");
    unionType.AddAlternative("a", toCounted_);
    TEDDataUnion choice(&unionType);
    const TEDDataUnion& sameChoice = choice;
    choice = sameChoice;
    EXPECT_NE(choice.GetChoice(), nullptr);
    EXPECT_EQ(choice.GetClass(), &unionType);
    EXPECT_EQ(CountedNode::alive, 2);
}

TEST_F(DataTest, AUnionWithoutAlternativesHasNoChoice) {
    const TEDClassUnion type("u");
    EXPECT_EQ(TEDDataUnion(&type).GetChoice(), nullptr);
}

TEST_F(DataTest, CopiesOfUnionsHaveTheChoiceOnly) {
    TEDClassUnion type("u");
    type.AddAlternative("a", toCounted_);
    type.AddAlternative("b", toCounted_);
    TEDDataUnion node(&type);
    node.location = At(3, 4);
    node.SetChoice(1, new CountedNode);
    const std::unique_ptr<TEDDataBase> copyOfNode(node.Clone());
    const auto& copy = static_cast<TEDDataUnion&>(*copyOfNode);
    EXPECT_EQ(copy.location, At(3, 4));
    EXPECT_EQ(copy.GetClass(), nullptr);
    EXPECT_NE(copy.GetChoice(), nullptr);
    EXPECT_NE(copy.GetChoice(), node.GetChoice());
    EXPECT_EQ(CountedNode::alive, 2);

    node.SetChoice(0, nullptr);
    TEDDataUnion target(&type);
    target = node;
    EXPECT_EQ(target.GetChoice(), nullptr);
    EXPECT_EQ(CountedNode::alive, 1);
}

}  // namespace
}  // namespace quorvane::reflect
