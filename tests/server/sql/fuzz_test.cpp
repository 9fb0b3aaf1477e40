// Random changes of the statements that the tests know: whatever comes of them, lexer, parser and
// translator answer with a translation that SQLite takes, or with an error of the server's.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "tests/server/sql/sql_fixture.h"
#include "tests/server/sql/statements.h"

namespace dbkeeper::server {
namespace {

constexpr std::uint32_t kSeed = 20040308;
constexpr int kRounds = 20000;

std::vector<std::string> Corpus() {
  std::vector<std::string> corpus;
  for (const auto cases :
       {QueryCases(), ExpressionCases(), FunctionCases(), ChangeCases(), ErrorCases()}) {
    for (const StatementCase& test : cases) corpus.emplace_back(test.batch);
  }
  return corpus;
}

class Mutator {
 public:
  explicit Mutator(std::vector<std::string> corpus) : corpus_(std::move(corpus)) {}

  std::string Next() {
    std::string text = corpus_[Below(corpus_.size())];
    for (std::size_t changes = 1 + Below(3); changes > 0; --changes) Change(text);
    return text;
  }

 private:
  std::size_t Below(std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
  }

  // A piece of another statement, from blank to blank.
  std::string Piece() {
    const std::string& other = corpus_[Below(corpus_.size())];
    const std::size_t begin = other.find(' ', Below(other.size()));
    if (begin == std::string::npos) return other;
    const std::size_t end = other.find(' ', begin + 1 + Below(20));
    return other.substr(begin, end == std::string::npos ? end : end - begin);
  }

  void Change(std::string& text) {
    const std::size_t place = Below(text.size() + 1);
    switch (Below(5)) {
      case 0:
        text.insert(place, 1, static_cast<char>(Below(256)));
        break;
      case 1:
        text.erase(place, 1 + Below(8));
        break;
      case 2:
        text.insert(place, Piece());
        break;
      case 3:
        if (place < text.size()) text[place] = "()[]'\".,*@$0x/-= "[Below(17)];
        break;
      default:
        text.replace(place, Below(12), Piece());
    }
    if (text.empty()) text = " ";
  }

  std::vector<std::string> corpus_;
  std::mt19937 random_{kSeed};
};

TEST(Fuzz, ChangedStatementsNeverBreakTheTranslator) {
  Mutator mutator(Corpus());
  TestInstance instance;
  instance.Run(kSetup);
  for (int i = 0; i < kRounds; ++i) {
    const std::string text = mutator.Next();
    const Outcome outcome = instance.Run(text);
    // 50002 would be SQLite's own refusal of what the translator wrote.
    EXPECT_NE(outcome.error.number, 50002) << text << "\n" << outcome.error.text;
  }
}

}  // namespace
}  // namespace dbkeeper::server
