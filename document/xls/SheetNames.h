// Names under which sheets may stand in a workbook.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace dbkeeper::xls {

class SheetNames {
 public:
  // The wanted name where it is legal and no other sheet has it: at most 31 characters, none of
  // :\/?*[], no apostrophe at either end. Otherwise the closest one that is, numbered where
  // needed. Spreadsheet programs take names for equal that differ only in case, in full-width
  // against half-width letters, or in Hiragana against Katakana; so they are numbered, too.
  std::string Add(std::string_view wanted);

 private:
  std::unordered_set<std::u16string> taken_;
  // The last number given to a name.
  std::unordered_map<std::u16string, unsigned> numbers_;
};

}  // namespace dbkeeper::xls
