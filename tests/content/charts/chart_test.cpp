#include "charts/chart.h"

#include <gtest/gtest.h>

#include "content/support/objects.h"

namespace dorvex::content::chart_test {
namespace {

using testing::bitsOf;
using testing::object;
using testing::Objects;
using testing::reference;
using testing::Wire;

enum Type : int { kChart = 5021, kChartStyle = 5023, kAxisStyle = 5027 };
enum Direction : unsigned { kByRow = 1, kByColumn = 2 };

Wire number(double value) { return Wire().fixed64(1, bitsOf(value)); }
Wire oldDate(double seconds) { return Wire().fixed64(2, bitsOf(seconds)); }
Wire duration(double seconds) { return Wire().fixed64(3, bitsOf(seconds)); }
Wire date(double seconds) { return Wire().fixed64(4, bitsOf(seconds)); }

Wire row(const std::vector<Wire>& values) {
  Wire row;
  for (const Wire& value : values) row.message(1, value);
  return row;
}

// Two kinds of tea in three months.
Wire teaGrid() {
  Wire grid;
  for (const char* name : {"Assam", "Sencha"}) grid.bytes(1, name);
  for (const char* name : {"May", "June", "July"}) grid.bytes(2, name);
  grid.message(3, row({number(12), number(7.5), number(9)}));
  grid.message(3, row({number(4), Wire(), number(6)}));
  return grid;
}

Wire archive(unsigned type, unsigned direction, const Wire& grid) {
  return Wire().varint(1, type).varint(5, direction).message(7, grid);
}

Wire drawable(const Wire& archive) { return Wire().message(1, Wire()).message(10000, archive); }

Chart read(const Wire& archive, std::vector<testing::Archive> others = {}) {
  others.push_back(object(10, kChart, drawable(archive)));
  Objects objects(others);
  return readChart(objects.reading(), objects.object(10));
}

TEST(Chart, HasASeriesForEachRow) {
  const Chart chart = read(archive(1, kByRow, teaGrid()));
  EXPECT_EQ(chart.type, "column_2d");
  EXPECT_EQ(chart.categories, (std::vector<std::string>{"May", "June", "July"}));
  ASSERT_EQ(chart.series.size(), 2U);
  EXPECT_EQ(chart.series[0].name, "Assam");
  EXPECT_EQ(chart.series[0].values, (std::vector<ChartValue>{12.0, 7.5, 9.0}));
  EXPECT_EQ(chart.series[1].name, "Sencha");
}

TEST(Chart, HasASeriesForEachColumn) {
  const Chart chart = read(archive(5, kByColumn, teaGrid()));
  EXPECT_EQ(chart.type, "pie_2d");
  EXPECT_EQ(chart.categories, (std::vector<std::string>{"Assam", "Sencha"}));
  ASSERT_EQ(chart.series.size(), 3U);
  EXPECT_EQ(chart.series[0].name, "May");
  EXPECT_EQ(chart.series[0].values, (std::vector<ChartValue>{12.0, 4.0}));
}

TEST(Chart, LeavesGapsWhereThereIsNoValue) {
  const Chart chart = read(archive(3, kByRow, teaGrid()));
  EXPECT_EQ(chart.series[1].values, (std::vector<ChartValue>{4.0, std::monostate(), 6.0}));
}

TEST(Chart, HoldsDatesAndDurations) {
  const Wire grid = Wire().message(3, row({date(0), oldDate(86400), duration(90), date(1e300)}));
  const Chart chart = read(archive(9, kByRow, grid));
  EXPECT_EQ(chart.series.at(0).values,
            (std::vector<ChartValue>{"2001-01-01T00:00:00", "2001-01-02T00:00:00", 90.0,
                                     std::monostate()}));
}

TEST(Chart, NamesTypesOfLaterVersionsByTheirNumbers) {
  EXPECT_EQ(read(archive(26, kByRow, Wire())).type, "donut_3d");
  EXPECT_EQ(read(archive(27, kByRow, Wire())).type, "type_27");
  EXPECT_EQ(read(archive(0, kByRow, Wire())).type, "undefined");
}

TEST(Chart, ShowsItsTitleOnlyWhereThatIsSwitchedOn) {
  for (const bool shown : {true, false}) {
    const Wire style = Wire().varint(21, shown).bytes(23, "Tea in summer");
    const Wire chart = archive(1, kByRow, Wire()).message(10, reference(20));
    EXPECT_EQ(read(chart, {object(20, kChartStyle, Wire().message(10000, style))}).title,
              shown ? "Tea in summer" : "");
  }
}

TEST(Chart, ShowsTheAxisTitlesThatAreSwitchedOn) {
  const Wire shownValue = Wire().varint(14, 1).bytes(16, "Cups");
  const Wire hiddenValue = Wire().varint(14, 0).bytes(16, "Value Title");
  const Wire category = Wire().varint(13, 1).bytes(15, "Month").bytes(16, "Value Title");
  const Wire chart = archive(11, kByRow, Wire())
                         .message(14, reference(20))
                         .message(14, reference(21))
                         .message(16, reference(22));
  const auto titles = read(chart, {object(20, kAxisStyle, Wire().message(10000, shownValue)),
                                   object(21, kAxisStyle, Wire().message(10000, hiddenValue)),
                                   object(22, kAxisStyle, Wire().message(10000, category))})
                          .axisTitles;
  EXPECT_EQ(titles, (std::vector<std::string>{"Cups", "Month"}));
}

TEST(Chart, KeepsRowsWithoutNames) {
  const Chart chart = read(archive(1, kByRow, Wire().message(3, row({number(1)}))));
  ASSERT_EQ(chart.series.size(), 1U);
  EXPECT_EQ(chart.series[0].name, "");
}

TEST(Chart, SaysThatRowsOfVeryDifferentLengthsMakeNoColumns) {
  Wire grid;
  grid.message(3, row(std::vector<Wire>(1000, number(1))));
  for (int i = 0; i < 1000; ++i) grid.message(3, row({number(1)}));
  Objects objects({object(10, kChart, drawable(archive(1, kByColumn, grid)))});
  EXPECT_TRUE(readChart(objects.reading(), objects.object(10)).series.empty());
  EXPECT_EQ(objects.leftOut().problems.size(), 1U);
}

TEST(Chart, WithoutAnythingIsEmpty) {
  const Chart chart = read(Wire());
  EXPECT_TRUE(chart.series.empty());
  EXPECT_TRUE(chart.categories.empty());
}

}  // namespace
}  // namespace dorvex::content::chart_test
