#include "testdata/RowBuilder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>

#include "app/support/DateText.h"
#include "app/support/Errors.h"
#include "app/support/Files.h"
#include "app/support/Messages.h"
#include "app/support/NumberText.h"

namespace dbkeeper {

namespace {

constexpr std::int64_t kSecondsOfDay = 86'400;

void AppendNumber(std::string& text, std::int64_t number) {
  std::array<char, 20> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  text.append(digits.data(), end);
}

void AppendTwoDigits(std::string& text, unsigned number) {
  text += static_cast<char>('0' + number / 10);
  text += static_cast<char>('0' + number % 10);
}

// "yyyy-mm-dd " of a day counted from 1970.
void AppendDate(std::string& text, std::int64_t day) {
  const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(day))};
  const auto year = static_cast<unsigned>(static_cast<int>(date.year()));
  AppendTwoDigits(text, year / 100);
  AppendTwoDigits(text, year % 100);
  text += '-';
  AppendTwoDigits(text, static_cast<unsigned>(date.month()));
  text += '-';
  AppendTwoDigits(text, static_cast<unsigned>(date.day()));
  text += ' ';
}

}  // namespace

const ValueFile& ValueFiles::Of(const std::string& name) {
  const auto found = files_.find(name);
  if (found != files_.end()) return found->second;
  return files_.emplace(name, ValueFile(PathOf(name), code_page_)).first->second;
}

RowBuilder::RowBuilder(std::vector<ColumnSettings> columns, const Host& host, ValueFiles& files)
    : host_(host), files_(files), short_date_format_(host.locale.ShortDateFormat()) {
  columns_.reserve(columns.size());
  for (ColumnSettings& settings : columns) columns_.emplace_back(std::move(settings));
}

RowBuilder::ValueFunction RowBuilder::ValueOf(Pattern pattern) {
  constexpr std::array<ValueFunction, kPatterns.size() + 1> kFunctions = {
      nullptr,
      &RowBuilder::Sequence,
      &RowBuilder::RandomNumber,
      &RowBuilder::RandomDate,
      &RowBuilder::RandomMoment,
      &RowBuilder::Fixed,
      &RowBuilder::FromFile,
      &RowBuilder::FromPattern,
  };
  return kFunctions[static_cast<std::size_t>(pattern)];
}

void RowBuilder::Append(std::int64_t row, std::string& text) {
  if (!thresholds_ready_) PrepareThresholds();
  bool first = true;
  for (Column& column : columns_) {
    if (!first) text += '\t';
    first = false;
    if (const ValueFunction value = ValueOf(column.pattern)) (this->*value)(column, row, text);
  }
}

void RowBuilder::PrepareThresholds() {
  for (Column& column : columns_) {
    const std::string& rate = column.settings.null_rate;
    if (!rate.empty()) column.null_threshold = std::llround(ParseDecimal(rate) * 10);
  }
  thresholds_ready_ = true;
}

// The threshold itself is null too: a rate of 10 percent means 101 of 1000.
bool RowBuilder::IsNull(const Column& column) {
  return column.null_threshold > 0 && column.null_threshold >= host_.random.Below(1000);
}

std::int64_t RowBuilder::Draw(const Column& column) {
  return column.low + host_.random.Below(std::max<std::int64_t>(column.range, 1));
}

void RowBuilder::Sequence(Column& column, std::int64_t row, std::string& text) {
  if (IsNull(column)) return;
  if (!column.ready) column.low = ParseInteger(column.settings.a);
  column.ready = true;
  AppendNumber(text, column.low + row);
}

void RowBuilder::RandomNumber(Column& column, std::int64_t, std::string& text) {
  if (IsNull(column)) return;
  if (!column.ready) {
    column.low = ParseInteger(column.settings.a);
    column.range = ParseInteger(column.settings.b) - column.low;
    column.ready = true;
  }
  AppendNumber(text, Draw(column));
}

std::int64_t RowBuilder::DayOf(const std::string& date) {
  const auto value = ParseHostDate(date, short_date_format_);
  if (!value) throw ConvertError(messages::Fill(messages::kNotADate, date));
  return DayNumber(*value);
}

void RowBuilder::PrepareDates(Column& column) {
  if (column.ready) return;
  column.low = DayOf(column.settings.a);
  column.range = DayOf(column.settings.b) - column.low;
  column.ready = true;
}

void RowBuilder::RandomDate(Column& column, std::int64_t, std::string& text) {
  PrepareDates(column);
  const std::int64_t day = Draw(column);
  if (IsNull(column)) return;
  AppendDate(text, day);
  text += "00:00:00";
}

void RowBuilder::RandomMoment(Column& column, std::int64_t, std::string& text) {
  PrepareDates(column);
  const std::int64_t day = Draw(column);
  const auto second = static_cast<unsigned>(host_.random.Below(kSecondsOfDay));
  if (IsNull(column)) return;
  AppendDate(text, day);
  AppendTwoDigits(text, second / 3600);
  text += ':';
  AppendTwoDigits(text, second / 60 % 60);
  text += ':';
  AppendTwoDigits(text, second % 60);
}

void RowBuilder::Fixed(Column& column, std::int64_t, std::string& text) {
  if (IsNull(column)) return;
  if (!column.ready) column.fixed = ToAnsi(host_.code_page, column.settings.a);
  column.ready = true;
  text += column.fixed;
}

void RowBuilder::FromFile(Column& column, std::int64_t, std::string& text) {
  if (column.settings.count.empty()) return;
  if (!column.ready) column.range = ParseInteger(column.settings.count);
  column.ready = true;
  const std::int64_t line = Draw(column);
  if (IsNull(column)) return;
  if (column.file == nullptr) column.file = &files_.Of(column.settings.a);
  text += column.file->Line(line);
}

void RowBuilder::FromPattern(Column& column, std::int64_t, std::string& text) {
  if (IsNull(column)) return;
  if (!column.text) column.text.emplace(column.settings.a, host_.code_page);
  column.text->Expand(host_.random, text);
}

}  // namespace dbkeeper
