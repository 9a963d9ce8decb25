#include "tools/message_reader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <span>
#include <vector>

#include "facade/utf8.h"
#include "tools/function_name.h"
#include "tools/hex.h"

namespace quorvane::tool {
namespace {

using Json = rapidjson::Value;

std::string_view TextOf(const Json& json) {
    return {json.GetString(), json.GetStringLength()};
}

std::string Quoted(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

/// A key that an object may have, and where its value goes.
struct KnownKey {
    std::string_view name;
    const Json*& value;
};

/// Looks up the values of the keys that are known. Returns what is wrong with others, or nothing.
std::string ReadKeys(const Json& object, std::initializer_list<KnownKey> known) {
    if (!object.IsObject()) {
        return "is no JSON object";
    }
    for (const auto& member : object.GetObject()) {
        const auto* found = std::find_if(known.begin(), known.end(), [&](const KnownKey& key) {
            return key.name == TextOf(member.name);
        });
        if (found == known.end()) {
            std::string names;
            for (const KnownKey& key : known) {
                names.append(names.empty() ? "" : ", ").append(key.name);
            }
            return "has an unknown key " + Quoted(TextOf(member.name)) + "; known are " + names;
        }
        if (found->value != nullptr) {
            return "has the key " + Quoted(TextOf(member.name)) + " twice";
        }
        found->value = &member.value;
    }
    return {};
}

/// Goes over the fields of a message and their JSON side by side. The functions return what is
/// wrong, with `path_` where it is, or nothing.
class FieldReader {
  public:
    explicit FieldReader(Message& message) : message_(message) {}

    std::string ReadRoot(const Json& fields) { return ReadMembers(message_.Root(), fields); }

  private:
    [[nodiscard]] std::string Problem(std::string_view words) const {
        return (path_.empty() ? "the object " : path_ + ": ") + std::string(words);
    }

    std::string ReadField(const Field& field, const Json& json) {
        const Json* contents = nullptr;
        const Json* words = nullptr;
        const Json* bits = nullptr;
        const Json* place = nullptr;
        const Json* status = nullptr;
        const FieldKind kind = field.Kind();
        const std::string_view key = KeyOf(kind);
        std::string problem;
        if (kind == FieldKind::kEnumerated) {
            problem = ReadKeys(
                json, {{key, contents}, {"words", words}, {"at", place}, {"status", status}});
        } else if (kind == FieldKind::kBits) {
            problem = ReadKeys(
                json, {{key, contents}, {"bits", bits}, {"at", place}, {"status", status}});
        } else {
            problem = ReadKeys(json, {{key, contents}, {"at", place}, {"status", status}});
        }
        if (problem.empty() && contents == nullptr && words == nullptr) {
            problem = "has to have the key " + Quoted(key);
        }
        if (!problem.empty()) {
            return Problem(problem);
        }
        if (IsByDefault(json)) {
            return {};
        }
        if (status != nullptr && *status != "refused") {
            return Problem("has a status that is neither \"default\" nor \"refused\"");
        }
        switch (kind) {
            case FieldKind::kNumber:
                return ReadNumber(field, *contents);
            case FieldKind::kEnumerated:
                return ReadEnumerated(field, contents, words);
            case FieldKind::kBits:
                return ReadBits(field, *contents, bits);
            case FieldKind::kStruct:
                return ReadStruct(field, *contents);
            case FieldKind::kUnion:
                return ReadUnion(field, *contents);
            case FieldKind::kSequence:
                break;
        }
        return ReadItems(field, *contents);
    }

    static bool IsByDefault(const Json& field) {
        if (!field.IsObject()) {
            return false;
        }
        const auto status = field.FindMember("status");
        return status != field.MemberEnd() && status->value == "default";
    }

    static std::string_view KeyOf(FieldKind kind) {
        switch (kind) {
            case FieldKind::kNumber:
            case FieldKind::kEnumerated:
                return "value";
            case FieldKind::kBits:
                return "hex";
            case FieldKind::kStruct:
                return "fields";
            case FieldKind::kUnion:
                return "choice";
            case FieldKind::kSequence:
                break;
        }
        return "items";
    }

    std::string ReadNumber(const Field& field, const Json& value) {
        if (!value.IsUint()) {
            return Problem("has a value that is no whole number from 0 to 4294967295");
        }
        return WordsOf(message_.Set(field, value.GetUint()));
    }

    std::string ReadEnumerated(const Field& field, const Json* value, const Json* words) {
        if (words != nullptr && !words->IsString()) {
            return Problem("has words that are no string");
        }
        if (value == nullptr) {
            return ReadWords(field, TextOf(*words));
        }
        if (words != nullptr && value->IsUint()) {
            std::string right;
            facade::AssignAsUtf8(right, field.GetType().WordsOf(value->GetUint()));
            if (right != TextOf(*words)) {
                return Problem("has the words " + Quoted(TextOf(*words)) + ", but those of " +
                               std::to_string(value->GetUint()) + " are " + Quoted(right) +
                               "; leave out one of the two");
            }
        }
        return ReadNumber(field, *value);
    }

    std::string ReadWords(const Field& field, std::string_view words) {
        const Type type = field.GetType();
        std::string inUtf8;
        for (std::size_t index = 0; index < type.ValueCount(); ++index) {
            const EnumeratedValue value = type.Value(index);
            facade::AssignAsUtf8(inUtf8, value.words);
            if (inUtf8 == words) {
                return WordsOf(message_.Set(field, value.number));
            }
        }
        return WordsOf(message_.SetWords(field, words));
    }

    std::string ReadBits(const Field& field, const Json& hex, const Json* bits) {
        if (!hex.IsString()) {
            return Problem("has a hex that is no string");
        }
        std::vector<std::uint8_t> octets;
        if (const std::string problem = ParseHex(TextOf(hex), octets); !problem.empty()) {
            return Problem("hex, " + problem);
        }
        const std::size_t all = 8 * octets.size();
        if (all > std::numeric_limits<std::uint32_t>::max()) {
            return Problem("has too many bits");
        }
        auto count = static_cast<std::uint32_t>(all);
        if (bits != nullptr) {
            if (!bits->IsUint() || bits->GetUint() > all || bits->GetUint() + 7ULL < all) {
                return Problem("has bits that are no number of bits of its " +
                               std::to_string(octets.size()) + " octets");
            }
            count = bits->GetUint();
        }
        return WordsOf(message_.SetBits(field, octets, count));
    }

    std::string ReadStruct(const Field& field, const Json& fields) {
        if (std::string problem = WordsOf(message_.Add(field)); !problem.empty()) {
            return problem;
        }
        return ReadMembers(field, fields);
    }

    std::string ReadMembers(const Field& field, const Json& fields) {
        if (!fields.IsObject()) {
            return Problem("has fields that are no JSON object");
        }
        std::vector<bool> read(field.size());
        for (const auto& json : fields.GetObject()) {
            const std::size_t before = Enter(TextOf(json.name));
            const auto member = std::find_if(
                field.begin(), field.end(),
                [&](const Field& candidate) { return candidate.Name() == TextOf(json.name); });
            if (member == field.end()) {
                return Problem("there is no such member; there are " + NamesOf(field.GetType()));
            }
            const auto index = static_cast<std::size_t>(std::distance(field.begin(), member));
            if (read[index]) {
                return Problem("is there twice");
            }
            read[index] = true;
            if (std::string problem = ReadField(*member, json.value); !problem.empty()) {
                return problem;
            }
            path_.resize(before);
        }
        return {};
    }

    static std::string NamesOf(const Type& type) {
        std::string names;
        for (std::size_t index = 0; index < type.MemberCount(); ++index) {
            names.append(names.empty() ? "" : ", ").append(type.Member(index).name);
        }
        return names;
    }

    std::string ReadUnion(const Field& field, const Json& choice) {
        if (!choice.IsObject() || choice.MemberCount() > 1) {
            return Problem("has a choice that is no JSON object with one alternative");
        }
        // One that holds nothing is shown with the contents of an alternative by default.
        if (choice.ObjectEmpty() || IsByDefault(choice.MemberBegin()->value)) {
            return WordsOf(message_.Add(field));
        }
        const auto& alternative = *choice.MemberBegin();
        const std::string_view name = TextOf(alternative.name);
        if (std::string problem = WordsOf(message_.Choose(field, name)); !problem.empty()) {
            return problem;
        }
        const std::size_t before = Enter(name);
        std::string problem = ReadField(field[0], alternative.value);
        path_.resize(before);
        return problem;
    }

    std::string ReadItems(const Field& field, const Json& items) {
        if (!items.IsArray()) {
            return Problem("has items that are no JSON array");
        }
        if (std::string problem = WordsOf(message_.Resize(field, items.Size())); !problem.empty()) {
            return problem;
        }
        for (rapidjson::SizeType index = 0; index < items.Size(); ++index) {
            const std::size_t before = path_.size();
            path_.append("[").append(std::to_string(index)).append("]");
            if (std::string problem = ReadField(field[index], items[index]); !problem.empty()) {
                return problem;
            }
            path_.resize(before);
        }
        return {};
    }

    /// Goes on with a member. Returns what the path is cut to behind it.
    std::size_t Enter(std::string_view name) {
        const std::size_t before = path_.size();
        path_.append(before == 0 ? "" : ".").append(name);
        return before;
    }

    Message& message_;
    std::string path_;
};

/// The decoding that is told by the caller or the object. Nothing, with the problem in `problem`,
/// if there is none, or they do not agree.
std::optional<Decoding> DecodingOf(std::optional<Decoding> told, const Json* json,
                                   std::string& problem) {
    if (json == nullptr) {
        problem = told ? "" : "the object has to have the key \"decoding\"";
        return told;
    }
    const std::optional<Decoding> named =
        json->IsString() ? FindDecoding(TextOf(*json)) : std::nullopt;
    if (!named) {
        problem = "decoding is none that \"quorvane list\" shows";
        return std::nullopt;
    }
    if (told && *told != *named) {
        problem = "decoding is " + std::string(TextOf(*json)) + ", not " +
                  std::string(InfoOf(*told).name);
        return std::nullopt;
    }
    return named;
}

}  // namespace

std::string WordsOf(const MessageError& error) {
    return error.path.empty() ? error.words : error.path + ": " + error.words;
}

std::string ReadMessage(std::string_view json, std::optional<Decoding> decoding, Message& message) {
    rapidjson::Document document;
    constexpr unsigned kFlags =
        rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;
    document.Parse<kFlags>(json.data(), json.size());
    if (document.HasParseError()) {
        return "no JSON, character " + std::to_string(document.GetErrorOffset() + 1) + ": " +
               rapidjson::GetParseError_En(document.GetParseError());
    }
    const Json* named = nullptr;
    const Json* type = nullptr;
    const Json* fields = nullptr;
    std::array<const Json*, 6> reports{};
    std::string problem = ReadKeys(document, {{"decoding", named},
                                              {"type", type},
                                              {"fields", fields},
                                              {"code", reports[0]},
                                              {"error", reports[1]},
                                              {"bits", reports[2]},
                                              {"faults", reports[3]},
                                              {"surplus", reports[4]},
                                              {"security", reports[5]}});
    if (!problem.empty()) {
        return "the object " + problem;
    }
    const std::optional<Decoding> known = DecodingOf(decoding, named, problem);
    if (!known) {
        return problem;
    }
    if (type == nullptr || !type->IsString()) {
        return "type has to be the name of a message";
    }
    if (const MessageError error = message.New(*known, TextOf(*type))) {
        return error.words;
    }
    if (fields == nullptr) {
        return "the object has to have the key \"fields\"";
    }
    return FieldReader(message).ReadRoot(*fields);
}

}  // namespace quorvane::tool
