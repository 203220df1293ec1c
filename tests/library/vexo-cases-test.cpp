// Calls with known results: published figures, values worked out by hand or outside the library, edge cases. They are
// lines of tests/golden/library/calls-*.txt, whose form the README there describes.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

#include "golden.h"
#include "library/calls.h"

namespace {

using Tokens = std::vector<std::string>;

// The arguments that a line names.
class Line : public Source {
public:
  explicit Line(const Tokens &tokens) : tokens_(tokens) {}
  float real() override { return std::strtof(next(), nullptr); }
  int whole(int /*kinds*/) override { return static_cast<int>(std::strtol(next(), nullptr, 10)); }
  vexo_gamma curve() override {
    const float slope = real();
    const float transition = real();
    const float gamma = real();
    return vexo_gamma{slope, transition, gamma, real()};
  }
  std::vector<float> table() override {
    std::vector<float> values(static_cast<size_t>(whole(0)));
    for (float &x : values) {
      x = real();
    }
    return values;
  }
  bool all_taken() const { return at_ == tokens_.size(); }

private:
  const char *next() { return at_ < tokens_.size() ? tokens_[at_++].c_str() : (at_++, ""); }
  Tokens tokens_;
  size_t at_ = 0;
};

// Exact, as a float or an integer; of a NaN there is one, of zeros there are two.
bool same(double got, const std::string &token) {
  const double wide = std::strtod(token.c_str(), nullptr);
  const double single = static_cast<double>(std::strtof(token.c_str(), nullptr));
  return (std::isnan(got) && std::isnan(wide)) ||
         ((got == wide || got == single) && std::signbit(got) == std::signbit(wide));
}

// What is wrong with a line "call arguments = results" or "call arguments ~ tolerance results"; empty for nothing.
std::string fault(const Tokens &words) {
  const auto sign = std::find_if(words.begin(), words.end(), [](const auto &w) { return w == "=" || w == "~"; });
  const auto call = std::find_if(calls().begin(), calls().end(), [&](const Call &c) { return c.name == words[0]; });
  if (sign == words.end() || call == calls().end()) {
    return "no such call";
  }
  Line line(Tokens(words.begin() + 1, sign));
  const Numbers got = call->run(line);
  const bool exact = *sign == "=";
  const Tokens expected(sign + (exact ? 1 : 2), words.end());
  bool right = line.all_taken() && !expected.empty() && expected.size() <= got.size();
  std::ostringstream text;
  text.precision(9);
  for (size_t i = 0; i < got.size(); i++) {
    text << ' ' << got[i];
    if (i < expected.size()) {
      right = right && (exact ? same(got[i], expected[i])
                              : std::fabs(got[i] - std::strtod(expected[i].c_str(), nullptr)) <= std::stod(sign[1]));
    }
  }
  return right ? "" : (line.all_taken() ? "gives" : "takes other arguments; gives") + text.str();
}

TEST(Calls, GiveKnownResults) {
  for (const std::string &file : golden_files("calls-")) {
    std::map<std::string, Tokens> names;
    std::istringstream lines(golden_text(file));
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
      number++;
      Tokens words;
      std::istringstream in(line.substr(0, line.find('#')));
      for (std::string word; in >> word;) { // N*WORD is N times WORD; a name stands for its words
        const size_t star = word.find('*');
        const int count = star == std::string::npos ? 1 : std::stoi(word);
        word.erase(0, star + 1);
        const Tokens meant = names.count(word) != 0 ? names[word] : Tokens{word};
        for (int n = 0; n < count; n++) {
          words.insert(words.end(), meant.begin(), meant.end());
        }
      }
      if (words.size() > 1 && words[1] == ":=") {
        names[words[0]] = Tokens(words.begin() + 2, words.end());
      } else if (!words.empty()) {
        EXPECT_EQ(fault(words), "") << file << ':' << number << ": " << line;
      }
    }
  }
}

} // namespace
