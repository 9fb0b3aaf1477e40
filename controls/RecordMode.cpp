#include "controls/RecordMode.h"

#include <utility>

namespace dbkeeper {

RecordMode::RecordMode(RecordControls controls) : controls_(std::move(controls)) {
  Show(Record::kNew);
}

void RecordMode::Show(Record record) {
  record_ = record;
  const bool exists = Exists();
  for (Edit* key : controls_.keys) key->Lock(exists);
  if (controls_.write != nullptr) {
    controls_.write->Caption = exists ? controls_.write_existing : controls_.write_new;
  }
  for (Control* control : controls_.only_new) control->Enabled = !exists;
  for (Control* control : controls_.only_existing) control->Enabled = exists;
}

void RecordMode::New() {
  Show(Record::kNew);
  for (Edit* key : controls_.keys) key->Text = "";
  if (!controls_.keys.empty()) controls_.keys.front()->SetFocus();
}

}  // namespace dbkeeper
