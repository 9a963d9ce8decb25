#include "tools/system.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::tool {
namespace {

// Any thread may run the handler.
std::atomic<int> interruptSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free);

// Has an octet once the process was interrupted: a signal that comes between a look at
// interruptSignal and a read that waits is not lost.
std::array<int, 2> interruptPipe = {-1, -1};

extern "C" void NoteInterrupt(int signal) {
    const int error = errno;
    interruptSignal = signal;
    const char octet = 0;
    [[maybe_unused]] const ssize_t written = write(interruptPipe[1], &octet, 1);
    errno = error;
}

std::optional<std::uint64_t> SizeOf(const struct stat& status) {
    return S_ISREG(status.st_mode) ? std::optional(static_cast<std::uint64_t>(status.st_size))
                                   : std::nullopt;
}

/// Takes the beginning of a line off a file that ends with what was written.
void TakeBackPartOfLine(int descriptor, std::string_view written) {
    const std::size_t part = written.size() - (written.rfind('\n') + 1);  // npos + 1 is 0
    const off_t end = lseek(descriptor, 0, SEEK_CUR);
    if (part > 0 && SizeOfFile(descriptor) == end) {
        const off_t start = lseek(descriptor, -static_cast<off_t>(part), SEEK_CUR);
        [[maybe_unused]] const int status = ftruncate(descriptor, start);
    }
}

/// Waits until there is something to read, or the process is interrupted.
void WaitForInput(int descriptor) {
    std::array<pollfd, 2> files = {pollfd{descriptor, POLLIN, 0},
                                   pollfd{interruptPipe[0], POLLIN, 0}};
    while (poll(files.data(), files.size(), -1) < 0 && errno == EINTR) {
    }
}

}  // namespace

int OpenToRead(const std::string& name) {
    return open(name.c_str(), O_RDONLY | O_CLOEXEC);
}

void Close(int descriptor) {
    close(descriptor);
}

std::optional<std::uint64_t> SizeOfFile(const std::string& name) {
    struct stat status {};
    return stat(name.c_str(), &status) == 0 ? SizeOf(status) : std::nullopt;
}

std::optional<std::uint64_t> SizeOfFile(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 ? SizeOf(status) : std::nullopt;
}

std::int64_t ReadSome(int descriptor, char* octets, std::size_t size) {
    for (;;) {
        if (interruptPipe[0] >= 0) {
            WaitForInput(descriptor);
        }
        if (interruptSignal != 0) {
            errno = EINTR;
            return -1;
        }
        const ssize_t count = read(descriptor, octets, size);
        if (count >= 0 || errno != EINTR) {
            return count;
        }
    }
}

bool WriteAll(int descriptor, std::string_view octets) {
    std::string_view left = octets;
    while (!left.empty()) {
        const ssize_t count = write(descriptor, left.data(), left.size());
        if (count >= 0) {
            left.remove_prefix(static_cast<std::size_t>(count));
        } else if (const int error = errno; error != EINTR) {
            TakeBackPartOfLine(descriptor, octets.substr(0, octets.size() - left.size()));
            errno = error;
            return false;
        }
    }
    return true;
}

bool IsTerminal(int descriptor) {
    return isatty(descriptor) != 0;
}

void CatchInterrupts() {
#ifdef __EMSCRIPTEN__  // has no signals, and no poll for files of the machine
    return;
#endif
    if (interruptPipe[0] >= 0 || pipe2(interruptPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    struct sigaction action {};
    action.sa_handler = NoteInterrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGINT, SIGTERM}) {
        struct sigaction before {};
        // Who starts a process in the background may have it ignore interrupts.
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) {
            sigaction(signal, &action, nullptr);
        }
    }
}

int InterruptSignal() {
    return interruptSignal;
}

}  // namespace quorvane::tool
