// Limits of the machine's record list.

#include <gtest/gtest.h>
#include <string>

#include "csn/machine.h"
#include "unit/csn_test_support.h"

namespace quorvane::csn {
namespace {

using test::Decode;
using test::Encode;
using test::Image;
using test::kRoot;

/// Emits a field of one bit `count` times.
void EmitBits(Image& image, std::uint32_t field, std::uint32_t count) {
    const auto exit = image.code.NewLabel();
    image.code.Emit(Opcode::kRep, {Assembler::Exit(exit, false), count});
    const auto body = image.code.BindNew();
    image.code.Emit(Opcode::kField, {field, 1});
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(exit);
}

TEST(CsnRecords, A129thFieldAborts) {
    for (const std::uint32_t count : {128U, 129U}) {
        Image image;
        EmitBits(image, image.Field({{kRoot, 10}}), count);
        image.code.Emit(Opcode::kRet);
        const auto run = Decode(image, std::string(count, '0'));
        EXPECT_EQ(run.result, count == 128 ? 128 : -1);
        EXPECT_EQ(run.machine->recordCount, 256);
        EXPECT_EQ(run.machine->records[254].occurrence, 127);
        EXPECT_EQ((run.machine->flags & kFlagAbort) != 0, count == 129);
        EXPECT_EQ(Encode(image).result, count == 128 ? 128 : -1);
    }
}

TEST(CsnRecords, LastRecordMayOpenAField) {
    Image image;
    const auto group = image.Field({{kRoot, 10}});
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(group, false)});
    EmitBits(image, image.Field({{10, 11}}), 128);
    image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(group, false)});
    image.code.Emit(Opcode::kRet);
    const auto run = Decode(image, std::string(128, '0'));
    EXPECT_EQ(run.result, -1);
    EXPECT_EQ(run.machine->recordCount, 256);
    EXPECT_EQ(run.machine->records[255].occurrence, 127);
    EXPECT_EQ(run.machine->records[255].tag, 11);
}

}  // namespace
}  // namespace quorvane::csn
