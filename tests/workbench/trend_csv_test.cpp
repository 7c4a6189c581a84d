// The file of a trend.
#include "workbench/model/TrendCsv.h"

#include <gtest/gtest.h>

#include "support/zone_scope.h"
#include "text/CodePage.h"
#include "value/Status.h"

namespace kalvex::workbench {
namespace {

using support::Gmt;

TEST(TrendCsvTest, TimesAcrossAChangeOfTheClocks) {
    const support::ZoneScope zone("Europe/Warsaw");
    const TrendPoint points[] = {
        {.x = Gmt(2024, 10, 27, 0, 30), .value = 12.5},
        {.x = Gmt(2024, 10, 27, 1, 30), .value = -1e20, .status = value::Status::SetByUser},
        {.x = Gmt(2024, 10, 27, 1, 31), .status = 3, .good = false},
    };
    EXPECT_EQ(TrendCsv(points, true, "cisnienie", text::FromUtf8("m³/h"), {}),
              "\xef\xbb\xbf"
              "Czas;cisnienie [m?/h];Status\r\n"
              "2024-10-27T02:30:00+02:00;12.50;\r\n"
              "2024-10-27T02:30:00+01:00;-1e+20;SET_BY_USER\r\n"
              "2024-10-27T02:31:00+01:00;;UNKNOWN TRANSMISSION_ERROR\r\n");
}

TEST(TrendCsvTest, ElementsOfAListAndANameWithASeparator) {
    const TrendPoint points[] = {{.x = 0, .value = 1}, {.x = 1, .value = 2}};
    EXPECT_EQ(TrendCsv(points, false, text::FromUtf8("złe \"a;b\""), "", {}),
              "\xef\xbb\xbf"
              "Element;\"złe \"\"a;b\"\"\";Status\r\n"
              "1;1.00;\r\n"
              "2;2.00;\r\n");
}

}  // namespace
}  // namespace kalvex::workbench
