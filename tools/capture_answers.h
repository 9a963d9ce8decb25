#pragma once

// Messages of a capture as they are shown: as text, as JSON objects or as CSV.
//
// Tests: tests/capture/capture_command_test.cpp.

#include <cstdint>
#include <string>
#include <string_view>

#include "quorvane/message.h"
#include "tools/capture/dissector.h"
#include "tools/json_lines.h"

namespace quorvane::tool {

enum class CaptureForm : std::uint8_t { kText, kJson, kCsv };

/// The first line of CSV.
inline constexpr std::string_view kCsvHeader = "frame,function,path,value,words,offset,bits\n";

class CaptureAnswers {
  public:
    explicit CaptureAnswers(CaptureForm form) : form_(form) {}

    /// Adds what `found` was decoded to.
    void Add(const capture::FoundMessage& found, const Message& message);

    [[nodiscard]] std::string_view View() const {
        return form_ == CaptureForm::kJson ? json_.View() : std::string_view(output_);
    }
    void Clear() {
        json_.Clear();
        output_.clear();
    }

  private:
    void AddText(const capture::FoundMessage& found, const Message& message);
    void AddJson(const capture::FoundMessage& found, const Message& message);
    void AddCsv(const capture::FoundMessage& found, const Message& message);
    void AddRows(const Field& field);
    void AddRow(const Field& field);
    void AddCsvText(std::string_view text);

    CaptureForm form_;
    JsonLines json_;
    std::string output_;
    std::string text_;
    std::string diagnostics_;
    std::string rowStart_;  // "12,EPS_MMUplink,"
    std::string path_;
};

}  // namespace quorvane::tool
