// For the build: fills in a script of completion, from the standard input to the standard output.
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>

#include "programs/kalvex-run/Completion.h"

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::string script{std::istreambuf_iterator<char>(std::cin), {}};
    const bool isBash = std::string_view(argv[1]) == "bash";
    std::cout << (isBash ? kalvex::run::BashCompletion(script)
                         : kalvex::run::ZshCompletion(script));
    return 0;
}
