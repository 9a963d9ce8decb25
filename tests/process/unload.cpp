// Loads the library given as the first argument, calls from two threads, unloads it while both have
// used it, and does so again. Exits with 0 if all calls gave the same text.

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <dlfcn.h>
#include <mutex>
#include <string>
#include <thread>

namespace {

using FindDecoding = int(const char*);
using DecodeToText = std::ptrdiff_t(int, const std::uint8_t*, std::size_t, char*, std::size_t);

constexpr std::uint8_t kOctets[] = {0x0F, 0x87};

template <typename Function>
Function* Look(void* library, const char* name) {
    return reinterpret_cast<Function*>(dlsym(library, name));
}

std::string Call(void* library) {
    auto* find = Look<FindDecoding>(library, "quorvane_find_decoding");
    auto* decode = Look<DecodeToText>(library, "quorvane_decode_to_text");
    if (find == nullptr || decode == nullptr) {
        return {};
    }
    std::string text(1000, '\0');
    const std::ptrdiff_t size =
        decode(find("EPC_UE2SS"), kOctets, sizeof kOctets, text.data(), text.size());
    text.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return text;
}

/// A thread calls, waits until the library was closed, and ends.
std::string CallFromThreadThatOutlives(const char* path) {
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return {};
    }
    std::mutex mutex;
    std::condition_variable changed;
    bool called = false;
    bool closed = false;
    std::string inThread;
    std::thread thread([&] {
        inThread = Call(library);
        std::unique_lock lock(mutex);
        called = true;
        changed.notify_all();
        changed.wait(lock, [&] { return closed; });
    });
    const std::string here = Call(library);
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return called; });
        dlclose(library);
        closed = true;
    }
    changed.notify_all();
    thread.join();
    return inThread == here ? here : std::string();
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        return 1;
    }
    const std::string first = CallFromThreadThatOutlives(arguments[1]);
    const std::string second = CallFromThreadThatOutlives(arguments[1]);
    std::fputs(first.c_str(), stdout);
    return !first.empty() && first == second ? 0 : 1;
}
