#include "support/value_dump.h"

#include "text/CodePage.h"

namespace kalvex::support {

value::CVal Stamped(value::CVal value, std::int64_t time, std::uint16_t status) {
    value.SetTime(time);
    value.SetStatus(status);
    return value;
}

std::string Dump(const value::CVal& value) {
    return std::to_string(value.GetType()) + ":" + value::ValueToText(value);
}

std::string Describe(const value::CVal& value) {
    return text::ToUtf8(value::ValueToText(value)) + "/" + std::to_string(value.GetStatus());
}

std::string DescribeWhole(const value::CVal& value) {
    return Dump(value) + "/" + std::to_string(value.GetStatus()) + "@" +
           std::to_string(value.GetTime());
}

}  // namespace kalvex::support
