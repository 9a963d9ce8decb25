// Whether numbers and bit strings in sequences note their locations: a family says it for all of
// its types.

#include <gtest/gtest.h>
#include <string>

#include "compiler/describe.h"

namespace quorvane::compiler {
namespace {

/// The table `name` of the family's code.
std::string TableOf(const std::string& familyLine, const std::string& name) {
    const Description result = Describe(
        {{"f.qd", familyLine + "\nheader h {\n    = 1 8\n    type 8\n}\n"
                               "sequence list [2] of int8\n"
                               "struct s serial {\n    a rest : [2] of int16\n}\n"
                               "struct u serial unlocated {\n    a rest : [2] of int32\n}\n"
                               "csn C\n"
                               "message M h 1 {\n    l LV 0-2 : list\n    s LV 0-4 : s\n"
                               "    u LV 0-8 : u\n    c LV 0-2 : C\n}\n"
                               "set S {\n    key octets 0 1\n    shows octet 1\n    mask FFFF\n"
                               "    M = 0101\n}\n"},
         {"f.csn1",
          "structure C \"x\" ;\n< C > ::= { 1 < n : bit (2) > < b : octet [binary "
          "8] > } ** 0 < o : bit > ;\n"}});
    EXPECT_EQ(result.errors, "");
    const std::size_t begin = result.code.find(" " + name + "{");
    const std::size_t other = result.code.find(" " + name + " =");
    const std::size_t at = std::min(begin, other);
    return at == std::string::npos ? "" : result.code.substr(at, result.code.find("}};", at) - at);
}

bool Has(const std::string& table, const std::string& row) {
    return table.find(row) != std::string::npos;
}

TEST(LocatedItems, AreNotLocatedUnlessTheFamilySaysSo) {
    const std::string values = TableOf("family f diagnostics from 7", "kValues");
    EXPECT_TRUE(Has(values, "{\"list_data\"sv, Shape::kInteger, false,")) << values;
    EXPECT_TRUE(Has(values, "{\"s_a_data\"sv, Shape::kInteger, false,")) << values;
    const std::string fields = TableOf("family f", "kCsnFields");
    EXPECT_TRUE(Has(fields, "kInteger, false, 1, 2, 20, 0, false, false, false, false},  // 2 n[]"))
        << fields;
    EXPECT_TRUE(Has(fields, "kBinary, false, 0, 0, 20, 8, false, false, false, false},  // 3 b[]"))
        << fields;
    EXPECT_TRUE(Has(fields, "kInteger, false, 2, 1, 0, 0, false, true, false, false},  // 4 o"))
        << fields;
}

TEST(LocatedItems, AreLocatedIfTheFamilySaysSo) {
    for (const std::string family :
         {"family f items located", "family f diagnostics from 7 items located"}) {
        const std::string values = TableOf(family, "kValues");
        EXPECT_TRUE(Has(values, "{\"list_data\"sv, Shape::kInteger, true,")) << values;
        EXPECT_TRUE(Has(values, "{\"s_a_data\"sv, Shape::kInteger, true,")) << values;
        EXPECT_TRUE(Has(values, "{\"u_a_data\"sv, Shape::kInteger, false,")) << values;
        const std::string fields = TableOf(family, "kCsnFields");
        EXPECT_TRUE(
            Has(fields, "kInteger, false, 1, 2, 20, 0, false, true, false, false},  // 2 n[]"));
        EXPECT_TRUE(
            Has(fields, "kBinary, false, 0, 0, 20, 8, false, true, false, false},  // 3 b[]"));
    }
}

TEST(LocatedItems, ABadFamilyLineIsTold) {
    EXPECT_EQ(Describe({{"f.qd", "family f items\n"}}).errors,
              "f.qd:1:15: error: 'located' is expected here, not the end of the line\n");
}

}  // namespace
}  // namespace quorvane::compiler
