// Runs a fuzz target over files, and over those in folders, in the order of their names. In place
// of a fuzzing engine in ordinary builds. With --all-messages it fails if the target has not
// decoded every message that there is.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <vector>

#include "fuzz_support.h"
#include "reach.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FilesOf(const fs::path& path) {
    if (!fs::is_directory(path)) {
        return {path};
    }
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(path)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool Replay(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "cannot read %s\n", file.string().c_str());
        return false;
    }
    const std::vector<char> content((std::istreambuf_iterator<char>(in)), {});
    std::vector<std::uint8_t> octets(content.begin(), content.end());
    std::printf("%s\n", file.string().c_str());
    std::fflush(stdout);  // the name of an input that ends the program stands last
    LLVMFuzzerTestOneInput(octets.data(), octets.size());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const bool allMessages = argc > 1 && std::string_view(argv[1]) == "--all-messages";
    std::size_t count = 0;
    bool read = true;
    for (int index = allMessages ? 2 : 1; index < argc; ++index) {
        for (const fs::path& file : FilesOf(argv[index])) {
            read = Replay(file) && read;
            ++count;
        }
    }
    if (count == 0) {
        std::fprintf(stderr, "usage: %s [--all-messages] FILE-OR-FOLDER...\nno file was found\n",
                     argv[0]);
        return 2;
    }
    if (allMessages) {
        const auto messages = quorvane::fuzz::ReachOfThisRun().Messages();
        if (messages.reached < messages.all) {
            std::fprintf(stderr, "%zu messages were not decoded\n",
                         messages.all - messages.reached);
            return 1;
        }
    }
    return read ? 0 : 1;
}
