// Asks for one table of a database.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/support/Host.h"
#include "controls/Form.h"
#include "controls/Inputs.h"

namespace dbkeeper {

class TFormChooseTable : public Form {
 public:
  TFormChooseTable();

  ComboBox ComboBox_Table{"ComboBox_Table", ComboStyle::kDropDownList, "Table :"};
  Button SBtn_Ok{"SBtn_Ok", "OK"};
  Button Sbtn_Cancel{"Sbtn_Cancel", "Cancel"};

  // Shows the dialog with the tables of `database`; absence when it was cancelled.
  std::optional<std::string> Choose(Windows& windows, const std::string& database,
                                    std::vector<std::string> tables);

  void SBtn_OkClick();
  void Sbtn_CancelClick();

 private:
  bool chosen_ = false;
};

}  // namespace dbkeeper
