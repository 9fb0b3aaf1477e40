// The last twelve distinct texts that were run, found by the number that each was given.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace dbkeeper {

class SqlHistory {
 public:
  static constexpr std::size_t kSlots = 12;

  // Keeps a text and stands on it. False, and nothing changes, for an empty text and for one that
  // is kept already: it is neither added again nor moved.
  bool Record(const std::string& text);
  // One entry older, or newer; false at the end of what is kept.
  bool Back();
  bool Forward();
  // The text of the entry stood on; empty when there is none.
  const std::string& Current() const;
  bool AtOldest() const { return position_ <= oldest_; }
  bool AtNewest() const { return position_ >= last_; }

 private:
  struct Slot {
    std::string text;
    std::int32_t number = -1;
  };

  // The first slot, in array order, that holds no valid entry; null when all do.
  Slot* FreeSlot();

  // A slot's place means nothing: entries are found by number.
  std::array<Slot, kSlots> slots_;
  std::int32_t last_ = 0;      // the number given last
  std::int32_t oldest_ = 1;    // the lowest number that is still valid
  std::int32_t position_ = 0;  // the number of the entry stood on
};

}  // namespace dbkeeper
