// What the server has said about the last runs, as the message pane shows it.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/Connection.h"

namespace dbkeeper {

class MessageLog {
 public:
  static constexpr std::size_t kRuns = 12;
  static constexpr std::size_t kMessagesPerRun = 1000;

  // A run begins; `time` is shown with the statement's first line. The oldest run goes when there
  // are more than kRuns.
  void BeginRun(std::string_view time, std::string_view sql);
  // The server's messages, in its order. What a run has beyond kMessagesPerRun is only counted.
  void Add(const std::vector<ServerMessage>& messages);
  // A line of our own.
  void AddLine(std::string_view line);
  void EndRun();

  // All runs, the oldest first, lines ended by CR LF.
  std::string Text() const;

 private:
  struct Run {
    std::string text;
    std::size_t messages = 0;
  };

  std::deque<Run> runs_;
};

}  // namespace dbkeeper
