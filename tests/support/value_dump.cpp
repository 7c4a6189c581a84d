#include "support/value_dump.h"

#include "text/CodePage.h"

namespace kalvex {

CVal Stamped(CVal value, std::int64_t time, std::uint16_t status) {
    value.SetTime(time);
    value.SetStatus(status);
    return value;
}

std::string Dump(const CVal& value) {
    return std::to_string(value.GetType()) + ":" + ValueToText(value);
}

std::string Describe(const CVal& value) {
    return ToUtf8(ValueToText(value)) + "/" + std::to_string(value.GetStatus());
}

std::string DescribeWhole(const CVal& value) {
    return Dump(value) + "/" + std::to_string(value.GetStatus()) + "@" +
           std::to_string(value.GetTime());
}

}  // namespace kalvex
