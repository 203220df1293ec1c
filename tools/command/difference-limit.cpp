#include "command/difference-limit.h"

#include "command/cli.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"

void add_difference_limit(CLI::App *command, DifferenceLimit &limit) {
  const auto parse = [](const std::string &option, const std::string &text) {
    return DifferenceLimit{text, parse_not_negative(option, text)};
  };
  add_parsed(command, "--limit", limit, parse, "Exit with 1 when a channel differs by more than this; 1 is full drive");
}

void check_differences(const DifferenceLimit &limit, const double (&largest)[3]) {
  for (int c = 0; c < 3 && !limit.text.empty(); c++) {
    if (!(largest[c] <= limit.value)) {
      throw Failure(kLimitMissed,
                    format("%s differs by %.6f, the limit is %s", kChannels[c], largest[c], limit.text.c_str()));
    }
  }
}
