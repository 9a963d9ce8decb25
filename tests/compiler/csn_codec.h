#pragma once

// A description under test, with what decoding stores in a record and what encoding makes of that.

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "bits/arena.h"
#include "bits/record.h"
#include "compiler/model.h"
#include "csn/csn_record.h"
#include "reference/csn_grammar.h"

namespace quorvane::compiler {

class CsnCodec {
  public:
    explicit CsnCodec(const std::string& rules) : grammar_(rules) {}

    [[nodiscard]] const std::string& Errors() const { return grammar_.Errors(); }

    /// The bits taken in decoding `bits` (blanks left out), then the record: "12: a=1 l=[1 2]". Bit
    /// strings stand in quotes, members that are absent are left out.
    std::string Decode(std::string bits, std::size_t structure = 0) {
        std::erase(bits, ' ');
        octets_ = reference::OctetsOf(bits);
        octets_.resize(octets_.size() + 1);
        const bits::BitReader reader(octets_.data(), static_cast<std::int64_t>(octets_.size()));
        record_ = {};
        const bits::Outcome result =
            csn::DecodeCsn(grammar_.Structure(structure), reader, arena_, 0,
                           static_cast<std::int32_t>(bits.size()), record_);
        return (result.Failed() ? "failed" : std::to_string(result.Bits())) + ":" +
               Members(*grammar_.Types(structure).type, record_);
    }

    /// What encoding writes of the record that was decoded last.
    std::string Encode(std::size_t structure = 0) {
        std::vector<std::uint8_t> octets(64, 0xFF);
        bits::BitWriter writer(octets.data(), 64);
        const bits::Outcome result =
            csn::EncodeCsn(grammar_.Structure(structure), writer, 0, record_);
        return result.Failed()
                   ? "not written"
                   : reference::BitsOf(octets, static_cast<std::int32_t>(result.Bits()));
    }

    /// The place of the member (item, if it is a sequence) of the structure.
    bits::Cell& Member(std::size_t element) { return record_.cells[element]; }

  private:
    static std::string Members(const TypeModel& type, const bits::Cell& cell) {
        std::string text;
        for (std::size_t index = 0; index < type.elements.size(); ++index) {
            const ElementModel& element = type.elements[index];
            const bits::Cell& member = cell.cells[index];
            if (!element.optional || member.present) {
                text += " " + element.name + "=" + Value(*element.type, member);
            }
        }
        return text;
    }

    static std::string Value(const TypeModel& type, const bits::Cell& cell) {
        std::string text;
        switch (type.kind) {
            case TypeModel::Kind::kBinary:
                for (std::uint32_t bit = 0; bit < cell.number; ++bit) {
                    text += (cell.octets[bit / 8] & 0x80U >> bit % 8) != 0 ? '1' : '0';
                }
                return "'" + text + "'";
            case TypeModel::Kind::kSequence:
                for (std::uint32_t item = 0; item < cell.number; ++item) {
                    text += (item == 0 ? "" : " ") + Value(*type.item, cell.cells[item]);
                }
                return "[" + text + "]";
            case TypeModel::Kind::kStruct:
                return "{" + (cell.cells == nullptr ? "" : Members(type, cell)) + " }";
            default:
                return std::to_string(cell.number);
        }
    }

    reference::Grammar grammar_;
    bits::Arena arena_;
    std::vector<std::uint8_t> octets_;
    bits::Cell record_{};
};

}  // namespace quorvane::compiler
