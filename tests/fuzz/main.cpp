// Runs a target on its corpus and on what is made of it, or on files. It is for compilers without a
// fuzzing engine; a target that is linked with an engine does without this file.
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "fuzz/Mutator.h"
#include "fuzz/fuzz.h"

namespace {

constexpr const char* kUsage =
    "usage: TARGET [--rounds N] [--seed N] [--keep FILE] [INPUT...]\n"
    "Runs the corpus and N inputs made of it, or the files INPUT. FILE is the input that runs.\n";

struct Options {
    std::uint64_t rounds = 1000;
    std::uint64_t seed = 1;
    std::string keep;
};

void Run(const Options& options, const std::string& input) {
    if (!options.keep.empty()) {
        std::ofstream(options.keep, std::ios::binary | std::ios::trunc) << input;
    }
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

bool ReadNumber(std::string_view text, std::uint64_t& number) {
    return std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc();
}

// False for an option without its value; files go to `files`.
bool ReadOptions(int argc, char** argv, Options& options, std::vector<std::string>& files) {
    for (int index = 1; index < argc; ++index) {
        const std::string_view name = argv[index];
        if (!name.starts_with("--")) {
            files.emplace_back(name);
            continue;
        }
        if (++index == argc) return false;
        const std::string_view value = argv[index];
        const bool read = name == "--rounds" ? ReadNumber(value, options.rounds)
                          : name == "--seed" ? ReadNumber(value, options.seed)
                                             : name == "--keep";
        if (!read) return false;
        if (name == "--keep") options.keep = value;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    std::vector<std::string> files;
    if (!ReadOptions(argc, argv, options, files)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    for (const std::string& file : files) {
        std::ifstream in(file, std::ios::binary);
        if (!in) {
            std::fprintf(stderr, "%s: %s\n", file.c_str(), std::strerror(errno));
            return 2;
        }
        Run(options, std::string(std::istreambuf_iterator<char>(in), {}));
    }
    if (!files.empty()) return 0;
    const std::vector<std::string> corpus = kalvex::fuzz::FuzzCorpus();
    for (const std::string& input : corpus) Run(options, input);
    kalvex::fuzz::Mutator mutator(corpus, options.seed);
    for (std::uint64_t round = 0; round < options.rounds; ++round) Run(options, mutator.Next());
    return 0;
}
