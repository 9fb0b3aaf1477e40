// Names of a statement looked up in the catalogs, for the translator.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "server/catalog/catalog.h"
#include "server/engine/workspace.h"
#include "server/sql/translator.h"

namespace dbkeeper::server {

// A table, view or other object by name, with where it was found.
struct FoundObject {
  DatabaseInfo database;
  std::string alias;
  CatalogObject object;
  bool IsSystem() const { return object.xtype == "S" || object.id < 100; }
};

// What gives the next value of the table's identity column, of the type.
std::string NextIdentitySql(const FoundObject& table, const SqlType& type);

class Resolver : public NameResolver {
 public:
  explicit Resolver(Workspace& workspace) : workspace_(workspace) {}

  std::optional<ObjectInfo> ResolveObject(const ObjectName& name) override;
  std::optional<ObjectInfo> ResolveTableFunction(
      const ObjectName& name, const std::vector<std::string>& arguments) override;
  std::string CurrentSchema() override { return QuoteName(Place({}).alias); }
  std::int64_t StatementTime() override {
    asked_time_ = true;
    return workspace_.statement_time;
  }

  // Forgets what the translation of the statement before has asked.
  void BeginStatement() {
    asked_time_ = false;
    seen_.clear();
  }
  // True when the translation holds for this moment only.
  bool asked_time() const { return asked_time_; }
  // The tables and views that the statement itself names; not what its views are made of.
  const std::vector<FoundObject>& seen() const { return seen_; }

  // Any object of sysobjects by name; "#t" in the temporary tables. Throws 911, 942, 7202.
  std::optional<FoundObject> Find(const ObjectName& name);
  // As Find; throws `error` with the name as written and the current database when there is none
  // of the kinds `xtypes` ("U", "V", ... blank between).
  FoundObject Need(const ObjectName& name, std::string_view xtypes, int error = 208);
  // Where an object of that name would be made: database and alias.
  FoundObject Place(const ObjectName& name);
  Catalog CatalogAt(const FoundObject& place) { return {workspace_.connection(), place.alias}; }

 private:
  // A table as it was found at a version of SQLite's definitions.
  struct Known {
    std::int64_t version = 0;
    CatalogObject object;
    ObjectInfo info;
  };

  // The table from what is known, or from the catalog; null when there is no table of that name.
  const Known* FindTable(const FoundObject& place, const std::string& name);
  ObjectInfo ReadTable(const FoundObject& found);

  bool Means(const ObjectName& name, const FoundObject& found);
  void Note(const ObjectName& name, const FoundObject& found);

  Workspace& workspace_;
  bool asked_time_ = false;
  std::vector<FoundObject> seen_;
  std::map<std::pair<std::string, std::string>, Known> known_;  // by alias and name as written
};

}  // namespace dbkeeper::server
