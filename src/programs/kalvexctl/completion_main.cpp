// For the build.
#include "programs/CompletionText.h"
#include "programs/kalvexctl/Completion.h"

int main(int argc, char** argv) {
    constexpr kalvex::programs::Shell kShells[] = {
        {"bash", kalvex::kalvexctl::BashCompletion},
        {"fish", kalvex::kalvexctl::FishCompletion},
        {"zsh", kalvex::kalvexctl::ZshCompletion},
    };
    return kalvex::programs::FillCompletion(argc, argv, kShells);
}
