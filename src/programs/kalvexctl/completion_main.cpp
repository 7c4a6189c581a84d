// For the build.
#include "programs/CompletionText.h"
#include "programs/kalvexctl/Options.h"

int main(int argc, char** argv) {
    return kalvex::programs::WriteCompletion(kalvex::kalvexctl::DescribeCommandLine(), argc, argv);
}
