// The JSON of all golden messages: it has the form of docs/json.schema.json and tells all that
// their fields tell; and the schema refuses damaged documents.

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <sstream>
#include <string>
#include <string_view>
#include <valijson/adapters/rapidjson_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>
#include <vector>

#include "quorvane/json.h"
#include "support/golden_file.h"
#include "support/sanitized.h"
#include "tools/hex.h"

namespace quorvane {
namespace {

using rapidjson::Document;
using rapidjson::Value;
using valijson::adapters::RapidJsonAdapter;

class JsonSchemaTest : public testing::Test {
  protected:
    JsonSchemaTest() {
        ReadSchema();
        for (const auto& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
            std::string problem;
            if (auto golden = test::ReadGoldenFile(path, problem)) {
                golden_.push_back(std::move(*golden));
            }
        }
    }

    /// The JSON of the message, which is left in `message_`.
    std::string JsonOf(const test::GoldenFile& golden, DecodeOptions options = {}) {
        message_.Decode(golden.decoding,
                        PaddedMessage(golden.octets.data(), golden.length, golden.octets.size()),
                        options);
        std::string json;
        AppendJson(message_, json);
        return json;
    }

    /// Where and by which rules the schema refuses `json`; empty if it does not.
    [[nodiscard]] std::string Problem(const Value& json) const {
        valijson::Validator validator;
        valijson::ValidationResults results;
        std::string problem;
        if (!validator.validate(schema_, RapidJsonAdapter(json), &results)) {
            for (const valijson::ValidationResults::Error& error : results) {
                for (const std::string& step : error.context) {
                    problem += step;
                }
                problem += ": " + error.description + "\n";
            }
        }
        return problem;
    }

    Message message_;
    std::vector<test::GoldenFile> golden_;

  private:
    void ReadSchema() {
        std::ifstream in(QUORVANE_SOURCE_DIR "/docs/json.schema.json");
        std::ostringstream text;
        text << in.rdbuf();
        Document schema;
        schema.Parse(text.str().c_str());
        ASSERT_FALSE(schema.HasParseError()) << rapidjson::GetParseError_En(schema.GetParseError())
                                             << " at character " << schema.GetErrorOffset();
        valijson::SchemaParser().populateSchema(RapidJsonAdapter(schema), schema_);
    }

    valijson::Schema schema_;
};

std::string_view TextOf(const Value& value) {
    return {value.GetString(), value.GetStringLength()};
}

/// Words as the text has them, one octet a character.
std::string FromUtf8(std::string_view text) {
    std::string octets;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const auto first = static_cast<unsigned char>(text[index]);
        octets +=
            first < 0x80 ? text[index] : static_cast<char>((first << 6U) | (text[++index] & 0x3F));
    }
    return octets;
}

/// Takes members out of an object until none is left that nobody asked for.
class Members {
  public:
    explicit Members(const Value& object) : object_(object) {}

    const Value* Take(const char* name) {
        const auto found = object_.FindMember(name);
        taken_ += found == object_.MemberEnd() ? 0U : 1U;
        return found == object_.MemberEnd() ? nullptr : &found->value;
    }
    [[nodiscard]] bool AllTaken() const { return taken_ == object_.MemberCount(); }

  private:
    const Value& object_;
    rapidjson::SizeType taken_ = 0;
};

void ExpectSame(const Field& field, const Value& json);

/// The children of a struct or union that are there, in order.
void ExpectSameChildren(const Field& field, const Value& json) {
    auto member = json.MemberBegin();
    for (const Field child : field) {
        if (child.Status() == FieldStatus::kAbsent) {
            continue;
        }
        ASSERT_NE(member, json.MemberEnd()) << child.Name();
        ASSERT_EQ(TextOf(member->name), child.Name());
        ExpectSame(child, member->value);
        ++member;
    }
    EXPECT_EQ(member, json.MemberEnd()) << field.Name();
}

void ExpectSameContents(const Field& field, Members& members) {
    const auto take = [&](const char* name) {
        const Value* value = members.Take(name);
        EXPECT_NE(value, nullptr) << name << " of " << field.Name();
        static const Value kNothing(rapidjson::kObjectType);
        return value == nullptr ? &kNothing : value;
    };
    switch (field.Kind()) {
        case FieldKind::kNumber:
            EXPECT_EQ(take("value")->GetUint(), field.Number());
            return;
        case FieldKind::kEnumerated: {
            EXPECT_EQ(take("value")->GetUint(), field.Number());
            const Value* words = members.Take("words");
            EXPECT_EQ(words == nullptr ? "" : FromUtf8(TextOf(*words)), field.Words());
            return;
        }
        case FieldKind::kBits:
            EXPECT_EQ(TextOf(*take("hex")), tool::ToHex(field.Octets(), ""));
            EXPECT_EQ(take("bits")->GetUint(), field.BitCount());
            return;
        case FieldKind::kStruct:
            ExpectSameChildren(field, *take("fields"));
            return;
        case FieldKind::kUnion:
            ExpectSameChildren(field, *take("choice"));
            return;
        case FieldKind::kSequence:
            break;
    }
    const Value& items = *take("items");
    ASSERT_EQ(items.Size(), field.size());
    for (rapidjson::SizeType index = 0; index < items.Size(); ++index) {
        ExpectSame(field[index], items[index]);
    }
}

void ExpectSame(const Field& field, const Value& json) {
    Members members(json);
    ExpectSameContents(field, members);
    const std::optional<Place> place = field.GetPlace();
    const Value* at = members.Take("at");
    ASSERT_EQ(at != nullptr, place.has_value()) << field.Name();
    if (place) {
        EXPECT_EQ((*at)[0].GetUint(), place->offset) << field.Name();
        EXPECT_EQ((*at)[1].GetUint(), place->length) << field.Name();
    }
    const Value* status = members.Take("status");
    const FieldStatus told = status == nullptr              ? FieldStatus::kDecoded
                             : TextOf(*status) == "default" ? FieldStatus::kDefault
                                                            : FieldStatus::kRefused;
    EXPECT_EQ(told, field.Status()) << field.Name();
    EXPECT_TRUE(members.AllTaken()) << field.Name();
}

void ExpectSameFault(const Message& message, const Fault& fault, const Value& json) {
    Members members(json);
    EXPECT_EQ(members.Take("number")->GetUint(), fault.number);
    EXPECT_EQ(TextOf(*members.Take("words")), fault.words);
    std::string path;
    const bool known = message.AppendPath(fault.field, path);
    const Value* told = members.Take("path");
    ASSERT_EQ(told != nullptr, known);
    EXPECT_EQ(known ? TextOf(*told) : "", path);
    const Value* at = members.Take("at");
    ASSERT_EQ(at != nullptr, fault.offset.has_value());
    EXPECT_EQ(at == nullptr ? 0 : at->GetUint(), fault.offset.value_or(0));
    EXPECT_TRUE(members.AllTaken());
}

void ExpectSameSurplus(const Message& message, const Surplus& surplus, const Value& json) {
    Members members(json);
    EXPECT_EQ(TextOf(*members.Take("kind")),
              surplus.kind == Surplus::Kind::kRest ? "rest" : "element");
    const Value* iei = members.Take("iei");
    ASSERT_EQ(iei != nullptr, surplus.iei.has_value());
    if (surplus.iei) {
        EXPECT_EQ(TextOf(*iei), tool::ToHex({&*surplus.iei, 1}, ""));
    }
    std::string path;
    const Value* known = members.Take("path");
    ASSERT_EQ(known != nullptr, message.AppendPath(surplus.field, path));
    if (known != nullptr) {
        EXPECT_EQ(TextOf(*known), path);
    }
    EXPECT_EQ(TextOf(*members.Take("hex")), tool::ToHex(surplus.octets, ""));
    EXPECT_EQ(members.Take("bits")->GetUint(), surplus.bitCount);
    const Value& at = *members.Take("at");
    EXPECT_EQ(at[0].GetUint(), surplus.place.offset);
    EXPECT_EQ(at[1].GetUint(), surplus.place.length);
    EXPECT_TRUE(members.AllTaken());
}

void ExpectSame(const SecurityHeader& header, const Value& json) {
    Members members(json);
    EXPECT_EQ(members.Take("type")->GetUint(), header.type);
    EXPECT_EQ(std::stoul(std::string(TextOf(*members.Take("authenticationCode"))), nullptr, 16),
              header.authenticationCode);
    EXPECT_EQ(members.Take("sequenceNumber")->GetUint(), header.sequenceNumber);
    EXPECT_TRUE(members.AllTaken());
}

void ExpectSame(const Message& message, Decoding decoding, const Value& json) {
    Members members(json);
    EXPECT_EQ(TextOf(*members.Take("decoding")),
              Decodings()[static_cast<std::size_t>(decoding)].name);
    const Value& type = *members.Take("type");
    EXPECT_EQ(members.Take("code")->GetInt(), message.Code());
    ASSERT_EQ(type.IsString(), message.IsFound());
    if (message.IsFound()) {
        EXPECT_EQ(TextOf(type), message.TypeName());
        const Value* error = members.Take("error");
        EXPECT_EQ(error == nullptr ? "" : TextOf(*error), message.CodeWords());
        EXPECT_EQ(members.Take("bits")->GetInt64(), message.BitsConsumed());
        ExpectSameChildren(message.Root(), *members.Take("fields"));
        const Value* faults = members.Take("faults");
        ASSERT_EQ(faults == nullptr ? 0 : faults->Size(), message.FaultCount());
        for (rapidjson::SizeType index = 0; index < message.FaultCount(); ++index) {
            ExpectSameFault(message, message.GetFault(index), (*faults)[index]);
        }
        const Value* surplus = members.Take("surplus");
        ASSERT_EQ(surplus == nullptr ? 0 : surplus->Size(), message.SurplusCount());
        for (rapidjson::SizeType index = 0; index < message.SurplusCount(); ++index) {
            ExpectSameSurplus(message, message.GetSurplus(index), (*surplus)[index]);
        }
        const Value* security = members.Take("security");
        ASSERT_EQ(security != nullptr, message.Security().has_value());
        if (security != nullptr) {
            ExpectSame(*message.Security(), *security);
        }
    }
    EXPECT_TRUE(members.AllTaken());
}

TEST_F(JsonSchemaTest, AllGoldenMessagesHaveTheFormAndTellWhatTheirFieldsTell) {
    ASSERT_FALSE(golden_.empty());
    for (std::size_t index = 0; index < golden_.size(); index += test::kSanitized ? 4 : 1) {
        const test::GoldenFile& golden = golden_[index];
        for (const bool tolerant : {false, true}) {
            const std::string json = JsonOf(golden, {.tolerant = tolerant, .deciphered = tolerant});
            Document document;
            document.Parse(json.c_str());
            ASSERT_FALSE(document.HasParseError()) << json;
            EXPECT_EQ(Problem(document), "") << json;
            ExpectSame(message_, golden.decoding, document);
            EXPECT_EQ(json.find('\n'), std::string::npos);
            if (HasFailure()) {
                FAIL() << golden.text << json;
            }
        }
    }
}

/// All values of `json`, itself included.
void Collect(Value& json, std::vector<Value*>& values) {
    values.push_back(&json);
    if (json.IsObject()) {
        std::for_each(json.MemberBegin(), json.MemberEnd(),
                      [&](auto& member) { Collect(member.value, values); });
    } else if (json.IsArray()) {
        for (auto& item : json.GetArray()) {
            Collect(item, values);
        }
    }
}

/// Values that may not stand where `value` does.
std::vector<Value> DamagedForms(const Value& value, Document::AllocatorType& memory) {
    std::vector<Value> forms;
    const auto copy = [&]() -> Value& { return forms.emplace_back(value, memory); };
    forms.emplace_back(true);
    switch (value.GetType()) {
        case rapidjson::kObjectType:
            copy().AddMember("unknown member", 0, memory);
            break;
        case rapidjson::kArrayType:
            copy().PushBack("an item", memory);
            forms.emplace_back(rapidjson::kObjectType);
            break;
        case rapidjson::kNumberType:
            forms.emplace_back("7");
            forms.emplace_back(-70000);
            forms.emplace_back(0.5);
            break;
        default:
            forms.emplace_back(1);
            forms.emplace_back(rapidjson::kArrayType);
            break;
    }
    return forms;
}

TEST_F(JsonSchemaTest, DamagedDocumentsAreRefused) {
    constexpr std::size_t kStep = 17;  // the same kinds of fields come again and again
    constexpr std::size_t kLongest = 1000;
    for (std::size_t index = 0; index < golden_.size(); index += kStep) {
        const std::string json = JsonOf(golden_[index]);
        if (json.size() > kLongest) {
            continue;
        }
        Document document;
        document.Parse(json.c_str());
        std::vector<Value*> values;
        Collect(document, values);
        for (Value* value : values) {
            for (Value& form : DamagedForms(*value, document.GetAllocator())) {
                value->Swap(form);
                EXPECT_NE(Problem(document), "") << json;
                value->Swap(form);
            }
        }
        ASSERT_EQ(Problem(document), "") << json;
    }
}

TEST_F(JsonSchemaTest, IncompleteOrContradictoryDocumentsAreRefused) {
    const auto inField = [](const std::string& field) {
        return R"({"decoding":"ChannelRequest","type":"T","code":0,"bits":1,"fields":{"A":)" +
               field + "}}";
    };
    const auto refused = [&](const std::string& json) {
        Document document;
        document.Parse(json.c_str());
        EXPECT_FALSE(document.HasParseError()) << json;
        return !Problem(document).empty();
    };
    for (const char* good :
         {R"({"value":4294967295})", R"({"value":0,"words":"x","at":[0,65535]})",
          R"({"hex":"","bits":0})", R"({"hex":"0AF0","bits":12,"status":"refused"})",
          R"({"fields":{}})", R"({"choice":{}})", R"({"choice":{"B":{"value":0}}})",
          R"({"items":[]})", R"({"items":[{"items":[]}],"status":"default"})"}) {
        EXPECT_FALSE(refused(inField(good))) << good;
    }
    for (const char* bad : {"{}",
                            "null",
                            "7",
                            "[]",
                            R"({"words":"x"})",
                            R"({"at":[0,1]})",
                            R"({"value":null})",
                            R"({"value":4294967296})",
                            R"({"value":1,"words":""})",
                            R"({"value":1,"at":[1]})",
                            R"({"value":1,"at":[1,2,3]})",
                            R"({"value":1,"at":[1,65536]})",
                            R"({"value":1,"status":"decoded"})",
                            R"({"value":1,"status":"absent"})",
                            R"({"value":1,"bits":1})",
                            R"({"value":1,"hex":"00","bits":8})",
                            R"({"hex":"AB"})",
                            R"({"bits":8})",
                            R"({"hex":"ab","bits":8})",
                            R"({"hex":"A","bits":4})",
                            R"({"hex":"A B","bits":8})",
                            R"({"fields":{"B":null}})",
                            R"({"fields":[]})",
                            R"({"fields":{"no name":{"value":1}}})",
                            R"({"fields":{},"items":[]})",
                            R"({"choice":{"B":{"value":0},"C":{"value":0}}})",
                            R"({"choice":null})",
                            R"({"items":[null]})",
                            R"({"items":[7]})",
                            R"({"items":{}})"}) {
        EXPECT_TRUE(refused(inField(bad))) << bad;
    }
    for (const char* bad :
         {"{}", "[]", R"({"decoding":"ChannelRequest"})",
          R"({"decoding":"ChannelRequest","type":null,"code":0})",
          R"({"decoding":"ChannelRequest","type":null,"code":-2,"fields":{}})",
          R"({"decoding":"Nope","type":null,"code":-2})",
          R"({"decoding":null,"type":"T","code":0,"bits":1,"fields":{}})",
          R"({"decoding":"RRSPD","type":"T","code":1,"bits":1,"fields":{}})",
          R"({"decoding":"RRSPD","type":"T","code":0,"bits":-1,"fields":{}})",
          R"({"decoding":"RRSPD","type":"T","code":0,"bits":1})",
          R"({"decoding":"RRSPD","type":"T","code":0,"fields":{}})",
          R"({"decoding":"RRSPD","type":"T","bits":1,"fields":{}})",
          R"({"decoding":"RRSPD","code":0,"bits":1,"fields":{}})",
          R"({"type":"T","code":0,"bits":1,"fields":{}})",
          R"({"decoding":"RRSPD","type":"T","code":0,"bits":1,"fields":{},"faults":[]})",
          R"({"decoding":"RRSPD","type":"T","code":0,"bits":1,"fields":{},"faults":[{}]})",
          R"({"decoding":"RRSPD","type":"T","code":0,"bits":1,"fields":{},)"
          R"("faults":[{"number":1,"words":"x","path":"A..B"}]})"}) {
        EXPECT_TRUE(refused(bad)) << bad;
    }
}

TEST_F(JsonSchemaTest, DamagedSurplusAndSecurityAreRefused) {
    const std::string good =
        R"({"decoding":"RRSPD","type":"T","code":0,"bits":1,"fields":{},)"
        R"("surplus":[{"kind":"rest","iei":"0F","path":"A[1].B","hex":"F0","bits":4,)"
        R"("at":[4294967291,4]},{"kind":"element","hex":"80","bits":8,"at":[0,8]}],)"
        R"("security":{"type":4,"authenticationCode":"00112233","sequenceNumber":255}})";
    const auto problem = [&](const std::string& json) {
        Document document;
        document.Parse(json.c_str());
        EXPECT_FALSE(document.HasParseError()) << json;
        return Problem(document);
    };
    EXPECT_EQ(problem(good), "");
    const std::pair<const char*, const char*> damages[] = {
        {R"("kind":"rest",)", ""},
        {R"("kind":"rest")", R"("kind":"other")"},
        {R"("iei":"0F")", R"("iei":15)"},
        {R"("iei":"0F")", R"("iei":"F")"},
        {R"("path":"A[1].B")", R"("path":"A..B")"},
        {R"("hex":"F0",)", ""},
        {R"("hex":"F0")", R"("hex":"f0")"},
        {R"("bits":4,)", ""},
        {R"(,"at":[0,8])", ""},
        {R"("at":[0,8])", R"("at":[0])"},
        {R"("at":[0,8])", R"("at":[0,8],"status":"refused")"},
        {R"("type":4)", R"("type":12)"},
        {R"("type":4,)", ""},
        {R"("00112233")", R"("0011223")"},
        {R"("sequenceNumber":255)", R"("sequenceNumber":256)"},
        {R"(,"sequenceNumber":255)", ""},
        {R"("sequenceNumber":255)", R"("sequenceNumber":255,"x":1)"},
    };
    for (const auto& [part, damaged] : damages) {
        std::string json = good;
        ASSERT_NE(json.find(part), std::string::npos) << part;
        json.replace(json.find(part), std::string(part).size(), damaged);
        EXPECT_NE(problem(json), "") << json;
    }
    EXPECT_NE(
        problem(R"({"decoding":"RRSPD","type":"T","code":0,"bits":1,"fields":{},"surplus":[]})"),
        "");
}

TEST_F(JsonSchemaTest, NamesEveryDecoding) {
    for (const DecodingInfo& info : Decodings()) {
        message_.Decode(info.decoding, std::span<const std::uint8_t>());
        std::string json;
        AppendJson(message_, json);
        Document document;
        document.Parse(json.c_str());
        EXPECT_EQ(Problem(document), "") << info.name;
    }
}

}  // namespace
}  // namespace quorvane
