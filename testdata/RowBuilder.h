// Builds the rows of test data from the settings of each column.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/support/Host.h"
#include "testdata/PatternString.h"
#include "testdata/Patterns.h"
#include "testdata/ValueFile.h"

namespace dbkeeper {

// A column's settings as they are shown and stored, all as texts.
struct ColumnSettings {
  std::string pattern = {};
  std::string null_rate = {};  // percent
  std::string a = {};          // the parameters
  std::string b = {};
  std::string count = {};  // lines of the value file
};

// The value files of a run by their names, each read when it is first asked for.
class ValueFiles {
 public:
  explicit ValueFiles(CodePage& code_page) : code_page_(code_page) {}
  // Throws FileError.
  const ValueFile& Of(const std::string& name);

 private:
  CodePage& code_page_;
  std::map<std::string, ValueFile> files_;
};

class RowBuilder {
 public:
  // `files` and what `host` refers to outlive the builder.
  RowBuilder(std::vector<ColumnSettings> columns, const Host& host, ValueFiles& files);

  // Appends the row of that number (1 for the first) in the ANSI code page: fields with one tab
  // between, nothing quoted, no line end. An empty field means null. Throws ConvertError and
  // FileError for settings that are no numbers, dates or files.
  void Append(std::int64_t row, std::string& text);

 private:
  struct Column {
    explicit Column(ColumnSettings texts) : settings(std::move(texts)) {}

    ColumnSettings settings;
    Pattern pattern = PatternOf(settings.pattern);
    std::int64_t null_threshold = 0;  // per mille
    // What the settings mean, once it is first needed: until then a column that is always null may
    // hold what is no number.
    bool ready = false;
    std::int64_t low = 0;    // number, day, or line
    std::int64_t range = 1;  // how many numbers, days or lines there are to draw from
    std::string fixed = {};
    const ValueFile* file = nullptr;
    std::optional<PatternString> text = {};
  };

  using ValueFunction = void (RowBuilder::*)(Column& column, std::int64_t row, std::string& text);
  static ValueFunction ValueOf(Pattern pattern);

  void PrepareThresholds();
  // Whether the null test, which draws where there is a rate, makes the field empty.
  bool IsNull(const Column& column);
  // Draws from the column's range.
  std::int64_t Draw(const Column& column);

  void Sequence(Column& column, std::int64_t row, std::string& text);
  void RandomNumber(Column& column, std::int64_t row, std::string& text);
  void RandomDate(Column& column, std::int64_t row, std::string& text);
  void RandomMoment(Column& column, std::int64_t row, std::string& text);
  void Fixed(Column& column, std::int64_t row, std::string& text);
  void FromFile(Column& column, std::int64_t row, std::string& text);
  void FromPattern(Column& column, std::int64_t row, std::string& text);
  void PrepareDates(Column& column);
  std::int64_t DayOf(const std::string& date);

  std::vector<Column> columns_;
  const Host& host_;
  ValueFiles& files_;
  std::string short_date_format_;
  bool thresholds_ready_ = false;
};

}  // namespace dbkeeper
