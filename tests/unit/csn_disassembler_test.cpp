#include <gtest/gtest.h>

#include "csn/assembly/assembler.h"
#include "csn/assembly/disassembler.h"

namespace quorvane::csn {
namespace {

std::vector<std::uint8_t> OneOfEach() {
    Assembler code;
    const auto end = code.NewLabel();
    const auto rule = code.NewLabel();
    code.Emit(Opcode::kRepAny, {Assembler::Exit(end, true)});
    const auto body = code.BindNew();
    code.Emit(Opcode::kAlt, {Assembler::Branch(end, true)});
    code.Emit(Opcode::kAlt, {Assembler::Branch(end, false)});
    code.Emit(Opcode::kField, {118, 8});
    code.Emit(Opcode::kBegin, {Assembler::Delimiter(4, false)});
    code.Emit(Opcode::kEndTag, {Assembler::Delimiter(4, true), 9});
    code.Emit(Opcode::kFieldLit, {5, Assembler::Literal(5, 4)});
    code.Emit(Opcode::kSkip, {7});
    code.Emit(Opcode::kAct, {1});
    code.Emit(Opcode::kRepFn2, {Assembler::Exit(end, false), 2, 3});
    code.Emit(Opcode::kValRange, {9, 3, 5});
    code.Emit(Opcode::kCall, {rule});
    code.Emit(Opcode::kJmp, {end});
    code.Emit(Opcode::kLoop, {body});
    code.Bind(end);
    code.Emit(Opcode::kRet);
    code.Bind(rule);
    code.Emit(Opcode::kBit1);
    code.Emit(Opcode::kRetTags);
    return code.Finish();
}

TEST(CsnDisassembler, ListsAnImage) {
    EXPECT_EQ(Disassemble(OneOfEach()),
              "     0  REP_ANY      -> 34, not written\n"
              "     2  ALT          -> 34, last\n"
              "     4  ALT          -> 34\n"
              "     6  FIELD        118, width 8\n"
              "     9  BEGIN        4\n"
              "    11  END_TAG      4, sized, tag 9\n"
              "    14  FIELD_LIT    5, bits 0101\n"
              "    17  SKIP         7\n"
              "    18  ACT          action 1\n"
              "    20  REP_FN2      -> 34, encoding function 2, decoding function 3\n"
              "    24  VAL_RANGE    tag 9, 3, 5\n"
              "    28  CALL         -> 35\n"
              "    30  JMP          -> 34\n"
              "    32  LOOP         -> 2\n"
              "    34  RET\n"
              "    35  BIT1\n"
              "    36  RET_TAGS\n");
}

TEST(CsnDisassembler, SaysNames) {
    ListingNames names;
    names.field = [](std::uint32_t id) { return id == 118 ? "Delay_class" : ""; };
    names.rule = [](std::uint32_t offset) {
        return offset == 0 ? "Quality" : offset == 35 ? "Inner" : "";
    };
    names.tag = [](std::uint32_t) { return "Length"; };
    names.action = [](std::uint32_t) { return "CloseScope<1>"; };
    const std::string listing = Disassemble(OneOfEach(), names);
    EXPECT_NE(listing.find("Quality:\n     0  REP_ANY"), std::string::npos);
    EXPECT_NE(listing.find("\n\nInner:\n    35  BIT1\n"), std::string::npos);
    EXPECT_NE(listing.find("     6  FIELD        118, width 8            ; Delay_class\n"),
              std::string::npos);
    EXPECT_NE(listing.find("    28  CALL         -> 35                   ; Inner\n"),
              std::string::npos);
    EXPECT_NE(listing.find("tag 9 (Length)"), std::string::npos);
    EXPECT_NE(listing.find("action 1 (CloseScope<1>)"), std::string::npos);
}

TEST(CsnDisassembler, ListsOneRule) {
    EXPECT_EQ(DisassembleRule(OneOfEach(), 35),
              "    35  BIT1\n"
              "    36  RET_TAGS\n");
    // A return in the middle does not end a rule that jumps past it.
    Assembler code;
    const auto other = code.NewLabel();
    code.Emit(Opcode::kAlt, {Assembler::Branch(other, false)});
    code.Emit(Opcode::kRet);
    code.Bind(other);
    code.Emit(Opcode::kRet);
    code.Emit(Opcode::kNop);
    EXPECT_EQ(DisassembleRule(code.Finish(), 0),
              "     0  ALT          -> 3\n"
              "     2  RET\n"
              "     3  RET\n");
}

TEST(CsnDisassembler, ShowsUndefinedAndIncompleteCode) {
    const std::vector<std::uint8_t> code = {0x21, 0x00, 0x10, 0x81};
    EXPECT_EQ(Disassemble(code),
              "     0  NOP 0x21\n"
              "     1  NOP\n"
              "; incomplete instruction at 2\n");
    EXPECT_EQ(DisassembleRule(code, 9), "");
}

}  // namespace
}  // namespace quorvane::csn
