// A loop over bound columns with none of the program's code: the rate that reading is measured by.
#pragma once

#include <sql.h>

#include <array>
#include <cstddef>
#include <string>

namespace dbkeeper {

class BareLoop {
 public:
  // Connects to the local server of a test. Throws std::runtime_error, as Run does.
  explicit BareLoop(int port);
  ~BareLoop();
  BareLoop(const BareLoop&) = delete;
  BareLoop& operator=(const BareLoop&) = delete;

  // Runs a statement of five short columns and fetches its rows one by one; gives their number.
  std::size_t Run(std::string sql);

 private:
  static constexpr std::size_t kColumns = 5;
  static constexpr std::size_t kCellBytes = 128;

  SQLHENV environment_ = nullptr;
  SQLHDBC connection_ = nullptr;
  SQLHSTMT statement_ = nullptr;
  std::array<std::array<char, kCellBytes>, kColumns> cells_{};
  std::array<SQLLEN, kColumns> lengths_{};
};

}  // namespace dbkeeper
