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

    // Keys are mostly literals: inline, their copies have a fixed size.
    /// Adds a member. `key` needs no escaping.
    void Add(std::string_view key, std::string_view text) {
        AddKey(key);
        PutString(text);
    }
    void Add(std::string_view key, std::int64_t number) {
        AddKey(key);
        PutNumber(number);
    }
    void AddFlag(std::string_view key, bool flag) { AddJson(key, flag ? "true" : "false"); }
    /// Adds a value that is JSON already.
    void AddJson(std::string_view key, std::string_view value) {
        AddKey(key);
        Put(value);
    }
    /// Adds an array of the lines of `text`, each of which ends in a line feed.
    void AddLines(std::string_view key, std::string_view text) {
        AddKey(key);
        PutLines(text);
    }

    [[nodiscard]] std::string_view View() const { return {buffer_.data(), used_}; }
    void Clear() { used_ = 0; }

  private:
    void AddKey(std::string_view key) {
        MakeRoom(key.size() + 4);
        char* at = buffer_.data() + used_;
        if (!first_) {
            *at++ = ',';
        }
        first_ = false;
        *at++ = '"';
        at = std::copy(key.begin(), key.end(), at);
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
