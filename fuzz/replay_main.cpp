// Runs a fuzz target over files, and over those in folders, in the order of their names. In place
// of a fuzzing engine in ordinary builds.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz_support.h"

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
    std::size_t count = 0;
    bool read = true;
    for (int index = 1; index < argc; ++index) {
        for (const fs::path& file : FilesOf(argv[index])) {
            read = Replay(file) && read;
            ++count;
        }
    }
    if (count == 0) {
        std::fprintf(stderr, "usage: %s FILE-OR-FOLDER...\nno file was found\n", argv[0]);
        return 2;
    }
    return read ? 0 : 1;
}
