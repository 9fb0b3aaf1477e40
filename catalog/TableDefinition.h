// What a table is: plain values, as the server's catalog has them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace dbkeeper {

// An extended property.
struct TableProperty {
  std::string name;
  std::string value;
};

// Seed and increment as the server writes them.
struct TableIdentity {
  std::string seed;
  std::string increment;
  bool not_for_replication = false;
};

struct TableColumn {
  int id = 0;  // counted up in the table, never used again
  std::string name = {};
  std::string type = {};       // as declared, perhaps a user's own type
  std::string base_type = {};  // the server's type behind it
  int length = 0;              // in bytes
  int precision = 0;           // in digits, or in characters for a text
  int scale = 0;
  bool nullable = true;
  bool row_guid = false;
  std::optional<TableIdentity> identity = {};
  std::string formula = {};       // of a computed column
  std::string collation = {};     // of a text
  std::string default_name = {};  // the constraint's, or the bound default's
  std::string default_text = {};  // as the server keeps it, such as "(0)"
  bool default_is_bound = false;  // an object of its own, and no constraint
  std::string rule_name = {};     // a bound rule's
  std::vector<TableProperty> properties = {};

  bool Computed() const { return !formula.empty(); }
  std::string Description() const;
  std::string Note() const;
  // "0" for a type without a size, "10.2" for digits and decimals, else the length in bytes.
  std::string SizeText() const;
  // "1,1", or empty.
  std::string IdentityText() const;
};

struct TableKey {
  std::string column;
  bool descending = false;
};

// An index, or a primary or unique key with the index behind it.
struct TableIndex {
  int id = 0;
  std::string name = {};
  int status = 0;  // the server's bits
  int fill_factor = 0;
  std::string file_group = {};
  std::vector<TableKey> keys = {};

  bool Unique() const;
  bool Clustered() const;
  bool PrimaryKey() const;
  bool UniqueKey() const;  // a constraint, beside the primary key
  bool PadIndex() const;
  bool IgnoresDuplicates() const;
  bool NoRecompute() const;
  // As sp_helpindex tells them: "a, b(-)" and "nonclustered, unique located on PRIMARY".
  std::string KeyText() const;
  std::string Description() const;
};

struct TableCheck {
  std::string name = {};
  std::string text = {};  // in parentheses
  bool disabled = false;
  bool not_for_replication = false;
};

// The text of a view, a procedure or a trigger.
struct ModuleText {
  std::string text = {};
  bool encrypted = false;  // the server does not give the text
  bool quoted_identifier = true;
  bool ansi_nulls = true;
};

struct TableTrigger {
  int id = 0;
  std::string name = {};
  std::string created = {};  // "yyyy-mm-dd hh:mm:ss.fff"
  ModuleText module = {};
  bool disabled = false;
};

struct TableForeignKey {
  std::string name = {};
  std::vector<std::string> columns = {};
  std::string parent_owner = {};
  std::string parent_table = {};
  std::vector<std::string> parent_columns = {};
  bool delete_cascade = false;
  bool update_cascade = false;
  bool disabled = false;
  bool not_for_replication = false;
};

struct TableDefinition {
  int id = 0;
  std::string owner = {};
  std::string name = {};
  std::string created = {};  // "yyyy-mm-dd hh:mm:ss.fff"
  std::string changed = {};  // the later of creation and the last change of the schema
  std::string file_group = {};
  std::string text_file_group = {};  // where text, ntext and image lie; empty without such columns
  std::vector<TableProperty> properties = {};
  std::vector<TableColumn> columns = {};  // in their order
  std::vector<TableIndex> indexes = {};   // in their order; without statistics
  std::vector<TableCheck> checks = {};    // by name, as the others
  std::vector<TableTrigger> triggers = {};
  std::vector<TableForeignKey> foreign_keys = {};

  std::string Description() const;
  std::string Note() const;
};

}  // namespace dbkeeper
