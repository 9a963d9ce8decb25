#include "fuzz_support.h"

#include <cstdio>
#include <cstdlib>

namespace quorvane::fuzz {
namespace {

void Print(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fputc('\n', stderr);
}

}  // namespace

void Fail(std::string_view what) {
    Print(what);
    std::abort();
}

void RequireEqual(std::string_view left, std::string_view right, std::string_view what) {
    if (left != right) {
        Print(left);
        Print("---");
        Print(right);
        Fail(what);
    }
}

}  // namespace quorvane::fuzz
