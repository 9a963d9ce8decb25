#pragma once

// What `batch` or `capture` has answered, counted.
//
// Tests: tests/tool/report_test.cpp.

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace quorvane::tool {

class Tally {
  public:
    void AddBadLine() { ++badLines_; }
    void AddUnknown() {
        ++messages_;
        ++unknown_;
    }
    void AddMessage(bool faulty) {
        ++messages_;
        faulty_ += faulty ? 1 : 0;
    }
    void AddType(std::string_view function, std::string_view type);
    void Add(const Tally& other);

    [[nodiscard]] std::int64_t Messages() const { return messages_; }
    [[nodiscard]] std::int64_t BadLines() const { return badLines_; }
    [[nodiscard]] std::int64_t Unknown() const { return unknown_; }
    [[nodiscard]] std::int64_t Faulty() const { return faulty_; }

    /// A line with the counts and, the most frequent first, one for each type.
    [[nodiscard]] std::string Summary() const;

  private:
    std::int64_t messages_ = 0;  // without bad lines
    std::int64_t unknown_ = 0;
    std::int64_t faulty_ = 0;
    std::int64_t badLines_ = 0;
    std::map<std::string, std::int64_t, std::less<>> types_;  // "function type"
};

}  // namespace quorvane::tool
