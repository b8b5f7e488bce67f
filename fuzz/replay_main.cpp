// Replays a fuzz target's saved inputs without libFuzzer: every regular file of the
// folders (or the files) named on the command line goes through LLVMFuzzerTestOneInput
// once. A target signals a failed check by trapping, which ends the process; a clean
// exit means every input passed.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

// CTest reports this exit code as "skipped": there was nothing to replay.
constexpr int kNothingToReplay = 77;

std::vector<std::filesystem::path> inputsOf(const std::filesystem::path& path)
{
    std::vector<std::filesystem::path> inputs;
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        for (const auto& entry : std::filesystem::directory_iterator(path, error)) {
            if (entry.is_regular_file(error))
                inputs.push_back(entry.path());
        }
        std::sort(inputs.begin(), inputs.end());
    } else if (std::filesystem::is_regular_file(path, error)) {
        inputs.push_back(path);
    }
    return inputs;
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s CORPUS_FOLDER_OR_FILE...\n", argv[0]);
        return 2;
    }
    std::size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        for (const std::filesystem::path& input : inputsOf(argv[i])) {
            std::ifstream file(input, std::ios::binary);
            if (!file) {
                std::fprintf(stderr, "cannot read %s\n", input.c_str());
                return 1;
            }
            const std::vector<char> bytes((std::istreambuf_iterator<char>(file)),
                                          std::istreambuf_iterator<char>());
            // Named first, so that a crash shows which input caused it.
            std::fprintf(stderr, "%s (%zu bytes)\n", input.c_str(), bytes.size());
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
            ++replayed;
        }
    }
    if (replayed == 0) {
        std::fprintf(stderr, "no inputs to replay\n");
        return kNothingToReplay;
    }
    std::printf("replayed %zu inputs\n", replayed);
    return 0;
}
