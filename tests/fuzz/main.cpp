// Runs a target on its corpus and on what is made of it, or on files. It is for compilers without a
// fuzzing engine; a target that is linked with an engine does without this file.
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>

#include "fuzz/Coverage.h"
#include "fuzz/Mutator.h"
#include "fuzz/Watch.h"
#include "fuzz/fuzz.h"

namespace kalvex::fuzz {
namespace {

using std::chrono::steady_clock;

constexpr const char* kUsage =
    "usage: TARGET [--rounds N | --seconds N] [--seed N] [--corpus FOLDER]\n"
    "              [--keep FILE] [--patience SECONDS] [INPUT...]\n"
    "Runs the corpus and N inputs made of it, or as many as N seconds allow, or the files INPUT.\n"
    "FOLDER has further inputs of the corpus and gets those that reach new places. FILE gets the\n"
    "input with which a run does not come to its end, or for which the patience is too short.\n";

struct Options {
    std::uint64_t rounds = 1000;
    std::uint64_t seconds = 0;  // 0: the rounds count
    std::uint64_t seed = 1;
    std::uint64_t patience = 60;
    std::string corpus;
    std::string keep;
};

struct NumberOption {
    std::string_view name;
    std::uint64_t Options::*value;
};
constexpr NumberOption kNumbers[] = {{"--rounds", &Options::rounds},
                                     {"--seconds", &Options::seconds},
                                     {"--seed", &Options::seed},
                                     {"--patience", &Options::patience}};

struct TextOption {
    std::string_view name;
    std::string Options::*value;
};
constexpr TextOption kTexts[] = {{"--corpus", &Options::corpus}, {"--keep", &Options::keep}};

bool ReadOption(std::string_view name, std::string_view value, Options& options) {
    const auto* text = std::ranges::find(kTexts, name, &TextOption::name);
    if (text != std::end(kTexts)) {
        options.*text->value = value;
        return true;
    }
    const auto* number = std::ranges::find(kNumbers, name, &NumberOption::name);
    if (number == std::end(kNumbers)) return false;
    const char* end = value.data() + value.size();
    const auto read = std::from_chars(value.data(), end, options.*number->value);
    return read.ec == std::errc() && read.ptr == end;
}

// False for an option that is none or lacks its value; files go to `files`.
bool ReadOptions(int argc, char** argv, Options& options, std::vector<std::string>& files) {
    for (int index = 1; index < argc; ++index) {
        const std::string_view name = argv[index];
        if (!name.starts_with("--")) {
            files.emplace_back(name);
        } else if (++index == argc || !ReadOption(name, argv[index], options)) {
            return false;
        }
    }
    return true;
}

bool ReadFile(const std::string& path, std::string& content) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "%s: %s\n", path.c_str(), std::strerror(errno));
        return false;
    }
    content.assign(std::istreambuf_iterator<char>(in), {});
    return true;
}

void Run(const std::string& input) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

int RunFiles(const std::vector<std::string>& files) {
    std::string content;
    for (const std::string& file : files) {
        if (!ReadFile(file, content)) return 2;
        Run(content);
    }
    return 0;
}

// In the order of their names.
std::vector<std::string> FilesOf(const std::string& folder) {
    std::vector<std::string> files;
    if (folder.empty()) return files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        files.push_back(entry.path().string());
    std::ranges::sort(files);
    return files;
}

void Save(const std::string& folder, const std::string& input) {
    char name[17];
    std::snprintf(name, sizeof name, "%016zx", std::hash<std::string>()(input));
    std::ofstream(folder + "/" + name, std::ios::binary | std::ios::trunc) << input;
}

// The corpus first, then what is made of it.
void RunAll(const Options& options, Progress* progress) {
    const auto run = [progress](const std::string& input) {
        if (progress != nullptr) progress->Begin(input);
        Run(input);
        if (progress != nullptr) progress->End();
    };
    std::vector<std::string> corpus = FuzzCorpus();
    for (const std::string& file : FilesOf(options.corpus)) {
        std::string content;
        if (ReadFile(file, content)) corpus.push_back(std::move(content));
    }
    for (const std::string& input : corpus) run(input);
    TakeNews();
    Mutator mutator(corpus, options.seed);
    const auto end = steady_clock::now() + std::chrono::seconds(options.seconds);
    for (std::uint64_t round = 0;
         options.seconds > 0 ? steady_clock::now() < end : round < options.rounds; ++round) {
        std::string input = mutator.Next();
        run(input);
        if (!TakeNews()) continue;
        if (!options.corpus.empty()) Save(options.corpus, input);
        corpus.push_back(std::move(input));
    }
}

// Files that change with each input are no work for a disk.
void ChooseScratch() {
    constexpr const char* kInMemory = "/dev/shm";
    if (std::filesystem::is_directory(kInMemory)) ::setenv("TMPDIR", kInMemory, 0);
}

int Main(int argc, char** argv) {
    ChooseScratch();
    Options options;
    std::vector<std::string> files;
    if (!ReadOptions(argc, argv, options, files)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    if (!files.empty()) return RunFiles(files);
    if (!options.keep.empty()) {
        return RunWatched([&](Progress& progress) { RunAll(options, &progress); },
                          std::chrono::seconds(options.patience), options.keep);
    }
    RunAll(options, nullptr);
    return 0;
}

}  // namespace
}  // namespace kalvex::fuzz

int main(int argc, char** argv) {
    return kalvex::fuzz::Main(argc, argv);
}
