// Traffic flow template, TS 24.008, 10.5.6.12.

#include "families/common/traffic_flow_template.h"

#include <algorithm>

#include "families/common/elements.h"
#include "iecodec/value_decoder.h"
#include "iecodec/value_encoder.h"

namespace quorvane::families {

using iecodec::SpecialElement;

namespace {

using namespace iecodec;

using bits::Cell;
using bits::Outcome;

// Members of the types, in order.
constexpr std::size_t kOperation = 0;
constexpr std::size_t kFilters = 1;
constexpr std::size_t kParameters = 2;
constexpr std::size_t kFilterId = 0;
constexpr std::size_t kDirection = 1;
constexpr std::size_t kPrecedence = 2;
constexpr std::size_t kComponents = 3;
constexpr std::uint32_t kFilterMembers = 4;
constexpr std::uint32_t kPairMembers = 2;  // a component or a parameter: identifier and bits

constexpr std::uint32_t kMostFilters = 8;
constexpr std::uint32_t kMostComponents = 7;
constexpr std::uint32_t kMostParameters = 16;
constexpr std::uint32_t kMostBits = 256;  // of a component's or a parameter's contents

/// The size of a component in bits behind its type octet; 0 for a type that isn't known.
std::int32_t ComponentBits(std::uint32_t type) {
    const auto found = std::find_if(kPacketFilterComponents.begin(), kPacketFilterComponents.end(),
                                    [&](const auto& component) { return component.type == type; });
    return found == kPacketFilterComponents.end() ? 0 : found->bits;
}

class TemplateDecoder {
  public:
    TemplateDecoder(DecodeContext& context, std::int64_t position, std::int64_t length)
        : context_(context), cursor_(position), end_(position + length), length_(length) {}

    /// The result counts the lengths that the template declares, whatever the walk over the
    /// components made of them.
    std::int64_t Run(Cell* members) {
        const std::uint32_t operation = Read(3);
        const bool hasParameters = Read(1) != 0;
        const auto filters = static_cast<std::int32_t>(Read(4));
        members[kOperation].number = operation;
        // Too many filters leave the sequence empty.
        static_cast<void>(bits::SetSize(context_.arena, members[kFilters], filters, kMostFilters));
        for (std::uint32_t index = 0; index < members[kFilters].number; ++index) {
            DecodeFilter(members[kFilters].cells[index], FormOf(operation));
        }
        while (hasParameters && declared_ < length_) {
            DecodeParameter(members[kParameters]);
        }
        return declared_;
    }

  private:
    std::uint32_t Read(std::int32_t width) {
        const std::uint32_t value = context_.reader.Read(cursor_, width);
        cursor_ += width;
        return value;
    }

    void DecodeFilter(Cell& cell, FilterForm form) {
        if (form == FilterForm::kNothing) {
            return;
        }
        Cell* filter = bits::StructCells(context_.arena, cell, kFilterMembers);
        Read(2);
        filter[kDirection].number = Read(2);
        filter[kFilterId].number = Read(4);
        declared_ += 8;
        if (form == FilterForm::kWhole) {
            filter[kPrecedence].number = Read(8);
            const std::int64_t contents = 8 * std::int64_t{Read(8)};
            declared_ += 16 + contents;
            DecodeComponents(filter[kComponents], contents);
        }
    }

    /// Ends where the components meet the length exactly; if they never do, at the most components
    /// or at the end of the element.
    void DecodeComponents(Cell& components, std::int64_t left) {
        components.number = 0;
        while (left != 0 && components.number < kMostComponents && (left > 0 || cursor_ < end_)) {
            const std::uint32_t type = Read(8);
            const std::int32_t size = ComponentBits(type);
            if (size > 0) {
                StorePair(components, kMostComponents, type, size);
                cursor_ += size;
            }
            left -= 8 + size;
        }
    }

    /// Each parameter raises the count by two: the sequence shows as many empty items behind the
    /// filled ones. At the most items nothing more is stored.
    void DecodeParameter(Cell& parameters) {
        const std::uint32_t identifier = Read(8);
        const std::int64_t size = 8 * std::int64_t{Read(8)};
        if (parameters.number < kMostParameters) {
            const std::uint32_t shown = parameters.number + 2;
            parameters.number = parameters.number / 2;
            StorePair(parameters, kMostParameters, identifier, size);
            static_cast<void>(bits::SetSize(context_.arena, parameters,
                                            static_cast<std::int32_t>(shown), kMostParameters));
        }
        cursor_ += size;
        declared_ += 16 + size;
    }

    /// Appends an item of an identifier and `size` bits at the cursor.
    void StorePair(Cell& sequence, std::uint32_t bound, std::uint32_t identifier,
                   std::int64_t size) {
        static_cast<void>(bits::SetSize(context_.arena, sequence,
                                        static_cast<std::int32_t>(sequence.number + 1), bound));
        Cell* pair =
            bits::StructCells(context_.arena, sequence.cells[sequence.number - 1], kPairMembers);
        pair[0].number = identifier;
        bits::StoreBinary(context_.arena, pair[1], context_.reader, cursor_, size, kMostBits);
        pair[1].location = 0;
    }

    DecodeContext& context_;
    std::int64_t cursor_;
    std::int64_t end_;
    std::int64_t length_;
    std::int64_t declared_ = 8;
};

Outcome DecodeTemplate(DecodeContext& context, const ValueRow& row, std::int64_t position,
                       Cell& cell, std::int64_t length) {
    Cell* members = bits::StructCells(context.arena, cell, row.members);
    return TemplateDecoder(context, position, length).Run(members);
}

class TemplateEncoder {
  public:
    TemplateEncoder(EncodeContext& context, std::int64_t position)
        : context_(context), start_(position), cursor_(position) {}

    std::int64_t Run(const Cell& cell) {
        const std::uint32_t operation = MemberOf(cell, kOperation).number;
        const Cell& filters = MemberOf(cell, kFilters);
        const Cell& parameters = MemberOf(cell, kParameters);
        Write(operation, 3);
        Write(parameters.number > 0 ? 1 : 0, 1);
        Write(filters.number, 4);
        for (std::uint32_t index = 0; index < filters.number; ++index) {
            EncodeFilter(filters.cells[index], FormOf(operation));
        }
        // The other half of the items are those that decoding adds.
        for (std::uint32_t index = 0; index < (parameters.number + 1) / 2; ++index) {
            const Cell& contents = MemberOf(parameters.cells[index], 1);
            Write(MemberOf(parameters.cells[index], 0).number, 8);
            Write(contents.number / 8, 8);
            WriteBits(contents, contents.number / 8 * 8);
        }
        return cursor_ - start_;
    }

  private:
    void Write(std::uint32_t value, std::int32_t width) {
        context_.writer.Write(cursor_, value, width);
        cursor_ += width;
    }

    /// Writes `count` bits of a binary, zeros behind its own.
    void WriteBits(const Cell& binary, std::uint32_t count) {
        const std::uint32_t held = std::min(binary.number, count);
        context_.writer.Copy(cursor_, binary.octets, held);
        cursor_ += held;
        for (std::uint32_t written = held; written < count; ++written) {
            Write(0, 1);
        }
    }

    void EncodeFilter(const Cell& filter, FilterForm form) {
        if (form == FilterForm::kNothing) {
            return;
        }
        Write(0, 2);
        Write(MemberOf(filter, kDirection).number, 2);
        Write(MemberOf(filter, kFilterId).number, 4);
        if (form == FilterForm::kWhole) {
            Write(MemberOf(filter, kPrecedence).number, 8);
            const std::int64_t lengthAt = cursor_;
            cursor_ += 8;
            const Cell& components = MemberOf(filter, kComponents);
            for (std::uint32_t index = 0; index < components.number; ++index) {
                const std::uint32_t type = MemberOf(components.cells[index], 0).number;
                Write(type, 8);
                WriteBits(MemberOf(components.cells[index], 1),
                          static_cast<std::uint32_t>(ComponentBits(type)));
            }
            context_.writer.Write(lengthAt,
                                  static_cast<std::uint32_t>((cursor_ - lengthAt) / 8 - 1), 8);
        }
    }

    EncodeContext& context_;
    std::int64_t start_;
    std::int64_t cursor_;
};

Outcome EncodeTemplate(EncodeContext& context, const ValueRow& /*row*/, std::int64_t position,
                       const Cell& cell) {
    return TemplateEncoder(context, position).Run(cell);
}

}  // namespace

const SpecialElement kTrafficFlowTemplate{"kTrafficFlowTemplate", DecodeTemplate, EncodeTemplate};

}  // namespace quorvane::families
