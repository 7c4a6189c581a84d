#include "programs/sorvaned/StoredRows.h"

#include "programs/ShownValues.h"
#include "server/CsvTable.h"
#include "text/CodePage.h"
#include "value/LocalTimeText.h"
#include "value/ValueText.h"

namespace kalvex::sorvaned {

namespace {

constexpr const char* kCsvLineEnd = "\r\n";

std::string KindOf(const StoredRow& row) {
    return std::string(value::WordOfKind(row.kind));
}

}  // namespace

std::string TabLine(const StoredRow& row) {
    const std::string status = programs::ShownStatus(row.value.GetStatus());
    return programs::ShownText(row.variable) + '\t' + KindOf(row) + '\t' +
           value::FormatExactLocalTime(row.value.GetTime()) + '\t' +
           programs::ShownContent(row.value) + '\t' + (status.empty() ? "-" : status) + '\n';
}

std::string CsvLine(const StoredRow& row) {
    return server::CsvCell(text::ToUtf8(row.variable)) + ',' + KindOf(row) + ',' +
           value::FormatExactLocalTime(row.value.GetTime()) + ',' +
           server::CsvCell(text::ToUtf8(value::ValueToText(row.value))) + ',' +
           programs::ShownStatus(row.value.GetStatus()) + kCsvLineEnd;
}

std::string CsvHead() {
    std::string head;
    for (const char* column : kColumns) head += (head.empty() ? "" : ",") + std::string(column);
    return head + kCsvLineEnd;
}

std::string JsonLine(const StoredRow& row) {
    const nlohmann::ordered_json object = {{"variable", text::ToUtf8(row.variable)},
                                           {"kind", KindOf(row)},
                                           {"time", row.value.GetTime()},
                                           {"value", programs::JsonContent(row.value)},
                                           {"status", row.value.GetStatus()}};
    return object.dump() + '\n';
}

}  // namespace kalvex::sorvaned
