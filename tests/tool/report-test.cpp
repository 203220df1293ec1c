// The calibration report: its figures against a panel whose truth is known, and its page in a browser.
#include <cmath>
#include <nlohmann/json.hpp>

#include "panel-model.h"
#include "tool/tool.h"
#include "vexo-cs.h"

using nlohmann::json;

namespace {

class Report : public Tool {
protected:
  void SetUp() override {
    Tool::SetUp();
    vexo_lcnr lcnr = panel_model::measure(truth_, 33);
    vexo_store_lcnr_xml(&lcnr, path("true.xml").c_str());
    ASSERT_EQ(run("calibrate true.xml -o luts.txt").code, 0);
  }

  json figures(const std::string &options) const {
    const Result r = run("report true.xml luts.txt -o report.html --json report.json --csv report.csv " + options);
    EXPECT_EQ(r.code, 0) << r.err;
    return json::parse(contents(path("report.json")));
  }

  // The drive of each channel at an input, from the LUT file.
  panel_model::Color drives(double input) const {
    std::istringstream in(contents(path("luts.txt")));
    std::string line;
    for (int skip = 0; skip < 2 + static_cast<int>(std::lround(input * 1023.0)); skip++) {
      std::getline(in, line);
    }
    panel_model::Color codes = {};
    in >> codes[0] >> codes[1] >> codes[2];
    for (double &code : codes) {
      code /= 1023.0;
    }
    return codes;
  }

  const panel_model::Panel truth_ = panel_model::desktop_panel();
};

double de2000(const panel_model::Color &a, const panel_model::Color &b, const panel_model::Color &white) {
  const auto vector = [](const panel_model::Color &c) {
    return vexo_vector{{static_cast<float>(c[0]), static_cast<float>(c[1]), static_cast<float>(c[2])}};
  };
  vexo_vector va = vector(a);
  vexo_vector vb = vector(b);
  vexo_vector vw = vector(white);
  return static_cast<double>(vexo_XYZ_DE2000(&va, &vb, &vw));
}

// What Chromium finds in a page at one width: a line for each problem, and "charts N".
std::string browse(const std::string &folder, const std::string &page, int width, bool dark) {
  std::string quoted = page;
  for (const auto &[from, to] : {std::pair<std::string, std::string>{"&", "&amp;"}, {"\"", "&quot;"}}) {
    for (size_t at = quoted.find(from); at != std::string::npos; at = quoted.find(from, at + to.size())) {
      quoted.replace(at, from.size(), to);
    }
  }
  save(folder + "/probe.html",
       R"(<!DOCTYPE html><pre id="out"></pre><iframe id="f" style="border:0;height:900px;width:)" +
           std::to_string(width) + R"(px" srcdoc=")" + quoted + R"("></iframe><script>
window.onload = () => {
  const d = document.getElementById('f').contentDocument, say = t => document.getElementById('out').textContent += t + '\n';
  const root = d.documentElement;
  if (root.scrollWidth > root.clientWidth) say('scrolls sideways: ' + root.scrollWidth);
  const figures = d.querySelectorAll('figure');
  say('charts ' + figures.length);
  say('background ' + d.defaultView.getComputedStyle(d.body).backgroundColor);
  for (const figure of figures) {
    const svg = figure.querySelector(':scope > svg'), plot = svg.querySelector('clipPath rect').getBBox();
    if (!svg.querySelector('title').textContent || !svg.querySelector('desc').textContent) say('no text: ' + figure.id);
    for (const group of svg.querySelectorAll('g')) {
      const b = group.getBBox();
      if (!(b.x < plot.x + plot.width && b.x + b.width > plot.x && b.y < plot.y + plot.height && b.y + b.height > plot.y))
        say('nothing inside the axes: ' + figure.id + ' ' + group.getAttribute('class'));
    }
    const labels = [...svg.querySelectorAll('text.tick:not(.note)')].map(t => t.getBoundingClientRect());
    labels.forEach((a, i) => labels.slice(i + 1).forEach(b => {
      if (a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom) say('labels overlap: ' + figure.id);
    }));
  }
  say('done');
};
</script>)");
  const std::string command =
      "chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking "
      "--disable-component-update --disable-sync --enable-logging=stderr --v=0 --virtual-time-budget=5000 "
      "--user-data-dir='" +
      folder + "/profile' --window-size=1400,1000 " + (dark ? "--blink-settings=preferredColorScheme=0 " : "") +
      "--dump-dom 'file://" + folder + "/probe.html' >'" + folder + "/dom' 2>'" + folder + "/log'";
  if (std::system(command.c_str()) != 0) {
    return "chromium failed: " + contents(folder + "/log");
  }
  const std::string dom = contents(folder + "/dom");
  const size_t begin = dom.find("<pre id=\"out\">");
  const std::string out =
      begin == std::string::npos ? "" : dom.substr(begin + 14, dom.find("</pre>", begin) - begin - 14);
  return out + (has(contents(folder + "/log"), "CONSOLE") ? "console: " + contents(folder + "/log") : "");
}

} // namespace

TEST_F(Report, FiguresAgreeWithTheTruePanel) {
  const json report = figures("");
  const panel_model::Color white = panel_model::light(truth_, drives(1.0));
  double sum = 0.0;
  int count = 0;
  for (const json &step : report["steps"]["after"]) {
    const double input = step["input"];
    if (std::fmod(std::lround(input * 100.0), 20.0) != 0.0 || input < 0.1) {
      continue; // inputs that are not on a LUT entry would compare the LUT's interpolation as well
    }
    const double entry = std::round(input * 1023.0) / 1023.0;
    const panel_model::Color shown = panel_model::light(truth_, drives(input));
    for (size_t m = 0; m < 3; m++) {
      EXPECT_NEAR(step["XYZ"][m].get<double>() / shown[m], 1.0, 0.02) << "input " << input;
    }
    const double y = 0.3290;
    const double Y = std::pow(entry, 2.2) * white[1];
    const panel_model::Color target = {0.3127 / y * Y, Y, (1.0 - 0.3127 - y) / y * Y};
    const double de = de2000(shown, target, {0.3127 / y * white[1], white[1], (1.0 - 0.3127 - y) / y * white[1]});
    EXPECT_NEAR(step["de2000"].get<double>(), de, 0.5) << "input " << input;
    sum += de;
    count++;
  }
  ASSERT_EQ(count, 5);
  EXPECT_NEAR(report["summary"]["after"]["de2000_mean"].get<double>(), sum / count, 0.4);
  EXPECT_NEAR(report["summary"]["after"]["luminance"].get<double>(), white[1], 1.0);
  EXPECT_NEAR(report["summary"]["after"]["gamma_mean"].get<double>(), 2.2, 0.01);
  EXPECT_NEAR(report["figures"]["contrast"].get<double>(), (white[1] + truth_.black[1]) / truth_.black[1], 5.0);
  EXPECT_EQ(report["white"]["CCT"], 6504);
}

TEST_F(Report, PageSaysWhatTheJsonSays) {
  const json report = figures("--white D50 --camera srgb");
  const std::string page = contents(path("report.html"));
  const struct {
    const char *row;
    const char *key;
    const char *pattern;
  } rows[] = {{"CIEDE2000, mean", "de2000_mean", "%.3f"},
              {"CIEDE2000, worst", "de2000_worst", "%.3f"},
              {"CIEDE2000 without luminance, mean", "chroma_mean", "%.3f"},
              {"Distance to the target white in u'v', worst", "duv_worst", "%.4f"},
              {"Effective gamma, spread", "gamma_spread", "%.3f"},
              {"White luminance above black", "luminance", "%.2f"}};
  for (const auto &row : rows) {
    std::string cells = std::string(">") + row.row + "</th>";
    for (const char *side : {"before", "after"}) {
      char text[32];
      std::snprintf(text, sizeof text, row.pattern, report["summary"][side][row.key].get<double>());
      cells += std::string("<td>") + text + "</td>";
    }
    EXPECT_TRUE(has(page, cells)) << cells;
  }
  for (const char *text :
       {"predicted, channels assumed to add", "D50: x 0.3457, y 0.3585", "srgb (slope 12.92",
        report["panel"]["sha256"].get_ref<const std::string &>().c_str(), "vexo report true.xml luts.txt"}) {
    EXPECT_TRUE(has(page, text)) << text;
  }
  EXPECT_EQ(report["panel"]["sha256"].get<std::string>().size(), 64U);
  for (const char *forbidden : {"http", "<script", "src=", "@import", "<link"}) {
    EXPECT_FALSE(has(page, forbidden)) << forbidden; // nothing is loaded from elsewhere
  }
  const std::string csv = contents(path("report.csv"));
  EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 22);
}

TEST_F(Report, SaysTheSameEverywhere) {
  save(path("limits.json"), R"({"de2000_mean": 9})");
  const Result r = run("calibrate panel.xml -o luts.txt --json report.json --csv report.csv --limits limits.json");
  ASSERT_EQ(r.code, 0) << r.err;
  const json report = json::parse(contents(path("report.json")));
  const json &before = report["summary"]["before"];
  const json &after = report["summary"]["after"];
  const struct {
    const char *label;
    const char *key;
    double unit;
  } rows[] = {{"distance to target white", "duv", 1.0},
              {"distance to target curve", "curve", 100.0},
              {"colour difference", "de2000", 1.0},
              {"  below that, near black", "near_black", 1.0}};
  char text[160];
  for (const auto &row : rows) {
    const auto value = [&](const json &summary, const char *which) {
      return row.unit * summary[std::string(row.key) + which].get<double>();
    };
    std::snprintf(text, sizeof text, "  %-26s %9.4f %9.4f    %9.4f %9.4f ", row.label, value(before, "_mean"),
                  value(before, "_worst"), value(after, "_mean"), value(after, "_worst"));
    EXPECT_TRUE(has(r.out, text)) << text << r.out;
  }
  std::snprintf(text, sizeof text, "pass de2000_mean: %.4f, ", after["de2000_mean"].get<double>());
  EXPECT_TRUE(has(r.err, text)) << r.err;
  EXPECT_EQ(report["figures"]["de2000_mean"], after["de2000_mean"]);

  const std::string gray = run("gray panel.xml luts.txt --steps 101").out;
  const std::string csv = contents(path("report.csv"));
  ASSERT_EQ(report["steps"]["after"].size(), 101U);
  for (size_t i = 1; i <= 100; i++) {
    const json &step = report["steps"]["after"][i];
    const auto xyY = [&](size_t m) { return static_cast<double>(step["xyY"][m].get<float>()); };
    std::snprintf(text, sizeof text, "\n%6zu.00 %%   %8.5f   %8.5f   %10.5g   %6d ", i, xyY(0), xyY(1), xyY(2),
                  step["CCT"].get<int>());
    std::string row = text;
    row.erase(1, 3); // of the blanks
    EXPECT_TRUE(has(gray, row)) << row;
    if (i % 5 == 0) {
      std::snprintf(text, sizeof text, ",%.6g,%.6f,%.6f,%d,%.4f\n", xyY(2), xyY(0), xyY(1), step["CCT"].get<int>(),
                    step["de2000"].get<double>());
      EXPECT_TRUE(has(csv, text)) << text;
    }
  }
}

TEST_F(Report, AGrayWithoutLightIsAnError) {
  save(path("luts.txt"), "LUT_1D_SIZE 3\nLUT_1D_BITS 10\n0 0 0\n0 0 0\n1023 1023 1023\n");
  const json report = figures("");
  const json &dark = report["steps"]["after"][49];
  EXPECT_EQ(dark["XYZ"], json::array({0.0, 0.0, 0.0}));
  EXPECT_TRUE(dark["CCT"].is_null() && dark["duv"].is_null() && dark["gamma"].is_null());
  EXPECT_GT(dark["de2000"].get<double>(), 20.0);
  EXPECT_EQ(dark["curve"], 1.0);
  double sum = 0.0;
  for (size_t i = 10; i <= 100; i++) {
    sum += report["steps"]["after"][i]["de2000"].get<double>();
  }
  EXPECT_NEAR(report["summary"]["after"]["de2000_mean"].get<double>(), sum / 91.0, 1e-9);
}

TEST_F(Report, BlackIsTheMeanOfItsReadings) {
  vexo_lcnr lcnr = {};
  ASSERT_EQ(vexo_load_lcnr_xml(&lcnr, path("true.xml").c_str()), 0);
  lcnr.data[0][1][0] = 0.25F;
  lcnr.data[1][1][0] = 0.375F;
  lcnr.data[2][1][0] = 0.125F;
  vexo_store_lcnr_xml(&lcnr, path("true.xml").c_str());
  const json report = figures("");
  const json measured = json::parse(run("measure true.xml --json").out);
  EXPECT_EQ(report["black"], 0.25);
  EXPECT_EQ(measured["black"][1], 0.25);
  EXPECT_NEAR(report["figures"]["contrast"], (report["figures"]["luminance"].get<double>() + 0.25) / 0.25, 1e-6);
}

TEST_F(Report, AMeasuredRampIsTheVerdict) {
  std::string csv = "level,X,Y,Z\n";
  for (int i = 0; i <= 10; i++) { // the true panel without any LUT, black included
    const double d = i / 10.0;
    const panel_model::Color shown = panel_model::light(truth_, {d, d, d});
    csv += std::to_string(i * 10);
    for (size_t m = 0; m < 3; m++) {
      csv += "," + std::to_string(shown[m] + truth_.black[m]);
    }
    csv += "\n";
  }
  save(path("gray.csv"), csv);
  save(path("limits.json"), R"({"de2000_mean": 1, "luminance": {"min": 200, "max": 400}})");
  const Result r =
      run("report true.xml luts.txt -o report.html --json report.json --verify gray.csv --limits limits.json");
  EXPECT_EQ(r.code, 1);
  EXPECT_TRUE(has(r.err, "FAIL de2000_mean") && has(r.err, "pass luminance")) << r.err;
  const json report = json::parse(contents(path("report.json")));
  EXPECT_EQ(report["prediction"], false);
  EXPECT_NEAR(report["summary"]["measured"]["de2000_mean"].get<double>(),
              report["summary"]["before"]["de2000_mean"].get<double>(), 0.3);
  EXPECT_TRUE(has(contents(path("report.html")), "FAIL") && has(contents(path("report.html")), "Measured gray ramp"));

  const struct {
    const char *file;
    const char *text;
    const char *option;
    const char *message;
  } bad[] = {{"x.csv", "0,1,1,1\n", "--verify x.csv", "two rows or more"},
             {"x.csv", "0,1,1,1\n5,2,2,2\n5,3,3,3\n", "--verify x.csv", "do not rise after 5"},
             {"x.csv", "0,1,1,1\n5,2,2\n", "--verify x.csv", "x.csv:2: 3 columns, expected 4 (level,X,Y,Z)"},
             {"x.json", "[1]", "--limits x.json", "expected a JSON object"},
             {"x.json", R"({"dE": 1})", "--limits x.json", "no figure 'dE', expected one of de2000_mean"},
             {"x.json", R"({"luminance": {"most": 1}})", "--limits x.json", "'most' is neither min nor max"},
             {"x.json", R"({"luminance": "1"})", "--limits x.json", "expected a number"}};
  for (const auto &c : bad) {
    save(path(c.file), c.text);
    const Result refused = run(std::string("report true.xml luts.txt -o none.html ") + c.option);
    EXPECT_EQ(refused.code, 3) << c.text;
    EXPECT_TRUE(has(refused.err, c.message)) << refused.err;
    EXPECT_FALSE(std::filesystem::exists(path("none.html")));
  }
}

TEST_F(Report, ShowsInABrowser) {
  if (std::system("command -v chromium >/dev/null") != 0) {
    GTEST_SKIP() << "no page looked at: chromium is not installed";
  }
  figures("");
  const std::string page = contents(path("report.html"));
  std::string backgrounds[2];
  for (const int width : {1280, 390}) {
    for (const bool dark : {false, true}) {
      const std::string found = browse(path(""), page, width, dark);
      const size_t colour = found.find("background ");
      ASSERT_NE(colour, std::string::npos) << found;
      backgrounds[dark] = found.substr(colour + 11, found.find('\n', colour) - colour - 11);
      EXPECT_EQ(found, "charts 9\nbackground " + backgrounds[dark] + "\ndone\n") << width;
    }
  }
  EXPECT_NE(backgrounds[0], backgrounds[1]);
}
