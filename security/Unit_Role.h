// The dialog that creates a role of a database, and says who is a member of such a role or of a
// fixed role of the server.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "app/workbench/Workbench.h"
#include "controls/Form.h"
#include "controls/Inputs.h"
#include "controls/ListView.h"
#include "controls/RecordMode.h"

namespace dbkeeper {

// The kind of role that is one of a database; with any other it is one of the server.
inline constexpr const char* kDatabaseRole = "Database";

class TFormRole : public Form {
 public:
  // `workbench` outlives the form.
  explicit TFormRole(const Workbench& workbench);

  Edit Edit_Database{"Edit_Database", "Database :"};
  Edit Edit_RoleName{"Edit_RoleName", "Role :"};
  Edit Edit_User{"Edit_User", "User :"};
  RadioGroup RadioGroup_Role{"RadioGroup_Role"};
  dbkeeper::ListView ListView{"ListView"};
  Button SBtn_Update{"SBtn_Update", "適用"};
  Button SBtn_Close{"SBtn_Close", "閉じる"};

  // Gets the dialog ready for a role, a new one where the name is empty, and reads who is a member.
  void SetUp(const std::string& database, const std::string& role, const std::string& kind);

  void ListViewSelectItem();
  // Creates the role when it is new, then makes the user a member or no member of it. Throws
  // ServerError.
  void SBtn_UpdateClick();
  void SBtn_CloseClick();

 private:
  void FillMembers();
  void CreateRole();
  // The statement that makes the chosen change, or none.
  std::optional<std::string> MembershipStatement() const;
  void ClearChoice();

  const Workbench& workbench_;
  std::string kind_ = kDatabaseRole;
  RecordMode mode_{{.keys = {&Edit_RoleName}}};
};

}  // namespace dbkeeper
