// For the build.
#include "programs/CompletionText.h"
#include "programs/kalvexd/Options.h"

int main(int argc, char** argv) {
    return kalvex::programs::WriteCompletion(kalvex::kalvexd::DescribeCommandLine(), argc, argv);
}
