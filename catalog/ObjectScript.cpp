#include "catalog/ObjectScript.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "app/session/CellText.h"
#include "app/support/Errors.h"
#include "app/support/Files.h"
#include "app/support/Messages.h"
#include "catalog/TableCatalog.h"

namespace dbkeeper {

namespace {

constexpr const char* kLine = "\r\n";
constexpr const char* kGo = "GO\r\n";

constexpr std::array<std::string_view, 6> kTypesOfCharacters = {"char",     "varchar", "nchar",
                                                                "nvarchar", "binary",  "varbinary"};
constexpr std::array<std::string_view, 2> kTypesOfDecimals = {"decimal", "numeric"};

template <class Names>
bool IsOneOf(const Names& names, std::string_view name) {
  for (const std::string_view one : names) {
    if (one == name) return true;
  }
  return false;
}

// Always as a text of the national characters, as the server's own scripts have it.
std::string National(std::string_view text) {
  const std::string quoted = QuotedText(text);
  return quoted.front() == 'N' ? quoted : "N" + quoted;
}

std::string Owned(const std::string& owner, const std::string& name) {
  return BracketedName(owner) + "." + BracketedName(name);
}

std::string NameOf(const TableDefinition& table) { return Owned(table.owner, table.name); }

// Names in brackets, each on a line of its own.
std::string NameLines(const std::vector<std::string>& names) {
  std::string lines;
  for (const std::string& name : names) {
    lines += (lines.empty() ? "\t\t" : std::string(",") + kLine + "\t\t") + BracketedName(name);
  }
  return lines + kLine;
}

std::string TypeText(const TableColumn& column) {
  std::string text = BracketedName(column.type);
  // A user's own type has its size and collation in itself.
  if (column.type != column.base_type) return text;
  if (IsOneOf(kTypesOfCharacters, column.type)) {
    text += " (" + std::to_string(column.precision) + ")";
  } else if (IsOneOf(kTypesOfDecimals, column.type)) {
    text += "(" + std::to_string(column.precision) + ", " + std::to_string(column.scale) + ")";
  }
  if (!column.collation.empty()) text += " COLLATE " + column.collation;
  return text;
}

std::string ColumnLine(const TableColumn& column) {
  std::string line = "\t" + BracketedName(column.name) + " ";
  if (column.Computed()) return line + "AS " + column.formula + " ";
  line += TypeText(column);
  if (column.identity) {
    line += " IDENTITY (" + column.identity->seed + ", " + column.identity->increment + ")";
    if (column.identity->not_for_replication) line += " NOT FOR REPLICATION ";
  }
  if (column.row_guid) line += " ROWGUIDCOL ";
  line += column.nullable ? " NULL " : " NOT NULL ";
  if (!column.default_text.empty() && !column.default_is_bound) {
    line += "CONSTRAINT " + BracketedName(column.default_name) + " DEFAULT " + column.default_text;
  }
  return line;
}

// A key's or an index's columns, those in descending order with that behind them.
std::string KeyOf(const TableKey& key) {
  return BracketedName(key.column) + (key.descending ? " DESC " : "");
}

std::string OptionsOf(const TableIndex& index) {
  std::string options;
  const auto add = [&options](const std::string& option) {
    options += (options.empty() ? " WITH  " : " ,") + option;
  };
  if (index.PadIndex()) add("PAD_INDEX ");
  if (index.fill_factor > 0) add("FILLFACTOR = " + std::to_string(index.fill_factor));
  if (index.IgnoresDuplicates()) add("IGNORE_DUP_KEY ");
  if (index.NoRecompute()) add("STATISTICS_NORECOMPUTE ");
  return options;
}

std::string On(const std::string& file_group) {
  return file_group.empty() ? std::string() : " ON " + BracketedName(file_group);
}

std::string KeyConstraint(const TableIndex& key) {
  std::string text = "\tCONSTRAINT " + BracketedName(key.name) +
                     (key.PrimaryKey() ? " PRIMARY KEY  " : " UNIQUE  ") +
                     (key.Clustered() ? "CLUSTERED " : "NONCLUSTERED ") + kLine + "\t(" + kLine;
  for (std::size_t i = 0; i < key.keys.size(); ++i) {
    text += "\t\t" + KeyOf(key.keys[i]) + (i + 1 < key.keys.size() ? "," : "") + kLine;
  }
  // A constraint takes no other option than this.
  if (key.fill_factor > 0) {
    return text + "\t) WITH  FILLFACTOR = " + std::to_string(key.fill_factor) + " " +
           On(key.file_group) + " ";
  }
  return text + "\t) " + On(key.file_group) + " ";
}

std::string ForeignKeyConstraint(const TableForeignKey& key) {
  std::string text = "\tCONSTRAINT " + BracketedName(key.name) + " FOREIGN KEY " + kLine + "\t(" +
                     kLine + NameLines(key.columns) + "\t) REFERENCES " +
                     Owned(key.parent_owner, key.parent_table) + " (" + kLine +
                     NameLines(key.parent_columns) + "\t)";
  if (key.delete_cascade) text += " ON DELETE CASCADE ";
  if (key.update_cascade) text += " ON UPDATE CASCADE ";
  if (key.not_for_replication) text += " NOT FOR REPLICATION ";
  return text;
}

std::string CreateTable(const TableDefinition& table) {
  std::vector<std::string> parts;
  for (const TableColumn& column : table.columns) parts.push_back(ColumnLine(column));
  for (const TableIndex& index : table.indexes) {
    if (index.PrimaryKey() || index.UniqueKey()) parts.push_back(KeyConstraint(index));
  }
  for (const TableForeignKey& key : table.foreign_keys) parts.push_back(ForeignKeyConstraint(key));
  for (const TableCheck& check : table.checks) {
    parts.push_back("\tCONSTRAINT " + BracketedName(check.name) + " CHECK " +
                    (check.not_for_replication ? "NOT FOR REPLICATION " : "") + check.text);
  }
  std::string text = "CREATE TABLE " + NameOf(table) + " (" + kLine;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    text += parts[i] + (i + 1 < parts.size() ? "," : "") + kLine;
  }
  text += ")" + On(table.file_group);
  if (!table.text_file_group.empty()) {
    text += " TEXTIMAGE_ON " + BracketedName(table.text_file_group);
  }
  return text + kLine + kGo;
}

std::string CreateIndex(const TableDefinition& table, const TableIndex& index) {
  std::string keys;
  for (const TableKey& key : index.keys) keys += (keys.empty() ? "" : ", ") + KeyOf(key);
  return std::string(" CREATE ") + (index.Unique() ? " UNIQUE " : "") +
         (index.Clustered() ? " CLUSTERED " : "") + " INDEX " + BracketedName(index.name) + " ON " +
         NameOf(table) + "(" + keys + ")" + OptionsOf(index) + On(index.file_group) + kLine + kGo;
}

std::string Properties(const TableDefinition& table, const std::vector<TableProperty>& properties,
                       const std::string& column) {
  std::string text;
  for (const TableProperty& property : properties) {
    text += "exec sp_addextendedproperty " + National(property.name) + ", " +
            National(property.value) + ", N'user', " + National(table.owner) + ", N'table', " +
            National(table.name);
    if (!column.empty()) text += ", N'column', " + National(column);
    text += std::string(kLine) + kGo;
  }
  return text;
}

// What a statement of its own says of columns and constraints that already stand.
std::string Afterwards(const TableDefinition& table) {
  const std::string alter = "ALTER TABLE " + NameOf(table);
  std::string text;
  for (const TableColumn& column : table.columns) {
    const std::string place =
        National(BracketedName(table.name) + "." + BracketedName(column.name));
    if (column.default_is_bound) {
      text += "EXEC sp_bindefault " + National("[dbo]." + BracketedName(column.default_name)) +
              ", " + place + kLine + kGo;
    }
    if (!column.rule_name.empty()) {
      text += "EXEC sp_bindrule " + National("[dbo]." + BracketedName(column.rule_name)) + ", " +
              place + kLine + kGo;
    }
  }
  const auto nocheck = [&](const auto& constraints) {
    for (const auto& constraint : constraints) {
      if (!constraint.disabled) continue;
      text += alter + " NOCHECK CONSTRAINT " + BracketedName(constraint.name) + kLine + kGo;
    }
  };
  nocheck(table.foreign_keys);
  nocheck(table.checks);
  return text;
}

std::string Setting(const char* name, bool on) {
  return std::string("SET ") + name + (on ? " ON " : " OFF ") + kLine + kGo;
}

// The text with its lines ended by CR LF.
std::string WithLineEnds(std::string_view text) {
  std::string lines;
  for (const char c : text) {
    if (c == '\n' && !lines.ends_with('\r')) lines += '\r';
    lines += c;
  }
  return lines;
}

}  // namespace

std::string ModuleScript(const std::string& name, const ModuleText& module) {
  // No line more than the text has, so that it comes back as it was; behind it the settings of
  // every connection, which the script must not leave changed.
  if (module.encrypted) throw SessionError(messages::Fill(messages::kEncrypted, name));
  return Setting("QUOTED_IDENTIFIER", module.quoted_identifier) +
         Setting("ANSI_NULLS", module.ansi_nulls) + WithLineEnds(module.text) + kLine + kGo +
         Setting("QUOTED_IDENTIFIER", true) + Setting("ANSI_NULLS", true);
}

std::string TableScript(const TableDefinition& table) {
  std::string text = CreateTable(table);
  for (const TableIndex& index : table.indexes) {
    if (!index.PrimaryKey() && !index.UniqueKey()) text += CreateIndex(table, index);
  }
  text += Afterwards(table);
  text += Properties(table, table.properties, "");
  for (const TableColumn& column : table.columns) {
    text += Properties(table, column.properties, column.name);
  }
  for (const TableTrigger& trigger : table.triggers) {
    text += ModuleScript(trigger.name, trigger.module);
    if (!trigger.disabled) continue;
    text += "ALTER TABLE " + NameOf(table) + " DISABLE TRIGGER " + BracketedName(trigger.name) +
            kLine + kGo;
  }
  return text;
}

std::string ObjectScript(Query& query, const std::string& database, const std::string& name,
                         const std::string& kind) {
  const auto missing = [&] { return SessionError(messages::Fill(messages::kNotDbos, name)); };
  if (kind == "Table") {
    const auto table = ReadTable(query, database, name);
    if (!table) throw missing();
    return TableScript(*table);
  }
  const std::vector<ModuleText> modules =
      ReadModule(query, database, name, kind == "View" ? "V" : "P");
  if (modules.empty()) throw missing();
  std::string text;
  for (const ModuleText& module : modules) text += ModuleScript(name, module);
  return text;
}

std::string WriteObjectScript(const Workbench& workbench, const std::string& database,
                              const std::string& name, const std::string& kind) {
  std::string script = ObjectScript(workbench.Session.ADOQuerySystem, database, name, kind);
  const Host& host = workbench.Host;
  ReplaceFile(host.disk, PathOf(host.shell.TemporaryFolder() + "DBKEEPER_TMP.txt"),
              ToAnsi(host.code_page, script));
  return script;
}

}  // namespace dbkeeper
