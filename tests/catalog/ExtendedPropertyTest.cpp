#include "catalog/ExtendedProperty.h"

#include <gtest/gtest.h>

namespace dbkeeper {
namespace {

TEST(ExtendedProperty, IsAddedUpdatedDroppedOrLeftAlone) {
  struct Case {
    std::string_view property;
    PropertyOwner owner;
    bool stands;
    const char *value, *statement;
  };
  const Case cases[] = {
      {kDescriptionProperty,
       {"T a", "列"},
       false,
       "単価",
       "execute sp_addextendedproperty 'MS_Description', '単価','user', 'dbo', 'table',[T a], "
       "'column', '列'"},
      {kDescriptionProperty,
       {"T a", "列"},
       true,
       "it's",
       "execute sp_updateextendedproperty 'MS_Description', 'it's','user', 'dbo', 'table',[T a], "
       "'column', '列'"},
      {kNoteProperty,
       {"T a", "列"},
       true,
       "",
       "execute sp_dropextendedproperty 'Note', 'user', 'dbo', 'table',[T a], 'column', '列'"},
      {kNoteProperty, {"T a", "列"}, false, "", ""},
      {kNoteProperty,
       {"T a"},
       false,
       "n",
       "execute sp_addextendedproperty 'Note', 'n','user', 'dbo', 'table','T a'"},
      {kDescriptionProperty,
       {"T a"},
       true,
       "n",
       "execute sp_updateextendedproperty 'MS_Description', 'n','user', 'dbo', 'table','T a'"},
      {kDescriptionProperty,
       {"T a"},
       true,
       "",
       "execute sp_dropextendedproperty 'MS_Description', 'user', 'dbo', 'table','T a'"},
      {kDescriptionProperty, {"T a"}, false, "", ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(PropertyStatement(c.property, c.owner, c.stands, c.value), c.statement);
  }
}

}  // namespace
}  // namespace dbkeeper
