#include "programs/kalvex-run/JUnit.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>
#include <numeric>

namespace kalvex::run {

namespace {

// How a verdict is told within a case; null for one that needs no words. In the order of the
// verdicts.
constexpr const char* kElements[] = {nullptr, "failure", "error", "skipped"};

// What a document can hold: a control character is shown by its number.
std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                if (static_cast<unsigned char>(c) >= ' ' || c == '\n' || c == '\t') {
                    escaped += c;
                } else {
                    escaped += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
                }
        }
    }
    return escaped;
}

std::string CaseXml(const TestReport& report) {
    const std::string folder = report.script.parent_path().string();
    const std::string begin =
        fmt::format("    <testcase classname=\"{}\" name=\"{}\" time=\"{:.3f}\"",
                    Escaped(folder.empty() ? "." : folder), Escaped(report.script.stem().string()),
                    report.seconds);
    const char* element = kElements[static_cast<std::size_t>(report.verdict)];
    if (element == nullptr) return begin + "/>\n";
    return fmt::format("{}>\n      <{} message=\"{}\">{}</{}>\n    </testcase>\n", begin, element,
                       Escaped(report.lines.front()),
                       Escaped(fmt::format("{}", fmt::join(report.lines, "\n"))), element);
}

}  // namespace

std::string JUnitXml(std::span<const TestReport> reports) {
    const auto count = [reports](TestVerdict verdict) {
        return std::ranges::count(reports, verdict, &TestReport::verdict);
    };
    const double seconds =
        std::accumulate(reports.begin(), reports.end(), 0.0,
                        [](double sum, const TestReport& report) { return sum + report.seconds; });
    std::string xml = fmt::format(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n"
        "  <testsuite name=\"kalvex-run\" tests=\"{}\" failures=\"{}\" errors=\"{}\" "
        "skipped=\"{}\" time=\"{:.3f}\">\n",
        reports.size(), count(TestVerdict::Failed), count(TestVerdict::Broken),
        count(TestVerdict::Skipped), seconds);
    for (const TestReport& report : reports) xml += CaseXml(report);
    return xml + "  </testsuite>\n</testsuites>\n";
}

}  // namespace kalvex::run
