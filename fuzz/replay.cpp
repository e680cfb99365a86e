// Runs a fuzzer's entry point once for each given file, without a fuzzing engine.
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argumentCount, char** arguments)
{
    for (int index = 1; index < argumentCount; ++index) {
        std::ifstream file(arguments[index], std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "%s: cannot be read\n", arguments[index]);
            return 1;
        }
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%d seeds replayed\n", argumentCount - 1);
    return 0;
}
