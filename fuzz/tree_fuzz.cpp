// Trees to records: a message's tree is changed in every way that its interface allows and turned
// into a record again, a fresh one and the message's own. No record is overrun, and the outcome is
// one like any other: it prints, encodes and goes back to a tree.
//
// Input: the message set; how many octets the message has, two octets; the message; the changes.

#include <algorithm>
#include <memory>
#include <string>

#include "fuzz_support.h"
#include "message_codec.h"
#include "reach.h"
#include "reflect/convert.h"
#include "reflect/render.h"

namespace quorvane {
namespace {

using fuzz::Input;
using fuzz::Require;
using reflect::TEDDataBase;

/// Changes a tree as the input says.
class TreeChanger {
  public:
    TreeChanger(const reflect::Catalogue& catalogue, Input& input)
        : catalogue_(catalogue), input_(input) {}

    void Change(TEDDataBase& node) {
        if (input_.Empty()) {
            return;
        }
        switch (node.GetNodeKind()) {
            case reflect::TypeKind::kInteger:
            case reflect::TypeKind::kEnumerated:
                return;
            case reflect::TypeKind::kBinary:
                return ChangeBinary(static_cast<reflect::TEDDataBinary&>(node));
            case reflect::TypeKind::kSequence:
                return ChangeSequence(static_cast<reflect::TEDDataSequence&>(node));
            case reflect::TypeKind::kStruct:
                return ChangeStruct(static_cast<reflect::TEDDataStruct&>(node));
            case reflect::TypeKind::kUnion:
                return ChangeUnion(static_cast<reflect::TEDDataUnion&>(node));
        }
    }

  private:
    /// A node for a place that is meant for `type`: null, one of that type, or of any other.
    TEDDataBase* NewNode(const reflect::TEDClassBase& type) {
        switch (input_.Below(6)) {
            case 0:
                return nullptr;
            case 1: {
                const auto types = catalogue_.GetTables().types.size();
                const auto other = static_cast<std::uint16_t>(input_.Below(types));
                return catalogue_.GetDescriptor(other)->NewData();
            }
            case 2:
                return NewNumber(type);
            default:
                return type.NewData();
        }
    }

    TEDDataBase* NewNumber(const reflect::TEDClassBase& type) {
        const auto value = static_cast<std::int32_t>(input_.Number());
        if (type.IsKind(reflect::kIntegerKind)) {
            return new reflect::TEDDataInteger(static_cast<const reflect::TEDClassInteger*>(&type),
                                               value);
        }
        if (type.IsKind(reflect::kEnumeratedKind)) {
            return new reflect::TEDDataEnumerated(
                static_cast<const reflect::TEDClassEnumerated*>(&type), value);
        }
        // A number without a type, in a place that is not meant for one.
        return new reflect::TEDDataInteger(static_cast<const reflect::TEDClassInteger*>(nullptr),
                                           value);
    }

    void ChangeBinary(reflect::TEDDataBinary& node) {
        if (input_.Below(4) == 0) {
            return node.ClearBits();
        }
        const std::size_t bits = input_.Below(20000);
        const fuzz::ExactOctets octets(input_.Take((bits + 7) / 8), (bits + 7) / 8);
        node.SetBits(octets.Data(), static_cast<std::uint32_t>(bits));
    }

    void ChangeSequence(reflect::TEDDataSequence& node) {
        const auto* type = static_cast<const reflect::TEDClassSequence*>(node.GetClass());
        if (type != nullptr) {
            for (std::size_t count = Few(); count > 0; --count) {
                node.Append(NewNode(*type->GetItemType().GetTarget()));
            }
            if (input_.Below(8) == 7) {
                constexpr std::uint32_t kBeyond = 3;
                while (node.GetCount() < std::min(type->GetBound(), 300U) + kBeyond) {
                    node.Append(type->GetItemType().NewData());
                }
            }
        }
        for (std::uint32_t index = 0; index < node.GetCount(); ++index) {
            if (node.GetItem(index) != nullptr && input_.Below(4) != 0) {
                Change(*node.GetItem(index));
            }
        }
    }

    void ChangeStruct(reflect::TEDDataStruct& node) {
        const auto* type = static_cast<const reflect::TEDClassStruct*>(node.GetClass());
        if (type == nullptr || node.GetSlots() == nullptr) {
            return;
        }
        for (std::uint32_t index = 0; index < type->GetElementCount(); ++index) {
            const std::size_t choice = input_.Below(4);
            if (choice == 1) {
                node.SetMember(index, NewNode(*type->GetElement(index)->GetType().GetTarget()));
            } else if (choice == 2 && node.HasMember(index)) {
                // Copies lack what clones lack: descriptors, members.
                node.SetMember(index, node.GetMember(index)->Clone());
            } else if (choice == 3 && node.HasMember(index)) {
                Change(*node.GetMember(index));
            }
        }
    }

    void ChangeUnion(reflect::TEDDataUnion& node) {
        const auto* type = static_cast<const reflect::TEDClassUnion*>(node.GetClass());
        if (type != nullptr && input_.Below(2) == 0) {
            const std::size_t choices = type->GetElementCount();
            const auto index = static_cast<std::uint32_t>(input_.Below(choices + 2));
            const auto meant =
                static_cast<std::uint32_t>(std::min<std::size_t>(index, choices - 1));
            node.SetChoice(index, NewNode(*type->GetElement(meant)->GetType().GetTarget()));
        }
        if (node.GetChoice() != nullptr) {
            Change(*node.GetChoice());
        }
    }

    /// Mostly none.
    std::size_t Few() { return std::max<std::size_t>(input_.Below(8), 5) - 5; }

    const reflect::Catalogue& catalogue_;
    Input& input_;
};

std::string Text(const fuzz::SetOfFamily& set, std::uint16_t type, const bits::Cell& body,
                 bits::Arena& arena) {
    reflect::TextBuffer text;
    reflect::ToTree(*set.catalogue, type, body, arena)->Print(text, 0);
    reflect::TextBuffer ofRecord;
    reflect::AppendText(ofRecord, set.family->types, type, body);
    fuzz::RequireEqual(std::string(text.View()), std::string(ofRecord.View()),
                       "a tree prints another text than its record");
    return std::string(text.View());
}

/// The text without locations, which a tree does not give back.
std::string WithoutLocations(std::string text) {
    for (std::size_t at = text.find("LOC:["); at != std::string::npos;
         at = text.find("LOC:[", at)) {
        text.erase(at, text.find("] ", at) + 2 - at);
    }
    return text;
}

/// The record of the tree of a record.
bits::Cell Copy(const fuzz::SetOfFamily& set, std::uint16_t type, const bits::Cell& body,
                bits::Arena& arena) {
    const TEDDataBase* tree = reflect::ToTree(*set.catalogue, type, body, arena);
    bits::Cell copy{};
    Require(reflect::FromTree(*set.catalogue, type, copy, *tree, arena),
            "a tree does not go back to the record that it is of");
    return copy;
}

/// Takes a record through all that can be done with it.
void UseRecord(const fuzz::SetOfFamily& set, const iecodec::MessageContainer& container,
               bits::Arena& arena) {
    const std::uint16_t type = set.MessageType(container.tag);
    const bits::Cell copy = Copy(set, type, container.body, arena);
    // A union without a choice has the first one in the copy; from there on nothing changes.
    const bits::Cell again = Copy(set, type, copy, arena);
    Require(reflect::RecordsEqual(set.family->types, type, copy, again, true),
            "a tree gives another record than the one that it is of");
    fuzz::RequireEqual(WithoutLocations(Text(set, type, container.body, arena)),
                       Text(set, type, copy, arena), "a tree's record gives another text");
    for (const std::size_t room : {std::size_t{65536}, std::size_t{16}}) {
        const fuzz::Encoded encoded = fuzz::Encode(set, container, room);
        const fuzz::Encoded checked = fuzz::Encode(set, container, room, true);
        Require(checked.result.Failed() || !encoded.result.Failed(),
                "what passes the checks is not written without them");
        for (const fuzz::Encoded* written : {&encoded, &checked}) {
            if (written->Clean()) {
                static_cast<void>(
                    fuzz::Decode(set, written->octets, arena, written->result.Bits()));
            }
        }
    }
}

void CheckTree(const fuzz::SetOfFamily& set, fuzz::Decoded& decoded, Input& input,
               bits::Arena& arena) {
    const auto tag = static_cast<std::int32_t>(decoded.container.tag);
    // Its nodes are the arena's, but those that the changes bring are not: they go with the root.
    const std::unique_ptr<TEDDataBase> root(
        reflect::ToSet(*set.catalogue, set.set->type, tag, decoded.container.body, arena));
    TreeChanger(*set.catalogue, input).Change(*root);

    iecodec::MessageContainer fresh;
    std::int32_t found = 0;
    if (reflect::FromSet(*set.catalogue, set.set->type, found, fresh.body, *root, arena)) {
        fresh.tag = static_cast<std::uint32_t>(found);
        UseRecord(set, fresh, arena);
    }
    found = tag;
    if (reflect::FromSet(*set.catalogue, set.set->type, found, decoded.container.body, *root,
                         arena)) {
        decoded.container.tag = static_cast<std::uint32_t>(found);
        UseRecord(set, decoded.container, arena);
    }
}

}  // namespace
}  // namespace quorvane

int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
    using namespace quorvane;
    Input input(octets, size);
    const fuzz::SetOfFamily& set = fuzz::AllSets()[input.Below(fuzz::AllSets().size())];
    bits::Arena arena;
    const std::size_t length = input.Number(2);
    fuzz::Decoded decoded = fuzz::Decode(set, input.Take(length), arena);
    fuzz::ReachOfThisRun().NoteMessage(*set.family, *set.set, decoded.container);
    if (decoded.container.tag != 0 && set.set->type != iecodec::kNone) {
        CheckTree(set, decoded, input, arena);
    }
    return 0;
}
