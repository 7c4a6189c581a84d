// For the build.
#include "programs/CompletionText.h"
#include "programs/kalvex-run/Options.h"

int main(int argc, char** argv) {
    return kalvex::programs::WriteCompletion(kalvex::run::DescribeCommandLine(), argc, argv);
}
