#include "value/Bounds.h"

namespace kalvex::value {

void RefuseText() {
    throw TextTooLong();
}

void RefuseList() {
    throw ListTooLong();
}

}  // namespace kalvex::value
