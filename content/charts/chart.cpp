#include "charts/chart.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TSCHArchives.Common.h"
#include "TSCHArchives.GEN.h"
#include "TSCHArchives.h"
#include "graph/plain_text.h"
#include "text/date.h"

namespace dorvex::content {
namespace {

using ChartArchive = TSCH::ChartArchive;
using Grid = TSCH::ChartGridArchive;
using ChartRow = TSCH::GridRow;
using GridValue = TSCH::GridValue;

// By their numbers.
constexpr std::array<std::string_view, 27> kTypeNames = {
    "undefined",
    "column_2d",
    "bar_2d",
    "line_2d",
    "area_2d",
    "pie_2d",
    "stacked_column_2d",
    "stacked_bar_2d",
    "stacked_area_2d",
    "scatter_2d",
    "mixed_2d",
    "two_axis_2d",
    "column_3d",
    "bar_3d",
    "line_3d",
    "area_3d",
    "pie_3d",
    "stacked_column_3d",
    "stacked_bar_3d",
    "stacked_area_3d",
    "multi_data_column_2d",
    "multi_data_bar_2d",
    "bubble_2d",
    "multi_data_scatter_2d",
    "multi_data_bubble_2d",
    "donut_2d",
    "donut_3d",
};

std::string typeName(TSCH::ChartType type) {
  const auto number = static_cast<std::uint32_t>(type);
  // Types of later versions have no name here.
  if (number >= kTypeNames.size()) return "type_" + std::to_string(number);
  return std::string(kTypeNames[number]);
}

std::vector<std::string> textsOf(const auto& values) {
  std::vector<std::string> texts;
  for (const std::string_view value : values) texts.push_back(plainText(value));
  return texts;
}

ChartValue dateValue(double seconds) {
  std::string date = utcDate(seconds);
  if (date.empty()) return {};
  date.pop_back();  // the zone: dates of data have none
  return date;
}

ChartValue valueOf(const Message<GridValue>& value) {
  if (const auto number = value.find(GridValue::numeric_value)) return *number;
  if (const auto date = value.find(GridValue::date_value)) return dateValue(*date);
  if (const auto date = value.find(GridValue::date_value_1_0)) return dateValue(*date);
  if (const auto seconds = value.find(GridValue::duration_value)) return *seconds;
  return {};
}

using ChartValues = std::vector<ChartValue>;

std::vector<ChartValues> rowsOf(const Message<Grid>& grid) {
  std::vector<ChartValues> rows;
  for (const Message<ChartRow>& row : grid.all(Grid::grid_row)) {
    ChartValues& values = rows.emplace_back();
    for (const Message<GridValue>& value : row.all(ChartRow::value))
      values.push_back(valueOf(value));
  }
  return rows;
}

// The columns of some rows; none where the rows are of so different lengths that the
// gaps would be many times the values.
std::optional<std::vector<ChartValues>> columnsOf(const std::vector<ChartValues>& rows) {
  constexpr std::size_t kMostGapsPerValue = 16;
  std::size_t stored = 0;
  std::size_t width = 0;
  for (const ChartValues& row : rows) {
    stored += row.size();
    width = std::max(width, row.size());
  }
  if (stored > 0 && width > stored * kMostGapsPerValue / rows.size()) return std::nullopt;
  std::vector<ChartValues> columns(width);
  for (std::size_t column = 0; column < width; ++column) {
    for (const ChartValues& row : rows)
      columns[column].push_back(column < row.size() ? row[column] : ChartValue());
  }
  return columns;
}

std::vector<ChartSeries> seriesOf(std::vector<ChartValues> lines, std::vector<std::string> names) {
  names.resize(lines.size());
  std::vector<ChartSeries> series;
  for (std::size_t i = 0; i < lines.size(); ++i)
    series.push_back({std::move(names[i]), std::move(lines[i])});
  return series;
}

void readData(Reading& reading, const Message<ChartArchive>& archive, const Object& drawable,
              Chart& chart) {
  const auto grid = archive.get(ChartArchive::grid);
  auto rowNames = textsOf(grid.all(Grid::row_name));
  auto columnNames = textsOf(grid.all(Grid::column_name));
  auto rows = rowsOf(grid);
  if (archive.get(ChartArchive::series_direction) !=
      TSCH::SeriesDirection::series_direction_by_column) {
    chart.categories = std::move(columnNames);
    chart.series = seriesOf(std::move(rows), std::move(rowNames));
    return;
  }
  chart.categories = std::move(rowNames);
  if (auto columns = columnsOf(rows)) {
    chart.series = seriesOf(*std::move(columns), std::move(columnNames));
  } else {
    reading.addProblem("The rows of chart " + std::to_string(drawable.identifier) +
                       " are of very different lengths");
  }
}

// Every chart stores titles, also those that it does not show.
std::string shownTitle(Reading& reading, const Message<ChartArchive>& archive) {
  using Style = TSCH::Generated::ChartNonStyleArchive;
  const auto style =
      reading.get<TSCH::ChartNonStyleArchive>(archive.get(ChartArchive::chart_non_style))
          .get(Style::current);
  if (!style.get(Style::tschchartinfodefaultshowtitle)) return {};
  return plainText(style.get(Style::tschchartinfodefaulttitle));
}

using AxisStyle = TSCH::Generated::ChartAxisNonStyleArchive;

Message<AxisStyle> axisStyle(Reading& reading, const Message<TSP::Reference>& reference) {
  return reading.get<TSCH::ChartAxisNonStyleArchive>(reference).get(AxisStyle::current);
}

std::vector<std::string> shownAxisTitles(Reading& reading, const Message<ChartArchive>& archive) {
  std::vector<std::string> titles;
  const auto add = [&](bool shown, std::string_view title) {
    if (shown && !title.empty()) titles.push_back(plainText(title));
  };
  for (const auto& reference : archive.all(ChartArchive::value_axis_nonstyles)) {
    const auto style = axisStyle(reading, reference);
    add(style.get(AxisStyle::tschchartaxisvalueshowtitle),
        style.get(AxisStyle::tschchartaxisvaluetitle));
  }
  for (const auto& reference : archive.all(ChartArchive::category_axis_nonstyles)) {
    const auto style = axisStyle(reading, reference);
    add(style.get(AxisStyle::tschchartaxiscategoryshowtitle),
        style.get(AxisStyle::tschchartaxiscategorytitle));
  }
  return titles;
}

}  // namespace

Chart readChart(Reading& reading, const Object& drawable) {
  const auto archive =
      Message<TSCH::ChartDrawableArchive>(drawable.payload).get(ChartArchive::unity);
  Chart chart;
  chart.type = typeName(archive.get(ChartArchive::chart_type));
  chart.title = shownTitle(reading, archive);
  chart.axisTitles = shownAxisTitles(reading, archive);
  readData(reading, archive, drawable, chart);
  return chart;
}

}  // namespace dorvex::content
