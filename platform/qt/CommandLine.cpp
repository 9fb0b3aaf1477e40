#include "platform/qt/CommandLine.h"

#include <QString>
#include <QtGlobal>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace dbkeeper::qt {

namespace {

void EndWithoutDisplay(QtMsgType type, const QMessageLogContext& /*context*/,
                       const QString& message) {
  // What the toolkit warns of before it gives up says the same in more words.
  if (type != QtFatalMsg) return;
  std::fprintf(stderr, "There is no display to show windows on (%s).\n",
               message.contains("display") || message.contains("platform plugin")
                   ? "start the program in a desktop session, or set DISPLAY"
                   : qPrintable(message));
  std::_Exit(EXIT_FAILURE);
}

}  // namespace

std::optional<int> AnswerCommandLine(int argc, char** argv, const char* usage,
                                     const char* version) {
  const auto given = [argc, argv](std::string_view option) {
    return std::any_of(argv + 1, argv + argc, [option](const char* argument) {
      return std::string_view(argument) == option;
    });
  };
  if (given("--help")) {
    std::fputs(usage, stdout);
    return EXIT_SUCCESS;
  }
  if (given("--version")) {
    std::printf("%s\n", version);
    return EXIT_SUCCESS;
  }
  return std::nullopt;
}

DisplayNeeded::DisplayNeeded() { qInstallMessageHandler(&EndWithoutDisplay); }

DisplayNeeded::~DisplayNeeded() { qInstallMessageHandler(nullptr); }

}  // namespace dbkeeper::qt
