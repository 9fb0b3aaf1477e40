#include "server/procedures/procedure_call.h"

#include <algorithm>

#include "server/engine/state_functions.h"
#include "server/sql/parser.h"
#include "server/types/conversion.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

constexpr int kWidestText = 4000;

struct Wanted {
  std::string_view name;
  bool required;
};

std::vector<Wanted> ParametersOf(std::string_view text) {
  std::vector<Wanted> parameters;
  while (!text.empty()) {
    const std::size_t comma = std::min(text.find(','), text.size());
    std::string_view name = text.substr(0, comma);
    text.remove_prefix(std::min(comma + 2, text.size()));
    const bool required = !name.ends_with('=');
    if (!required) name.remove_suffix(1);
    parameters.push_back({name, required});
  }
  return parameters;
}

struct ProcedureFamily {
  std::span<const ProcedureRow> (*rows)();
  std::string_view database = {};  // the only one that has them; empty: every database
};

constexpr ProcedureFamily kFamilies[] = {
    {BackupHistoryProcedures, "msdb"},
    {DatabaseProcedures},
    {JobHistoryProcedures, "msdb"},
    {JobProcedures, "msdb"},
    {JobScheduleProcedures, "msdb"},
    {JobStepProcedures, "msdb"},
    {LoginProcedures},
    {MetadataProcedures},
    {ObjectProcedures},
    {PropertyProcedures},
    {UserProcedures},
};

// Null when the database has no system procedure of that name.
const ProcedureRow* FindProcedure(std::string_view name, std::string_view database) {
  for (const ProcedureFamily& family : kFamilies) {
    if (!family.database.empty() && !SameName(family.database, database)) continue;
    for (const ProcedureRow& row : family.rows()) {
      if (SameName(row.name, name)) return &row;
    }
  }
  return nullptr;
}

}  // namespace

ProcedureCall::ProcedureCall(const ProcedureRow& row, EngineSession& session,
                             const Parameters& arguments, ResultSink& sink)
    : row_(row), session_(session), sink_(sink) {
  std::vector<Wanted> parameters = ParametersOf(row.parameters);
  const bool takes_more = !parameters.empty() && parameters.back().name == "...";
  if (takes_more) parameters.pop_back();
  std::vector<bool> given(parameters.size(), false);
  for (const Wanted& parameter : parameters) {
    arguments_.push_back(
        {std::string(parameter.name), SqlType{.id = TypeId::kNVarChar, .length = kWidestText}});
  }
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    std::size_t place = i;
    if (!arguments[i].name.empty()) {
      const auto found = std::ranges::find_if(
          parameters, [&](const Wanted& p) { return SameName(p.name, arguments[i].name); });
      if (found == parameters.end() && !takes_more) Fail(8145, {arguments[i].name, row.name});
      if (found != parameters.end()) place = static_cast<std::size_t>(found - parameters.begin());
    }
    if (place >= parameters.size()) {
      if (!takes_more) Fail(8144, {row.name});
      arguments_.push_back(arguments[i]);
      continue;
    }
    given[place] = true;
    if (IsNullCell(arguments[i].value)) continue;
    arguments_[place].value = arguments[i].value;
    arguments_[place].type = arguments[i].type;
  }
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (parameters[i].required && !given[i]) Fail(201, {row.name, parameters[i].name});
  }
}

const Parameter* ProcedureCall::Find(std::string_view parameter) const {
  const auto found = std::ranges::find(arguments_, parameter, &Parameter::name);
  return found == arguments_.end() ? nullptr : &*found;
}

const Cell& ProcedureCall::Value(std::string_view parameter) const {
  return Find(parameter)->value;
}

bool ProcedureCall::Has(std::string_view parameter) const { return !IsNullCell(Value(parameter)); }

std::string ProcedureCall::Text(std::string_view parameter, std::string_view otherwise) const {
  return Has(parameter) ? TextOfCell(Value(parameter)) : std::string(otherwise);
}

std::int64_t ProcedureCall::Integer(std::string_view parameter, std::int64_t otherwise) const {
  const Parameter& argument = *Find(parameter);
  if (IsNullCell(argument.value)) return otherwise;
  try {
    return std::get<std::int64_t>(
        ConvertCell(argument.value, argument.type, kIntType, 0, ConversionKind::kAssignment));
  } catch (const SqlError&) {
    Fail(8114, {NameOf(argument.type.id), NameOf(kIntType.id)});
  }
}

FoundObject ProcedureCall::Object(std::string_view parameter, std::string_view xtypes) {
  const std::string text = Text(parameter);
  std::optional<FoundObject> found;
  try {
    found = resolver().Find(ParseObjectName(text));
  } catch (const SqlError&) {
    // A name that can only stand in brackets is taken as it is.
    found = resolver().Find({.server = {}, .database = {}, .owner = {}, .name = text});
  }
  if (!found || !HasWord(xtypes, found->object.xtype)) {
    Fail(15009, {text, workspace().database()});
  }
  return *found;
}

void ProcedureCall::Run(std::string_view text) { session_.RunInside(text, arguments_, sink_); }

void ProcedureCall::Rows(std::string_view columns, const std::vector<std::vector<Cell>>& rows) {
  sink_.OnColumns(DeclaredColumns(columns));
  for (const std::vector<Cell>& cells : rows) {
    if (!sink_.OnRow(CellRow(cells))) break;
  }
  sink_.OnStatementEnd({.rows = static_cast<std::int64_t>(rows.size()), .is_select = true});
}

void ProcedureCall::Inform(int number, std::initializer_list<std::string_view> parts) {
  sink_.OnMessage(MakeMessage(number, parts));
}

void ProcedureCall::Say(std::string text) {
  ServerMessage message;
  message.severity = 0;
  message.text = std::move(text);
  sink_.OnMessage(message);
}

void ProcedureCall::NeedAdministrator(bool or_has) {
  if (!workspace().login().sysadmin && !or_has) Fail(15247);
}

void ProcedureCall::NeedOwner(std::int64_t or_role) {
  if (!workspace().IsOwner(database()) && !workspace().IsIn(database(), or_role)) Fail(15247);
}

bool RunSystemProcedure(std::string_view name, EngineSession& session, const Parameters& arguments,
                        ResultSink& sink) {
  const ProcedureRow* row = FindProcedure(name, session.current_database());
  if (row == nullptr) return false;
  ProcedureCall call(*row, session, arguments, sink);
  if (row->run != nullptr) row->run(call);
  if (!row->text.empty()) call.Run(row->text);
  return true;
}

}  // namespace dbkeeper::server
