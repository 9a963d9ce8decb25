#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "reflect/ted_class.h"
#include "reflect/ted_data.h"

namespace quorvane::reflect {
namespace {

/// A type of no kind of its own, which counts its objects.
class PlainClass : public TEDClassBase {
  public:
    PlainClass() : TEDClassBase("plain") { ++alive; }
    ~PlainClass() override { --alive; }

    [[nodiscard]] TEDClassBase* Clone() const override { return new PlainClass; }
    [[nodiscard]] TEDDataBase* NewData() const override { return nullptr; }
    void PrintDefinition(TextBuffer&, bool, std::uint32_t) const override {}

    static inline int alive = 0;
};

TEST(TEDClass, KindsAreTheirCodes) {
    EXPECT_EQ(PlainClass().GetKind(), 1);
    EXPECT_EQ(TEDClassReference().GetKind(), 2);
    EXPECT_EQ(TEDClassStructuredElement("e", TEDClassReference(), false).GetKind(), 3);
    EXPECT_EQ(TEDClassStruct("s").GetKind(), 5);
    EXPECT_EQ(TEDClassUnion("u").GetKind(), 6);
    EXPECT_EQ(TEDClassInteger("i", 8).GetKind(), 7);
    EXPECT_EQ(TEDClassBinary("b", 8, false).GetKind(), 8);
    EXPECT_EQ(TEDClassSequence("q", TEDClassReference(), 20, false).GetKind(), 9);
    EXPECT_EQ(TEDClassEnumerated("n", 8).GetKind(), 10);
}

template <typename Object>
void ExpectOnlyKind(const Object& object, int own) {
    for (int kind = 0; kind <= 11; ++kind) {
        EXPECT_EQ(object.IsKind(kind), kind == own) << kind;
    }
}

TEST(TEDClass, IsKindIsTrueForTheOwnCodeOnly) {
    ExpectOnlyKind(PlainClass(), 1);
    ExpectOnlyKind(TEDClassReference(), 2);
    ExpectOnlyKind(TEDClassStructuredElement("e", TEDClassReference(), false), 3);
    ExpectOnlyKind(TEDClassStruct("s"), 5);
    ExpectOnlyKind(TEDClassUnion("u"), 6);
    ExpectOnlyKind(TEDClassInteger("i", 8), 7);
    ExpectOnlyKind(TEDClassBinary("b", 8, false), 8);
    ExpectOnlyKind(TEDClassSequence("q", TEDClassReference(), 20, false), 9);
    ExpectOnlyKind(TEDClassEnumerated("n", 8), 10);
}

TEST(TEDClass, NamesAreCopied) {
    std::string name = "first";
    TEDClassInteger type(name, 8);
    name = "XXXXX";
    EXPECT_EQ(type.GetName(), "first");
    name = "second";
    type.SetName(name);
    name = "XXXXXX";
    EXPECT_EQ(type.GetName(), "second");
}

TEST(TEDClass, ATypeMayTakeItsOwnNameAgain) {
    TEDClassInteger type("name", 8);
    type.SetName(type.GetName());
    EXPECT_EQ(type.GetName(), "name");
}

TEST(TEDClass, NoNameIsAnotherThingThanAnEmptyOne) {
    TEDClassInteger type("name", 8);
    type.SetName({});
    EXPECT_EQ(type.GetName().data(), nullptr);
    type.SetName("");
    EXPECT_NE(type.GetName().data(), nullptr);
    EXPECT_EQ(type.GetName(), "");
}

TEST(TEDClassEnumerated, ValuesKeepTheirOrder) {
    TEDClassEnumerated type("colour", 4);
    EXPECT_EQ(type.AddValue("green", 7), 0U);
    EXPECT_EQ(type.AddValue("red", 2), 1U);
    ASSERT_EQ(type.GetValueCount(), 2U);
    EXPECT_EQ(type.GetValue(0), 7U);
    EXPECT_EQ(type.GetValueText(0), "green");
    EXPECT_EQ(type.GetValue(1), 2U);
    EXPECT_EQ(type.GetValueText(1), "red");
    EXPECT_FALSE(type.HasOtherText());
}

std::string TextOf(const TEDClassEnumerated& type, std::uint32_t value) {
    const TEDEnumValue* found = type.Find(value);
    return found == nullptr ? "-" : std::string(found->GetText());
}

TEST(TEDClassEnumerated, TheFirstOfTwoEqualValuesAnswers) {
    TEDClassEnumerated type("t", 4);
    type.AddValue("a", 3);
    type.AddValue("b", 3);
    EXPECT_EQ(TextOf(type, 3), "a");
}

TEST(TEDClassEnumerated, TheFirstAnswersAlsoAmongAscendingValues) {
    // 0, 1 and 2 stand in place; then 1 and 4 come again, or late.
    TEDClassEnumerated type("t", 4);
    type.AddValue("zero", 0);
    type.AddValue("one", 1);
    type.AddValue("two", 2);
    type.AddValue("one again", 1);
    type.AddValue("four", 4);
    type.AddValue("three", 3);
    type.AddValue("four again", 4);
    EXPECT_EQ(TextOf(type, 0), "zero");
    EXPECT_EQ(TextOf(type, 1), "one");
    EXPECT_EQ(TextOf(type, 2), "two");
    EXPECT_EQ(TextOf(type, 3), "three");
    EXPECT_EQ(TextOf(type, 4), "four");
    EXPECT_EQ(TextOf(type, 5), "-");
    EXPECT_EQ(TextOf(type, 0xFFFFFFFFU), "-");
}

TEST(TEDClassEnumerated, ValuesAreComparedUnsignedWith32Bits) {
    TEDClassEnumerated type("t", 32);
    type.AddValue("all", 0xFFFFFFFFU);
    EXPECT_EQ(TextOf(type, static_cast<std::uint32_t>(-1)), "all");
}

TEST(TEDClassEnumerated, OtherTextMayBeTakenBack) {
    TEDClassEnumerated type("t", 4);
    type.SetOtherText("reserved");
    EXPECT_EQ(type.GetOtherText(), "reserved");
    type.SetOtherText({});
    EXPECT_FALSE(type.HasOtherText());
}

TEST(TEDClassReference, OwningCopiesOwnADeepCopy) {
    auto* target = new TEDClassInteger("i", 8);
    TEDClassReference copy;
    {
        const TEDClassReference source(target, true);
        copy = source;
        EXPECT_TRUE(copy.IsOwned());
        EXPECT_NE(copy.GetTarget(), target);
    }
    EXPECT_EQ(copy.GetTarget()->GetName(), "i");  // the source took its target with it
}

TEST(TEDClassReference, OtherCopiesPointAtTheSameType) {
    PlainClass::alive = 0;
    {
        PlainClass target;
        {
            const TEDClassReference source(&target, false);
            const TEDClassReference copy(source);
            EXPECT_EQ(copy.GetTarget(), &target);
            EXPECT_FALSE(copy.IsOwned());
        }
        EXPECT_EQ(PlainClass::alive, 1);
    }
}

TEST(TEDClassReference, AnOwningReferenceWithoutATargetStaysOwning) {
    const TEDClassReference source(nullptr, true);
    const TEDClassReference copy(source);
    EXPECT_EQ(copy.GetTarget(), nullptr);
    EXPECT_TRUE(copy.IsOwned());
}

TEST(TEDClassReference, AssignmentDeletesWhatWasOwned) {
    PlainClass::alive = 0;
    TEDClassReference reference(new PlainClass, true);
    EXPECT_EQ(PlainClass::alive, 1);
    reference = TEDClassReference();
    EXPECT_EQ(PlainClass::alive, 0);
    EXPECT_EQ(reference.GetTarget(), nullptr);
    EXPECT_FALSE(reference.IsOwned());
}

TEST(TEDClassReference, ResetDeletesOnlyWhatIsOwned) {
    PlainClass::alive = 0;
    TEDClassReference owning(new PlainClass, true);
    owning.Reset();
    EXPECT_EQ(PlainClass::alive, 0);
    EXPECT_FALSE(owning.IsOwned());
    PlainClass target;
    TEDClassReference other(&target, false);
    other.Reset();
    EXPECT_EQ(PlainClass::alive, 1);
    EXPECT_EQ(other.GetTarget(), nullptr);
}

TEST(TEDClassReference, CloneFollowsTheRuleOfAssignment) {
    PlainClass::alive = 0;
    {
        const TEDClassReference source(new PlainClass, true);
        const std::unique_ptr<TEDClassReference> copy(source.Clone());
        EXPECT_EQ(PlainClass::alive, 2);
        EXPECT_TRUE(copy->IsOwned());
    }
    EXPECT_EQ(PlainClass::alive, 0);
}

TEST(TEDClassReference, NewDataComesFromTheTarget) {
    const TEDClassReference reference(new TEDClassInteger("i", 8), true);
    const std::unique_ptr<TEDDataBase> node(reference.NewData());
    EXPECT_EQ(node->GetClass(), reference.GetTarget());
}

TEST(TEDClassStruct, MembersNeverTakeOverTheCallersType) {
    PlainClass::alive = 0;
    {
        TEDClassStruct type("s");
        {
            const TEDClassReference temporary(new PlainClass, true);
            type.AddMember("m", temporary, false);
            EXPECT_EQ(PlainClass::alive, 2);
        }
        EXPECT_EQ(PlainClass::alive, 1);
        ASSERT_EQ(type.GetElementCount(), 1U);
        EXPECT_EQ(type.GetElement(0)->GetName(), "m");
        EXPECT_TRUE(type.GetElement(0)->GetType().IsOwned());
        EXPECT_FALSE(type.GetElement(0)->IsOptional());
    }
    EXPECT_EQ(PlainClass::alive, 0);
}

TEST(TEDClassUnion, AlternativesAreOptional) {
    TEDClassUnion type("u");
    EXPECT_EQ(type.AddAlternative("a", TEDClassReference()), 0U);
    EXPECT_EQ(type.AddAlternative("b", TEDClassReference()), 1U);
    EXPECT_TRUE(type.GetElement(0)->IsOptional());
    EXPECT_TRUE(type.GetElement(1)->IsOptional());
}

TEST(TEDClass, ClonesCopyEveryField) {
    const TEDClassInteger integer("i", 5);
    const std::unique_ptr<TEDClassBase> integerCopy(integer.Clone());
    EXPECT_EQ(integerCopy->GetName(), "i");
    EXPECT_NE(integerCopy->GetName().data(), integer.GetName().data());
    EXPECT_EQ(static_cast<TEDClassInteger&>(*integerCopy).GetBits(), 5U);

    const TEDClassBinary binary("b", 36, true);
    const std::unique_ptr<TEDClassBase> binaryCopy(binary.Clone());
    EXPECT_EQ(static_cast<TEDClassBinary&>(*binaryCopy).GetMaxBits(), 36U);
    EXPECT_TRUE(static_cast<TEDClassBinary&>(*binaryCopy).IsFixed());

    TEDClassEnumerated enumerated("e", 3);
    enumerated.AddValue("a", 1);
    enumerated.AddValue("b", 1);
    enumerated.SetOtherText("o");
    const std::unique_ptr<TEDClassBase> copyOfEnumerated(enumerated.Clone());
    const auto& enumeratedCopy = static_cast<TEDClassEnumerated&>(*copyOfEnumerated);
    EXPECT_EQ(enumeratedCopy.GetKind(), kEnumeratedKind);
    EXPECT_EQ(enumeratedCopy.GetBits(), 3U);
    ASSERT_EQ(enumeratedCopy.GetValueCount(), 2U);
    EXPECT_EQ(enumeratedCopy.GetValueText(0), "a");
    EXPECT_EQ(enumeratedCopy.GetValueText(1), "b");
    EXPECT_EQ(enumeratedCopy.GetOtherText(), "o");

    const TEDClassSequence sequence("q", TEDClassReference(new TEDClassInteger("x", 1), true), 7,
                                    true);
    const std::unique_ptr<TEDClassBase> copyOfSequence(sequence.Clone());
    const auto& sequenceCopy = static_cast<TEDClassSequence&>(*copyOfSequence);
    EXPECT_EQ(sequenceCopy.GetBound(), 7U);
    EXPECT_TRUE(sequenceCopy.IsFixed());
    EXPECT_TRUE(sequenceCopy.GetItemType().IsOwned());
    EXPECT_NE(sequenceCopy.GetItemType().GetTarget(), sequence.GetItemType().GetTarget());
    EXPECT_EQ(sequenceCopy.GetItemType().GetTarget()->GetName(), "x");
}

TEST(TEDClass, ClonesOfStructuredTypesHaveElementsOfTheirOwn) {
    TEDClassInteger shared("shared", 8);
    const TEDClassReference toShared(&shared, false);
    const TEDClassReference toOwn(new TEDClassInteger("own", 4), true);
    TEDClassStruct type("s");
    type.AddMember("a", toShared, true);
    type.AddMember("b", toOwn, false);
    const std::unique_ptr<TEDClassBase> copyOfType(type.Clone());
    const auto& copy = static_cast<TEDClassStruct&>(*copyOfType);
    EXPECT_EQ(copy.GetKind(), kStructKind);
    ASSERT_EQ(copy.GetElementCount(), 2U);
    EXPECT_NE(copy.GetElement(0), type.GetElement(0));
    EXPECT_EQ(copy.GetElement(0)->GetName(), "a");
    EXPECT_TRUE(copy.GetElement(0)->IsOptional());
    EXPECT_EQ(copy.GetElement(0)->GetType().GetTarget(), &shared);
    EXPECT_FALSE(copy.GetElement(1)->IsOptional());
    EXPECT_NE(copy.GetElement(1)->GetType().GetTarget(), type.GetElement(1)->GetType().GetTarget());

    TEDClassUnion choice("u");
    choice.AddAlternative("x", toShared);
    const std::unique_ptr<TEDClassBase> copyOfChoice(choice.Clone());
    EXPECT_EQ(copyOfChoice->GetKind(), kUnionKind);
    EXPECT_TRUE(static_cast<TEDClassUnion&>(*copyOfChoice).GetElement(0)->IsOptional());
}

}  // namespace
}  // namespace quorvane::reflect
