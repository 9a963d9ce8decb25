#include "reflect/convert.h"

#include <algorithm>

#include "bits/bit_reader.h"
#include "reflect/record_values.h"

namespace quorvane::reflect {
namespace {

using bits::OctetsOf;

/// Copies `bits` bits to `octets`, whose unused low bits become 0.
void CopyBits(std::uint8_t* octets, const std::uint8_t* source, std::uint32_t bits) {
    bits::BitReader(source, OctetsOf(bits)).Copy(octets, 0, bits);
}

class TreeMaker {
  public:
    TreeMaker(const Catalogue& catalogue, bits::Arena& arena)
        : catalogue_(catalogue), tables_(catalogue.GetTables()), arena_(arena) {}

    TEDDataBase* Make(std::uint16_t type, const bits::Cell& cell) {
        const TypeRow& row = tables_.types[type];
        const TEDClassBase* descriptor = catalogue_.GetDescriptor(type);
        switch (row.kind) {
            case TypeKind::kInteger:
                return MakeNumber<TEDDataInteger, TEDClassInteger>(row, descriptor, cell);
            case TypeKind::kEnumerated:
                return MakeNumber<TEDDataEnumerated, TEDClassEnumerated>(row, descriptor, cell);
            case TypeKind::kBinary:
                return MakeBinary(row, static_cast<const TEDClassBinary*>(descriptor), cell);
            case TypeKind::kSequence:
                return MakeSequence(row, static_cast<const TEDClassSequence*>(descriptor), cell);
            case TypeKind::kStruct:
                return MakeStruct(row, static_cast<const TEDClassStruct*>(descriptor), cell);
            case TypeKind::kUnion:
                break;
        }
        return MakeUnion(row, static_cast<const TEDClassUnion*>(descriptor), cell);
    }

  private:
    template <typename Node, typename Descriptor>
    TEDDataBase* MakeNumber(const TypeRow& row, const TEDClassBase* descriptor,
                            const bits::Cell& cell) {
        const bits::Cell& held = NumberCell(row, cell);
        Node* node = new (arena_) Node(arena_, static_cast<const Descriptor*>(descriptor),
                                       static_cast<std::int32_t>(held.number));
        node->location = held.location;
        return node;
    }

    TEDDataBase* MakeBinary(const TypeRow& row, const TEDClassBinary* descriptor,
                            const bits::Cell& cell) {
        const std::uint32_t held = BitCount(cell);
        const std::uint32_t bits = BitCount(row, cell);
        const std::uint32_t unused = 8 * OctetsOf(bits) - bits;
        const std::uint8_t* octets = cell.octets;
        // The record's octets do unless they are too few or unused bits at their end are set.
        if (held < bits || (bits > 0 && (octets[OctetsOf(bits) - 1] & ~(0xFFU << unused)) != 0)) {
            auto* own = arena_.AllocateZeroed<std::uint8_t>(OctetsOf(bits));
            CopyBits(own, octets, std::min(held, bits));
            octets = own;
        }
        auto* node = new (arena_) TEDDataBinary(arena_, descriptor, octets, bits);
        node->location = cell.location;
        return node;
    }

    TEDDataBase* MakeSequence(const TypeRow& row, const TEDClassSequence* descriptor,
                              const bits::Cell& cell) {
        const std::uint32_t count = ItemCount(cell);
        auto* node = new (arena_) TEDDataSequence(arena_, descriptor, count);
        for (std::uint32_t index = 0; index < count; ++index) {
            node->Append(Make(row.first, cell.cells[index]));
        }
        return node;
    }

    TEDDataBase* MakeStruct(const TypeRow& row, const TEDClassStruct* descriptor,
                            const bits::Cell& cell) {
        auto* node = new (arena_) TEDDataStruct(arena_, kBare, descriptor);
        TEDDataBase** slots = node->GetSlots();
        const std::span<const ElementRow> elements = tables_.ElementsOf(row);
        for (std::size_t index = 0; index < elements.size(); ++index) {
            const bits::Cell& member = CellAt(cell.cells, index);
            if (member.present || !elements[index].optional) {
                slots[index] = Make(elements[index].type, member);
            }
        }
        return node;
    }

    TEDDataBase* MakeUnion(const TypeRow& row, const TEDClassUnion* descriptor,
                           const bits::Cell& cell) {
        const Choice shown = ChoiceOf(row, cell);
        TEDDataBase* choice = nullptr;
        if (row.count > 0) {
            choice = Make(tables_.ElementsOf(row)[shown.index].type, *shown.body);
        }
        return new (arena_) TEDDataUnion(arena_, descriptor, shown.index, choice);
    }

    const Catalogue& catalogue_;
    const TypeTables& tables_;
    bits::Arena& arena_;
};

class RecordFiller {
  public:
    RecordFiller(const Catalogue& catalogue, bits::Arena& arena)
        : catalogue_(catalogue), tables_(catalogue.GetTables()), arena_(arena) {}

    bool Fill(std::uint16_t type, bits::Cell& cell, const TEDDataBase& node) {
        if (node.GetClass() != catalogue_.GetDescriptor(type)) {
            return false;
        }
        FillAsMember(type, cell, node);
        return true;
    }

  private:
    void FillAsMember(std::uint16_t type, bits::Cell& cell, const TEDDataBase& node) {
        const TypeRow& row = tables_.types[type];
        const TypeKind kind = node.GetNodeKind();
        const bool isOfType = node.GetClass() == catalogue_.GetDescriptor(type);
        switch (row.kind) {
            case TypeKind::kInteger:
            case TypeKind::kEnumerated:
                if (kind == TypeKind::kInteger || kind == TypeKind::kEnumerated) {
                    FillNumber(row, cell, static_cast<const TEDDataInteger&>(node));
                }
                return;
            case TypeKind::kBinary:
                if (kind == TypeKind::kBinary) {
                    FillBinary(row, cell, static_cast<const TEDDataBinary&>(node));
                }
                return;
            case TypeKind::kSequence:
                if (isOfType) {
                    FillSequence(row, cell, static_cast<const TEDDataSequence&>(node));
                }
                return;
            case TypeKind::kStruct:
                if (isOfType) {
                    FillStruct(row, cell, static_cast<const TEDDataStruct&>(node));
                }
                return;
            case TypeKind::kUnion:
                if (isOfType) {
                    FillUnion(row, cell, static_cast<const TEDDataUnion&>(node));
                }
                return;
        }
    }

    static void FillNumber(const TypeRow& row, bits::Cell& cell, const TEDDataInteger& node) {
        const auto value = static_cast<std::uint32_t>(node.GetValue());
        if (row.size > 16) {
            cell.number = value;
        } else if (row.size > 8) {
            cell.number = value & 0xFFFFU;
        } else if (row.size > 0) {
            cell.number = value & 0xFFU;
        }
    }

    void FillBinary(const TypeRow& row, bits::Cell& cell, const TEDDataBinary& node) {
        const std::uint32_t bits = row.fixed ? row.size : node.GetBitCount();
        cell.octets = bits == 0 ? nullptr : arena_.AllocateZeroed<std::uint8_t>(OctetsOf(bits));
        CopyBits(cell.octets, node.GetData(), std::min(bits, node.GetBitCount()));
        cell.number = bits;
    }

    void FillSequence(const TypeRow& row, bits::Cell& cell, const TEDDataSequence& node) {
        for (std::uint32_t index = 0; index < node.GetCount(); ++index) {
            // Each item raises the count by one, also that of a record in use.
            const auto size = static_cast<std::int32_t>(cell.number + 1);
            if (bits::SetSize(arena_, cell, size, row.size).Failed() && index >= cell.number) {
                return;  // there is no room for this item and all behind it
            }
            if (node.GetItem(index) != nullptr) {
                FillAsMember(row.first, cell.cells[index], *node.GetItem(index));
            }
        }
    }

    void FillStruct(const TypeRow& row, bits::Cell& cell, const TEDDataStruct& node) {
        const std::span<const ElementRow> elements = tables_.ElementsOf(row);
        bits::Cell* cells = bits::StructCells(arena_, cell, row.count);
        for (std::uint32_t index = 0; index < row.count; ++index) {
            const TEDDataBase* member = node.GetMember(index);
            if (elements[index].optional) {
                cells[index].present = member != nullptr;
            }
            if (member != nullptr) {
                FillAsMember(elements[index].type, cells[index], *member);
            }
        }
    }

    void FillUnion(const TypeRow& row, bits::Cell& cell, const TEDDataUnion& node) {
        if (node.GetChoiceIndex() >= row.count) {
            return;
        }
        const std::uint32_t tag = node.GetChoiceIndex() + 1;
        bits::Cell& body = bits::ChooseAlternative(arena_, cell, tag);
        if (node.GetChoice() != nullptr) {
            FillAsMember(tables_.ElementsOf(row)[tag - 1].type, body, *node.GetChoice());
        }
    }

    const Catalogue& catalogue_;
    const TypeTables& tables_;
    bits::Arena& arena_;
};

class RecordComparer {
  public:
    RecordComparer(const TypeTables& tables, bool compareLocations)
        : tables_(tables), compareLocations_(compareLocations) {}

    /// One for which numbers never set in the first record equal any, and that notes in `path`
    /// where the records differ.
    RecordComparer(const TypeTables& tables, std::string& path) : tables_(tables), path_(&path) {}

    [[nodiscard]] bool Equal(std::uint16_t type, const bits::Cell& a, const bits::Cell& b) const {
        const TypeRow& row = tables_.types[type];
        switch (row.kind) {
            case TypeKind::kInteger:
            case TypeKind::kEnumerated:
                return row.size == 0 || (path_ != nullptr && !a.reached && a.number == 0) ||
                       (a.number == b.number && SameLocation(a, b));
            case TypeKind::kBinary:
                return SameBits(row, a, b) && SameLocation(a, b);
            case TypeKind::kSequence:
                return SameItems(row, a, b);
            case TypeKind::kStruct:
                return SameMembers(row, a, b);
            case TypeKind::kUnion:
                break;
        }
        return SameChoice(row, a, b);
    }

  private:
    [[nodiscard]] bool SameLocation(const bits::Cell& a, const bits::Cell& b) const {
        return !compareLocations_ || a.location == b.location;
    }

    static bool BitAt(const bits::Cell& cell, std::uint32_t bit) {
        return bit < BitCount(cell) && (cell.octets[bit / 8] & 0x80U >> bit % 8) != 0;
    }

    static bool SameBits(const TypeRow& row, const bits::Cell& a, const bits::Cell& b) {
        const std::uint32_t bits = BitCount(row, a);
        if (!row.fixed && bits != BitCount(b)) {
            return false;
        }
        for (std::uint32_t bit = 0; bit < bits; ++bit) {
            if (BitAt(a, bit) != BitAt(b, bit)) {
                return false;
            }
        }
        return true;
    }

    [[nodiscard]] bool SameItems(const TypeRow& row, const bits::Cell& a,
                                 const bits::Cell& b) const {
        if (ItemCount(a) != ItemCount(b)) {
            return false;
        }
        for (std::uint32_t index = 0; index < ItemCount(a); ++index) {
            if (!Equal(row.first, a.cells[index], b.cells[index])) {
                return DiffersAt("[" + std::to_string(index) + "]");
            }
        }
        return true;
    }

    [[nodiscard]] bool SameMembers(const TypeRow& row, const bits::Cell& a,
                                   const bits::Cell& b) const {
        const std::span<const ElementRow> elements = tables_.ElementsOf(row);
        for (std::size_t index = 0; index < elements.size(); ++index) {
            const bits::Cell& memberOfA = CellAt(a.cells, index);
            const bits::Cell& memberOfB = CellAt(b.cells, index);
            if (elements[index].optional && memberOfA.present != memberOfB.present) {
                return DiffersAt(tables_.NameOf(elements[index]));
            }
            if (elements[index].optional && !memberOfA.present) {
                continue;
            }
            if (!Equal(elements[index].type, memberOfA, memberOfB)) {
                return DiffersAt(tables_.NameOf(elements[index]));
            }
        }
        return true;
    }

    [[nodiscard]] bool SameChoice(const TypeRow& row, const bits::Cell& a,
                                  const bits::Cell& b) const {
        if (a.number != b.number) {
            return false;
        }
        if (!IsTagOf(row, a.number)) {
            return true;
        }
        const ElementRow& chosen = tables_.ElementsOf(row)[a.number - 1];
        return Equal(chosen.type, CellAt(a.cells, 0), CellAt(b.cells, 0)) ||
               DiffersAt(tables_.NameOf(chosen));
    }

    /// False, with a step put in front of the path.
    [[nodiscard]] bool DiffersAt(std::string_view step) const {
        if (path_ != nullptr) {
            if (!path_->empty() && !path_->starts_with('[')) {
                path_->insert(0, ".");
            }
            path_->insert(0, step);
        }
        return false;
    }

    const TypeTables& tables_;
    bool compareLocations_ = false;
    std::string* path_ = nullptr;
};

}  // namespace

TEDDataBase* ToTree(const Catalogue& catalogue, std::uint16_t type, const bits::Cell& cell,
                    bits::Arena& arena) {
    return TreeMaker(catalogue, arena).Make(type, cell);
}

TEDDataUnion* ToSet(const Catalogue& catalogue, std::uint16_t setType, std::int32_t tag,
                    const bits::Cell& body, bits::Arena& arena) {
    const TypeRow& row = catalogue.GetTables().types[setType];
    if (!IsTagOf(row, static_cast<std::uint32_t>(tag))) {
        return nullptr;
    }
    const std::uint32_t index = static_cast<std::uint32_t>(tag) - 1;
    const std::uint16_t message = catalogue.GetTables().ElementsOf(row)[index].type;
    return new (arena)
        TEDDataUnion(arena, static_cast<const TEDClassUnion*>(catalogue.GetDescriptor(setType)),
                     index, ToTree(catalogue, message, body, arena));
}

bool FromTree(const Catalogue& catalogue, std::uint16_t type, bits::Cell& cell,
              const TEDDataBase& node, bits::Arena& arena) {
    return RecordFiller(catalogue, arena).Fill(type, cell, node);
}

bool FromSet(const Catalogue& catalogue, std::uint16_t setType, std::int32_t& tag, bits::Cell& body,
             const TEDDataBase& node, bits::Arena& arena) {
    const TEDDataBase* message = &node;
    if (node.GetClass() == catalogue.GetDescriptor(setType)) {
        message = static_cast<const TEDDataUnion&>(node).GetChoice();
    }
    if (message == nullptr) {
        return false;
    }
    const TypeTables& tables = catalogue.GetTables();
    const std::span<const ElementRow> messages = tables.ElementsOf(tables.types[setType]);
    for (std::size_t index = 0; index < messages.size(); ++index) {
        if (message->GetClass() != catalogue.GetDescriptor(messages[index].type)) {
            continue;
        }
        const auto found = static_cast<std::int32_t>(index + 1);
        if (tag != found) {
            tag = found;
            body = bits::Cell{};
        }
        return FromTree(catalogue, messages[index].type, body, *message, arena);
    }
    return false;
}

bool RecordsEqual(const TypeTables& tables, std::uint16_t type, const bits::Cell& a,
                  const bits::Cell& b, bool compareLocations) {
    return RecordComparer(tables, compareLocations).Equal(type, a, b);
}

bool RecordsAgree(const TypeTables& tables, std::uint16_t type, const bits::Cell& set,
                  const bits::Cell& read, std::string& path) {
    path.clear();
    return RecordComparer(tables, path).Equal(type, set, read);
}

}  // namespace quorvane::reflect
