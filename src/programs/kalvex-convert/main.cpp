#include <cstdio>

#include "platform/GettextTranslator.h"
#include "programs/kalvex-convert/FileConversion.h"
#include "programs/kalvex-convert/Options.h"

int main(int argc, char** argv) {
    const kalvex::convert::ConvertLine line =
        kalvex::convert::ParseConvertLine({argv + 1, argv + argc});
    if (!line.exitStatus) {
        return kalvex::convert::ConvertFiles(line.options, kalvex::platform::GettextTranslator());
    }
    std::fputs(line.message.c_str(), *line.exitStatus == 0 ? stdout : stderr);
    return *line.exitStatus;
}
