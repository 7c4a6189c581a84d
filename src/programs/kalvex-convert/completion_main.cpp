// For the build.
#include "programs/CompletionText.h"
#include "programs/kalvex-convert/Completion.h"

int main(int argc, char** argv) {
    constexpr kalvex::programs::Shell kShells[] = {
        {"bash", kalvex::convert::BashCompletion},
        {"fish", kalvex::convert::FishCompletion},
        {"zsh", kalvex::convert::ZshCompletion},
    };
    return kalvex::programs::FillCompletion(argc, argv, kShells);
}
