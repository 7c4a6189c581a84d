// For the build.
#include "programs/CompletionText.h"
#include "programs/kalvex-run/Completion.h"

int main(int argc, char** argv) {
    constexpr kalvex::programs::Shell kShells[] = {
        {"bash", kalvex::run::BashCompletion},
        {"fish", kalvex::run::FishCompletion},
        {"zsh", kalvex::run::ZshCompletion},
    };
    return kalvex::programs::FillCompletion(argc, argv, kShells);
}
