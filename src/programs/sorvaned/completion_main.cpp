// For the build.
#include "programs/CompletionText.h"
#include "programs/sorvaned/Options.h"

int main(int argc, char** argv) {
    return kalvex::programs::WriteCompletion(kalvex::sorvaned::DescribeCommandLine(), argc, argv);
}
