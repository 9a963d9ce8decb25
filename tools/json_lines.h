#pragma once

// JSON objects, one a line, gathered until the user takes them. Texts must be UTF-8.
//
// Tests: tests/tool/json_lines_test.cpp.

#include <algorithm>
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

    /// Adds a member. `key` is a literal that needs no escaping.
    template <std::size_t kSize>
    void Add(const char (&key)[kSize], std::string_view text) {
        AddKey(key);
        PutString(text);
    }
    template <std::size_t kSize>
    void Add(const char (&key)[kSize], std::int64_t number) {
        AddKey(key);
        PutNumber(number);
    }
    template <std::size_t kSize>
    void AddFlag(const char (&key)[kSize], bool flag) {
        AddJson(key, flag ? "true" : "false");
    }
    /// Adds a value that is JSON already.
    template <std::size_t kSize>
    void AddJson(const char (&key)[kSize], std::string_view value) {
        AddKey(key);
        Put(value);
    }
    /// Adds an array of the lines of `text`, each of which ends in a line feed.
    template <std::size_t kSize>
    void AddLines(const char (&key)[kSize], std::string_view text) {
        AddKey(key);
        PutLines(text);
    }

    [[nodiscard]] std::string_view View() const { return {buffer_.data(), used_}; }
    void Clear() { used_ = 0; }

  private:
    template <std::size_t kSize>
    void AddKey(const char (&key)[kSize]) {
        MakeRoom(kSize + 3);
        char* at = buffer_.data() + used_;
        if (!first_) {
            *at++ = ',';
        }
        first_ = false;
        *at++ = '"';
        at = std::copy_n(key, kSize - 1, at);
        *at++ = '"';
        *at++ = ':';
        used_ = static_cast<std::size_t>(at - buffer_.data());
    }
    void PutString(std::string_view text);
    void PutNumber(std::int64_t number);
    void PutLines(std::string_view text);
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
