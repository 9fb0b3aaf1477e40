#include "catalog/TableDefinition.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "catalog/ExtendedProperty.h"

namespace dbkeeper {

namespace {

// The bits of sysindexes.status.
constexpr int kIgnoreDuplicateKeys = 1;
constexpr int kUnique = 2;
constexpr int kIgnoreDuplicateRows = 4;
constexpr int kClustered = 16;
constexpr int kHypothetical = 32;
constexpr int kStatistics = 64;
constexpr int kPadIndex = 256;
constexpr int kPrimaryKey = 2048;
constexpr int kUniqueKey = 4096;
constexpr int kNoRecompute = 16777216;

constexpr std::array<std::string_view, 17> kTypesWithoutSize = {"real",
                                                                "datetime",
                                                                "float",
                                                                "smalldatetime",
                                                                "bit",
                                                                "bigint",
                                                                "int",
                                                                "smallint",
                                                                "tinyint",
                                                                "text",
                                                                "ntext",
                                                                "binary",
                                                                "uniqueidentifier",
                                                                "varbinary",
                                                                "image",
                                                                "sql_variant",
                                                                "timestamp"};
constexpr std::array<std::string_view, 4> kTypesOfDigits = {"decimal", "numeric", "money",
                                                            "smallmoney"};

struct IndexWord {
  int bit;
  std::string_view word;
};

constexpr std::array<IndexWord, 8> kIndexWords = {{
    {kIgnoreDuplicateKeys, ", ignore duplicate keys"},
    {kUnique, ", unique"},
    {kIgnoreDuplicateRows, ", ignore duplicate rows"},
    {kStatistics, ", statistics"},
    {kHypothetical, ", hypothetical"},
    {kPrimaryKey, ", primary key"},
    {kUniqueKey, ", unique key"},
    {kNoRecompute, ", stats no recompute"},
}};

template <class Names>
bool Holds(const Names& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::string ValueOf(const std::vector<TableProperty>& properties, std::string_view name) {
  const auto found = std::find_if(properties.begin(), properties.end(),
                                  [name](const TableProperty& one) { return one.name == name; });
  return found == properties.end() ? std::string() : found->value;
}

}  // namespace

std::string TableColumn::Description() const { return ValueOf(properties, kDescriptionProperty); }
std::string TableColumn::Note() const { return ValueOf(properties, kNoteProperty); }
std::string TableDefinition::Description() const {
  return ValueOf(properties, kDescriptionProperty);
}
std::string TableDefinition::Note() const { return ValueOf(properties, kNoteProperty); }

std::string TableColumn::SizeText() const {
  if (Holds(kTypesWithoutSize, base_type)) return "0";
  if (Holds(kTypesOfDigits, base_type)) {
    return std::to_string(precision) + "." + std::to_string(scale);
  }
  return std::to_string(length);
}

std::string TableColumn::IdentityText() const {
  return identity ? identity->seed + "," + identity->increment : std::string();
}

bool TableIndex::Unique() const { return (status & kUnique) != 0; }
bool TableIndex::Clustered() const { return (status & kClustered) != 0; }
bool TableIndex::PrimaryKey() const { return (status & kPrimaryKey) != 0; }
bool TableIndex::UniqueKey() const { return (status & kUniqueKey) != 0; }
bool TableIndex::PadIndex() const { return (status & kPadIndex) != 0; }
bool TableIndex::IgnoresDuplicates() const { return (status & kIgnoreDuplicateKeys) != 0; }
bool TableIndex::NoRecompute() const { return (status & kNoRecompute) != 0; }

std::string TableIndex::KeyText() const {
  std::string text;
  for (const TableKey& key : keys) {
    text += (text.empty() ? "" : ", ") + key.column + (key.descending ? "(-)" : "");
  }
  return text;
}

std::string TableIndex::Description() const {
  std::string text = Clustered() ? "clustered" : "nonclustered";
  for (const IndexWord& word : kIndexWords) {
    if ((status & word.bit) != 0) text += word.word;
  }
  return text + " located on " + file_group;
}

}  // namespace dbkeeper
