// A panel of fields takes a new record or shows one that exists already.
#pragma once

#include <string>
#include <vector>

#include "controls/Inputs.h"

namespace dbkeeper {

enum class Record { kNew, kExisting };

// The controls of a panel that tell its mode. What a panel does not have stays empty.
struct RecordControls {
  // The record's name: open for a new one, locked once it exists.
  std::vector<Edit*> keys = {};
  // The button that writes the record, with its caption in each mode.
  Button* write = nullptr;
  std::string write_new = "登録";
  std::string write_existing = "更新";
  // Enabled in one mode only, such as the button that deletes.
  std::vector<Control*> only_new = {};
  std::vector<Control*> only_existing = {};
};

// Holds a panel's mode and shows it in locks, colours, captions and enabling; nothing is ever read
// back from these. A new record to start with.
class RecordMode {
 public:
  // The controls must outlive this object.
  explicit RecordMode(RecordControls controls);

  bool Exists() const { return record_ == Record::kExisting; }
  void Show(Record record);
  // A new record, with its keys emptied and the keyboard in the first of them.
  void New();

 private:
  const RecordControls controls_;
  Record record_ = Record::kNew;
};

}  // namespace dbkeeper
