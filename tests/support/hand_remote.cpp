#include "support/hand_remote.h"

#include "text/CodePage.h"

namespace kalvex::support {

int HandRemote::GetValue(value::CVal& out, value::ValueKind, int) {
    if (answer == operands::ReadValue) out = value;
    return answer;
}

int HandRemote::SetValue(const value::CVal& written, value::ValueKind) {
    value = written;
    return 1;
}

int HandRemote::SetLocked(bool flag) {
    locked = flag;
    return 1;
}

int HandRemote::SetIgnoreUnknown(bool flag) {
    ignoreUnknown = flag;
    return 1;
}

std::string HandRemote::GetUnit() {
    return text::FromUtf8("m³/h");
}

std::string HandRemote::GetDescription() {
    return text::FromUtf8("Przepływ");
}

}  // namespace kalvex::support
