#include "tools/message_diff.h"

#include <algorithm>
#include <optional>

#include "facade/utf8.h"
#include "tools/function_name.h"
#include "tools/hex.h"

namespace quorvane::tool {
namespace {

bool HasChildren(FieldKind kind) {
    return kind == FieldKind::kStruct || kind == FieldKind::kUnion || kind == FieldKind::kSequence;
}

bool IsThere(const Field& field) {
    return field && field.Status() != FieldStatus::kAbsent;
}

/// What a field without children holds.
std::string ContentsOf(const Field& field) {
    std::string contents;
    if (field.Kind() == FieldKind::kBits) {
        const std::uint32_t bits = field.BitCount();
        contents = ToHex(field.Octets(), " ");
        if (bits == 0 || bits % 8 != 0) {
            contents.append(bits == 0 ? "" : " ").append("(" + std::to_string(bits) + " bits)");
        }
    } else if (field.Words().empty()) {
        contents = std::to_string(field.Number());
    } else {
        facade::AssignAsUtf8(contents, field.Words());
        contents += " (" + std::to_string(field.Number()) + ")";
    }
    switch (field.Status()) {
        case FieldStatus::kDefault:
            return contents + ", by default";
        case FieldStatus::kRefused:
            return contents + ", refused";
        case FieldStatus::kDecoded:
        case FieldStatus::kAbsent:
            break;
    }
    return contents;
}

class Comparer {
  public:
    void CompareHeads(const Message& before, const Message& after) {
        const auto nameOf = [](const Message& message) {
            const std::optional<Decoding> decoding = message.GetDecoding();
            return decoding ? std::string(InfoOf(*decoding).name) : std::string("none");
        };
        CompareTexts("decoding", nameOf(before), nameOf(after));
        CompareTexts("type", std::string(before.TypeName()), std::string(after.TypeName()));
        CompareTexts("code", std::to_string(before.Code()), std::to_string(after.Code()));
    }

    void Compare(const Field& before, const Field& after) {
        if (!IsThere(before) || !IsThere(after) || before.Kind() != after.Kind()) {
            List("- ", before);
            List("+ ", after);
        } else if (!HasChildren(before.Kind())) {
            CompareTexts(path_, ContentsOf(before), ContentsOf(after));
        } else if (before.Kind() == FieldKind::kSequence) {
            CompareItems(before, after);
        } else {
            CompareMembers(before, after);
        }
    }

    [[nodiscard]] std::string TakeLines() { return std::move(lines_); }

  private:
    void CompareTexts(std::string_view what, const std::string& before, const std::string& after) {
        if (before != after) {
            lines_.append(what).append(": ").append(before).append(" -> ").append(after) += '\n';
        }
    }

    void CompareItems(const Field& before, const Field& after) {
        for (std::size_t index = 0; index < std::max(before.size(), after.size()); ++index) {
            Inside("[" + std::to_string(index) + "]",
                   [&] { Compare(before[index], after[index]); });
        }
    }

    void CompareMembers(const Field& before, const Field& after) {
        for (const Field member : before) {
            InsideOf(member, [&] { Compare(member, MemberOf(after, member.Name())); });
        }
        for (const Field member : after) {
            if (!MemberOf(before, member.Name())) {
                InsideOf(member, [&] { List("+ ", member); });
            }
        }
    }

    static Field MemberOf(const Field& around, std::string_view name) {
        const auto found = std::find_if(around.begin(), around.end(),
                                        [&](const Field& child) { return child.Name() == name; });
        return found == around.end() ? Field() : *found;
    }

    /// All that a field holds, in lines of their own.
    void List(std::string_view mark, const Field& field) {
        if (!IsThere(field)) {
            return;
        }
        if (!HasChildren(field.Kind())) {
            lines_.append(mark).append(path_).append(": ").append(ContentsOf(field)) += '\n';
        } else if (field.empty()) {
            lines_.append(mark).append(path_) += '\n';
        }
        std::size_t index = 0;
        for (const Field child : field) {
            if (field.Kind() == FieldKind::kSequence) {
                Inside("[" + std::to_string(index++) + "]", [&] { List(mark, child); });
            } else {
                InsideOf(child, [&] { List(mark, child); });
            }
        }
    }

    template <typename Do>
    void Inside(std::string_view step, const Do& action) {
        const std::size_t before = path_.size();
        path_ += step;
        action();
        path_.resize(before);
    }
    template <typename Do>
    void InsideOf(const Field& member, const Do& action) {
        Inside((path_.empty() ? "" : ".") + std::string(member.Name()), action);
    }

    std::string path_;
    std::string lines_;
};

}  // namespace

std::string DifferencesOf(const Message& before, const Message& after) {
    Comparer comparer;
    comparer.CompareHeads(before, after);
    comparer.Compare(before.Root(), after.Root());
    return comparer.TakeLines();
}

}  // namespace quorvane::tool
