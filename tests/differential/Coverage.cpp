#include "differential/Coverage.h"

#include <vector>

#include "engine/ScriptDocument.h"
#include "language/Functions.h"
#include "language/Statements.h"

namespace kalvex::differential {

namespace {

engine::LineOutcome CountStatement(engine::CKalvexDoc& document, engine::LineForm& line) {
    const std::string_view keyword = line.row->keyword;
    const engine::LineOutcome outcome =
        language::Statements().Find(keyword)->handler(document, line);
    OutcomeCounts& counts = Covered().statements[keyword];
    switch (outcome) {
        case engine::LineOutcome::Finished:
            ++counts.finished;
            break;
        case engine::LineOutcome::Stays:
            ++counts.stayed;
            break;
        case engine::LineOutcome::Failed:
            ++counts.failed;
            ++Covered().errors.at(static_cast<std::size_t>(document.LastError().m_nErrorCode));
            break;
    }
    return outcome;
}

operands::FunctionResult CountFunction(operands::FunctionCall& call) {
    const operands::FunctionRow& row = *language::Functions().Find(call.keyword);
    const operands::FunctionResult result = row.handler(call);
    OutcomeCounts& counts = Covered().functions[row.keyword];
    ++(result == operands::FunctionResult::Failed ? counts.failed : counts.finished);
    return result;
}

template <class Row, class Handler>
std::vector<Row> Counted(std::span<const Row> rows, Handler handler) {
    std::vector<Row> counted(rows.begin(), rows.end());
    for (Row& row : counted) row.handler = handler;
    return counted;
}

}  // namespace

Coverage& Covered() {
    static Coverage coverage;
    return coverage;
}

const Tables& CountedLanguage() {
    static const std::vector<engine::StatementRow> statementRows =
        Counted(language::Statements().Rows(), CountStatement);
    static const std::vector<operands::FunctionRow> functionRows =
        Counted(language::Functions().Rows(), CountFunction);
    static const engine::StatementTable statements(statementRows);
    static const operands::FunctionTable functions(functionRows);
    static const Tables tables{statements, functions};
    return tables;
}

}  // namespace kalvex::differential
