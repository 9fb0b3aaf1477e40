#include "query/SqlHistory.h"

#include <algorithm>

namespace dbkeeper {

bool SqlHistory::Record(const std::string& text) {
  const bool known = std::any_of(slots_.begin(), slots_.end(),
                                 [&text](const Slot& slot) { return slot.text == text; });
  if (text.empty() || known) return false;
  ++last_;
  Slot* slot = FreeSlot();
  if (slot == nullptr) {
    ++oldest_;
    slot = FreeSlot();
  }
  *slot = {text, last_};
  position_ = last_;
  return true;
}

SqlHistory::Slot* SqlHistory::FreeSlot() {
  const auto found = std::find_if(slots_.begin(), slots_.end(),
                                  [this](const Slot& slot) { return slot.number < oldest_; });
  return found == slots_.end() ? nullptr : &*found;
}

bool SqlHistory::Back() {
  if (position_ <= oldest_) return false;
  --position_;
  return true;
}

bool SqlHistory::Forward() {
  if (position_ >= last_) return false;
  ++position_;
  return true;
}

const std::string& SqlHistory::Current() const {
  static const std::string kNone;
  const auto found = std::find_if(slots_.begin(), slots_.end(),
                                  [this](const Slot& slot) { return slot.number == position_; });
  return found == slots_.end() ? kNone : found->text;
}

}  // namespace dbkeeper
