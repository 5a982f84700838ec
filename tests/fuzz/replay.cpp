// SPDX-License-Identifier: MIT
#include "Fuzz.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

// Runs a fuzz target on every file of a folder, and on the beginnings of each, without a fuzzer.

namespace {

std::string ReadFile(std::filesystem::path const& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

/// Uses a copy of exactly this size, so that a sanitizer finds reads past its end.
void Run(std::string_view bytes)
{
    std::vector<std::uint8_t> const input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 2 || !std::filesystem::is_directory(argv[1])) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    std::vector<std::filesystem::path> seeds;
    for (auto const& entry : std::filesystem::directory_iterator(argv[1])) {
        seeds.push_back(entry.path());
    }
    std::sort(seeds.begin(), seeds.end());
    Run({});
    for (auto const& path : seeds) {
        std::fprintf(stderr, "%s\n", path.filename().c_str());
        std::string const seed = ReadFile(path);
        Run(seed);
        for (std::size_t size = seed.size() / 2; size > 0; size /= 2) {
            Run(std::string_view(seed).substr(0, size));
        }
    }
    std::fprintf(stderr, "%zu inputs replayed\n", seeds.size());
    return seeds.empty() ? 1 : 0;
}
