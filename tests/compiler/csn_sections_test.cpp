// Structures that run another's rule, and files that several families share.

#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

#include "compiler/csn/csn_compiler.h"
#include "compiler/csn_codec.h"
#include "compiler/describe.h"
#include "compiler/reporter.h"

namespace quorvane::compiler {
namespace {

// ---- A structure that runs the rule of another one ---------------------------------------------

constexpr const char* kTwins =
    "structure Twin \"TS 1, 1\" runs Own ;\n"
    "structure Own \"TS 1, 2\" ;\n"
    "< own > ::= < a : bit (2) > < g : < b : bit > { 1 < c : bit > } ** 0 > ;\n";

TEST(CsnTwin, ShowsNoMemberAndMustFit) {
    CsnCodec codec(kTwins);
    ASSERT_EQ(codec.Errors(), "");
    EXPECT_EQ(codec.Decode("10 1 10 11 0", 1), "8: a=2 g={ b=1 c=[0 1] }");
    EXPECT_EQ(codec.Decode("10 1 10 11 0", 0), "8:");
    EXPECT_EQ(codec.Decode("10 1 10 11", 0), "failed:");
    EXPECT_EQ(codec.Decode("1", 0), "failed:");
}

std::string ErrorsOf(const std::string& text) {
    return CsnCodec(text).Errors();
}

TEST(CsnTwin, MistakesAreTold) {
    EXPECT_EQ(ErrorsOf("structure A \"x\" runs B ;\n"),
              "T.csn1:1:22: error: there is no structure 'B' with a rule of its own to run\n");
    EXPECT_EQ(ErrorsOf("structure A \"x\" runs A ;\n"),
              "T.csn1:1:22: error: there is no structure 'A' with a rule of its own to run\n");
    EXPECT_EQ(
        ErrorsOf("structure B \"x\" ;\n< b > ::= 0 ;\nstructure A \"x\" runs B ;\n"
                 "< a > ::= 0 ;\n"),
        "T.csn1:4:1: error: the structure A runs the rule of B and can have none of its own\n");
}

// It goes with the other one, whatever pass finds its mistake, and is not missed.
TEST(CsnTwin, OfABrokenStructureIsNotTold) {
    const std::vector<std::pair<std::string, std::string>> mistakes = {
        {"{ 0", "3:17: error: '}' is expected here, not ';'"},
        {"< r >",
         "3:13: error: there is no rule '< r >' in this structure or among the shared ones"},
        {"{ null } **",
         "3:13: error: what is repeated without a bound may be empty, so the repetition would not "
         "end"},
        {"< a : bit [enum E] >", "3:29: error: there is no enumeration 'E'"}};
    for (const auto& [body, error] : mistakes) {
        const Description result =
            Describe({{"f.qd",
                       "family f\nheader h {\n    = 1 8\n    type 8\n}\ncsn Twin\ncsn Own\n"
                       "message m h 1 {\n    a LV 1 : Twin\n    b LV 1 : Own\n}\n"
                       "set s {\n    key octets 0 1\n    m = 0101\n}\n"},
                      {"T.csn1",
                       "structure Twin \"TS 1, 1\" runs Own ;\nstructure Own \"TS 1, 2\" ;\n"
                       "< own > ::= " +
                           body + " ;\n"}});
        EXPECT_EQ(result.errors, "T.csn1:" + error + "\n") << body;
        EXPECT_EQ(result.code, "");
    }
}

// ---- Files that several families share ---------------------------------------------------------

constexpr const char* kCommon =
    "common ;\n"
    "shared ;\n"
    "< used > ::= < n : bit (3) > < inner > ;\n"
    "< inner > ::= < b : bit (val(n)) > ;\n"
    "< unused > ::= < n : bit (3) > < c : bit (val(n)) > < other > ;\n"
    "< other > ::= < d : bit > ;\n"
    "structure Wanted \"TS 1, 1\" ;\n"
    "< w > ::= < a : bit > < used > ;\n"
    "structure Unwanted \"TS 1, 2\" ;\n"
    "< u > ::= < a : bit > < used > < unused > < helper > ;\n"
    "< helper > ::= 0 ;\n";

struct Compiled {
    std::string errors;
    std::vector<std::string> names;
    std::size_t octets = 0;
};

Compiled Compile(const std::vector<std::string>& texts, const std::set<std::string>& wanted) {
    Reporter reporter;
    TypeStore store;
    std::vector<std::uint32_t> files;
    for (const std::string& text : texts) {
        files.push_back(reporter.AddFile("f" + std::to_string(files.size()) + ".csn1", text));
    }
    const CompiledCsn csn = CompileCsn(reporter, files, {{}, wanted}, store);
    Compiled result{reporter.Text(), {}, csn.image.code.size()};
    for (const CompiledCsnStructure& structure : csn.structures) {
        result.names.push_back(structure.name);
    }
    return result;
}

using Names = std::vector<std::string>;

TEST(CsnCommon, StructuresAreThereIfTheFamilyNamesThem) {
    const Compiled one = Compile({kCommon}, {"Wanted"});
    EXPECT_EQ(one.errors, "");
    EXPECT_EQ(one.names, Names{"Wanted"});
    const Compiled both = Compile({kCommon}, {"Wanted", "Unwanted"});
    EXPECT_EQ(both.names, (Names{"Wanted", "Unwanted"}));
    EXPECT_LT(one.octets, both.octets);
    const Compiled none = Compile({kCommon}, {});
    EXPECT_EQ(none.errors, "");
    EXPECT_EQ(none.names, Names{});
    EXPECT_EQ(none.octets, 0U);
}

TEST(CsnCommon, AFamilysStructureMayBeASharedRule) {
    const std::string own =
        "structure Mine \"TS 1, 3\" ;\n< mine > ::= < a : bit (2) > < used > ;\n";
    for (const auto& texts : {std::vector<std::string>{own, kCommon}, {kCommon, own}}) {
        const Compiled result = Compile(texts, {});
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(result.names, Names{"Mine"});
    }
}

TEST(CsnCommon, ElsewhereWhatIsNotUsedIsAnError) {
    EXPECT_EQ(Compile({kCommon, "shared ;\n< mine > ::= 0 ;\n"}, {"Wanted"}).errors,
              "f1.csn1:2:1: error: no structure refers to the rule '< mine >'; remove it or "
              "use it\n");
    EXPECT_EQ(
        Compile({kCommon, "structure X \"x\" ;\n< x > ::= < helper > ;\n"}, {"Wanted"}).errors,
        "f1.csn1:2:11: error: there is no rule '< helper >' in this structure or among the "
        "shared ones\n");
}

TEST(CsnCommon, TheFamilysDeclarationsNameTheStructures) {
    const auto described = [](const std::string& declaration) {
        return Describe({{"f.qd", "family f\n" + declaration}, {"common.csn1", kCommon}});
    };
    const Description with = described("csn Wanted\n");
    EXPECT_EQ(with.errors, "");
    EXPECT_NE(with.code.find("{\"Wanted\", &kCsnProgram"), std::string::npos);
    EXPECT_EQ(with.code.find("Unwanted"), std::string::npos);
    EXPECT_EQ(described("").errors, "");
}

}  // namespace
}  // namespace quorvane::compiler
