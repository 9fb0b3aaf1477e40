// Every text of the cells once, numbered in the order of their first use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "document/xls/Bytes.h"

namespace dbkeeper::xls {

class SharedStrings {
 public:
  // The number of a UTF-8 text, which counts as used once more.
  std::uint32_t Use(std::string_view text);

  // The table and its index. The bytes before them in the stream are all in `out`, for the index
  // has positions in the stream.
  void Write(Bytes& out) const;

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>{}(text);
    }
  };

  std::unordered_map<std::string, std::uint32_t, Hash, std::equal_to<>> numbers_;
  // The texts by number; the map's keys stay where they are.
  std::vector<const std::string*> texts_;
  std::uint32_t uses_ = 0;
};

}  // namespace dbkeeper::xls
