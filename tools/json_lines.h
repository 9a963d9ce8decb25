#pragma once

// JSON objects, one a line, gathered until the user takes them. Texts must be UTF-8.
//
// Tests: tests/tool/tool_test.cpp.

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quorvane::tool {

class JsonLines {
  public:
    /// Opens an object and closes it, with the line.
    void Begin();
    void End();

    /// Adds a member. `key` needs no escaping.
    void Add(std::string_view key, std::string_view text);
    void Add(std::string_view key, std::int64_t number);
    void AddFlag(std::string_view key, bool flag);
    /// Adds a value that is JSON already.
    void AddJson(std::string_view key, std::string_view value);
    /// Adds an array of the lines of `text`, each of which ends in a line feed.
    void AddLines(std::string_view key, std::string_view text);

    [[nodiscard]] std::string_view View() const { return {buffer_.data(), used_}; }
    void Clear() { used_ = 0; }

  private:
    void AddKey(std::string_view key);
    void PutString(std::string_view text);
    void Put(std::string_view octets);
    void MakeRoom(std::size_t count) {
        if (buffer_.size() - used_ < count) {
            Grow(count);
        }
    }
    void Grow(std::size_t count);

    std::vector<char> buffer_;
    std::size_t used_ = 0;
    bool first_ = true;
};

}  // namespace quorvane::tool
