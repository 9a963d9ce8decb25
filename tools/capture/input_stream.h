#pragma once

// The octets of a file or pipe as a FILE, inflated if they are compressed by gzip.

#include <cstdint>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>

namespace quorvane::capture {

struct InputState {
    std::uint64_t octets = 0;   // that were read, as they are in the file
    std::string problem;        // empty: there is none
    std::exception_ptr thrown;  // by `beforeWaiting`: nothing is thrown through C
};

/// Reads from the descriptor, which the FILE closes unless it is standard input, from its first
/// octet on; no seeking. Null with the reason in errno if there is no memory. `state` has to
/// outlive the FILE; `beforeWaiting` may be empty.
std::FILE* OpenInputStream(int descriptor, InputState& state, std::function<void()> beforeWaiting);

}  // namespace quorvane::capture
