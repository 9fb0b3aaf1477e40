// A query object: its SQL text as lines, and the rows that it gives, read in order.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/Connection.h"
#include "app/support/Host.h"

namespace dbkeeper {

// A named value of the present row, readable as text, integer or truth. Empty and null fields give
// an empty text and 0.
class FieldValue {
 public:
  FieldValue(const Field& field, std::string_view text, bool is_null, HostLocale& locale)
      : field_(field), text_(text), is_null_(is_null), locale_(locale) {}

  bool IsNull() const { return is_null_; }
  // Dates have the host's short form with the time behind it unless it is midnight.
  std::string AsString() const;
  // The same text without a copy where it can be had: it stands in the row, or in `room`.
  std::string_view AsText(std::string& room) const;
  // Throws ConvertError when the text is no whole number.
  std::int64_t AsInteger() const;
  // The value as it came over the port, alive until the next row.
  std::string_view Raw() const { return text_; }

 private:
  const Field& field_;
  std::string_view text_;
  bool is_null_;
  HostLocale& locale_;
};

class Query {
 public:
  // Called with the name of the database that a statement has switched to.
  using DatabaseSwitched = std::function<void(const std::string&)>;

  Query(Connection& connection, HostLocale& locale, DatabaseSwitched switched);
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  // The text: entries are sent as they stand, joined by CR LF.
  void Clear() { lines_.clear(); }
  void Add(std::string line) { lines_.push_back(std::move(line)); }
  std::string Text() const;

  // Runs the text and stands on the first row. A text without a result set leaves the query
  // inactive. Throws ServerError.
  void Open();
  // Closes, puts the one text in place, and opens.
  void Open(std::string text);
  // Opens the one text, gives this field of every row as a text, and closes.
  std::vector<std::string> Texts(std::string text, std::string_view field);
  // Runs the text without rows; gives the number of rows affected, or -1. Throws ServerError.
  std::int64_t ExecSQL();
  // Closes, runs the one text without rows, and clears it.
  std::int64_t Command(std::string text);
  // Runs "use [database]" by itself.
  void UseDatabase(const std::string& database) { Command("use [" + database + "]"); }

  bool Active() const { return reader_ != nullptr; }
  void Close();
  bool Eof() const { return eof_; }
  void Next();

  const std::vector<Field>& Fields() const;
  // Throws SessionError when there is no such field. Field names compare without case.
  FieldValue FieldByName(std::string_view name) const;
  std::size_t FieldIndex(std::string_view name) const;
  FieldValue FieldAt(std::size_t index) const;
  // The rows behind this query, for a reader that wants them without a copy; null when inactive.
  RowReader* Reader() { return reader_.get(); }

 private:
  void NoteSwitch(const std::string& sent) const;

  Connection& connection_;
  HostLocale& locale_;
  DatabaseSwitched switched_;
  std::vector<std::string> lines_;
  std::unique_ptr<RowReader> reader_;
  bool eof_ = true;
};

}  // namespace dbkeeper
