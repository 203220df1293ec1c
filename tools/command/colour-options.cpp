#include "command/colour-options.h"

#include "calibration/target.h"
#include "colour/quantities.h"
#include "command/cli.h"
#include "text/failure.h"
#include "text/grammar.h"
#include "vexo-cs.h"

void add_colour_options(CLI::App *command, ColourOptions &options) {
  command->add_option("--in", options.form, "Form of the input; uvY is u',v',Y")
      ->check(one_of(colour_forms()))
      ->capture_default_str();
  command->add_option("--white", options.white, "Reference white by name, or x,y")
      ->type_name(words_among_others(white_names()))
      ->capture_default_str();
  command->add_option("--luminance", options.luminance, "Y of the reference white")->capture_default_str();
  command->add_flag("--json", options.json, "Print JSON");
}

vexo_vector reference_white(const ColourOptions &options) {
  vexo_vector white = parse_white("--white", options.white).xyz;
  white.d[2] = parse_positive("--luminance", options.luminance);
  vexo_xyY_XYZ(&white);
  return white;
}

vexo_vector parse_colour(const std::string &argument, const std::string &text, const ColourOptions &options) {
  vexo_vector v = parse_triple(argument, text);
  if (!to_XYZ(&v, options.form, reference_white(options))) {
    throw Failure(kInputError, argument + " '" + text + "' is not a colour in " + options.form);
  }
  return v;
}
