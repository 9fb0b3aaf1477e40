#include "document/xls/SharedStrings.h"

#include <algorithm>

#include "document/xls/Text.h"

namespace dbkeeper::xls {

namespace {

// Length and width stay with the first character; where the characters go on in another record,
// their width stands before them again.
void AddContinued(Bytes& out, ContinuedRecord& record, std::u16string_view units) {
  const bool narrow = IsNarrow(units);
  const std::size_t unit_size = narrow ? 1 : 2;
  std::size_t fits = (record.Room() - 3) / unit_size;
  out.U16(static_cast<std::uint16_t>(units.size()));
  out.U8(narrow ? 0 : 1);
  for (;;) {
    fits = std::min(fits, units.size());
    AddUnits(out, units.substr(0, fits), narrow);
    units.remove_prefix(fits);
    if (units.empty()) return;
    record.Continue();
    out.U8(narrow ? 0 : 1);
    fits = record.Room() / unit_size;
  }
}

}  // namespace

std::uint32_t SharedStrings::Use(std::string_view text) {
  ++uses_;
  const auto found = numbers_.find(text);
  if (found != numbers_.end()) return found->second;
  const auto number = static_cast<std::uint32_t>(texts_.size());
  texts_.push_back(&numbers_.emplace(text, number).first->first);
  return number;
}

void SharedStrings::Write(Bytes& out) const {
  // The index names the place of every so many texts; it has to fit in one record.
  constexpr std::size_t kMostPlaces = 128;
  constexpr std::size_t kFewestTexts = 8;
  constexpr std::size_t kTextHead = 3;
  constexpr std::size_t kWidestUnit = 2;
  const std::size_t step = std::max(kFewestTexts, texts_.size() / kMostPlaces + 1);
  Bytes index;
  {
    ContinuedRecord record(out, RecordId::kSharedStrings);
    out.U32(uses_);
    out.U32(static_cast<std::uint32_t>(texts_.size()));
    for (std::size_t i = 0; i < texts_.size(); ++i) {
      if (record.Room() < kTextHead + kWidestUnit) record.Continue();
      if (i % step == 0) {
        index.U32(static_cast<std::uint32_t>(out.Size()));
        index.U16(static_cast<std::uint16_t>(record.Place()));
        index.U16(0);
      }
      AddContinued(out, record, ToUnits(*texts_[i], kMaxCellText));
    }
  }
  const Record record(out, RecordId::kSharedStringIndex);
  // More texts than 128 times 65,535 are more than any file of the format can hold.
  out.U16(static_cast<std::uint16_t>(step));
  out.Raw(index.View());
}

}  // namespace dbkeeper::xls
