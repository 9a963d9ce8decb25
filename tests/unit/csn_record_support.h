#pragma once

// A small structure with its image and its record, and the constructs that its rules are made of.

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "csn/csn_record.h"
#include "unit/csn_test_support.h"

namespace quorvane::csn::test {

using Kind = CsnFieldRow::Kind;

constexpr CsnFieldRow Integer(std::uint16_t element, std::uint16_t width, bool optional = false) {
    return {Kind::kInteger, optional, element, width, 0, 0, false, true};
}
constexpr CsnFieldRow Integers(std::uint16_t element, std::uint16_t width, std::uint16_t bound) {
    return {Kind::kInteger, false, element, width, bound, 0, false, false};
}
constexpr CsnFieldRow Binary(std::uint16_t element, std::uint32_t mostBits, bool optional = false) {
    return {Kind::kBinary, optional, element, 0, 0, mostBits, false, true};
}
constexpr CsnFieldRow FixedBinary(std::uint16_t element, std::uint32_t bits) {
    return {Kind::kBinary, false, element, 0, 0, bits, true, true};
}
constexpr CsnFieldRow Struct(std::uint16_t element, std::uint16_t members, bool optional = false) {
    return {Kind::kStruct, optional, element, members, 0, 0, false, true};
}
constexpr CsnFieldRow Structs(std::uint16_t element, std::uint16_t members, std::uint16_t bound) {
    return {Kind::kStruct, false, element, members, bound, 0, false, true};
}
constexpr CsnFieldRow Marker(std::uint16_t element) {
    return {Kind::kMarker, true, element, 0, 0, 0, false, true};
}
constexpr CsnFieldRow Nothing() {
    return {Kind::kNone, false, 0, 0, 0, 0, false, true};
}

/// A structure at the start of an image, its tags from 10 on, its record and its octets.
class Subject {
  public:
    explicit Subject(std::uint16_t members, std::vector<CsnFieldRow> rows)
        : rows_(std::move(rows)), members_(members) {}

    Image image;
    bits::Cell cell{};

    bits::Outcome Decode(std::string_view bits) {
        octets_ = Octets(bits);
        const bits::BitReader reader(octets_.data(), static_cast<std::int64_t>(octets_.size()));
        return DecodeCsn(Structure(), reader, arena_, 0, Count(bits), cell);
    }
    /// Of the record as it stands; "failed", or the bits written.
    std::string Encode() {
        std::vector<std::uint8_t> octets(64, 0xFF);
        bits::BitWriter writer(octets.data(), 64);
        const bits::Outcome result = EncodeCsn(Structure(), writer, 0, cell);
        return result.Failed() ? "failed"
                               : BitText(octets, static_cast<std::int32_t>(result.Bits()));
    }
    bits::Cell& Member(std::size_t element) {
        return bits::StructCells(arena_, cell, members_)[element];
    }

  private:
    CsnStructure Structure() {
        return {"Subject", &image.Program(), 0, 0, kRoot, 10, members_, rows_};
    }

    std::vector<CsnFieldRow> rows_;
    std::uint16_t members_;
    bits::Arena arena_;
    std::vector<std::uint8_t> octets_;
};

inline void Group(Image& image, std::uint32_t field, auto inside, bool sized = false) {
    image.code.Emit(Opcode::kBegin, {Assembler::Delimiter(field, sized)});
    inside();
    image.code.Emit(Opcode::kEnd, {Assembler::Delimiter(field, sized)});
}

/// { 1 inside } ** 0
inline void List(Image& image, auto inside) {
    const auto exit = image.code.NewLabel();
    image.code.Emit(Opcode::kRepAny, {Assembler::Exit(exit, false)});
    const auto body = image.code.BindNew();
    image.code.Emit(Opcode::kBit1);
    inside();
    image.code.Emit(Opcode::kLoop, {body});
    image.code.Bind(exit);
    image.code.Emit(Opcode::kBit0);
}

/// { 1 inside | 0 }
inline void Optional(Image& image, auto inside) {
    const auto second = image.code.NewLabel();
    const auto fail = image.code.NewLabel();
    const auto join = image.code.NewLabel();
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(second, false)});
    image.code.Emit(Opcode::kBit1);
    inside();
    image.code.Emit(Opcode::kJmp, {join});
    image.code.Bind(second);
    image.code.Emit(Opcode::kAlt, {Assembler::Branch(fail, true)});
    image.code.Emit(Opcode::kBit0);
    image.code.Emit(Opcode::kJmp, {join});
    image.code.Bind(fail);
    image.code.Emit(Opcode::kFail);
    image.code.Bind(join);
    image.code.Emit(Opcode::kPop);
}

/// In what the plan differs from the machine where a run over `count` bits at `start` may take so
/// many instructions; empty: in nothing.
inline std::string DifferenceWithin(std::uint64_t instructions, Image& image,
                                    const std::vector<std::uint8_t>& octets, std::int32_t start,
                                    std::int32_t count) {
    const bits::BitReader reader(octets.data(), static_cast<std::int64_t>(octets.size()));
    CsnMachine machine;
    CsnMachineInit(machine, image.Program(), 0, reader, start, count);
    machine.rootTag = kRoot;
    machine.instructionsLeft = instructions;
    bits::Outcome result = 0;
    return DifferenceOfPlan(machine, 0, result);
}

/// However few instructions a run may take, plan and machine end at the same one.
inline void ExpectSameLimits(Image& image, const std::string& bits) {
    for (std::uint64_t instructions = 0; instructions < 40; ++instructions) {
        EXPECT_EQ(DifferenceWithin(instructions, image, Octets(bits), 0, Count(bits)), "")
            << bits << " " << instructions;
    }
}

}  // namespace quorvane::csn::test
