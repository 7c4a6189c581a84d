#include "server/StoreValues.h"

#include <limits>

#include "value/Status.h"

namespace kalvex::server {

value::CVal NoValue() {
    value::CVal value;
    value.SetStatus(value::Status::Unknown);
    return value;
}

void BindValue(platform::SqliteStatement& statement, int parameter, const value::CVal& value) {
    statement.BindInteger(parameter, value.GetType());
    statement.BindInteger(parameter + 1, value.GetStatus());
    if (value.IsText()) {
        statement.BindText(parameter + 2, value.Text());
    } else if (value.GetType() == value::ValueType::Double) {
        statement.BindReal(parameter + 2, value.Real());
    } else if (value::ValueType::IsInteger(value.GetType())) {
        statement.BindInteger(parameter + 2, value.Integer());
    } else {
        statement.BindNull(parameter + 2);
    }
}

value::CVal ReadValue(const platform::SqliteStatement& row, int column) {
    const auto type = static_cast<std::uint16_t>(row.Integer(column + 1));
    value::CVal value;
    if (type == value::ValueType::Text) {
        value = value::CVal(row.Text(column + 3));
    } else if (type == value::ValueType::Double) {
        const double number = row.Real(column + 3);
        const bool isNone = number == 0 && row.IsNull(column + 3);
        value = value::CVal(isNone ? std::numeric_limits<double>::quiet_NaN() : number);
    } else if (value::ValueType::IsInteger(type)) {
        value = value::CVal(static_cast<long long>(row.Integer(column + 3)));
        value.SetType(type);
    }
    value.SetTime(row.Integer(column));
    value.SetStatus(static_cast<std::uint16_t>(row.Integer(column + 2)));
    return value;
}

bool IsSame(const value::CVal& a, const value::CVal& b) {
    return a.GetType() == b.GetType() && a.GetStatus() == b.GetStatus() && a == b;
}

}  // namespace kalvex::server
