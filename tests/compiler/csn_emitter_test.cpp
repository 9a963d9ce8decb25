// The C++ that a description becomes.

#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>

#include "compiler/csn/csn_compiler.h"
#include "compiler/csn_type_text.h"

namespace quorvane::compiler {
namespace {

std::string Emitted(const std::string& fileName, const std::string& text) {
    Reporter reporter;
    TypeStore store;
    std::map<std::string, EnumModel> enums;
    const auto findEnum = [&](const std::string& name) -> const EnumModel* {
        const bool named = text.find("enum " + name) != std::string::npos;
        return named ? &enums[name] : nullptr;
    };
    const CompiledCsn csn =
        CompileCsn(reporter, {reporter.AddFile(fileName, text)}, {findEnum}, store);
    EXPECT_EQ(reporter.Text(), "");
    std::ostringstream out;
    EmitCsn(out, csn);
    return out.str();
}

TEST(CsnEmitter, ExplainsEachRow) {
    EXPECT_EQ(
        Emitted("a.csn1",
                "structure Small \"TS 1, 2.3\" ;\n"
                "< small > ::= < g : < n : bit (2) > > @note(x) < v : bit (val(n) + 1) > ;\n"),
        R"(constexpr std::array<std::uint8_t, 23> kCsnCode = {{
    // Small
    0x11, 0x02,                   // 0: BEGIN        1                       ; g
    0x11, 0x09,                   // 2: BEGIN        4, sized                ; n
    0xC2,                         // 4: SKIP         2
    0x13, 0x09, 0x02,             // 5: END_TAG      4, sized, tag 2 (n)     ; n
    0x12, 0x02,                   // 8: END          1                       ; g
    0x09, 0x00,                   // 10: ACT          action 0
    0x11, 0x0F,                   // 12: BEGIN        7, sized                ; v
    0x1A, 0x0C, 0x00,             // 14: REP_FN       -> 20, function 0
    0xC1,                         // 17: SKIP         1
    0x1D, 0x01,                   // 18: LOOP         -> 17
    0x12, 0x0F,                   // 20: END          7, sized                ; v
    0x2D,                         // 22: RET_TAGS
}};

constexpr std::array<std::uint16_t, 9> kCsnFieldTable = {{
    0, 1, 2, // 1: g
    1, 2, 4, // 4: n
    2, 1, 3, // 7: v
}};

constexpr std::array<csn::PlanStep, 12> kCsnPlan = {{
    {csn::PlanOp::kBegin, 0, 1, 0, 0},  // 0
    {csn::PlanOp::kBegin, 0, 4, 0, 0},  // 1
    {csn::PlanOp::kSkip, 2, 0, 0, 0},  // 2
    {csn::PlanOp::kEndTag, 0, 2, 0, 0},  // 3
    {csn::PlanOp::kEnd, 0, 0, 0, 0},  // 4
    {csn::PlanOp::kAct, 0, 0, 0, 0},  // 5
    {csn::PlanOp::kBegin, 0, 7, 0, 0},  // 6
    {csn::PlanOp::kRepeatFunction, 1, 10, 0, 0},  // 7
    {csn::PlanOp::kSkip, 1, 0, 0, 0},  // 8
    {csn::PlanOp::kLoop, 0, 8, 0, 0},  // 9
    {csn::PlanOp::kEnd, 0, 0, 0, 0},  // 10
    {csn::PlanOp::kReturnTags, 0, 0, 0, 0},  // 11
}};

constexpr std::array<csn::CsnAction, 1> kCsnActions = {{
    &csn::functions::NotePosition<1>,
}};

constexpr std::array<csn::CsnValueFunction, 1> kCsnFunctions = {{
    &csn::functions::TagPlus<2, 1>,
}};

constexpr csn::CsnProgram kCsnProgram = {
    kCsnCode.data(), 23, kCsnFieldTable.data(),
    kCsnActions.data(), kCsnFunctions.data(), 3, kCsnPlan.data()};

constexpr std::array<csn::CsnFieldRow, 3> kCsnFields = {{
    // Small, TS 1, 2.3
    {csn::CsnFieldKind::kStruct, false, 0, 1, 0, 0, false, true, false, false},  // 2 g
    {csn::CsnFieldKind::kBinary, false, 1, 0, 0, 64, false, true, false, false},  // 3 v
    {csn::CsnFieldKind::kInteger, false, 0, 2, 0, 0, false, true, false, false},  // 4 g.n
}};

constexpr std::array<csn::CsnStructure, 1> kCsnStructures = {{
    {"Small", &kCsnProgram, 0, 0, 1, 2, 2,
     std::span<const csn::CsnFieldRow>(kCsnFields).subspan(0, 3)},
}};

)");
}

TEST(CsnEmitter, DependsOnTheDescriptionAlone) {
    const std::string text = test::CsnTextOf("l3");
    const std::string once = Emitted("here/l3.csn1", text);
    EXPECT_EQ(Emitted("/some/where/else/l3.csn1", text), once);
    EXPECT_NE(once.find("MsRadioAccessCpblty"), std::string::npos);
    EXPECT_EQ(once.find("here"), std::string::npos);
}

TEST(CsnEmitter, FamiliesOfNothingHaveEmptyTables) {
    const std::string text = Emitted("a.csn1", "");
    EXPECT_NE(text.find("constexpr std::array<csn::CsnStructure, 0> kCsnStructures{};"),
              std::string::npos);
}

TEST(CsnEmitter, DeclaredFunctionsBringTheirHeaders) {
    Reporter reporter;
    TypeStore store;
    const CompiledCsn csn =
        CompileCsn(reporter,
                   {reporter.AddFile("a.csn1",
                                     "function p \"families/a.h\" other::Bits most 4 ;\n"
                                     "function q \"families/b.h\" Unused most 4 ;\n"
                                     "structure T \"TS 1, 2.3\" ;\n"
                                     "< t > ::= < n : bit (2) > < v : bit (p(n)) > ;\n")},
                   {}, store);
    EXPECT_EQ(reporter.Text(), "");
    EXPECT_EQ(csn.image.headers, std::set<std::string>{"families/a.h"});
    ASSERT_EQ(csn.image.functions.size(), 1U);
    EXPECT_EQ(csn.image.functions[0], "&csn::functions::Declared<1, other::Bits>");
    EXPECT_EQ(csn.image.functionBounds.at(0).offset, 4);
    EXPECT_FALSE(csn.image.functionBounds.at(0).tag);
}

}  // namespace
}  // namespace quorvane::compiler
