// The table browser's query: rows are fetched in pages from a server-side cursor when they are
// looked at, and can be written when it is opened to be.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/session/Connection.h"
#include "app/session/RowView.h"
#include "app/support/Host.h"

namespace dbkeeper {

enum class LockType { kReadOnly, kOptimistic };

class BrowseQuery {
 public:
  // Called with the name of the database that a statement has switched to.
  using DatabaseSwitched = std::function<void(const std::string&)>;

  BrowseQuery(Connection& connection, HostLocale& locale, DatabaseSwitched switched);

  // The text: entries are sent as they stand, joined by CR LF.
  void Clear() { lines_.clear(); }
  void Add(std::string line) { lines_.push_back(std::move(line)); }
  std::string Text() const;

  // Runs the text and shows its rows, writable with kOptimistic where they can be. A text that
  // gives no rows leaves the query inactive. Throws ServerError.
  void Open();
  bool Active() const { return Rows.Active(); }
  void Close() { Rows.Close(); }
  // Closes, and runs "use [database]" by itself.
  void UseDatabase(const std::string& database);

  LockType Lock() const { return lock_; }
  // Opens the rows again when they are open, which stay in their place.
  void SetLock(LockType lock);

  RowView Rows;

 private:
  Connection& connection_;
  DatabaseSwitched switched_;
  std::vector<std::string> lines_;
  LockType lock_ = LockType::kReadOnly;
};

}  // namespace dbkeeper
