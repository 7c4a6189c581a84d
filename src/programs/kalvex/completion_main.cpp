// For the build.
#include "programs/CompletionText.h"
#include "programs/kalvex/Options.h"

int main(int argc, char** argv) {
    return kalvex::programs::WriteCompletion(kalvex::desk::DescribeCommandLine(), argc, argv);
}
