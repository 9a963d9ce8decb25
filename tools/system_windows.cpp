// What system.cpp does, on Windows.

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include "tools/system.h"

namespace quorvane::tool {
namespace {

std::atomic<int> interruptSignal = 0;

// The octets of the standard files are not touched, line ends among them.
[[maybe_unused]] const int inputMode = _setmode(kStandardInput, _O_BINARY);
[[maybe_unused]] const int outputMode = _setmode(kStandardOutput, _O_BINARY);
[[maybe_unused]] const int errorMode = _setmode(kStandardError, _O_BINARY);

// A thread of its own runs the handler of SIGINT, and the next one ends the process.
extern "C" void NoteInterrupt(int signal) {
    interruptSignal = signal;
}

std::optional<std::uint64_t> SizeOf(const struct _stat64& status) {
    return (status.st_mode & _S_IFMT) == _S_IFREG
               ? std::optional(static_cast<std::uint64_t>(status.st_size))
               : std::nullopt;
}

/// As much of `size` as one call reads or writes.
unsigned AtOnce(std::size_t size) {
    return static_cast<unsigned>(std::min(size, std::size_t{INT_MAX}));
}

}  // namespace

int OpenToRead(const std::string& name) {
    return _open(name.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
}

void Close(int descriptor) {
    _close(descriptor);
}

std::optional<std::uint64_t> SizeOfFile(const std::string& name) {
    struct _stat64 status {};
    return _stat64(name.c_str(), &status) == 0 ? SizeOf(status) : std::nullopt;
}

std::optional<std::uint64_t> SizeOfFile(int descriptor) {
    struct _stat64 status {};
    return _fstat64(descriptor, &status) == 0 ? SizeOf(status) : std::nullopt;
}

std::int64_t ReadSome(int descriptor, char* octets, std::size_t size) {
    const int count = interruptSignal == 0 ? _read(descriptor, octets, AtOnce(size)) : 0;
    // An interrupt ends a read from the console as the end of the input does.
    if (count <= 0 && interruptSignal != 0) {
        errno = EINTR;
        return -1;
    }
    return count;
}

bool WriteAll(int descriptor, std::string_view octets) {
    while (!octets.empty()) {
        const int count = _write(descriptor, octets.data(), AtOnce(octets.size()));
        if (count < 0) {
            return false;
        }
        octets.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool IsTerminal(int descriptor) {
    return _isatty(descriptor) != 0;
}

void CatchInterrupts() {
    for (const int signal : {SIGINT, SIGTERM}) {
        if (std::signal(signal, NoteInterrupt) == SIG_IGN) {
            std::signal(signal, SIG_IGN);
        }
    }
}

int InterruptSignal() {
    return interruptSignal;
}

}  // namespace quorvane::tool
