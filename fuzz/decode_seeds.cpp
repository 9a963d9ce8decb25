// Writes seeds for decode_fuzz to a folder: one for each golden file, named after it. What else is
// in the folder stays.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "decode_input.h"
#include "support/golden_file.h"

namespace fs = std::filesystem;

int main(int argc, char** argv) {
    using namespace quorvane;
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    const fs::path folder = argv[1];
    fs::create_directories(folder);
    for (const fs::path& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        const auto golden = test::ReadGoldenFile(path, problem);
        if (!golden) {
            std::fprintf(stderr, "%s: %s\n", path.c_str(), problem.c_str());
            return 1;
        }
        const auto octets =
            fuzz::WriteDecodeInput({golden->decoding, golden->length, golden->octets});
        const std::string family = path.parent_path().filename().string();
        std::ofstream out(folder / (family + "_" + path.stem().string()), std::ios::binary);
        out.write(reinterpret_cast<const char*>(octets.data()),
                  static_cast<std::streamsize>(octets.size()));
        if (!out.flush()) {
            std::fprintf(stderr, "cannot write to %s\n", folder.c_str());
            return 1;
        }
    }
    return 0;
}
