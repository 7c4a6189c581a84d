// For the build.
#include "programs/CompletionText.h"
#include "programs/kalvex-convert/Options.h"

int main(int argc, char** argv) {
    return kalvex::programs::WriteCompletion(kalvex::convert::DescribeCommandLine(), argc, argv);
}
