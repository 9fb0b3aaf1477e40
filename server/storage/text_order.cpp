#include "server/storage/text_order.h"

#include <vector>

#include "server/types/collation.h"

namespace dbkeeper::server {

void MarkTextOrder(SqliteConnection& connection, const std::string& alias) {
  connection.Execute("pragma " + QuoteName(alias) +
                     ".user_version = " + std::to_string(kTextOrder));
}

void RenewTextOrder(SqliteConnection& connection, const std::string& alias,
                    const std::string& database) {
  const std::string schema = QuoteName(alias) + ".";
  if (connection.IntegerOf(0, "pragma " + schema + "user_version") == kTextOrder) return;
  // Read before the transaction, which so begins by writing: it cannot meet a session that does the
  // same with a state that is past.
  std::vector<std::string> tables;
  SqliteStatement indexed = connection.Prepare("select distinct tbl_name from " + schema +
                                               "sqlite_schema where type = 'index'");
  while (indexed.Step()) tables.push_back(indexed.Text(0));
  SqliteSavepoint all(connection);
  for (const std::string& table : tables) {
    try {
      connection.Execute("reindex " + schema + QuoteName(table));
    } catch (const SqliteError& error) {
      if (error.constraint().kind != ConstraintFailureKind::kUnique) throw;
      Fail(50013, {database, table});
    }
  }
  MarkTextOrder(connection, alias);
  all.Keep();
}

}  // namespace dbkeeper::server
