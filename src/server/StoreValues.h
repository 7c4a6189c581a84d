// How values stand in the tables of the store's file. Any thread.
#pragma once

#include "platform/Sqlite.h"
#include "value/Value.h"

namespace kalvex::server {

// What is there where there is no value.
value::CVal NoValue();

// Binds type, status and content to three parameters in a row.
void BindValue(platform::SqliteStatement& statement, int parameter, const value::CVal& value);

// From four columns in a row: time, type, status, content.
value::CVal ReadValue(const platform::SqliteStatement& row, int column);

bool IsSame(const value::CVal& a, const value::CVal& b);

}  // namespace kalvex::server
