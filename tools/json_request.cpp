#include "tools/json_request.h"

#include <array>
#include <charconv>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include "tools/edit_distance.h"

namespace quorvane::tool {
namespace {

/// What the parser meets. Each function returns whether to go on; what is wrong is in Problem.
class RequestHandler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, RequestHandler> {
  public:
    RequestHandler(std::string_view line, const rapidjson::MemoryStream& stream,
                   JsonRequest& request)
        : line_(line), stream_(stream), request_(request) {}

    bool Default() { return TakeOther(); }

    bool StartObject() { return ++depth_ == 1 || depth_ > 2 || TakeOther(); }
    bool EndObject(rapidjson::SizeType /*members*/) {
        --depth_;
        return true;
    }
    bool StartArray() {
        ++depth_;
        return depth_ == 1 ? Refuse("the line is no JSON object") : depth_ > 2 || TakeOther();
    }
    bool EndArray(rapidjson::SizeType /*items*/) {
        --depth_;
        return true;
    }

    bool Key(const char* text, rapidjson::SizeType size, bool /*copied*/) {
        if (depth_ > 1) {
            return true;
        }
        const std::string_view name(text, size);
        valueStart_ = stream_.Tell();
        key_ = kOther;
        for (std::size_t key = 0; key < kKeys.size(); ++key) {
            if (name == kKeys[key]) {
                key_ = key;
                return !seen_[key] || Refuse("the key " + Quoted(name) + " stands twice");
            }
        }
        // One that is passed over would change the message.
        return EditDistance(name, kKeys[kLength]) > 1 ||
               Refuse("unknown key " + Quoted(name) + "; the nearest is \"length\"");
    }

    bool String(const char* text, rapidjson::SizeType size, bool /*copied*/) {
        if (depth_ != 1 || key_ == kLength) {
            return TakeOther();
        }
        if (key_ == kId) {
            // The text behind the colon, with its quotes and escapes.
            const std::string_view value = line_.substr(valueStart_, stream_.Tell() - valueStart_);
            request_.id = value.substr(value.find('"'));
        } else if (key_ != kOther) {
            (key_ == kFunction ? request_.function : request_.hex).assign(text, size);
        }
        return Taken();
    }

    bool RawNumber(const char* text, rapidjson::SizeType size, bool /*copied*/) {
        if (depth_ != 1 || key_ == kFunction || key_ == kHex) {
            return TakeOther();
        }
        if (key_ == kId) {
            request_.id.assign(text, size);
        } else if (key_ == kLength) {
            std::int32_t length = 0;
            const auto [end, status] = std::from_chars(text, text + size, length);
            if (status != std::errc() || end != text + size) {
                return TakeOther();
            }
            request_.length = length;
        }
        return Taken();
    }

    [[nodiscard]] const std::string& Problem() const { return problem_; }
    [[nodiscard]] bool HasFunction() const { return seen_[kFunction]; }
    [[nodiscard]] bool HasHex() const { return seen_[kHex]; }

  private:
    static constexpr std::size_t kFunction = 0;
    static constexpr std::size_t kHex = 1;
    static constexpr std::size_t kLength = 2;
    static constexpr std::size_t kId = 3;
    static constexpr std::size_t kOther = 4;
    static constexpr std::array<std::string_view, kOther> kKeys = {"fn", "hex", "length", "id"};

    static std::string Quoted(std::string_view name) { return "\"" + std::string(name) + "\""; }

    bool Refuse(std::string problem) {
        problem_ = std::move(problem);
        return false;
    }

    bool Taken() {
        if (key_ != kOther) {
            seen_[key_] = true;
        }
        return true;
    }

    /// A value of a kind that only keys have that are passed over.
    bool TakeOther() {
        static constexpr std::array<std::string_view, kOther> kKinds = {
            "the name of a function", "a string", "a whole number of 32 bits",
            "a string or a number"};
        if (depth_ == 0) {
            return Refuse("the line is no JSON object");
        }
        return depth_ > 2 || key_ == kOther ||
               Refuse(Quoted(kKeys[key_]) + " has to be " + std::string(kKinds[key_]));
    }

    std::string_view line_;
    const rapidjson::MemoryStream& stream_;
    JsonRequest& request_;
    std::size_t depth_ = 0;
    std::size_t key_ = kOther;    // of the value at depth 1
    std::size_t valueStart_ = 0;  // behind that key
    std::array<bool, kOther> seen_{};
    std::string problem_;
};

}  // namespace

std::string ParseJsonRequest(std::string_view line, JsonRequest& request) {
    request = {};
    rapidjson::MemoryStream stream(line.data(), line.size());
    RequestHandler handler(line, stream, request);
    rapidjson::Reader reader;
    constexpr unsigned kFlags = rapidjson::kParseIterativeFlag |
                                rapidjson::kParseValidateEncodingFlag |
                                rapidjson::kParseNumbersAsStringsFlag;
    const rapidjson::ParseResult result = reader.Parse<kFlags>(stream, handler);
    if (!handler.Problem().empty()) {
        return handler.Problem();
    }
    if (result.IsError()) {
        return "no JSON, character " + std::to_string(result.Offset() + 1) + ": " +
               rapidjson::GetParseError_En(result.Code());
    }
    if (!handler.HasFunction()) {
        return "the key \"fn\" is missing";
    }
    const bool mayBeEmpty = request.length && *request.length <= 0;
    return handler.HasHex() || mayBeEmpty ? std::string() : "the key \"hex\" is missing";
}

}  // namespace quorvane::tool
