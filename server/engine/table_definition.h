// Tables, their columns, constraints and indexes: made, changed, dropped, renamed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "server/catalog/catalog.h"
#include "server/engine/resolver.h"
#include "server/engine/workspace.h"
#include "server/sql/ast.h"
#include "server/types/result_sink.h"

namespace dbkeeper::server {

// Every statement is carried out whole or, when it throws SqlError, not at all. What the server
// says in several messages goes to the sink before the last one is thrown.
class TableDefinition {
 public:
  TableDefinition(Workspace& workspace, Resolver& resolver)
      : workspace_(workspace), resolver_(resolver) {}

  void Create(const CreateTableStatement& statement);
  void Alter(const AlterTableStatement& statement, ResultSink& sink);
  void Drop(const ObjectName& name);
  void Truncate(const TruncateStatement& statement);
  void CreateIndex(const CreateIndexStatement& statement);
  void DropIndex(const DropIndexStatement::Item& item);

  void RenameTable(const FoundObject& table, const std::string& name);
  void RenameColumn(const FoundObject& table, const std::string& column, const std::string& name);

  // The two halves of select into; the caller holds the write scope.
  CatalogObject MakeFromColumns(const FoundObject& place, const std::string& name,
                                const std::vector<ResultColumn>& columns);
  // Moves the identity counter on to the highest value that is there; it never goes back.
  void AdoptIdentity(const FoundObject& table);

 private:
  // A table while it is changed: read again after each step.
  struct Work {
    FoundObject found;
    Catalog catalog;
    CatalogTable table;
  };

  // A client's table that the login may change by the statement; throws `error` or 262.
  FoundObject NeedOwn(const ObjectName& name, std::string_view statement, int error);
  void NeedOwner(const FoundObject& place, std::string_view statement);
  Work Start(const FoundObject& found);
  void Reload(Work& work);
  // Makes SQLite's definition follow the catalog, which has changed.
  void Follow(Work& work);
  CatalogColumn MakeColumn(const Work& work, const ColumnDefinition& definition);
  void AddDefault(Work& work, CatalogColumn& column, const Constraint& constraint);
  void AddConstraints(Work& work, const std::vector<Constraint>& constraints, bool check_existing);
  void AddKey(Work& work, const Constraint& constraint);
  void AddCheck(Work& work, const Constraint& constraint, bool check_existing);
  void AddForeignKey(Work& work, const Constraint& constraint, bool check_existing);
  void AddIndex(Work& work, CatalogIndex index);
  void RemoveIndex(Work& work, const CatalogIndex& index);
  void RefuseDuplicates(Work& work, const CatalogIndex& index);
  std::string NameFor(Work& work, const Constraint& constraint, std::string_view prefix,
                      std::string_view column);

  void AddNewColumns(Work& work, const AddColumns& action);
  void ChangeColumn(Work& work, const ColumnDefinition& definition, ResultSink& sink);
  void ConvertRows(Work& work, const CatalogColumn& before, const CatalogColumn& after);
  void DropConstraint(Work& work, const std::string& name);
  void DropColumn(Work& work, const std::string& name, ResultSink& sink);
  void Switch(Work& work, const SwitchParts& action);
  // Tells the sink what keeps the column from being dropped (null) or from getting the new type;
  // true when something does.
  bool TellDependents(Work& work, const CatalogColumn& column, const SqlType* new_type,
                      ResultSink& sink);

  Workspace& workspace_;
  Resolver& resolver_;
};

// Whether a column of the type may be an identity column.
bool TakesIdentity(const SqlType& type);

// The message that a change of the database meets a constraint: `kind` is "CHECK", "FOREIGN KEY" or
// "REFERENCE"; `column` is empty when the constraint is on several.
ServerMessage ConflictMessage(std::string_view verb, std::string_view kind,
                              std::string_view constraint, const DatabaseInfo& database,
                              std::string_view table, const std::string& column);

}  // namespace dbkeeper::server
