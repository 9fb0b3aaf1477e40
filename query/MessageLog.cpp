#include "query/MessageLog.h"

#include "app/support/Messages.h"
#include "query/QueryMessages.h"

namespace dbkeeper {

namespace {

// "番号 547, レベル 16, 行 3: text"; a PRINT has no number and shows its text alone.
std::string Line(const ServerMessage& message) {
  if (message.number == 0) return message.text;
  std::string line = "番号 " + std::to_string(message.number);
  if (message.severity > 0) line += ", レベル " + std::to_string(message.severity);
  if (message.line > 0) line += ", 行 " + std::to_string(message.line);
  return line + ": " + message.text;
}

}  // namespace

void MessageLog::BeginRun(std::string_view time, std::string_view sql) {
  if (runs_.size() == kRuns) runs_.pop_front();
  const std::size_t end = sql.find_first_of("\r\n");
  std::string first_line(sql.substr(0, end));
  if (end != std::string_view::npos) first_line += " ...";
  runs_.push_back({"[" + std::string(time) + "] " + first_line + "\r\n"});
}

void MessageLog::Add(const std::vector<ServerMessage>& messages) {
  for (const ServerMessage& message : messages) {
    if (runs_.back().messages++ < kMessagesPerRun) AddLine(Line(message));
  }
}

void MessageLog::AddLine(std::string_view line) {
  runs_.back().text += "  ";
  runs_.back().text += line;
  runs_.back().text += "\r\n";
}

void MessageLog::EndRun() {
  const std::size_t said = runs_.back().messages;
  if (said <= kMessagesPerRun) return;
  AddLine(messages::Fill(messages::kMoreMessages, std::to_string(said - kMessagesPerRun)));
}

std::string MessageLog::Text() const {
  std::string text;
  for (const Run& run : runs_) text += run.text;
  return text;
}

}  // namespace dbkeeper
