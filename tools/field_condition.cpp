#include "tools/field_condition.h"

#include <algorithm>
#include <charconv>
#include <set>

#include "tools/commands.h"
#include "tools/edit_distance.h"
#include "tools/hex.h"

namespace quorvane::tool {
namespace {

std::optional<std::uint32_t> NumberOf(std::string_view text) {
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    text.remove_prefix(isHex ? 2 : 0);
    std::uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [parsedEnd, status] = std::from_chars(text.data(), end, number, isHex ? 16 : 10);
    return status == std::errc() && parsedEnd == end ? std::optional(number) : std::nullopt;
}

/// Visits all members below `type`. Named types that were seen are passed over; the others belong
/// to one member each.
template <typename Visitor>
void VisitMembers(Type type, std::set<std::string_view>& seen, const Visitor& visitor) {
    if (type.Kind() == FieldKind::kSequence) {
        return VisitMembers(type.ItemType(), seen, visitor);
    }
    if (!type.Name().empty() && !seen.insert(type.Name()).second) {
        return;
    }
    for (std::size_t index = 0; index < type.MemberCount(); ++index) {
        const TypeMember member = type.Member(index);
        visitor(member);
        VisitMembers(member.type, seen, visitor);
    }
}

/// Visits all members of all messages.
template <typename Visitor>
void VisitMembers(const Visitor& visitor) {
    for (const DecodingInfo& info : Decodings()) {
        std::set<std::string_view> seen;
        for (std::size_t index = 0; index < MessageTypes::Count(info.decoding); ++index) {
            VisitMembers(MessageTypes::At(info.decoding, index), seen, visitor);
        }
    }
}

std::set<std::string_view> AllNames() {
    std::set<std::string_view> names;
    VisitMembers([&](const TypeMember& member) { names.insert(member.name); });
    return names;
}

}  // namespace

FieldCondition::FieldCondition(const std::string& text) {
    const std::size_t sign = text.find('=');
    std::string_view path = std::string_view(text).substr(0, sign);
    if (sign != std::string::npos) {
        const bool isNot = path.ends_with('!');
        path.remove_suffix(isNot ? 1 : 0);
        relation_ = isNot ? Relation::kIsNot : Relation::kIs;
        value_ = text.substr(sign + 1);
        number_ = NumberOf(value_);
        if (value_.empty()) {
            throw UsageError("--where " + text + ": a value was expected behind =");
        }
    }
    const std::set<std::string_view> names = AllNames();
    while (true) {
        const std::string_view name = path.substr(0, path.find('.'));
        if (!names.contains(name)) {
            throw UsageError("--where " + text + ": no message has a field '" + std::string(name) +
                             "'" + NearestWords(name, names) +
                             "; expected PATH=VALUE, PATH!=VALUE or PATH with names that "
                             "\"quorvane decode\" shows");
        }
        path_.emplace_back(name);
        if (name.size() == path.size()) {
            break;
        }
        path.remove_prefix(name.size() + 1);
    }
    if (!value_.empty()) {
        RequireValue(text);
    }
}

void FieldCondition::RequireValue(const std::string& text) const {
    bool isThere = false;
    std::set<std::string_view> words;
    VisitMembers([&](const TypeMember& member) {
        if (member.name == path_.back()) {
            isThere = isThere || MayHaveValue(member.type, words);
        }
    });
    if (isThere) {
        return;
    }
    words.erase(std::string_view());
    throw UsageError("--where " + text + ": no field '" + path_.back() + "' can have that value" +
                     NearestWords(value_, words) +
                     "; expected a number, words or digits that \"quorvane decode\" shows");
}

bool FieldCondition::MayHaveValue(Type type, std::set<std::string_view>& words) const {
    switch (type.Kind()) {
        case FieldKind::kNumber:
            return number_.has_value();
        case FieldKind::kEnumerated: {
            words.insert(type.OtherWords());
            for (std::size_t index = 0; index < type.ValueCount(); ++index) {
                words.insert(type.Value(index).words);
            }
            return number_ || std::any_of(words.begin(), words.end(), [&](std::string_view each) {
                       return EqualsInAnyCase(each, value_);
                   });
        }
        case FieldKind::kBits:
            return std::all_of(value_.begin(), value_.end(),
                               [](char each) { return DigitOf(each).has_value(); });
        case FieldKind::kSequence:
            return MayHaveValue(type.ItemType(), words);
        default:
            return false;
    }
}

bool FieldCondition::Holds(const Message& message) const {
    std::vector<std::string_view> names;
    bool isThere = false;
    bool hasValue = false;
    Visit(message.Root(), [&](const Field& field, unsigned depth) {
        names.resize(depth);
        names.push_back(field.Name());
        const FieldStatus status = field.Status();
        if (status == FieldStatus::kAbsent || status == FieldStatus::kDefault) {
            return false;
        }
        // Parts of what was refused may be good.
        const bool isGood = status != FieldStatus::kRefused;
        if (depth > 0 && isGood && IsAtPath(names)) {
            isThere = true;
            hasValue = hasValue || HasValue(field);
        }
        return true;
    });
    switch (relation_) {
        case Relation::kIsThere:
            return isThere;
        case Relation::kIs:
            return hasValue;
        case Relation::kIsNot:
            return isThere && !hasValue;
    }
    return false;  // unreachable: each relation returns
}

bool FieldCondition::IsAtPath(const std::vector<std::string_view>& names) const {
    auto name = names.rbegin();
    if (name->empty()) {
        return false;  // an item: the sequence was looked at
    }
    for (auto expected = path_.rbegin(); expected != path_.rend(); ++expected, ++name) {
        while (name != names.rend() && name->empty()) {
            ++name;
        }
        if (name == names.rend() || *name != *expected) {
            return false;
        }
    }
    return true;
}

bool FieldCondition::HasValue(const Field& field) const {
    switch (field.Kind()) {
        case FieldKind::kNumber:
            return number_ == field.Number();
        case FieldKind::kEnumerated:
            return number_ == field.Number() || EqualsInAnyCase(field.Words(), value_);
        case FieldKind::kBits:
            return EqualsInAnyCase(ToHex(field.Octets(), ""), value_);
        default:
            return std::any_of(field.begin(), field.end(), [this](const Field& item) {
                return item.Name().empty() && HasValue(item);
            });
    }
}

}  // namespace quorvane::tool
