#include "support/hand_remote.h"

#include "text/CodePage.h"

namespace kalvex {

int HandRemote::GetValue(CVal& out, ValueKind, int) {
    if (answer == ReadValue) out = value;
    return answer;
}

int HandRemote::SetValue(const CVal& written, ValueKind) {
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
    return FromUtf8("m³/h");
}

std::string HandRemote::GetDescription() {
    return FromUtf8("Przepływ");
}

}  // namespace kalvex
