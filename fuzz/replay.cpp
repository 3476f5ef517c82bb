// SPDX-License-Identifier: BSD-3-Clause
// Runs a fuzz target over the files in the named folders, without a fuzzer: seeds, and inputs that once broke
// something.
#include "bytes.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace
{

void replay(const std::filesystem::path &path)
{
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    ipmib::fuzz::require(file.is_open() && !file.bad(), "the file can be read");
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char **argv)
{
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        if (!std::filesystem::is_directory(argv[i])) {
            continue; // nothing has been found yet
        }
        for (const auto &entry : std::filesystem::directory_iterator(argv[i])) {
            replay(entry.path());
            ++replayed;
        }
    }
    std::printf("%d inputs\n", replayed);
    return replayed == 0 ? 1 : 0;
}
