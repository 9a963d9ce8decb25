#pragma once

// Answers lines for `batch`, one after the other.
//
// Tests: tests/tool/tool_test.cpp, tests/tool/batch_input_test.cpp.

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quorvane/message.h"
#include "tools/auto_function.h"
#include "tools/commands.h"
#include "tools/json_lines.h"
#include "tools/json_request.h"
#include "tools/message_line.h"
#include "tools/tally.h"

namespace quorvane::tool {

/// A line of input.
struct InputLine {
    std::string_view text;
    std::int64_t number = 0;  // from 1
    std::string_view file;    // empty if one file alone is read
    bool tooLong = false;     // then there is no text
};

class Answerer {
  public:
    explicit Answerer(const BatchOptions& options)
        : options_(options.show),
          summary_(options.summary),
          needsMessage_(options.show.form == MessageForm::kJson || options.show.strict ||
                        options.show.notes || options.show.decode.tolerant || options.summary) {}

    /// Appends the answer, if the line is neither blank nor a comment.
    void Answer(const InputLine& line);

    [[nodiscard]] const JsonLines& Answers() const { return json_; }
    void Clear() { json_.Clear(); }
    /// Gives the answers away for `other`, to which it appends.
    void Exchange(JsonLines& other) { std::swap(json_, other); }

    /// Has faults with --strict or --summary, and types with --summary.
    [[nodiscard]] const Tally& Counts() const { return tally_; }

  private:
    /// Reads the line into `request_` and `octets_`. Returns what is wrong, or nothing.
    std::string Read(std::string_view text);
    std::string ReadJson(std::string_view text);
    /// Decodes the message of `request_` and says whether it was found; `function_` is the one that
    /// did, or was asked.
    bool Decode(PaddedMessage octets);
    bool DecodeAs(Decoding decoding, PaddedMessage octets);
    void Choose(PaddedMessage octets);
    /// Whether the function that a line asked for and `taken` reads a message tells it from other
    /// octets; of auto, only those with a discriminator do.
    [[nodiscard]] bool IsTold(const Function& taken) const;
    /// Whether other octets than those of the line are a message for its function.
    bool IsMessage(std::string_view hex);
    void Count(bool found);
    void Begin(const InputLine& line);
    void Refuse(const InputLine& line, const std::string& problem);

    ShowOptions options_;
    bool summary_;
    bool needsMessage_;  // a text alone does not do
    Tally tally_;
    JsonLines json_;
    MessageLine request_;
    Function function_;
    AutoChoice choice_;
    JsonRequest jsonRequest_;
    std::vector<std::uint8_t> octets_;
    Message message_;
    std::string text_;
    bool textIsJson_ = false;  // text_ is a string of JSON already
    std::string diagnostics_;
};

}  // namespace quorvane::tool
