#include "app/session/BrowseQuery.h"

#include <memory>
#include <utility>

#include "app/session/CursorRows.h"
#include "app/session/RowStore.h"

namespace dbkeeper {

namespace {

// Rows that the server cannot scroll in are read to the end, so that the connection is free again.
std::unique_ptr<RowSource> RowsBehind(ScrolledRows rows) {
  if (rows.cursor != nullptr) return std::make_unique<CursorRows>(std::move(rows.cursor));
  if (rows.reader == nullptr) return nullptr;
  auto store = std::make_unique<RowStore>(rows.reader->Fields());
  store->ReadAll(*rows.reader);
  return store;
}

}  // namespace

BrowseQuery::BrowseQuery(Connection& connection, HostLocale& locale, DatabaseSwitched switched)
    : Rows(locale), connection_(connection), switched_(std::move(switched)) {
  Rows.Reopen = [this] { Open(); };
}

std::string BrowseQuery::Text() const {
  std::string text;
  for (const std::string& line : lines_) text += (text.empty() ? "" : "\r\n") + line;
  return text;
}

void BrowseQuery::Open() {
  Close();
  const std::string text = Text();
  auto rows = RowsBehind(connection_.OpenCursor(text));
  if (rows == nullptr) return;
  Rows.Open(std::move(rows));
  if (lock_ == LockType::kReadOnly) return;
  try {
    Rows.AllowEditing(std::make_unique<RowEditor>(connection_, text, Rows.Fields()));
  } catch (const ServerError& error) {
    // The rows are there to be read; why they cannot be written stands beside them.
    Rows.ForbidEditing(error.what());
  }
}

void BrowseQuery::UseDatabase(const std::string& database) {
  Close();
  connection_.Execute("use [" + database + "]");
  if (switched_) switched_(database);
}

void BrowseQuery::SetLock(LockType lock) {
  lock_ = lock;
  if (!Active()) return;
  Rows.Leave();
  Rows.Refresh();
}

}  // namespace dbkeeper
