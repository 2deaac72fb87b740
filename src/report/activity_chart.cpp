#include "report/activity_chart.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "questions/questions.h"
#include "report/html_writer.h"
#include "report/report_limits.h"
#include "report/report_times.h"

namespace zanvik {
namespace {

constexpr std::size_t widest_column = 40;  // pixels
constexpr std::size_t lane_height = 16;
constexpr std::size_t most_labels = 5, label_pixels = 90;

// The column that a day belongs to.
chart_column column_for(std::uint32_t day, std::string_view unit) {
  if (unit == "day") return {day, day + 1};
  // 1601-01-01 was a Monday.
  if (unit == "week") return {day - day % 7, day - day % 7 + 7};
  calendar_day date = date_of(day);
  date.day = 1;
  if (unit == "year") date.month = 1;
  calendar_day next = date;
  if (unit == "year" || date.month == 12) {
    ++next.year;
    next.month = 1;
  } else {
    ++next.month;
  }
  return {day_of(date), day_of(next)};
}

std::size_t pixels_of(const chart_axis& axis) { return axis.columns.size() * widest_column; }

std::string svg_start(std::string_view kind, std::size_t columns, std::size_t rows,
                      std::size_t width, std::size_t height) {
  return "<svg class=\"" + std::string(kind) + "\" width=\"" + std::to_string(width) +
         "\" height=\"" + std::to_string(height) + "\" viewBox=\"0 0 " + std::to_string(columns) +
         " " + std::to_string(rows) + "\" preserveAspectRatio=\"none\"";
}

void append_box(std::string& path, std::size_t x, double y, double height) {
  char text[64];
  std::snprintf(text, sizeof(text), "M%zu %gh1v%gh-1z", x, y, height);
  path += text;
}

// Lines where days are left out.
std::string gaps(const chart_axis& axis, std::size_t rows) {
  std::string path;
  for (std::size_t i = 1; i < axis.columns.size(); ++i) {
    if (axis.columns[i].first == axis.columns[i - 1].end) continue;
    path += "M" + std::to_string(i) + " 0v" + std::to_string(rows);
  }
  return path.empty() ? path : "<path class=\"gap\" d=\"" + path + "\"/>";
}

// Five shades, each for a multiple of the counts of the one before.
std::string hours_svg(const chart_axis& axis, const host_chart& chart) {
  const std::uint64_t most = *std::max_element(chart.hours.begin(), chart.hours.end());
  std::string shades[5];
  for (std::size_t column = 0; column < axis.columns.size(); ++column) {
    for (std::size_t hour = 0; hour < 24; ++hour) {
      const std::uint64_t count = chart.hours[column * 24 + hour];
      if (count == 0) continue;
      const double share =
          std::log(static_cast<double>(count) + 1) / std::log(static_cast<double>(most) + 1);
      const auto shade = std::min<std::size_t>(static_cast<std::size_t>(share * 5), 4);
      append_box(shades[shade], column, static_cast<double>(hour), 1);
    }
  }
  std::string out;
  for (std::size_t i = 0; i < 5; ++i) {
    if (shades[i].empty()) continue;
    out += "<path class=\"h" + std::to_string(i + 1) + "\" d=\"" + shades[i] + "\"/>";
  }
  return out;
}

std::string lane_svg(const chart_axis& axis, const host_chart& chart, std::size_t group,
                     std::size_t lane) {
  std::uint64_t most = 1;
  for (std::size_t column = 0; column < axis.columns.size(); ++column) {
    most = std::max(most, chart.groups[column * most_groups + group]);
  }
  std::string path;
  for (std::size_t column = 0; column < axis.columns.size(); ++column) {
    const std::uint64_t count = chart.groups[column * most_groups + group];
    if (count == 0) continue;
    // One event is to be seen, too.
    const double height =
        3 + std::round(11.0 * static_cast<double>(count) / static_cast<double>(most));
    append_box(path, column, static_cast<double>((lane + 1) * lane_height) - 1 - height, height);
  }
  return "<path class=\"g" + std::to_string(group) + "\" d=\"" + path + "\"/>";
}

std::string axis_svg(const chart_axis& axis) {
  const std::size_t columns = axis.columns.size(), width = pixels_of(axis);
  const std::size_t labels =
      std::max<std::size_t>(1, std::min({most_labels, width / label_pixels, columns}));
  std::string out = "<svg class=\"axis\" width=\"" + std::to_string(width) +
                    "\" height=\"16\" aria-hidden=\"true\">";
  for (std::size_t i = 0; i < labels; ++i) {
    const std::size_t column = columns * i / labels;
    char place[32];
    std::snprintf(place, sizeof(place), "%.2f%%",
                  100.0 * static_cast<double>(column) / static_cast<double>(columns));
    out += "<text x=\"" + std::string(place) + "\" y=\"12\">" +
           date_text(axis.columns[column].first) + "</text>";
  }
  return out + "</svg>";
}

}  // namespace

std::size_t chart_axis::column_of(std::uint32_t day) const {
  const auto behind = std::upper_bound(
      columns.begin(), columns.end(), day,
      [](std::uint32_t wanted, const chart_column& column) { return wanted < column.end; });
  const bool found = behind != columns.end() && behind->first <= day;
  return found ? static_cast<std::size_t>(behind - columns.begin()) : columns.size();
}

chart_axis make_axis(const activity& counts) {
  std::set<std::uint32_t> days;
  for (const host_day& day : counts.days()) days.insert(day.day);
  chart_axis axis;
  for (const std::string_view unit : {"day", "week", "month", "year"}) {
    axis.unit = unit;
    axis.columns.clear();
    for (const std::uint32_t day : days) {
      const chart_column column = column_for(day, unit);
      if (axis.columns.empty() || axis.columns.back().first != column.first) {
        axis.columns.push_back(column);
      }
    }
    if (axis.columns.size() <= report_limits::chart_columns) return axis;
  }
  axis.columns.erase(axis.columns.begin(), axis.columns.end() - report_limits::chart_columns);
  return axis;
}

std::uint64_t host_chart::total_of(std::size_t group) const {
  std::uint64_t total = 0;
  for (std::size_t i = group; i < groups.size(); i += most_groups) total += groups[i];
  return total;
}

host_chart make_host_chart(const activity& counts, const chart_axis& axis, std::uint32_t host) {
  host_chart chart{host, {}, {}, 0};
  chart.hours.resize(axis.columns.size() * 24);
  chart.groups.resize(axis.columns.size() * most_groups);
  for (const host_day& day : counts.days()) {
    if (day.host != host) continue;
    const std::size_t column = axis.column_of(day.day);
    for (std::size_t hour = 0; hour < 24; ++hour) {
      if (column == axis.columns.size()) {
        chart.uncharted += day.hours[hour];
      } else {
        chart.hours[column * 24 + hour] += day.hours[hour];
      }
    }
    if (column == axis.columns.size()) continue;
    for (std::size_t group = 0; group < most_groups; ++group) {
      chart.groups[column * most_groups + group] += day.groups[group];
    }
  }
  return chart;
}

std::vector<std::uint32_t> charted_hosts(const activity& counts) {
  std::vector<std::uint32_t> hosts(counts.hosts().size());
  for (std::uint32_t i = 0; i < hosts.size(); ++i) hosts[i] = i;
  std::sort(hosts.begin(), hosts.end(), [&](std::uint32_t a, std::uint32_t b) {
    const std::uint64_t x = counts.events_of(a), y = counts.events_of(b);
    return x != y ? x > y : counts.hosts()[a] < counts.hosts()[b];
  });
  if (hosts.size() > report_limits::charted_hosts) hosts.resize(report_limits::charted_hosts);
  return hosts;
}

std::string chart_html(const activity& counts, const chart_axis& axis, const host_chart& chart) {
  const std::size_t columns = axis.columns.size(), width = pixels_of(axis);
  html_writer html;
  html.markup("<div class=\"chart\"><div class=\"scale\" aria-hidden=\"true\"><span>0h</span>");
  html.markup("<span>6h</span><span>12h</span><span>18h</span></div>");
  html.markup(svg_start("hours", columns, 24, width, 96));
  html.markup(" tabindex=\"0\" role=\"application\" aria-label=\"All events of ");
  html.text(counts.hosts()[chart.host]).markup(" by ").markup(axis.unit);
  html.markup(" and hour. Arrow keys move, Enter chooses, Escape ends the choice.\">");
  html.markup(hours_svg(axis, chart)).markup(gaps(axis, 24)).markup("</svg>");
  std::string lanes, names;
  std::size_t lane = 0;
  const auto groups = question_groups();
  for (std::size_t group = 0; group < groups.size(); ++group) {
    const std::uint64_t total = chart.total_of(group);
    if (total == 0) continue;
    lanes += lane_svg(axis, chart, group, lane++);
    names += "<span>" + std::string(groups[group]) + " <b>" + grouped(total) + "</b></span>";
  }
  if (lane != 0) {
    html.markup("<div class=\"names\">").markup(names).markup("</div>");
    html.markup(svg_start("lanes", columns, lane * lane_height, width, lane * lane_height));
    html.markup(" tabindex=\"0\" role=\"application\" aria-label=\"Events by kind and ");
    html.markup(axis.unit).markup(". Arrow keys move, Enter chooses, Escape ends the choice.\">");
    html.markup(lanes).markup(gaps(axis, lane * lane_height)).markup("</svg>");
  }
  html.markup("<div></div>").markup(axis_svg(axis)).markup("</div>\n");
  return html.take();
}

std::string charts_json(const chart_axis& axis, const std::vector<host_chart>& charts) {
  std::string out = "{\"unit\":\"" + std::string(axis.unit) + "\",\"starts\":[";
  const auto list = [&out](bool& first, std::int64_t number) {
    if (!first) out += ',';
    first = false;
    out += std::to_string(number);
  };
  const auto milliseconds = [](std::uint32_t day) {
    return unix_milliseconds(std::uint64_t{day} * qx::ticks_per_day);
  };
  bool first = true;
  for (const chart_column& column : axis.columns) list(first, milliseconds(column.first));
  out += "],\"ends\":[";
  first = true;
  for (const chart_column& column : axis.columns) list(first, milliseconds(column.end));
  out += "],\"hosts\":[";
  for (const host_chart& chart : charts) {
    if (&chart != &charts.front()) out += ',';
    out += "{\"hours\":[";
    first = true;
    for (std::size_t i = 0; i < chart.hours.size(); ++i) {
      if (chart.hours[i] == 0) continue;
      for (const std::uint64_t number :
           {std::uint64_t{i / 24}, std::uint64_t{i % 24}, chart.hours[i]}) {
        list(first, static_cast<std::int64_t>(number));
      }
    }
    out += "],\"lanes\":[";
    bool first_lane = true;
    const auto groups = question_groups();
    for (std::size_t group = 0; group < groups.size(); ++group) {
      if (chart.total_of(group) == 0) continue;
      out += first_lane ? "{\"name\":" : ",{\"name\":";
      first_lane = false;
      append_json(out, groups[group]);
      out += ",\"days\":[";
      first = true;
      for (std::size_t column = 0; column < axis.columns.size(); ++column) {
        const std::uint64_t count = chart.groups[column * most_groups + group];
        if (count == 0) continue;
        list(first, static_cast<std::int64_t>(column));
        list(first, static_cast<std::int64_t>(count));
      }
      out += "]}";
    }
    out += "]}";
  }
  return out + "]}";
}

}  // namespace zanvik
