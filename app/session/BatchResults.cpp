#include "app/session/BatchResults.h"

#include <utility>

namespace dbkeeper {

BatchResults::BatchResults(Connection& connection, const std::string& sql)
    : reader_(connection.Query(sql)) {}

bool BatchResults::GoOn() {
  if (reader_ == nullptr) return false;
  if (std::exchange(on_first_, false) || reader_->NextResult()) return true;
  reader_.reset();
  return false;
}

bool BatchResults::Take(std::string_view marker, std::size_t fields, std::vector<RowValues>& rows) {
  while (GoOn()) {
    const std::vector<Field>& given = reader_->Fields();
    if (given.size() != fields || given.front().name != marker) continue;
    while (reader_->Next()) {
      RowValues& row = rows.emplace_back(fields);
      for (std::size_t i = 0; i < fields; ++i) {
        if (!reader_->IsNull(i)) row[i] = std::string(reader_->Text(i));
      }
    }
    return true;
  }
  return false;
}

void BatchResults::Finish() {
  while (GoOn()) {
  }
}

}  // namespace dbkeeper
