#include "app/session/RowOverlay.h"

#include <utility>

namespace dbkeeper {

std::int64_t RowOverlay::Extra() const {
  std::int64_t extra = 0;
  for (const auto& [at, mark] : marks_) {
    extra += static_cast<std::int64_t>(mark.put_in_before.size()) - (mark.removed ? 1 : 0);
  }
  return extra;
}

RowOverlay::Found RowOverlay::Find(std::int64_t row) const {
  std::int64_t left = row;  // shown rows still to pass
  std::int64_t source = 0;  // the next row of the source
  for (const auto& [at, mark] : marks_) {
    if (left < at - source) break;
    left -= at - source;
    source = at;
    const auto put_in = static_cast<std::int64_t>(mark.put_in_before.size());
    if (left < put_in) return {at, static_cast<std::size_t>(left), true};
    left -= put_in;
    if (mark.removed) {
      source = at + 1;
    } else if (left == 0) {
      break;
    }
  }
  return {source + left, 0, false};
}

RowOverlay::Place RowOverlay::At(std::int64_t row) const {
  const Found found = Find(row);
  const auto mark = marks_.find(found.source_row);
  if (mark == marks_.end()) return {found.source_row, nullptr};
  if (found.is_put_in) return {-1, &mark->second.put_in_before[found.put_in]};
  const auto& replaced = mark->second.replaced;
  return {found.source_row, replaced ? &*replaced : nullptr};
}

void RowOverlay::Replace(std::int64_t row, RowValues values) {
  const Found found = Find(row);
  Mark& mark = marks_[found.source_row];
  if (found.is_put_in) {
    mark.put_in_before[found.put_in] = std::move(values);
  } else {
    mark.replaced = std::move(values);
  }
}

void RowOverlay::Insert(std::int64_t row, RowValues values) {
  const Found found = Find(row);
  auto& rows = marks_[found.source_row].put_in_before;
  const std::size_t at = found.is_put_in ? found.put_in : rows.size();
  rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(at), std::move(values));
}

void RowOverlay::Remove(std::int64_t row) {
  const Found found = Find(row);
  Mark& mark = marks_[found.source_row];
  if (found.is_put_in) {
    mark.put_in_before.erase(mark.put_in_before.begin() +
                             static_cast<std::ptrdiff_t>(found.put_in));
  } else {
    mark.removed = true;
    mark.replaced.reset();
  }
}

}  // namespace dbkeeper
