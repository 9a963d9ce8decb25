#include <gtest/gtest.h>
#include <string>

#include "reflect/ted_class.h"
#include "reflect/text_buffer.h"

namespace quorvane::reflect {
namespace {

template <typename Printable>
std::string Defined(const Printable& type, bool expand = false, std::uint32_t indent = 0) {
    TextBuffer stream;
    type.PrintDefinition(stream, expand, indent);
    return std::string(stream.View());
}

TEST(Definition, OfScalars) {
    EXPECT_EQ(Defined(TEDClassInteger("Number", 8)), "Number (int, 8 bits)\n");
    EXPECT_EQ(Defined(TEDClassInteger("Number", 0), false, 2), "    Number (int, 0 bits)\n");
    TEDClassEnumerated enumerated("Colour", 4);
    enumerated.AddValue("red", 1);
    EXPECT_EQ(Defined(enumerated), "Colour (int, 4 bits) ENUMERATED\n");
    EXPECT_EQ(Defined(TEDClassBinary("Bits", 36, true)), "Bits (binary, max 36 bits, fixed)\n");
    EXPECT_EQ(Defined(TEDClassBinary("Bits", 800, false)),
              "Bits (binary, max 800 bits, dynamic)\n");
}

TEST(Definition, NumbersAreUnsigned) {
    EXPECT_EQ(Defined(TEDClassInteger("N", 4294967295U)), "N (int, 4294967295 bits)\n");
}

TEST(Definition, OfSequences) {
    const TEDClassReference item(new TEDClassInteger("List_data", 8), true);
    EXPECT_EQ(Defined(TEDClassSequence("List", item, 20, false)),
              "List array [0..20] of:\n"
              "  List_data (int, 8 bits)\n");
    EXPECT_EQ(Defined(TEDClassSequence("List", item, 4, true), false, 1),
              "  List array [4] of:\n"
              "    List_data (int, 8 bits)\n");
}

TEST(Definition, OfReferences) {
    EXPECT_EQ(Defined(TEDClassReference(), false, 1), "  UNDEFINED\n");
    EXPECT_EQ(Defined(TEDClassReference(nullptr, true)), "UNDEFINED\n");
    TEDClassInteger target("Target", 3);
    EXPECT_EQ(Defined(TEDClassReference(&target, false), false, 1), "  ->Target\n");
    EXPECT_EQ(Defined(TEDClassReference(&target, false), true, 1), "  Target (int, 3 bits)\n");
    EXPECT_EQ(Defined(TEDClassReference(new TEDClassInteger("Own", 3), true)),
              "Own (int, 3 bits)\n");
}

TEST(Definition, OfStructs) {
    TEDClassStruct shared("Shared");
    TEDClassStruct type("Type");
    type.AddMember("First", TEDClassReference(new TEDClassInteger("Type_First", 8), true), false);
    type.AddMember("Second", TEDClassReference(&shared, false), true);
    EXPECT_EQ(Defined(type),
              "struct Type {\n"
              "  First:\n"
              "    Type_First (int, 8 bits)\n"
              "  Second OPTIONAL:\n"
              "    ->Shared\n"
              "}\n");
    EXPECT_EQ(Defined(type, true, 1),
              "  struct Type {\n"
              "    First:\n"
              "      Type_First (int, 8 bits)\n"
              "    Second OPTIONAL:\n"
              "      struct Shared {\n"
              "      }\n"
              "  }\n");
}

TEST(Definition, AlternativesOfUnionsPrintOptional) {
    TEDClassUnion type("Choice");
    type.AddAlternative("A", TEDClassReference(new TEDClassInteger("Choice_A", 8), true));
    EXPECT_EQ(Defined(type),
              "union Choice {\n"
              "  A OPTIONAL:\n"
              "    Choice_A (int, 8 bits)\n"
              "}\n");
}

}  // namespace
}  // namespace quorvane::reflect
